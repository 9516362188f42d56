#include <gtest/gtest.h>

#include <cstring>
#include <cwchar>
#include <string>

#include "support/TestRegistry.h"
#include "zetsettings/platform/posix/Win32Portable.h"

namespace {

const wchar_t kVersionKey[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";

class VersionTest : public zettest::RegistryTest {
protected:
    void setText(const wchar_t* name, const wchar_t* text)
    {
        HKEY key = nullptr;
        ASSERT_EQ(ERROR_SUCCESS, RegCreateKeyExW(HKEY_LOCAL_MACHINE, kVersionKey, 0, nullptr, 0, KEY_ALL_ACCESS,
                                                 nullptr, &key, nullptr));
        const DWORD bytes = static_cast<DWORD>((std::wcslen(text) + 1) * sizeof(wchar_t));
        EXPECT_EQ(ERROR_SUCCESS, RegSetValueExW(key, name, 0, REG_SZ, reinterpret_cast<const BYTE*>(text), bytes));
        RegCloseKey(key);
    }

    void setMachine(const wchar_t* version, const wchar_t* servicePack, const wchar_t* build)
    {
        setText(L"CurrentVersion", version);
        if (servicePack)
            setText(L"CSDVersion", servicePack);
        if (build)
            setText(L"CurrentBuildNumber", build);
    }

    static OSVERSIONINFOEXW query()
    {
        OSVERSIONINFOEXW info;
        std::memset(&info, 0, sizeof(info));
        info.dwOSVersionInfoSize = sizeof(info);
        EXPECT_TRUE(GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&info)));
        return info;
    }
};

TEST_F(VersionTest, AMachineSetToNothingReportsAVersionOfNoKnownClass)
{
    const OSVERSIONINFOEXW info = query();
    EXPECT_EQ(6u, info.dwMajorVersion);
    EXPECT_EQ(2u, info.dwMinorVersion);
    EXPECT_EQ(9200u, info.dwBuildNumber);
    EXPECT_EQ(static_cast<DWORD>(VER_PLATFORM_WIN32_NT), info.dwPlatformId);
    EXPECT_EQ(0, info.wServicePackMajor);
    EXPECT_EQ(u"", std::u16string(info.szCSDVersion));
}

TEST_F(VersionTest, Windows2000IsReportedAsSet)
{
    setMachine(L"5.0", L"Service Pack 4", L"2195");
    const OSVERSIONINFOEXW info = query();
    EXPECT_EQ(5u, info.dwMajorVersion);
    EXPECT_EQ(0u, info.dwMinorVersion);
    EXPECT_EQ(2195u, info.dwBuildNumber);
    EXPECT_EQ(4, info.wServicePackMajor);
    EXPECT_EQ(u"Service Pack 4", std::u16string(info.szCSDVersion));
}

TEST_F(VersionTest, XpServicePacksAreTold)
{
    setMachine(L"5.1", nullptr, L"2600");
    EXPECT_EQ(0, query().wServicePackMajor);
    EXPECT_EQ(1u, query().dwMinorVersion);
    setText(L"CSDVersion", L"Service Pack 2");
    EXPECT_EQ(2, query().wServicePackMajor);
    EXPECT_EQ(u"Service Pack 2", std::u16string(query().szCSDVersion));
    setText(L"CSDVersion", L"Service Pack 3");
    EXPECT_EQ(3, query().wServicePackMajor);
    setText(L"CSDVersion", L"");
    EXPECT_EQ(0, query().wServicePackMajor);
}

TEST_F(VersionTest, AnUnreadableVersionCountsAsNothingSet)
{
    for (const wchar_t* bad : {L"", L"5", L"5.", L".1", L"5.1.0", L"five.one", L"5.1 "}) {
        setMachine(bad, L"Service Pack 2", L"2600");
        const OSVERSIONINFOEXW info = query();
        EXPECT_EQ(6u, info.dwMajorVersion) << std::wstring(bad).size();
        EXPECT_EQ(0, info.wServicePackMajor);
    }
}

TEST_F(VersionTest, TheBasicRecordLeavesTheExtendedFieldsAlone)
{
    setMachine(L"5.1", L"Service Pack 2", L"2600");
    OSVERSIONINFOEXW info;
    std::memset(&info, 0xAB, sizeof(info));
    info.dwOSVersionInfoSize = sizeof(OSVERSIONINFOW);
    ASSERT_TRUE(GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&info)));
    EXPECT_EQ(5u, info.dwMajorVersion);
    EXPECT_EQ(0xABAB, info.wServicePackMajor);
}

TEST_F(VersionTest, ARecordOfAnyOtherSizeIsRefused)
{
    OSVERSIONINFOEXW info;
    std::memset(&info, 0, sizeof(info));
    for (DWORD size : {DWORD(0), DWORD(sizeof(OSVERSIONINFOW) - 1), DWORD(sizeof(OSVERSIONINFOEXW) + 1)}) {
        info.dwOSVersionInfoSize = size;
        SetLastError(0);
        EXPECT_FALSE(GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&info)));
        EXPECT_EQ(static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER), GetLastError());
        EXPECT_EQ(0u, info.dwMajorVersion);
    }
}

}  // namespace
