// Processes and the portable store: a forked child, and a process that may not write.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "support/ChildProcess.h"
#include "support/ChildScenario.h"
#include "support/ProcessRights.h"
#include "support/TestRegistry.h"
#include "zetsettings/platform/posix/Win32Portable.h"
#include "zetsettings/platform/tests/RegistryTestKeys.h"

namespace zettest {
namespace {

const wchar_t kKeyPath[] = L"Software\\ZetPortable\\Processes";
const DWORD kBlobWords = 1024;

// Every word of the blob is the same: the writer's round.
LONG writeBlob(HKEY key, DWORD round)
{
    const std::vector<DWORD> words(kBlobWords, round);
    return RegSetValueExW(key, L"Blob", 0, REG_BINARY, reinterpret_cast<const BYTE*>(words.data()),
                          static_cast<DWORD>(words.size() * sizeof(DWORD)));
}

bool blobIsWhole(HKEY key)
{
    std::vector<DWORD> words(kBlobWords);
    DWORD size = static_cast<DWORD>(words.size() * sizeof(DWORD));
    if (RegQueryValueExW(key, L"Blob", nullptr, nullptr, reinterpret_cast<BYTE*>(words.data()), &size) !=
            ERROR_SUCCESS ||
        size != kBlobWords * sizeof(DWORD))
        return false;
    for (DWORD word : words) {
        if (word != words[0])
            return false;
    }
    return true;
}

// args: how many reads of the blob to check. Exits with the number of the first broken promise.
ZET_CHILD_SCENARIO(portable_unprivileged_reader)
{
    if (!becomeUnprivileged())
        return 100;
    ScopedKey key;
    if (openKey(HKEY_LOCAL_MACHINE, kKeyPath, key, KEY_ALL_ACCESS) != ERROR_ACCESS_DENIED)
        return 1;
    if (createKey(HKEY_LOCAL_MACHINE, std::wstring(kKeyPath) + L"\\New", key, KEY_READ) != ERROR_ACCESS_DENIED)
        return 2;
    if (setDword(HKEY_LOCAL_MACHINE, L"Root", 1) != ERROR_ACCESS_DENIED)
        return 3;
    if (openKey(HKEY_LOCAL_MACHINE, kKeyPath, key, KEY_READ) != ERROR_SUCCESS)
        return 4;
    DWORD value = 0;
    if (getDword(key.get(), L"Readable", value) != ERROR_SUCCESS || value != 42)
        return 5;
    for (int i = std::stoi(args.at(0)); i > 0; --i) {
        if (!blobIsWhole(key.get()))
            return 6;
    }
    return 0;
}

using PortableProcesses = RegistryTest;

TEST_F(PortableProcesses, AProcessThatMayNotWriteTheStoreReadsButIsRefusedWrites)
{
    ScopedKey key;
    ASSERT_EQ(ERROR_SUCCESS, createKey(HKEY_LOCAL_MACHINE, kKeyPath, key));
    ASSERT_EQ(ERROR_SUCCESS, setDword(key.get(), L"Readable", 42));
    ASSERT_EQ(ERROR_SUCCESS, writeBlob(key.get(), 0));
    if (!canDropPrivileges())
        GTEST_SKIP() << "only root can start a process of another user";

    std::atomic<bool> stop(false);
    std::atomic<DWORD> rounds(0);
    std::thread writer([&] {
        for (DWORD round = 1; !stop; ++round) {
            if (writeBlob(key.get(), round) == ERROR_SUCCESS)
                rounds = round;
        }
    });
    const int result = runChild("portable_unprivileged_reader", {"3000"});
    stop = true;
    writer.join();
    EXPECT_EQ(0, result);
    EXPECT_GT(rounds.load(), 0u) << "nothing was written while the other process read";
}

TEST_F(PortableProcesses, AForkedChildWorksOnItsOwnAndLeavesTheParentWhole)
{
    ScopedKey key;
    ASSERT_EQ(ERROR_SUCCESS, createKey(HKEY_LOCAL_MACHINE, kKeyPath, key));
    ASSERT_EQ(ERROR_SUCCESS, setDword(key.get(), L"Parent", 1));

    const pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        int failures = 0;
        DWORD value = 0;
        failures |= getDword(key.get(), L"Parent", value) != ERROR_SUCCESS || value != 1;
        failures |= (setDword(key.get(), L"ThroughInherited", 2) != ERROR_SUCCESS) << 1;
        HKEY own = nullptr;
        failures |= (RegOpenKeyExW(HKEY_LOCAL_MACHINE, kKeyPath, 0, KEY_ALL_ACCESS, &own) != ERROR_SUCCESS) << 2;
        failures |= (setDword(own, L"ThroughOwn", 3) != ERROR_SUCCESS) << 3;
        RegCloseKey(own);
        _exit(failures);
    }
    int status = 0;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    ASSERT_TRUE(WIFEXITED(status));
    EXPECT_EQ(0, WEXITSTATUS(status));

    DWORD value = 0;
    EXPECT_EQ(ERROR_SUCCESS, getDword(key.get(), L"ThroughInherited", value));
    EXPECT_EQ(2u, value);
    EXPECT_EQ(ERROR_SUCCESS, getDword(key.get(), L"ThroughOwn", value));
    EXPECT_EQ(3u, value);
    // The parent's environment and locks are untouched: it writes, and so do others.
    EXPECT_EQ(ERROR_SUCCESS, setDword(key.get(), L"ParentAfter", 4));
    ASSERT_EQ(0, runChild("portable_write_blobs", {"AfterFork", "1", "4"}));
    ScopedKey written;
    ASSERT_EQ(ERROR_SUCCESS, openKey(HKEY_LOCAL_MACHINE, L"Software\\ZetPortable", written, KEY_READ));
    DWORD size = 0;
    EXPECT_EQ(ERROR_SUCCESS, RegQueryValueExW(written.get(), L"AfterFork0", nullptr, nullptr, nullptr, &size));
    EXPECT_EQ(4u, size);
}

}  // namespace
}  // namespace zettest
