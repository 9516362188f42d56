// The registry key wrapper: errors as exceptions carrying the Windows code, typed reads,
// paths, iteration and moves.
#include <cstdlib>
#include <functional>
#include <set>

#include "support/TestRegistry.h"
#include "zetsettings/components/CRegistryKey.h"

using JetByteTools::CRegistryKey;

namespace {

using CRegistryKeyTest = zettest::RegistryTest;

CRegistryKey createTestKey()
{
    return CRegistryKey(HKEY_LOCAL_MACHINE).CreateOrOpenKeyEx(L"Software\\ZetTest", 0, L"", 0, KEY_ALL_ACCESS);
}

// A binary value as the wrapper reads it, its buffer freed.
std::basic_string<BYTE> bytesOf(CRegistryKey& key, const wchar_t* name)
{
    BYTE* bytes = nullptr;
    DWORD length = 0;
    key.QueryValue(name, &bytes, length);
    EXPECT_NE(nullptr, bytes) << "a buffer even for no bytes";
    const std::basic_string<BYTE> result(bytes, length);
    std::free(bytes);
    return result;
}

DWORD errorOf(const std::function<void()>& action)
{
    try {
        action();
    } catch (CRegistryKey::Exception& e) {
        return e.GetError();
    }
    return ERROR_SUCCESS;
}

TEST_F(CRegistryKeyTest, AbsentValueThrowsFileNotFoundAndLeavesOutParametersAlone)
{
    CRegistryKey key = createTestKey();
    DWORD number = 42, length = 7;
    wchar_t* text = nullptr;
    BYTE* bytes = nullptr;
    EXPECT_EQ(static_cast<DWORD>(ERROR_FILE_NOT_FOUND), errorOf([&] { key.QueryValue(L"missing", number); }));
    EXPECT_EQ(static_cast<DWORD>(ERROR_FILE_NOT_FOUND), errorOf([&] { key.QueryValue(L"missing", &text); }));
    EXPECT_EQ(static_cast<DWORD>(ERROR_FILE_NOT_FOUND), errorOf([&] { key.QueryValue(L"missing", &bytes, length); }));
    EXPECT_EQ(static_cast<DWORD>(ERROR_FILE_NOT_FOUND), errorOf([&] { key.DeleteValue(L"missing"); }));
    EXPECT_EQ(42u, number);
    EXPECT_EQ(nullptr, text);
    EXPECT_EQ(nullptr, bytes);
    EXPECT_EQ(7u, length);
}

TEST_F(CRegistryKeyTest, ValuesComeBackWithTheirTypeNamesMatchInAnyCaseAndOtherTypesAreInvalid)
{
    CRegistryKey key = createTestKey();
    key.SetValue(L"Count", static_cast<DWORD>(0xFFFFFFFF), REG_DWORD);
    key.SetValue(L"Name", L"Caf\u00E9", REG_SZ);
    const BYTE raw[] = {0, 1, 2, 0xFF};
    key.SetValue(L"Raw", raw, sizeof(raw));

    DWORD number = 0;
    key.QueryValue(L"COUNT", number);
    EXPECT_EQ(0xFFFFFFFFu, number);
    wchar_t* text = nullptr;
    key.QueryValue(L"name", &text);
    ASSERT_NE(nullptr, text);
    EXPECT_EQ(std::wstring(L"Caf\u00E9"), text);
    std::free(text);
    EXPECT_EQ(std::basic_string<BYTE>(raw, sizeof(raw)), bytesOf(key, L"raw"));
    // Beyond the first guess of the read, and nothing at all: both come back whole.
    const std::basic_string<BYTE> large(5000, 0xA5);
    key.SetValue(L"Large", large.data(), static_cast<DWORD>(large.size()));
    key.SetValue(L"Empty", raw, 0);
    EXPECT_EQ(large, bytesOf(key, L"large"));
    EXPECT_TRUE(bytesOf(key, L"empty").empty());

    CRegistryKey::Value value = key.QueryValue(L"Name");
    EXPECT_EQ(static_cast<DWORD>(REG_SZ), value.Type());
    EXPECT_EQ(L"Caf\u00E9", value.AsString());
    EXPECT_EQ(L"4294967295", key.QueryValue(L"Count").AsString());

    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_DATA), errorOf([&] { key.QueryValue(L"Name", number); }));
    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_DATA), errorOf([&] { key.QueryValue(L"Count", &text); }));

    key.DeleteValue(L"NAME");
    EXPECT_EQ(static_cast<DWORD>(ERROR_FILE_NOT_FOUND), errorOf([&] { key.QueryValue(L"Name"); }));
}

TEST_F(CRegistryKeyTest, OpenNeverCreatesCreateOrOpenMakesTheWholePathAndReadOnlyRefusesWrites)
{
    CRegistryKey root(HKEY_LOCAL_MACHINE);
    EXPECT_THROW(root.OpenKey(L"Software\\ZetTest\\A\\B"), CRegistryKey::Exception);
    EXPECT_FALSE(root.HasSubkey(L"Software\\ZetTest\\A"));

    DWORD disposition = 0;
    root.CreateOrOpenKey(L"Software\\ZetTest\\A\\B", &disposition, L"", 0, KEY_ALL_ACCESS, 0);
    EXPECT_EQ(static_cast<DWORD>(REG_CREATED_NEW_KEY), disposition);
    root.CreateOrOpenKeyEx(L"SOFTWARE\\zettest\\a\\b", &disposition, L"", 0, KEY_ALL_ACCESS);
    EXPECT_EQ(static_cast<DWORD>(REG_OPENED_EXISTING_KEY), disposition);
    EXPECT_TRUE(root.HasSubkey(L"Software\\ZetTest\\A\\B"));

    CRegistryKey readOnly(HKEY_LOCAL_MACHINE, L"Software\\ZetTest\\A", KEY_READ);
    EXPECT_EQ(static_cast<DWORD>(ERROR_ACCESS_DENIED),
              errorOf([&] { readOnly.SetValue(L"x", static_cast<DWORD>(1), REG_DWORD); }));
}

TEST_F(CRegistryKeyTest, IterationVisitsEverySubkeyAndValueOnceWithItsCase)
{
    CRegistryKey key = createTestKey();
    EXPECT_TRUE(key.BeginSubkeyIteration() == key.EndSubkeyIteration());
    EXPECT_TRUE(key.BeginValueIteration() == key.EndValueIteration());

    const std::multiset<std::wstring> subkeys = {L"Alpha", L"beta", L"GAMMA", L"Lab_Net1"};
    for (const auto& name : subkeys)
        key.CreateOrOpenKeyEx(name.c_str(), 0, L"", 0, KEY_ALL_ACCESS).SetValue(L"Inside", L"x", REG_SZ);
    // A name longer than most, which a walk must still deliver whole.
    const std::multiset<std::wstring> values = {L"One", L"two", L"Home_8", L"home_0", std::wstring(300, L'v')};
    for (const auto& name : values)
        key.SetValue(name.c_str(), static_cast<DWORD>(1), REG_DWORD);

    std::multiset<std::wstring> seenSubkeys;
    for (auto it = key.BeginSubkeyIteration(); it != key.EndSubkeyIteration(); ++it) {
        seenSubkeys.insert(it.GetName());
        EXPECT_EQ(L"x", it.OpenKey(KEY_READ).QueryValue(L"Inside").AsString());
    }
    std::multiset<std::wstring> seenValues;
    for (auto it = key.BeginValueIteration(); it != key.EndValueIteration(); ++it)
        seenValues.insert(it.GetName());
    EXPECT_EQ(subkeys, seenSubkeys);
    EXPECT_EQ(values, seenValues);
}

TEST_F(CRegistryKeyTest, AMovedKeyIsClosedOnceAndStaysUsable)
{
    CRegistryKey first = createTestKey();
    CRegistryKey second(std::move(first));
    EXPECT_EQ(nullptr, first.GetHandle());
    second.SetValue(L"Still", static_cast<DWORD>(3), REG_DWORD);
    first = std::move(second);
    EXPECT_EQ(3u, first.QueryValue(L"Still").AsDWORD());
}

}  // namespace
