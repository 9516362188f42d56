#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <set>
#include <thread>

#include "support/ChildProcess.h"
#include "support/ChildScenario.h"
#include "support/TestRegistry.h"
#include "zetsettings/components/tests/ProcessSignals.h"
#include "zetsettings/platform/posix/LockFile.h"
#include "zetsettings/platform/posix/Win32Portable.h"

namespace {

namespace fs = std::filesystem;
using zet::portable::LockFile;
using zettest::SignalDirectory;

std::set<std::string> filesIn(const std::string& directory)
{
    std::set<std::string> names;
    std::error_code ignored;
    for (const auto& entry : fs::directory_iterator(directory, ignored))
        names.insert(entry.path().filename().string());
    return names;
}

// Runs `body` in a forked copy of this process (no exec) and returns its exit code.
template <typename Body>
int inForkedChild(Body body)
{
    const pid_t pid = fork();
    if (pid == 0)
        _exit(body());
    int status = 0;
    waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

// A named mutex handle that closes itself.
class Handle {
public:
    explicit Handle(const std::wstring& name, BOOL initialOwner = FALSE)
        : m_handle(CreateMutexW(nullptr, initialOwner, name.empty() ? nullptr : name.c_str())),
          m_error(GetLastError())
    {
    }
    ~Handle()
    {
        if (m_handle)
            CloseHandle(m_handle);
    }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;

    HANDLE get() const { return m_handle; }
    DWORD createError() const { return m_error; }
    HANDLE release()
    {
        HANDLE handle = m_handle;
        m_handle = nullptr;
        return handle;
    }

private:
    HANDLE m_handle;
    DWORD m_error;
};

// Waits on the mutex from another thread; its result.
DWORD waitFromAnotherThread(HANDLE handle, DWORD milliseconds)
{
    DWORD result = WAIT_FAILED;
    std::thread other([&] {
        result = WaitForSingleObject(handle, milliseconds);
        if (result == WAIT_OBJECT_0 || result == WAIT_ABANDONED)
            ReleaseMutex(handle);
    });
    other.join();
    return result;
}

// args: mutex name, signal directory, "release" to let go when told or "keep" to hold until
// killed. Reports the wait's result in the file "result".
ZET_CHILD_SCENARIO(seam_mutex_hold)
{
    SignalDirectory signals(args.at(1));
    Handle mutex(zettest::widen(args.at(0)));
    const DWORD result = WaitForSingleObject(mutex.get(), INFINITE);
    signals.write("result", std::to_string(result));
    signals.raise("held");
    if (args.at(2) == "keep")
        pause();
    if (!signals.awaitRaised("release"))
        return 3;
    return ReleaseMutex(mutex.get()) ? 0 : 1;
}

// args: mutex name. Exits with the result of a wait that doesn't wait.
ZET_CHILD_SCENARIO(seam_mutex_try)
{
    Handle mutex(zettest::widen(args.at(0)));
    const DWORD result = WaitForSingleObject(mutex.get(), 0);
    return result == WAIT_OBJECT_0 ? 0 : result == WAIT_TIMEOUT ? 1 : 2;
}

class NamedMutexTest : public zettest::RegistryTest {
protected:
    SignalDirectory signals;
    const std::wstring name = zettest::uniqueMutexName("seam");
    std::vector<std::string> holdArgs(const char* mode) const { return {zettest::narrow(name), signals.path(), mode}; }
};

TEST_F(NamedMutexTest, TheLockFileIsMadeInTheStoreAtTheFirstWait)
{
    Handle mutex(name);
    EXPECT_FALSE(fs::exists(registry.storeDirectory())) << "creating must not touch the store";
    ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(mutex.get(), INFINITE));
    EXPECT_EQ(1u, filesIn(registry.storeDirectory()).count(LockFile::fileName(name)));
    EXPECT_TRUE(ReleaseMutex(mutex.get()));
}

TEST_F(NamedMutexTest, NoNameLeadsOutOfTheStoreDirectory)
{
    const std::string outside = fs::path(registry.storeDirectory()).parent_path().string();
    for (const wchar_t* hostile : {L"../escaped", L"..", L"a/../../b", L"\\..\\x", L"dot.dot", L"sp ace"}) {
        Handle mutex(hostile);
        ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(mutex.get(), 0)) << zettest::narrow(hostile);
        ReleaseMutex(mutex.get());
    }
    EXPECT_EQ(std::set<std::string>{"store"}, filesIn(outside));
    for (const std::string& file : filesIn(registry.storeDirectory()))
        EXPECT_EQ(std::string::npos, file.find('/')) << file;
    EXPECT_EQ(6u, filesIn(registry.storeDirectory()).size());
}

TEST_F(NamedMutexTest, DistinctNamesGetDistinctFilesOfAcceptableLength)
{
    const std::wstring longA(300, L'a');
    const std::wstring longB = std::wstring(299, L'a') + L'b';
    const std::set<std::string> files = {LockFile::fileName(L"a.b"), LockFile::fileName(L"a~0000002Eb"),
                                         LockFile::fileName(L"A.b"), LockFile::fileName(longA),
                                         LockFile::fileName(longB), LockFile::fileName(L"\U0001D11E")};
    EXPECT_EQ(6u, files.size());
    for (const std::string& file : files)
        EXPECT_LE(file.size(), 255u) << file;
}

TEST_F(NamedMutexTest, NamesBeyondWindowsLimitAreRefused)
{
    Handle longest(std::wstring(260, L'n'));
    ASSERT_NE(nullptr, longest.get());
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(longest.get(), 0));
    ReleaseMutex(longest.get());

    Handle tooLong(std::wstring(261, L'n'));
    EXPECT_EQ(nullptr, tooLong.get());
    EXPECT_EQ(static_cast<DWORD>(ERROR_FILENAME_EXCED_RANGE), tooLong.createError());
}

TEST_F(NamedMutexTest, OtherUsersMayOpenTheLockFileButNobodyElseMayWriteIt)
{
    for (mode_t mask : {mode_t(0), mode_t(077)}) {
        const std::wstring masked = name + zettest::widen(std::to_string(mask));
        const mode_t previous = umask(mask);
        Handle mutex(masked);
        WaitForSingleObject(mutex.get(), 0);
        umask(previous);
        ReleaseMutex(mutex.get());
        struct stat info;
        ASSERT_EQ(0, stat((registry.storeDirectory() + "/" + LockFile::fileName(masked)).c_str(), &info));
        EXPECT_EQ(0644u, info.st_mode & 07777) << "umask " << mask;
    }
}

TEST_F(NamedMutexTest, WaitsWithATimeoutGiveUpWhileAnotherProcessHoldsIt)
{
    zettest::ChildProcess holder("seam_mutex_hold", holdArgs("release"));
    ASSERT_TRUE(signals.awaitRaised("held"));
    Handle mutex(name);

    EXPECT_EQ(WAIT_TIMEOUT, WaitForSingleObject(mutex.get(), 0));
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(WAIT_TIMEOUT, WaitForSingleObject(mutex.get(), 60));
    EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(60));

    signals.raise("release");
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(mutex.get(), 20000));
    EXPECT_TRUE(ReleaseMutex(mutex.get()));
    EXPECT_EQ(0, holder.wait());
}

TEST_F(NamedMutexTest, AHolderKilledHoldingItIsReportedAsAbandonedOnce)
{
    zettest::ChildProcess holder("seam_mutex_hold", holdArgs("keep"));
    ASSERT_TRUE(signals.awaitRaised("held"));
    holder.killHard();
    holder.wait();

    Handle mutex(name);
    EXPECT_EQ(WAIT_ABANDONED, WaitForSingleObject(mutex.get(), 20000));
    EXPECT_TRUE(ReleaseMutex(mutex.get()));
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(mutex.get(), 0));
    EXPECT_TRUE(ReleaseMutex(mutex.get()));
}

TEST_F(NamedMutexTest, AHolderThatLetGoIsNotAnAbandonment)
{
    zettest::ChildProcess holder("seam_mutex_hold", holdArgs("release"));
    ASSERT_TRUE(signals.awaitRaised("held"));
    signals.raise("release");
    ASSERT_EQ(0, holder.wait());

    Handle mutex(name);
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(mutex.get(), 0));
    ReleaseMutex(mutex.get());
}

TEST_F(NamedMutexTest, AForkedChildDoesNotShareItsParentsHold)
{
    Handle mutex(name);
    ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(mutex.get(), INFINITE));
    const int whileHeld = inForkedChild([&] {
        const bool releaseRefused = !ReleaseMutex(mutex.get()) && GetLastError() == ERROR_NOT_OWNER;
        const bool kept = WaitForSingleObject(mutex.get(), 0) == WAIT_TIMEOUT;
        return releaseRefused && kept ? 0 : 1;
    });
    EXPECT_EQ(0, whileHeld);
    // The child's exit must not have released the parent's hold.
    EXPECT_EQ(1, zettest::runChild("seam_mutex_try", {zettest::narrow(name)}));

    EXPECT_TRUE(ReleaseMutex(mutex.get()));
    const int afterRelease = inForkedChild([&] {
        const bool taken = WaitForSingleObject(mutex.get(), 0) == WAIT_OBJECT_0;
        return taken && ReleaseMutex(mutex.get()) ? 0 : 1;
    });
    EXPECT_EQ(0, afterRelease);
}

TEST_F(NamedMutexTest, TheStoreIsTheOneCurrentAtTheFirstWait)
{
    Handle mutex(name);
    zettest::TestRegistry other;
    ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(mutex.get(), 0));
    EXPECT_EQ(1u, filesIn(other.storeDirectory()).count(LockFile::fileName(name)));
    EXPECT_FALSE(fs::exists(registry.storeDirectory()));
    ReleaseMutex(mutex.get());
}

TEST_F(NamedMutexTest, ProcessesOfDifferentStoresDoNotShareAName)
{
    Handle mutex(name);
    ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(mutex.get(), 0));
    EXPECT_EQ(1, zettest::runChild("seam_mutex_try", {zettest::narrow(name)}));
    {
        zettest::TestRegistry other;
        EXPECT_EQ(0, zettest::runChild("seam_mutex_try", {zettest::narrow(name)}));
    }
    ReleaseMutex(mutex.get());
}

TEST_F(NamedMutexTest, OnlyTheHoldingThreadMayReleaseIt)
{
    Handle mutex(name);
    SetLastError(0);
    EXPECT_FALSE(ReleaseMutex(mutex.get()));
    EXPECT_EQ(static_cast<DWORD>(ERROR_NOT_OWNER), GetLastError());

    std::atomic<bool> held{false};
    std::atomic<bool> done{false};
    std::thread holder([&] {
        WaitForSingleObject(mutex.get(), INFINITE);
        held = true;
        zettest::eventually([&] { return done.load(); });
        ReleaseMutex(mutex.get());
    });
    ASSERT_TRUE(zettest::eventually([&] { return held.load(); }));
    EXPECT_FALSE(ReleaseMutex(mutex.get()));
    EXPECT_EQ(static_cast<DWORD>(ERROR_NOT_OWNER), GetLastError());
    EXPECT_EQ(WAIT_TIMEOUT, WaitForSingleObject(mutex.get(), 0));
    done = true;
    holder.join();
}

TEST_F(NamedMutexTest, HandlesOfOneNameShareOneMutexInTheProcess)
{
    Handle first(name);
    EXPECT_EQ(static_cast<DWORD>(ERROR_SUCCESS), first.createError());
    Handle second(name);
    EXPECT_EQ(static_cast<DWORD>(ERROR_ALREADY_EXISTS), second.createError());
    EXPECT_NE(first.get(), second.get());

    ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(first.get(), 0));
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(second.get(), 0)) << "the holder enters again";
    EXPECT_EQ(WAIT_TIMEOUT, waitFromAnotherThread(second.get(), 0));
    EXPECT_TRUE(ReleaseMutex(second.get()));
    EXPECT_TRUE(ReleaseMutex(first.get()));
    EXPECT_EQ(WAIT_OBJECT_0, waitFromAnotherThread(second.get(), 0));
}

TEST_F(NamedMutexTest, UnnamedMutexesAreEachTheirOwn)
{
    Handle first(L"");
    Handle second(L"");
    EXPECT_EQ(static_cast<DWORD>(ERROR_SUCCESS), second.createError());
    ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(first.get(), 0));
    EXPECT_EQ(WAIT_OBJECT_0, waitFromAnotherThread(second.get(), 0));
    EXPECT_EQ(WAIT_TIMEOUT, waitFromAnotherThread(first.get(), 0));
    ReleaseMutex(first.get());
    EXPECT_FALSE(fs::exists(registry.storeDirectory()));
}

TEST_F(NamedMutexTest, AnInitialOwnerOwnsOnlyAMutexItCreated)
{
    Handle created(name, TRUE);
    EXPECT_EQ(static_cast<DWORD>(ERROR_SUCCESS), created.createError());
    EXPECT_EQ(WAIT_TIMEOUT, waitFromAnotherThread(created.get(), 0));
    EXPECT_EQ(1, zettest::runChild("seam_mutex_try", {zettest::narrow(name)}));
    EXPECT_TRUE(ReleaseMutex(created.get()));
    CloseHandle(created.release());

    zettest::ChildProcess holder("seam_mutex_hold", holdArgs("release"));
    ASSERT_TRUE(signals.awaitRaised("held"));
    Handle opened(name, TRUE);
    EXPECT_EQ(static_cast<DWORD>(ERROR_ALREADY_EXISTS), opened.createError());
    EXPECT_FALSE(ReleaseMutex(opened.get()));
    signals.raise("release");
    EXPECT_EQ(0, holder.wait());
}

TEST_F(NamedMutexTest, ClosingTheLastHandleOfAHeldMutexLetsOtherProcessesIn)
{
    Handle mutex(name);
    ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(mutex.get(), 0));
    EXPECT_EQ(1, zettest::runChild("seam_mutex_try", {zettest::narrow(name)}));
    EXPECT_TRUE(CloseHandle(mutex.release()));
    EXPECT_EQ(0, zettest::runChild("seam_mutex_try", {zettest::narrow(name)}));
}

TEST_F(NamedMutexTest, AClosedHandleIsNoHandle)
{
    HANDLE handle = Handle(name).release();
    EXPECT_TRUE(CloseHandle(handle));
    SetLastError(0);
    EXPECT_FALSE(CloseHandle(handle));
    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_HANDLE), GetLastError());
    SetLastError(0);
    EXPECT_EQ(WAIT_FAILED, WaitForSingleObject(handle, 0));
    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_HANDLE), GetLastError());
    EXPECT_FALSE(ReleaseMutex(handle));
    EXPECT_FALSE(CloseHandle(nullptr));
}

// As an unprivileged user: the lock file is root's and read-only to others.
ZET_CHILD_SCENARIO(seam_mutex_try_as_nobody)
{
    const uid_t nobody = 65534;
    if (setresgid(nobody, nobody, nobody) != 0 || setresuid(nobody, nobody, nobody) != 0)
        return 3;
    Handle mutex(zettest::widen(args.at(0)));
    const DWORD result = WaitForSingleObject(mutex.get(), 0);
    return result == WAIT_OBJECT_0 ? 0 : result == WAIT_TIMEOUT ? 1 : 2;
}

TEST_F(NamedMutexTest, AUserWhoMayOnlyReadTheLockFileCanStillTakeIt)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root to act as another user";
    fs::permissions(fs::path(registry.storeDirectory()).parent_path(), fs::perms(0755));
    Handle mutex(name);
    ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(mutex.get(), 0));
    EXPECT_EQ(1, zettest::runChild("seam_mutex_try_as_nobody", {zettest::narrow(name)}));
    ReleaseMutex(mutex.get());
    EXPECT_EQ(0, zettest::runChild("seam_mutex_try_as_nobody", {zettest::narrow(name)}));
}

TEST(LastError, EachThreadHasItsOwn)
{
    SetLastError(ERROR_ACCESS_DENIED);
    DWORD seenByOther = 1;
    std::thread other([&] {
        seenByOther = GetLastError();
        SetLastError(ERROR_INVALID_DATA);
    });
    other.join();
    EXPECT_EQ(static_cast<DWORD>(ERROR_SUCCESS), seenByOther);
    EXPECT_EQ(static_cast<DWORD>(ERROR_ACCESS_DENIED), GetLastError());
}

}  // namespace
