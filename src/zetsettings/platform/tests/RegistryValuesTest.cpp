// Values of the registry as Windows has them: absence, types, names, sizes, text.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "support/TestRegistry.h"
#include "zetsettings/platform/Win32.h"
#include "zetsettings/platform/tests/RegistryTestKeys.h"

namespace zettest {
namespace {

class RegistryValues : public RegistryTest {
protected:
    void SetUp() override { key = testKey(L"Values"); }

    LONG setBytes(const wchar_t* name, DWORD type, const std::vector<BYTE>& data)
    {
        return RegSetValueExW(key.get(), name, 0, type, data.data(), static_cast<DWORD>(data.size()));
    }

    ScopedKey key;
};

TEST_F(RegistryValues, WhatWasNeverSetIsNotFound)
{
    DWORD value = 0;
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, getDword(key.get(), L"Never", value));
    ASSERT_EQ(ERROR_SUCCESS, setDword(key.get(), L"Other", 1));
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, getDword(key.get(), L"Never", value));
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, getDword(key.get(), nullptr, value));
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, RegDeleteValueW(key.get(), L"Never"));
}

TEST_F(RegistryValues, TypeAndBytesComeBackAsGiven)
{
    const std::vector<BYTE> bytes = {0x00, 0xFF, 0x10, 0x00, 0x7F};
    const uint64_t quad = 0x0123456789ABCDEFull;
    std::vector<BYTE> quadBytes(sizeof(quad));
    std::memcpy(quadBytes.data(), &quad, sizeof(quad));
    ASSERT_EQ(ERROR_SUCCESS, setBytes(L"Binary", REG_BINARY, bytes));
    ASSERT_EQ(ERROR_SUCCESS, setBytes(L"Quad", REG_QWORD, quadBytes));
    ASSERT_EQ(ERROR_SUCCESS, setBytes(L"Custom", 0x1234, bytes));
    ASSERT_EQ(ERROR_SUCCESS, setBytes(L"Empty", REG_NONE, {}));

    struct Expected {
        const wchar_t* name;
        DWORD type;
        std::vector<BYTE> data;
    };
    for (const Expected& expected : {Expected{L"Binary", REG_BINARY, bytes}, Expected{L"Quad", REG_QWORD, quadBytes},
                                     Expected{L"Custom", 0x1234, bytes}, Expected{L"Empty", REG_NONE, {}}}) {
        std::vector<BYTE> data(64, 0xEE);
        DWORD type = 0;
        DWORD size = static_cast<DWORD>(data.size());
        ASSERT_EQ(ERROR_SUCCESS, RegQueryValueExW(key.get(), expected.name, nullptr, &type, data.data(), &size));
        EXPECT_EQ(expected.type, type);
        data.resize(size);
        EXPECT_EQ(expected.data, data);
    }
}

TEST_F(RegistryValues, AValueTakesTheTypeOfItsLastWrite)
{
    ASSERT_EQ(ERROR_SUCCESS, setDword(key.get(), L"Changing", 3));
    ASSERT_EQ(ERROR_SUCCESS, setString(key.get(), L"Changing", L"three"));
    std::wstring text;
    DWORD type = 0;
    ASSERT_EQ(ERROR_SUCCESS, getWide(key.get(), L"Changing", text, &type));
    EXPECT_EQ(static_cast<DWORD>(REG_SZ), type);
    EXPECT_EQ(std::wstring(L"three", 6), text);
}

TEST_F(RegistryValues, NamesIgnoreCaseButKeepTheCaseOfTheFirstWrite)
{
    ASSERT_EQ(ERROR_SUCCESS, setDword(key.get(), L"Foo", 1));
    DWORD value = 0;
    ASSERT_EQ(ERROR_SUCCESS, getDword(key.get(), L"FOO", value));
    EXPECT_EQ(1u, value);
    ASSERT_EQ(ERROR_SUCCESS, setDword(key.get(), L"fOO", 2));
    ASSERT_EQ(ERROR_SUCCESS, getDword(key.get(), L"foo", value));
    EXPECT_EQ(2u, value);
    EXPECT_EQ(std::vector<std::wstring>{L"Foo"}, valueNames(key.get()));

    ASSERT_EQ(ERROR_SUCCESS, setDword(key.get(), L"\u00e9t\u00e9", 3));  // été
    EXPECT_EQ(ERROR_SUCCESS, getDword(key.get(), L"\u00c9T\u00c9", value));
    EXPECT_EQ(ERROR_SUCCESS, RegDeleteValueW(key.get(), L"FOO"));
    EXPECT_EQ(std::vector<std::wstring>{L"\u00e9t\u00e9"}, valueNames(key.get()));
}

TEST_F(RegistryValues, TheDefaultValueHasTheEmptyName)
{
    ASSERT_EQ(ERROR_SUCCESS, setDword(key.get(), nullptr, 11));
    DWORD value = 0;
    EXPECT_EQ(ERROR_SUCCESS, getDword(key.get(), L"", value));
    EXPECT_EQ(11u, value);
    ASSERT_EQ(ERROR_SUCCESS, setDword(key.get(), L"", 12));
    EXPECT_EQ(ERROR_SUCCESS, getDword(key.get(), nullptr, value));
    EXPECT_EQ(12u, value);
    EXPECT_EQ(std::vector<std::wstring>{L""}, valueNames(key.get()));
}

TEST_F(RegistryValues, SizesAreAskedWithoutABufferAndShortBuffersAreRefused)
{
    const std::vector<BYTE> bytes(100, 0x5A);
    ASSERT_EQ(ERROR_SUCCESS, setBytes(L"Hundred", REG_BINARY, bytes));

    DWORD type = 0;
    DWORD size = 0;
    EXPECT_EQ(ERROR_SUCCESS, RegQueryValueExW(key.get(), L"Hundred", nullptr, &type, nullptr, &size));
    EXPECT_EQ(100u, size);
    EXPECT_EQ(static_cast<DWORD>(REG_BINARY), type);

    std::vector<BYTE> data(99);
    size = 99;
    type = 0;
    EXPECT_EQ(ERROR_MORE_DATA, RegQueryValueExW(key.get(), L"Hundred", nullptr, &type, data.data(), &size));
    EXPECT_EQ(100u, size);
    EXPECT_EQ(static_cast<DWORD>(REG_BINARY), type);

    data.resize(100);
    EXPECT_EQ(ERROR_SUCCESS, RegQueryValueExW(key.get(), L"Hundred", nullptr, nullptr, data.data(), &size));
    EXPECT_EQ(bytes, data);
    EXPECT_EQ(ERROR_INVALID_PARAMETER, RegQueryValueExW(key.get(), L"Hundred", nullptr, nullptr, data.data(), nullptr));
    EXPECT_EQ(ERROR_SUCCESS, RegQueryValueExW(key.get(), L"Hundred", nullptr, &type, nullptr, nullptr));
}

TEST_F(RegistryValues, TextComesBackInTheCallersCharacters)
{
    // Two characters beyond the Basic Multilingual Plane, and one inside it.
    const std::wstring text = L"Gr\u00fc\u00dfe \U0001F600 \U00010437!";
    ASSERT_EQ(ERROR_SUCCESS, setString(key.get(), L"Text", text));
    std::wstring back;
    DWORD type = 0;
    ASSERT_EQ(ERROR_SUCCESS, getWide(key.get(), L"Text", back, &type));
    EXPECT_EQ(static_cast<DWORD>(REG_SZ), type);
    EXPECT_EQ(std::wstring(text.c_str(), text.size() + 1), back);

    DWORD size = 0;
    ASSERT_EQ(ERROR_SUCCESS, RegQueryValueExW(key.get(), L"Text", nullptr, nullptr, nullptr, &size));
    EXPECT_EQ((text.size() + 1) * sizeof(wchar_t), size);

    const std::wstring expandable = L"%SystemRoot%\\x";
    ASSERT_EQ(ERROR_SUCCESS, setString(key.get(), L"Expand", expandable, REG_EXPAND_SZ));
    ASSERT_EQ(ERROR_SUCCESS, getWide(key.get(), L"Expand", back, &type));
    EXPECT_EQ(static_cast<DWORD>(REG_EXPAND_SZ), type);
    EXPECT_EQ(std::wstring(expandable.c_str(), expandable.size() + 1), back);
}

TEST_F(RegistryValues, MultiStringsKeepEveryTerminator)
{
    // The literal's own terminator ends the list.
    const wchar_t list[] = L"first\0zweite \U0001F600\0";
    const std::wstring multi(list, sizeof(list) / sizeof(wchar_t));
    ASSERT_EQ(ERROR_SUCCESS, RegSetValueExW(key.get(), L"Multi", 0, REG_MULTI_SZ,
                                            reinterpret_cast<const BYTE*>(multi.data()),
                                            static_cast<DWORD>(multi.size() * sizeof(wchar_t))));
    std::wstring back;
    DWORD type = 0;
    ASSERT_EQ(ERROR_SUCCESS, getWide(key.get(), L"Multi", back, &type));
    EXPECT_EQ(static_cast<DWORD>(REG_MULTI_SZ), type);
    EXPECT_EQ(multi, back);
}

TEST_F(RegistryValues, TextStoredWithoutTerminatorGetsOneWhereThereIsRoom)
{
    const wchar_t given[] = L"abcd";
    // Three characters: the fourth, not a terminator, follows them in memory.
    ASSERT_EQ(ERROR_SUCCESS, RegSetValueExW(key.get(), L"Bare", 0, REG_SZ, reinterpret_cast<const BYTE*>(given),
                                            3 * sizeof(wchar_t)));
    wchar_t buffer[8];
    std::fill(buffer, buffer + 8, L'x');
    DWORD size = sizeof(buffer);
    ASSERT_EQ(ERROR_SUCCESS, RegQueryValueExW(key.get(), L"Bare", nullptr, nullptr, reinterpret_cast<BYTE*>(buffer),
                                              &size));
    EXPECT_EQ(3 * sizeof(wchar_t), size);
    EXPECT_EQ(std::wstring(L"abc"), std::wstring(buffer));
}

TEST_F(RegistryValues, ValueNamesOf16383UnitsAreFineAndLongerOnesRefused)
{
    const std::wstring longest(16383, L'v');
    ASSERT_EQ(ERROR_SUCCESS, setDword(key.get(), longest.c_str(), 1));
    DWORD value = 0;
    EXPECT_EQ(ERROR_SUCCESS, getDword(key.get(), std::wstring(16383, L'V').c_str(), value));
    EXPECT_EQ(std::vector<std::wstring>{longest}, valueNames(key.get()));

    const std::wstring tooLong(16384, L'w');
    EXPECT_EQ(ERROR_INVALID_PARAMETER, setDword(key.get(), tooLong.c_str(), 1));
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, getDword(key.get(), tooLong.c_str(), value));
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, RegDeleteValueW(key.get(), tooLong.c_str()));
    EXPECT_EQ(1u, valueNames(key.get()).size());
}

TEST_F(RegistryValues, ADeletedValueIsGone)
{
    ASSERT_EQ(ERROR_SUCCESS, setDword(key.get(), L"Short", 1));
    ASSERT_EQ(ERROR_SUCCESS, setDword(key.get(), L"Stays", 2));
    EXPECT_EQ(ERROR_SUCCESS, RegDeleteValueW(key.get(), L"SHORT"));
    DWORD value = 0;
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, getDword(key.get(), L"Short", value));
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, RegDeleteValueW(key.get(), L"Short"));
    EXPECT_EQ(ERROR_SUCCESS, getDword(key.get(), L"Stays", value));
}

}  // namespace
}  // namespace zettest
