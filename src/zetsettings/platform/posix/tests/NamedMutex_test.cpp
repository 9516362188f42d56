// The named mutex of the portable layer: a lock file per name inside the store, shared by the
// processes of that store, reported abandoned when its holding thread or process ended, made
// anew when left by an earlier boot. (That fork passes on no hold is PortableStoreTest's.)
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <functional>
#include <future>
#include <iterator>
#include <thread>
#include <utility>

#include "support/ChildProcess.h"
#include "support/ChildScenario.h"
#include "support/ProcessRights.h"
#include "support/TestRegistry.h"
#include "zetsettings/components/tests/ProcessSignals.h"
#include "zetsettings/platform/posix/LockFile.h"
#include "zetsettings/platform/posix/SharedMutexPage.h"
#include "zetsettings/platform/posix/Win32Portable.h"
#include "zetsettings/ZETSettings.h"
#include "zetsettings/components/ZETMutexException.h"

namespace {

namespace fs = std::filesystem;
using zet::portable::LockFile;
using zet::portable::SharedMutexPage;
using zettest::SignalDirectory;

std::string lockFileOf(const zettest::TestRegistry& store, const std::wstring& name)
{
    return store.storeDirectory() + "/" + LockFile::fileName(name);
}

void overwrite(int fd, std::size_t offset, const std::string& bytes)
{
    ASSERT_EQ(static_cast<ssize_t>(bytes.size()), pwrite(fd, bytes.data(), bytes.size(), static_cast<off_t>(offset)));
}

// A named mutex handle that closes itself, and the last error its creation left.
struct Handle {
    explicit Handle(const std::wstring& name, BOOL initialOwner = FALSE)
        : handle(CreateMutexW(nullptr, initialOwner, name.c_str())), createError(GetLastError())
    {
    }
    ~Handle()
    {
        if (handle)
            CloseHandle(handle);
    }
    HANDLE handle;
    const DWORD createError;
};

// Tries the mutex from another thread, which lets go of what it took; the result.
DWORD tryFromAnotherThread(HANDLE handle)
{
    return std::async(std::launch::async, [handle] {
        const DWORD result = WaitForSingleObject(handle, 0);
        if (result == WAIT_OBJECT_0)
            ReleaseMutex(handle);
        return result;
    }).get();
}

// args: mutex name, signal directory. Takes the mutex (abandoned or not) and holds it until
// killed.
ZET_CHILD_SCENARIO(seam_mutex_hold)
{
    SignalDirectory signals(args.at(1));
    Handle mutex(zettest::widen(args.at(0)));
    const DWORD result = WaitForSingleObject(mutex.handle, INFINITE);
    if (result != WAIT_OBJECT_0 && result != WAIT_ABANDONED)
        return 2;
    signals.raise("held");
    pause();
    return 0;
}

// args: mutex name, optionally "other user" to try as an unprivileged one. Exits with the
// result of a wait that doesn't wait: 0 taken, 1 timed out, 2 abandoned, 3 access denied.
ZET_CHILD_SCENARIO(seam_mutex_try)
{
    if (args.size() > 1 && !zettest::becomeUnprivileged())
        return 5;
    Handle mutex(zettest::widen(args.at(0)));
    const DWORD result = WaitForSingleObject(mutex.handle, 0);
    if (result == WAIT_FAILED)
        return GetLastError() == ERROR_ACCESS_DENIED ? 3 : 4;
    return result == WAIT_OBJECT_0 ? 0 : result == WAIT_TIMEOUT ? 1 : result == WAIT_ABANDONED ? 2 : 4;
}

class NamedMutexTest : public zettest::RegistryTest {
protected:
    SignalDirectory signals;
    const std::wstring name = zettest::uniqueMutexName("seam");
    int tryInChild() const { return zettest::runChild("seam_mutex_try", {zettest::narrow(name)}); }
    int tryAsOtherUser() const { return zettest::runChild("seam_mutex_try", {zettest::narrow(name), "other user"}); }
};

TEST_F(NamedMutexTest, EveryNameGetsAFileOfItsOwnInTheStoreCurrentAtTheFirstWaitOpenToAllWhateverTheUmask)
{
    Handle first(name);
    zettest::TestRegistry current;
    EXPECT_FALSE(fs::exists(registry.storeDirectory())) << "creating must not touch the store";
    ASSERT_EQ(0, mkdir(current.storeDirectory().c_str(), 0755));  // a store open to all
    const mode_t previous = umask(077);
    ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(first.handle, INFINITE));
    umask(previous);
    EXPECT_TRUE(ReleaseMutex(first.handle));
    EXPECT_EQ(fs::perms(0666), fs::status(lockFileOf(current, name)).permissions())
        << "every user of the store must be able to take it";

    const std::wstring names[] = {L"../escaped", L"..", L"a/../../b", L"\\..\\x", L"a.b", L"a~0000002Eb", L"A.b",
                                  std::wstring(260, L'a'), std::wstring(259, L'a') + L'b', L"\U0001D11E"};
    for (const std::wstring& hostile : names) {
        Handle mutex(hostile);
        ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(mutex.handle, 0)) << zettest::narrow(hostile);
        ReleaseMutex(mutex.handle);
    }
    for (const auto& entry : fs::directory_iterator(fs::path(current.storeDirectory()).parent_path()))
        EXPECT_EQ("store", entry.path().filename()) << "nothing outside the store";
    const fs::directory_iterator files(current.storeDirectory());
    EXPECT_EQ(std::size(names) + 1, static_cast<std::size_t>(std::distance(files, fs::directory_iterator())));
    for (const auto& file : fs::directory_iterator(current.storeDirectory()))
        EXPECT_LE(file.path().filename().string().size(), 255u) << file.path();

    Handle tooLong(std::wstring(261, L'n'));
    EXPECT_EQ(nullptr, tooLong.handle);
    EXPECT_EQ(static_cast<DWORD>(ERROR_FILENAME_EXCED_RANGE), tooLong.createError);
}

TEST_F(NamedMutexTest, AHolderProcessKilledOrThreadEndedIsReportedAsAbandonedOnce)
{
    zettest::ChildProcess holder("seam_mutex_hold", {zettest::narrow(name), signals.path()});
    ASSERT_TRUE(signals.awaitRaised("held"));
    // Asking to own it while another process holds it opens it without the hold.
    Handle mutex(name, TRUE);
    EXPECT_EQ(static_cast<DWORD>(ERROR_ALREADY_EXISTS), mutex.createError);
    const auto before = std::chrono::steady_clock::now();
    EXPECT_EQ(WAIT_TIMEOUT, WaitForSingleObject(mutex.handle, 150));
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(150));

    std::thread killer([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
        holder.killHard();
    });
    EXPECT_EQ(WAIT_ABANDONED, WaitForSingleObject(mutex.handle, 20000));
    killer.join();
    EXPECT_EQ(1, tryInChild()) << "the abandoned mutex belongs to the thread that got it";
    EXPECT_TRUE(ReleaseMutex(mutex.handle));
    EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(mutex.handle, 0));
    EXPECT_TRUE(ReleaseMutex(mutex.handle));

    // A thread that ends holding it abandons it to this and other processes.
    std::thread([&] { ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(mutex.handle, 0)); }).join();
    EXPECT_EQ(WAIT_ABANDONED, WaitForSingleObject(mutex.handle, 20000));
    EXPECT_TRUE(ReleaseMutex(mutex.handle));

    std::thread([&] { ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(mutex.handle, 0)); }).join();
    EXPECT_EQ(2, tryInChild()) << "another process finds it abandoned";
}

// A page left by an earlier boot, by an older build, broken, or gone with its store, is made
// anew by the next process that sets it up, while the processes that use it after that still
// exclude each other.
TEST_F(NamedMutexTest, ALockFileFromAnEarlierBootOrOfAnotherLayoutOrAStoreMadeAgainIsMadeAnew)
{
    const std::string path = lockFileOf(registry, name);
    const std::pair<const char*, std::function<void(int)>> damages[] = {
        {"earlier boot", [](int fd) { overwrite(fd, offsetof(SharedMutexPage, boot), std::string(16, '\x5a')); }},
        {"broken magic", [](int fd) { overwrite(fd, 0, "junk"); }},
        {"older layout", [](int fd) { ASSERT_EQ(0, ftruncate(fd, 0)); overwrite(fd, 0, "1"); }},
        {"store removed and made again", [&](int) {
             fs::remove_all(registry.storeDirectory());
             fs::create_directory(registry.storeDirectory());
         }},
    };
    for (const auto& damage : damages) {
        SCOPED_TRACE(damage.first);
        fs::remove(signals.file("held"));
        // Held by a live process, so only a page made anew lets the next one in at once.
        zettest::ChildProcess holder("seam_mutex_hold", {zettest::narrow(name), signals.path()});
        ASSERT_TRUE(signals.awaitRaised("held"));
        const int fd = open(path.c_str(), O_RDWR);
        ASSERT_GE(fd, 0);
        damage.second(fd);
        close(fd);

        fs::remove(signals.file("held"));
        zettest::ChildProcess next("seam_mutex_hold", {zettest::narrow(name), signals.path()});
        ASSERT_TRUE(signals.awaitRaised("held"));
        EXPECT_EQ(1, tryInChild()) << "the page made anew excludes as before";
    }
}

TEST_F(NamedMutexTest, HandlesOfOneNameInOneStoreShareOneMutexThatOnlyItsHolderReleasesNotEvenByClosingTheLast)
{
    Handle first(name, TRUE);
    EXPECT_EQ(static_cast<DWORD>(ERROR_SUCCESS), first.createError);
    Handle second(name);
    EXPECT_EQ(static_cast<DWORD>(ERROR_ALREADY_EXISTS), second.createError);
    {
        zettest::TestRegistry other;
        EXPECT_EQ(0, tryInChild()) << "another store, another mutex";
    }
    SetLastError(ERROR_INVALID_DATA);
    const DWORD otherThreadsError = std::async(std::launch::async, [&] {
        return ReleaseMutex(first.handle) ? DWORD(0) : GetLastError();
    }).get();
    EXPECT_EQ(static_cast<DWORD>(ERROR_NOT_OWNER), otherThreadsError);
    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_DATA), GetLastError()) << "each thread has its own last error";
    EXPECT_EQ(WAIT_TIMEOUT, tryFromAnotherThread(second.handle));
    EXPECT_TRUE(ReleaseMutex(first.handle));
    SetLastError(0);
    EXPECT_FALSE(ReleaseMutex(first.handle));
    EXPECT_EQ(static_cast<DWORD>(ERROR_NOT_OWNER), GetLastError());
    EXPECT_EQ(WAIT_OBJECT_0, tryFromAnotherThread(second.handle));
    ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(first.handle, 0));
    const HANDLE closed = std::exchange(first.handle, nullptr);
    EXPECT_TRUE(CloseHandle(closed));
    EXPECT_TRUE(CloseHandle(std::exchange(second.handle, nullptr)));
    EXPECT_EQ(0, tryInChild()) << "the last handle closed";

    const auto refusedAsInvalid = [](bool refused) { return refused && GetLastError() == ERROR_INVALID_HANDLE; };
    EXPECT_TRUE(refusedAsInvalid(WaitForSingleObject(closed, 0) == WAIT_FAILED));
    EXPECT_TRUE(refusedAsInvalid(!ReleaseMutex(closed)));
    EXPECT_TRUE(refusedAsInvalid(!CloseHandle(closed)));

    // A last handle closed by another thread leaves the holder holding, without a deadlock.
    Handle mutex(name);
    std::promise<void> taken, letGo;
    std::thread holder([&] {
        WaitForSingleObject(mutex.handle, 0);
        taken.set_value();
        letGo.get_future().wait();
        Handle again(name);
        EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(again.handle, 0)) << "the holder takes its name again";
        EXPECT_TRUE(ReleaseMutex(again.handle));
    });
    taken.get_future().wait();
    EXPECT_TRUE(CloseHandle(std::exchange(mutex.handle, nullptr)));
    EXPECT_EQ(1, tryInChild()) << "closing the last handle must not release another thread's hold";
    letGo.set_value();
    holder.join();
    EXPECT_EQ(0, tryInChild());
}

// A chooser step by a user who can't take the product's mutex: 2 when it fails visibly, with
// the mutex's own exception rather than a registry refusal that operations drop.
ZET_CHILD_SCENARIO(seam_chooser_step_as_nobody)
{
    if (!zettest::becomeUnprivileged())
        return 3;
    try {
        bool wrapped = false;
        ZETSettings::nextChooserPreferredNet(true, wrapped);
        return 0;
    } catch (const ZETMutexException&) {
        return 2;
    } catch (...) {
        return 4;
    }
}

TEST_F(NamedMutexTest, AnotherUserSharesItAndOneWhoCannotWriteTheFileIsRefusedAndItsOperationsFail)
{
    if (!zettest::canDropPrivileges())
        GTEST_SKIP() << "needs root to act as another user";
    fs::permissions(fs::path(registry.storeDirectory()).parent_path(), fs::perms(0755));
    Handle mutex(name);
    ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(mutex.handle, 0));
    EXPECT_EQ(1, tryAsOtherUser());
    ReleaseMutex(mutex.handle);
    EXPECT_EQ(0, tryAsOtherUser());
    ASSERT_EQ(0, chmod(lockFileOf(registry, name).c_str(), 0644));
    EXPECT_EQ(3, tryAsOtherUser());

    ZETSettings::stopChooserAutoAssociate();  // makes the product's lock file
    ASSERT_EQ(0, chmod(lockFileOf(registry, L"zetPreferredNetMutex").c_str(), 0644));
    EXPECT_EQ(2, zettest::runChild("seam_chooser_step_as_nobody"));
}

}  // namespace
