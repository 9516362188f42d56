// Values of the registry as Windows has them: absence, types, names, sizes, text.
#include "zetsettings/platform/tests/RegistryTestKeys.h"

namespace zettest {
namespace {

using RegistryValues = RegistryKeyTest;

// The caller's bytes of wide text, its terminators included.
std::vector<BYTE> textBytes(const std::wstring& text)
{
    const BYTE* bytes = reinterpret_cast<const BYTE*>(text.c_str());
    return std::vector<BYTE>(bytes, bytes + (text.size() + 1) * sizeof(wchar_t));
}

TEST_F(RegistryValues, WhatWasNeverSetOrWasDeletedIsNotFound)
{
    DWORD value = 0;
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, getDword(base.get(), L"Never", value));
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, getDword(base.get(), nullptr, value));
    ASSERT_EQ(ERROR_SUCCESS, setDword(base.get(), L"Short", 1));
    ASSERT_EQ(ERROR_SUCCESS, setDword(base.get(), L"Stays", 2));
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, getDword(base.get(), L"Never", value));
    EXPECT_EQ(ERROR_SUCCESS, RegDeleteValueW(base.get(), L"SHORT"));
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, getDword(base.get(), L"Short", value));
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, RegDeleteValueW(base.get(), L"Short"));
    EXPECT_EQ(ERROR_SUCCESS, getDword(base.get(), L"Stays", value));
}

TEST_F(RegistryValues, TypeAndBytesComeBackAsLastWritten)
{
    // Two characters beyond the Basic Multilingual Plane, and one inside it.
    const std::wstring text = L"Gr\u00fc\u00dfe \U0001F600 \U00010437!";
    const wchar_t list[] = L"first\0zweite \U0001F600\0";  // the literal's own terminator ends the list
    const struct {
        const wchar_t* name;
        DWORD type;
        std::vector<BYTE> data;
    } values[] = {
        {L"Binary", REG_BINARY, {0x00, 0xFF, 0x10, 0x00, 0x7F}},
        {L"Quad", REG_QWORD, {0xEF, 0xCD, 0xAB, 0x89, 0x67, 0x45, 0x23, 0x01}},
        {L"Custom", 0x1234, {0x01, 0x02}},
        {L"Empty", REG_NONE, {}},
        {L"Text", REG_SZ, textBytes(text)},
        {L"Expand", REG_EXPAND_SZ, textBytes(L"%SystemRoot%\\x")},
        {L"Multi", REG_MULTI_SZ, textBytes(std::wstring(list, sizeof(list) / sizeof(wchar_t) - 1))},
    };
    ASSERT_EQ(ERROR_SUCCESS, setDword(base.get(), L"Text", 3));  // then rewritten with another type
    for (const auto& value : values)
        ASSERT_EQ(ERROR_SUCCESS, RegSetValueExW(base.get(), value.name, 0, value.type, value.data.data(),
                                                static_cast<DWORD>(value.data.size())));
    for (const auto& value : values) {
        std::vector<BYTE> data(256, 0xEE);
        DWORD type = 0;
        DWORD size = static_cast<DWORD>(data.size());
        ASSERT_EQ(ERROR_SUCCESS, RegQueryValueExW(base.get(), value.name, nullptr, &type, data.data(), &size));
        EXPECT_EQ(value.type, type);
        data.resize(size);
        EXPECT_EQ(value.data, data) << value.name;
    }
}

TEST_F(RegistryValues, NamesIgnoreCaseKeepTheCaseOfTheFirstWriteAndTheDefaultIsEmpty)
{
    ASSERT_EQ(ERROR_SUCCESS, setDword(base.get(), L"Foo", 1));
    ASSERT_EQ(ERROR_SUCCESS, setDword(base.get(), L"fOO", 2));
    ASSERT_EQ(ERROR_SUCCESS, setDword(base.get(), L"\u00e9t\u00e9", 3));
    ASSERT_EQ(ERROR_SUCCESS, setDword(base.get(), nullptr, 11));
    ASSERT_EQ(ERROR_SUCCESS, setDword(base.get(), L"", 12));
    EXPECT_EQ(2u, numberAt(base.get(), L"foo"));
    EXPECT_EQ(3u, numberAt(base.get(), L"\u00c9T\u00c9"));
    EXPECT_EQ(12u, numberAt(base.get(), nullptr));
    EXPECT_EQ((std::vector<std::wstring>{L"", L"Foo", L"\u00e9t\u00e9"}), sorted(valueNames(base.get())));
}

TEST_F(RegistryValues, SizesAreAskedWithoutABufferAndShortBuffersAreRefused)
{
    const std::vector<BYTE> bytes(100, 0x5A);
    ASSERT_EQ(ERROR_SUCCESS, RegSetValueExW(base.get(), L"Hundred", 0, REG_BINARY, bytes.data(), 100));

    DWORD type = 0, size = 0;
    EXPECT_EQ(ERROR_SUCCESS, RegQueryValueExW(base.get(), L"Hundred", nullptr, &type, nullptr, &size));
    EXPECT_EQ(100u, size);
    std::vector<BYTE> data(99);
    size = 99;
    type = 0;
    EXPECT_EQ(ERROR_MORE_DATA, RegQueryValueExW(base.get(), L"Hundred", nullptr, &type, data.data(), &size));
    EXPECT_EQ(100u, size);
    EXPECT_EQ(static_cast<DWORD>(REG_BINARY), type);

    EXPECT_EQ(ERROR_INVALID_PARAMETER, RegQueryValueExW(base.get(), L"Hundred", nullptr, nullptr, data.data(), nullptr));
    EXPECT_EQ(ERROR_SUCCESS, RegQueryValueExW(base.get(), L"Hundred", nullptr, &type, nullptr, nullptr));
}

TEST_F(RegistryValues, TextStoredWithoutTerminatorGetsOneWhereThereIsRoom)
{
    const wchar_t given[] = L"abcd";
    // Three characters: the fourth, not a terminator, follows them in memory.
    ASSERT_EQ(ERROR_SUCCESS, RegSetValueExW(base.get(), L"Bare", 0, REG_SZ, reinterpret_cast<const BYTE*>(given),
                                            3 * sizeof(wchar_t)));
    wchar_t buffer[8];
    std::fill(buffer, buffer + 8, L'x');
    DWORD size = sizeof(buffer);
    ASSERT_EQ(ERROR_SUCCESS, RegQueryValueExW(base.get(), L"Bare", nullptr, nullptr, reinterpret_cast<BYTE*>(buffer),
                                              &size));
    EXPECT_EQ(3 * sizeof(wchar_t), size);
    EXPECT_EQ(std::wstring(L"abc"), std::wstring(buffer));
}

TEST_F(RegistryValues, ValueNamesOf16383UnitsAreFineAndLongerOnesRefused)
{
    const std::wstring longest(16383, L'v');
    ASSERT_EQ(ERROR_SUCCESS, setDword(base.get(), longest.c_str(), 1));
    DWORD value = 0;
    EXPECT_EQ(ERROR_SUCCESS, getDword(base.get(), std::wstring(16383, L'V').c_str(), value));

    const std::wstring tooLong(16384, L'w');
    EXPECT_EQ(ERROR_INVALID_PARAMETER, setDword(base.get(), tooLong.c_str(), 1));
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, getDword(base.get(), tooLong.c_str(), value));
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, RegDeleteValueW(base.get(), tooLong.c_str()));
    EXPECT_EQ(std::vector<std::wstring>{longest}, valueNames(base.get()));
}

}  // namespace
}  // namespace zettest
