// Enumerating subkeys and values by index, and what RegQueryInfoKeyW tells of a key.
#include "zetsettings/platform/tests/RegistryTestKeys.h"

namespace zettest {
namespace {

class RegistryEnumeration : public RegistryKeyTest {
protected:
    void createSubkeys(const std::vector<std::wstring>& names)
    {
        for (const std::wstring& name : names)
            ASSERT_EQ(ERROR_SUCCESS, createKey(base.get(), name, key));
    }
};

std::vector<std::wstring> numberedNames(const std::wstring& stem, int count)
{
    std::vector<std::wstring> names;
    for (int i = 0; i < count; ++i)
        names.push_back(stem + std::to_wstring(i) + (i % 2 ? L"Odd" : L"even"));
    return names;
}

TEST_F(RegistryEnumeration, EverySubkeyAndValueComesOnceInItsOwnCaseWithItsData)
{
    const std::vector<std::wstring> names = numberedNames(L"Sub", 60);
    createSubkeys(names);
    for (size_t i = 0; i < names.size(); ++i)
        ASSERT_EQ(ERROR_SUCCESS, setDword(base.get(), names[i].c_str(), static_cast<DWORD>(i)));
    const std::vector<std::wstring> seen = subkeyNames(base.get());
    EXPECT_EQ(sorted(names), sorted(seen));
    EXPECT_EQ(seen, subkeyNames(base.get())) << "the order changed between two enumerations";

    // Each value's data, as the enumeration gives it, is its name's place in the list.
    std::vector<std::wstring> seenValues;
    std::wstring name;
    DWORD value = 0;
    for (DWORD index = 0; enumerateNumber(base.get(), index, name, value) == ERROR_SUCCESS; ++index) {
        seenValues.push_back(name);
        EXPECT_EQ(names.at(value), name);
    }
    EXPECT_EQ(sorted(names), sorted(seenValues));
}

TEST_F(RegistryEnumeration, LongNamesThatShareLongBeginningsAllCome)
{
    std::vector<std::wstring> keys, values;
    for (int i = 0; i < 12; ++i) {
        keys.push_back(std::wstring(245, L'k') + std::to_wstring(i));
        values.push_back(std::wstring(300 + 500 * (i % 3), L'v') + std::to_wstring(i));
    }
    values.push_back(std::wstring(16383, L'x'));
    createSubkeys(keys);
    for (const std::wstring& name : values)
        ASSERT_EQ(ERROR_SUCCESS, setDword(base.get(), name.c_str(), 1));

    EXPECT_EQ(sorted(keys), sorted(subkeyNames(base.get())));
    EXPECT_EQ(sorted(values), sorted(valueNames(base.get())));
    for (const std::wstring& name : keys)
        EXPECT_EQ(ERROR_SUCCESS, openKey(base.get(), std::wstring(245, L'K') + name.substr(245), key));
}

TEST_F(RegistryEnumeration, ShortBuffersGiveMoreData)
{
    createSubkeys({L"Seven77"});
    ASSERT_EQ(ERROR_SUCCESS, setString(base.get(), L"Five5", L"twelve chars"));
    wchar_t name[16];
    DWORD units = 7;  // no room for the terminator
    EXPECT_EQ(ERROR_MORE_DATA, RegEnumKeyExW(base.get(), 0, name, &units, nullptr, nullptr, nullptr, nullptr));
    units = 8;
    ASSERT_EQ(ERROR_SUCCESS, RegEnumKeyExW(base.get(), 0, name, &units, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(7u, units);
    EXPECT_EQ(std::wstring(L"Seven77"), std::wstring(name));

    units = 5;
    EXPECT_EQ(ERROR_MORE_DATA, RegEnumValueW(base.get(), 0, name, &units, nullptr, nullptr, nullptr, nullptr));
    wchar_t data[4];
    DWORD type = 0, size = sizeof(data);
    units = 6;
    EXPECT_EQ(ERROR_MORE_DATA, RegEnumValueW(base.get(), 0, name, &units, nullptr, &type,
                                             reinterpret_cast<BYTE*>(data), &size));
    EXPECT_EQ(13 * sizeof(wchar_t), size);
    EXPECT_EQ(static_cast<DWORD>(REG_SZ), type);
}

TEST_F(RegistryEnumeration, DeletingAtIndexZeroEmptiesTheKey)
{
    createSubkeys(numberedNames(L"Doomed", 30));
    wchar_t name[64];
    LONG status = ERROR_SUCCESS;
    int deleted = 0;
    for (DWORD units = 64; deleted <= 30 && (status = RegEnumKeyExW(base.get(), 0, name, &units, nullptr, nullptr,
                                                                    nullptr, nullptr)) == ERROR_SUCCESS;
         units = 64, ++deleted)
        ASSERT_EQ(ERROR_SUCCESS, RegDeleteKeyW(base.get(), name));
    EXPECT_EQ(ERROR_NO_MORE_ITEMS, status);
    EXPECT_EQ(30, deleted);
}

TEST_F(RegistryEnumeration, KeyInformationCountsAndMeasuresInCharacters)
{
    createSubkeys({L"A", L"Longest11ch", L"Mid"});
    ASSERT_EQ(ERROR_SUCCESS, setDword(base.get(), L"Number", 1));
    ASSERT_EQ(ERROR_SUCCESS, setString(base.get(), L"TheLongestName", L"0123456789"));  // 11 with terminator
    const std::vector<BYTE> bytes(20, 1);
    ASSERT_EQ(ERROR_SUCCESS, RegSetValueExW(base.get(), L"Bytes", 0, REG_BINARY, bytes.data(), 20));

    DWORD subkeys = 0, longestSubkey = 0, longestClass = 9, values = 0, longestValueName = 0, largestData = 0;
    wchar_t className[8] = L"x";
    DWORD classUnits = 8;
    FILETIME written = {0, 0};
    ASSERT_EQ(ERROR_SUCCESS, RegQueryInfoKeyW(base.get(), className, &classUnits, nullptr, &subkeys, &longestSubkey,
                                              &longestClass, &values, &longestValueName, &largestData, nullptr,
                                              &written));
    EXPECT_EQ(3u, subkeys);
    EXPECT_EQ(11u, longestSubkey);
    EXPECT_EQ(3u, values);
    EXPECT_EQ(14u, longestValueName);
    EXPECT_EQ(std::max<DWORD>(20, 11 * sizeof(wchar_t)), largestData);
    EXPECT_EQ(0u, classUnits);
    EXPECT_EQ(0u, longestClass);
    EXPECT_NE(0u, written.dwHighDateTime);
}

}  // namespace
}  // namespace zettest
