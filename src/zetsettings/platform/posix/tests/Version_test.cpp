// The version the portable layer reports: the one the emulated machine is set to in its store,
// or one of no known class when nothing readable is there.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "support/TestRegistry.h"
#include "zetsettings/platform/posix/Win32Portable.h"
#include "zetsettings/platform/tests/RegistryTestKeys.h"

namespace {

const wchar_t kVersionKey[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";

class VersionTest : public zettest::RegistryTest {
protected:
    void setMachine(const wchar_t* version, const wchar_t* servicePack, const wchar_t* build)
    {
        zettest::ScopedKey key;
        ASSERT_EQ(ERROR_SUCCESS, zettest::createKey(HKEY_LOCAL_MACHINE, kVersionKey, key));
        EXPECT_EQ(ERROR_SUCCESS, zettest::setString(key.get(), L"CurrentVersion", version));
        EXPECT_EQ(ERROR_SUCCESS, zettest::setString(key.get(), L"CurrentBuildNumber", build));
        if (servicePack) {
            EXPECT_EQ(ERROR_SUCCESS, zettest::setString(key.get(), L"CSDVersion", servicePack));
        }
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

TEST_F(VersionTest, TheMachineIsReportedAsSetAndAnythingUnreadableAsNoKnownClass)
{
    const struct {
        const wchar_t* version;
        const wchar_t* servicePack;
        DWORD major, minor, build;
        WORD servicePackMajor;
    } cases[] = {
        {nullptr, nullptr, 6, 2, 9200, 0},  // nothing set
        {L"5.0", L"Service Pack 4", 5, 0, 2195, 4},
        {L"5.1", nullptr, 5, 1, 2600, 0},
        {L"5.1", L"Service Pack 2", 5, 1, 2600, 2},
        {L"5.1", L"Service Pack 3", 5, 1, 2600, 3},
        {L"5.1", L"", 5, 1, 2600, 0},
    };
    for (const auto& c : cases) {
        zettest::TestRegistry fresh;
        if (c.version)
            setMachine(c.version, c.servicePack, std::to_wstring(c.build).c_str());
        const OSVERSIONINFOEXW info = query();
        EXPECT_EQ(c.major, info.dwMajorVersion);
        EXPECT_EQ(c.minor, info.dwMinorVersion);
        EXPECT_EQ(c.build, info.dwBuildNumber);
        EXPECT_EQ(static_cast<DWORD>(VER_PLATFORM_WIN32_NT), info.dwPlatformId);
        EXPECT_EQ(c.servicePackMajor, info.wServicePackMajor);
        const std::wstring servicePack = c.servicePack ? c.servicePack : L"";
        EXPECT_EQ(std::u16string(servicePack.begin(), servicePack.end()), std::u16string(info.szCSDVersion));
    }
    for (const wchar_t* bad : {L"", L"5", L"5.", L".1", L"5.1.0", L"five.one", L"5.1 "}) {
        setMachine(bad, L"Service Pack 2", L"2600");
        const OSVERSIONINFOEXW info = query();
        EXPECT_EQ(6u, info.dwMajorVersion) << std::wstring(bad).size();
        EXPECT_EQ(0, info.wServicePackMajor);
    }
}

TEST_F(VersionTest, TheBasicRecordLeavesTheExtendedFieldsAloneAndOtherSizesAreRefused)
{
    setMachine(L"5.1", L"Service Pack 2", L"2600");
    OSVERSIONINFOEXW info;
    std::memset(&info, 0xAB, sizeof(info));
    info.dwOSVersionInfoSize = sizeof(OSVERSIONINFOW);
    ASSERT_TRUE(GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&info)));
    EXPECT_EQ(5u, info.dwMajorVersion);
    EXPECT_EQ(0xABAB, info.wServicePackMajor);

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
