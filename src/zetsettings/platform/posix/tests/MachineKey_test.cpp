#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "support/ChildProcess.h"
#include "support/ChildScenario.h"
#include "support/TestRegistry.h"
#include "zetsettings/components/tests/ProcessSignals.h"
#include "zetsettings/platform/posix/tests/DataProtectionTestSupport.h"

namespace {

namespace fs = std::filesystem;
using zettest::keyPath;
using zettest::protect;
using zettest::unprotect;

std::string contentOf(const std::string& path)
{
    if (!fs::is_regular_file(path))
        return std::string();
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

void overwrite(const std::string& path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary | std::ios::trunc) << bytes;
}

mode_t modeOf(const std::string& path)
{
    struct stat info;
    return lstat(path.c_str(), &info) == 0 ? (info.st_mode & 07777) : 0;
}

class MachineKeyTest : public zettest::RegistryTest {
protected:
    // Makes the machine key as the first encryption does.
    std::string makeKey()
    {
        const zettest::Protection made = protect("first");
        EXPECT_TRUE(made.ok);
        return made.bytes;
    }

    // Both directions fail with `error`, and the key file is left exactly as it was.
    void expectRefused(DWORD error, const std::string& blob)
    {
        const std::string before = contentOf(keyPath());
        const mode_t modeBefore = modeOf(keyPath());
        const zettest::Protection encrypted = protect("data");
        EXPECT_FALSE(encrypted.ok);
        EXPECT_EQ(error, encrypted.error);
        EXPECT_TRUE(encrypted.bytes.empty());
        const zettest::Protection decrypted = unprotect(blob);
        EXPECT_FALSE(decrypted.ok);
        EXPECT_EQ(error, decrypted.error);
        EXPECT_EQ(before, contentOf(keyPath()));
        EXPECT_EQ(modeBefore, modeOf(keyPath()));
    }
};

TEST_F(MachineKeyTest, TheFirstEncryptionMakesAnOwnerOnlyKeyBesideTheStore)
{
    const mode_t previous = umask(0);
    makeKey();
    umask(previous);
    const std::string key = keyPath();
    EXPECT_EQ(registry.storeDirectory() + ".key", key);
    struct stat info;
    ASSERT_EQ(0, lstat(key.c_str(), &info));
    EXPECT_TRUE(S_ISREG(info.st_mode));
    EXPECT_EQ(0600u, info.st_mode & 07777);
    EXPECT_EQ(geteuid(), info.st_uid);
    EXPECT_EQ(32, info.st_size);
    // Nothing of it inside the store, and no candidate left lying about.
    const fs::path parent = fs::path(registry.storeDirectory()).parent_path();
    for (const auto& entry : fs::directory_iterator(parent))
        EXPECT_TRUE(entry.path() == key || entry.path() == registry.storeDirectory()) << entry.path();
    if (fs::exists(registry.storeDirectory())) {
        for (const auto& entry : fs::recursive_directory_iterator(registry.storeDirectory()))
            EXPECT_NE(contentOf(key), contentOf(entry.path().string())) << entry.path();
    }
}

TEST_F(MachineKeyTest, LaterEncryptionsKeepTheKey)
{
    const std::string blob = makeKey();
    const std::string key = contentOf(keyPath());
    EXPECT_TRUE(protect("second").ok);
    EXPECT_EQ(key, contentOf(keyPath()));
    EXPECT_TRUE(unprotect(blob).ok);
}

TEST_F(MachineKeyTest, DecryptingWithoutAKeyFailsAndMakesNone)
{
    const std::string blob = makeKey();
    fs::remove(keyPath());
    const zettest::Protection decrypted = unprotect(blob);
    EXPECT_FALSE(decrypted.ok);
    EXPECT_EQ(static_cast<DWORD>(ERROR_FILE_NOT_FOUND), decrypted.error);
    EXPECT_FALSE(fs::exists(keyPath()));

    // A new key made by the next encryption doesn't open what the old one sealed.
    EXPECT_TRUE(protect("again").ok);
    const zettest::Protection withNewKey = unprotect(blob);
    EXPECT_FALSE(withNewKey.ok);
    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_DATA), withNewKey.error);
}

TEST_F(MachineKeyTest, AKeyThatOthersMayReadOrWriteIsRefused)
{
    const std::string blob = makeKey();
    for (mode_t mode : {0640, 0604, 0620, 0602, 0610}) {
        ASSERT_EQ(0, chmod(keyPath().c_str(), mode));
        expectRefused(ERROR_ACCESS_DENIED, blob);
    }
    ASSERT_EQ(0, chmod(keyPath().c_str(), 0400));
    EXPECT_TRUE(unprotect(blob).ok) << "owner read-only is fine";
}

TEST_F(MachineKeyTest, AKeyOwnedByAnotherUserIsRefused)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root to give the key to another user";
    const std::string blob = makeKey();
    ASSERT_EQ(0, chown(keyPath().c_str(), 1, 1));
    expectRefused(ERROR_ACCESS_DENIED, blob);
}

TEST_F(MachineKeyTest, AKeyFileOfTheWrongSizeIsRefusedAndKept)
{
    const std::string blob = makeKey();
    const std::string key = contentOf(keyPath());
    for (const std::string& damaged : {std::string(), key.substr(0, 31), key + "x"}) {
        overwrite(keyPath(), damaged);
        expectRefused(ERROR_INVALID_DATA, blob);
    }
}

TEST_F(MachineKeyTest, AKeyThatIsASymbolicLinkOrADirectoryIsRefused)
{
    const std::string blob = makeKey();
    const std::string elsewhere = keyPath() + ".real";
    fs::rename(keyPath(), elsewhere);
    fs::create_symlink(elsewhere, keyPath());
    expectRefused(ERROR_ACCESS_DENIED, blob);

    fs::remove(keyPath());
    fs::create_directory(keyPath());
    ASSERT_EQ(0, chmod(keyPath().c_str(), 0700));
    expectRefused(ERROR_ACCESS_DENIED, blob);
}

// args: signal directory. As an unprivileged user, tries both directions on the store's key.
ZET_CHILD_SCENARIO(seam_key_as_nobody)
{
    zettest::SignalDirectory signals(args.at(0));
    const uid_t nobody = 65534;
    if (setresgid(nobody, nobody, nobody) != 0 || setresuid(nobody, nobody, nobody) != 0)
        return 3;
    const zettest::Protection encrypted = protect("data");
    const zettest::Protection decrypted = unprotect(signals.read("blob"));
    const bool refused = !encrypted.ok && encrypted.error == ERROR_ACCESS_DENIED && !decrypted.ok &&
                         decrypted.error == ERROR_ACCESS_DENIED;
    return refused ? 0 : 1;
}

TEST_F(MachineKeyTest, AKeyThisUserCannotReadIsRefusedAndNotReplaced)
{
    if (geteuid() != 0)
        GTEST_SKIP() << "needs root to act as another user";
    zettest::SignalDirectory signals;
    fs::permissions(signals.path(), fs::perms(0755));
    fs::permissions(fs::path(registry.storeDirectory()).parent_path(), fs::perms(0777));
    signals.write("blob", makeKey());
    const std::string key = contentOf(keyPath());
    EXPECT_EQ(0, zettest::runChild("seam_key_as_nobody", {signals.path()}));
    EXPECT_EQ(key, contentOf(keyPath()));
}

// args: signal directory, index. Encrypts its index as soon as told to, to "blob-<index>".
ZET_CHILD_SCENARIO(seam_key_race)
{
    zettest::SignalDirectory signals(args.at(0));
    if (!signals.awaitRaised("go"))
        return 3;
    const zettest::Protection blob = protect(args.at(1));
    if (!blob.ok)
        return 2;
    signals.write("blob-" + args.at(1), blob.bytes);
    return 0;
}

TEST_F(MachineKeyTest, ProcessesRacingToMakeTheKeyAgreeOnOne)
{
    const int kRounds = 3;
    const int kProcesses = 4;
    for (int round = 0; round < kRounds; ++round) {
        zettest::TestRegistry fresh;
        zettest::SignalDirectory signals;
        std::vector<std::unique_ptr<zettest::ChildProcess>> children;
        for (int i = 0; i < kProcesses; ++i)
            children.emplace_back(new zettest::ChildProcess("seam_key_race", {signals.path(), std::to_string(i)}));
        signals.raise("go");
        for (auto& child : children)
            ASSERT_EQ(0, child->wait());
        for (int i = 0; i < kProcesses; ++i) {
            const zettest::Protection opened = unprotect(signals.read("blob-" + std::to_string(i)));
            EXPECT_TRUE(opened.ok) << "round " << round << ", process " << i;
            EXPECT_EQ(std::to_string(i), opened.bytes);
        }
        const fs::path parent = fs::path(fresh.storeDirectory()).parent_path();
        for (const auto& entry : fs::directory_iterator(parent))
            EXPECT_EQ(std::string::npos, entry.path().string().find(".new-")) << entry.path();
    }
}

}  // namespace
