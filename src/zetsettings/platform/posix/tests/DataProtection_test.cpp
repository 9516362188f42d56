// Machine-scope data protection of the portable layer: the blob's layout and integrity, the
// machine key file beside the store that it depends on, and a process that may only read the
// store, which reads it whole while it is written but can't use or make the key.
#include <gtest/gtest.h>
#include <sodium.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <thread>
#include <vector>

#include "support/ChildProcess.h"
#include "support/ChildScenario.h"
#include "support/ProcessRights.h"
#include "support/TestRegistry.h"
#include "zetsettings/components/tests/ProcessSignals.h"
#include "zetsettings/platform/posix/StoreLocation.h"
#include "zetsettings/platform/posix/Win32Portable.h"
#include "zetsettings/platform/tests/RegistryTestKeys.h"

namespace {

namespace fs = std::filesystem;

const DWORD kMachineScope = CRYPTPROTECT_LOCAL_MACHINE | CRYPTPROTECT_UI_FORBIDDEN;
const std::size_t kNonce = crypto_aead_xchacha20poly1305_ietf_NPUBBYTES;
const std::size_t kTag = crypto_aead_xchacha20poly1305_ietf_ABYTES;

// The outcome of one call: its result, the last error (0 when it succeeded), and the output bytes.
struct Protection {
    BOOL ok = FALSE;
    DWORD error = 0;
    std::string bytes;
};

DATA_BLOB blobOf(const std::string& bytes)
{
    return DATA_BLOB{static_cast<DWORD>(bytes.size()), reinterpret_cast<BYTE*>(const_cast<char*>(bytes.data()))};
}

Protection call(bool encrypt, const std::string& data, const std::string* entropy, const wchar_t* description)
{
    DATA_BLOB in = blobOf(data);
    DATA_BLOB extra = entropy ? blobOf(*entropy) : DATA_BLOB{0, nullptr};
    DATA_BLOB out = {0, nullptr};
    SetLastError(0);
    Protection result;
    result.ok = encrypt ? CryptProtectData(&in, description, entropy ? &extra : nullptr, nullptr, nullptr,
                                           kMachineScope, &out)
                        : CryptUnprotectData(&in, nullptr, entropy ? &extra : nullptr, nullptr, nullptr,
                                             kMachineScope, &out);
    result.error = result.ok ? 0 : GetLastError();
    if (out.pbData)
        result.bytes.assign(reinterpret_cast<const char*>(out.pbData), out.cbData);
    LocalFree(out.pbData);
    return result;
}

Protection protect(const std::string& data, const std::string* entropy = nullptr,
                   const wchar_t* description = nullptr)
{
    return call(true, data, entropy, description);
}

Protection unprotect(const std::string& blob, const std::string* entropy = nullptr)
{
    return call(false, blob, entropy, nullptr);
}

std::string keyPath()
{
    return zet::portable::machineKeyPath(zet::portable::storeDirectory());
}

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

// Opens a blob by the documented layout alone, with libsodium directly.
bool openByHand(const std::string& blob, const std::string& additional, std::string& payload)
{
    const std::string key = contentOf(keyPath());
    if (key.size() != crypto_aead_xchacha20poly1305_ietf_KEYBYTES || blob.size() < 1 + kNonce + kTag)
        return false;
    const unsigned char* bytes = reinterpret_cast<const unsigned char*>(blob.data());
    payload.assign(blob.size() - 1 - kNonce - kTag, '\0');
    unsigned long long length = 0;
    return crypto_aead_xchacha20poly1305_ietf_decrypt(
               reinterpret_cast<unsigned char*>(&payload[0]), &length, nullptr, bytes + 1 + kNonce,
               blob.size() - 1 - kNonce, reinterpret_cast<const unsigned char*>(additional.data()),
               additional.size(), bytes + 1, reinterpret_cast<const unsigned char*>(key.data())) == 0;
}

class DataProtectionTest : public zettest::RegistryTest {
protected:
    // Makes the machine key as the first encryption does.
    std::string makeKey()
    {
        const Protection made = protect("first");
        EXPECT_TRUE(made.ok);
        return made.bytes;
    }

    // Both directions fail with `error`, and the key file is left exactly as it was.
    void expectRefused(DWORD error, const std::string& blob)
    {
        const std::string before = contentOf(keyPath());
        const fs::perms modeBefore = fs::symlink_status(keyPath()).permissions();
        const Protection encrypted = protect("data");
        EXPECT_EQ(error, encrypted.error);
        EXPECT_TRUE(encrypted.bytes.empty());
        EXPECT_EQ(error, unprotect(blob).error);
        EXPECT_EQ(before, contentOf(keyPath()));
        EXPECT_EQ(modeBefore, fs::symlink_status(keyPath()).permissions());
    }
};

TEST_F(DataProtectionTest, ABlobIsVersionFreshNonceAndTheSealedDataAndAnyChangeToItIsRefused)
{
    const std::string entropy = "ent";
    const Protection blob = protect(std::string("d\0ta", 4), &entropy, L"Wi");
    ASSERT_TRUE(blob.ok);
    ASSERT_EQ(1 + kNonce + 4 + 2 * 2 + 4 + kTag, blob.bytes.size());
    EXPECT_EQ('\x01', blob.bytes[0]);

    std::string payload;
    ASSERT_TRUE(openByHand(blob.bytes, std::string("\x01", 1) + entropy, payload));
    EXPECT_EQ(std::string("\x02\0\0\0W\0i\0d\0ta", 12), payload);
    EXPECT_FALSE(openByHand(blob.bytes, std::string("\x01", 1), payload)) << "the entropy is bound";

    ASSERT_TRUE(unprotect(blob.bytes, &entropy).ok);
    for (std::size_t at = 0; at < blob.bytes.size(); ++at) {
        for (unsigned char bit : {0x01, 0x80}) {
            std::string changed = blob.bytes;
            changed[at] = static_cast<char>(changed[at] ^ bit);
            const Protection opened = unprotect(changed, &entropy);
            EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_DATA), opened.error) << "byte " << at;
            EXPECT_TRUE(opened.bytes.empty());
        }
    }
    for (std::size_t length = 0; length < blob.bytes.size(); ++length)
        EXPECT_FALSE(unprotect(blob.bytes.substr(0, length), &entropy).ok) << "cut to " << length;
    EXPECT_FALSE(unprotect(blob.bytes + '\0', &entropy).ok);
}

TEST_F(DataProtectionTest, AnOwnerOnlyKeyIsMadeOnceAndAloneOpensAndOneOthersMayUseOrOfTheWrongKindIsRefused)
{
    const mode_t previous = umask(0);
    const std::string blob = makeKey();
    umask(previous);
    const std::string key = keyPath();
    EXPECT_EQ(registry.storeDirectory() + ".key", key);
    struct stat info;
    ASSERT_EQ(0, lstat(key.c_str(), &info));
    EXPECT_EQ(0600u, info.st_mode & 07777);
    EXPECT_EQ(geteuid(), info.st_uid);
    // Nothing of it inside the store (no candidate left beside it: the racing test's).
    if (fs::exists(registry.storeDirectory())) {
        for (const auto& entry : fs::recursive_directory_iterator(registry.storeDirectory()))
            EXPECT_NE(contentOf(key), contentOf(entry.path().string())) << entry.path();
    }

    const std::string oldKey = contentOf(key);
    EXPECT_TRUE(protect("second").ok);
    EXPECT_EQ(oldKey, contentOf(key));
    EXPECT_TRUE(unprotect(blob).ok);

    // With the key in use by this thread, a change of the key file is still seen.
    fs::remove(key);
    EXPECT_EQ(static_cast<DWORD>(ERROR_FILE_NOT_FOUND), unprotect(blob).error);
    EXPECT_FALSE(fs::exists(key)) << "decrypting made a key";
    // A new key made by the next encryption doesn't open what the old one sealed.
    const Protection again = protect("again");
    EXPECT_TRUE(again.ok);
    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_DATA), unprotect(blob).error);
    ASSERT_TRUE(unprotect(again.bytes).ok);
    // The old key put back as an administrator would: written aside, renamed over.
    overwrite(key + ".aside", oldKey);
    chmod((key + ".aside").c_str(), 0600);
    fs::rename(key + ".aside", key);
    EXPECT_TRUE(unprotect(blob).ok);
    EXPECT_FALSE(unprotect(again.bytes).ok);

    // A key file that others may use, or of the wrong kind, is refused and kept as it is.
    const std::string elsewhere = keyPath() + ".real";
    const struct {
        const char* what;
        DWORD error;
        std::function<void()> damage;
    } cases[] = {
        {"group may read", ERROR_ACCESS_DENIED, [&] { chmod(keyPath().c_str(), 0640); }},
        {"others may read", ERROR_ACCESS_DENIED, [&] { chmod(keyPath().c_str(), 0604); }},
        {"others may write", ERROR_ACCESS_DENIED, [&] { chmod(keyPath().c_str(), 0602); }},
        {"empty", ERROR_INVALID_DATA, [&] { overwrite(keyPath(), ""); }},
        {"short", ERROR_INVALID_DATA, [&] { overwrite(keyPath(), oldKey.substr(0, 31)); }},
        {"long", ERROR_INVALID_DATA, [&] { overwrite(keyPath(), oldKey + "x"); }},
        {"symbolic link", ERROR_ACCESS_DENIED,
         [&] {
             fs::rename(keyPath(), elsewhere);
             fs::create_symlink(elsewhere, keyPath());
         }},
        {"directory", ERROR_ACCESS_DENIED,
         [&] {
             fs::remove(keyPath());
             fs::create_directory(keyPath());
             chmod(keyPath().c_str(), 0700);
         }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        ASSERT_TRUE(unprotect(blob).ok) << "the key in use when it is damaged";
        c.damage();
        expectRefused(c.error, blob);
        fs::remove_all(keyPath());
        fs::remove(elsewhere);
        overwrite(keyPath(), oldKey);
        ASSERT_EQ(0, chmod(keyPath().c_str(), 0600));
    }
    if (geteuid() == 0) {  // only root can give the key to another user
        ASSERT_EQ(0, chown(keyPath().c_str(), 1, 1));
        expectRefused(ERROR_ACCESS_DENIED, blob);
        ASSERT_EQ(0, chown(keyPath().c_str(), geteuid(), getegid()));
    }
    ASSERT_EQ(0, chmod(keyPath().c_str(), 0400));
    EXPECT_TRUE(unprotect(blob).ok) << "owner read-only is fine";
}

const wchar_t kKeyPath[] = L"Software\\ZetProtection";
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
    return std::equal(words.begin() + 1, words.end(), words.begin());
}

// args: signal directory, how many reads of the blob to check. As a user who may read the store
// but not write it (writes refused: NetworkSettingsTest, RecordStoreProcessesTest, BaseFamilyTest),
// nor read its key: reads values whole while they are written, decrypts nothing, and encrypts
// under a key kept nowhere, into "made". Exits with the number of the first broken promise.
ZET_CHILD_SCENARIO(seam_store_as_nobody)
{
    zettest::SignalDirectory signals(args.at(0));
    if (!zettest::becomeUnprivileged())
        return 100;
    zettest::ScopedKey key;
    if (zettest::openKey(HKEY_LOCAL_MACHINE, kKeyPath, key, KEY_READ) != ERROR_SUCCESS)
        return 1;
    for (int i = std::stoi(args.at(1)); i > 0; --i) {
        if (!blobIsWhole(key.get()))
            return 2;
    }
    const Protection encrypted = protect("data");
    signals.write("made", encrypted.bytes);
    return encrypted.ok && !unprotect(signals.read("blob")).ok ? 0 : 3;
}

TEST_F(DataProtectionTest, AProcessThatMayNotWriteTheStoreReadsItWholeButNeitherReadsNorMakesNorReplacesTheKey)
{
    zettest::ScopedKey key;
    ASSERT_EQ(ERROR_SUCCESS, zettest::createKey(HKEY_LOCAL_MACHINE, kKeyPath, key));
    ASSERT_EQ(ERROR_SUCCESS, writeBlob(key.get(), 0));
    if (!zettest::canDropPrivileges())
        GTEST_SKIP() << "needs root to act as another user";
    zettest::SignalDirectory signals;
    fs::permissions(signals.path(), fs::perms(0777));
    fs::permissions(fs::path(registry.storeDirectory()).parent_path(), fs::perms(0777));
    signals.write("blob", makeKey());
    const std::string machineKey = contentOf(keyPath());

    std::atomic<bool> stop(false);
    std::atomic<DWORD> rounds(0);
    std::thread writer([&] {
        for (DWORD round = 1; !stop; ++round) {
            if (writeBlob(key.get(), round) == ERROR_SUCCESS)
                rounds = round;
        }
    });
    const int result = zettest::runChild("seam_store_as_nobody", {signals.path(), "3000"});
    stop = true;
    writer.join();
    EXPECT_EQ(0, result);
    EXPECT_GT(rounds.load(), 0u) << "nothing was written while the other process read";
    EXPECT_EQ(machineKey, contentOf(keyPath()));
    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_DATA), unprotect(signals.read("made")).error);

    fs::remove(keyPath());
    EXPECT_EQ(0, zettest::runChild("seam_store_as_nobody", {signals.path(), "0"}));
    EXPECT_FALSE(fs::exists(keyPath())) << "a process the store refuses made the key";
}

// args: signal directory, index. Encrypts its index as soon as told to, to "blob-<index>".
ZET_CHILD_SCENARIO(seam_key_race)
{
    zettest::SignalDirectory signals(args.at(0));
    if (!signals.awaitRaised("go"))
        return 3;
    const Protection blob = protect(args.at(1));
    signals.write("blob-" + args.at(1), blob.bytes);
    return blob.ok ? 0 : 2;
}

TEST_F(DataProtectionTest, ProcessesRacingToMakeTheKeyAgreeOnOne)
{
    const int kProcesses = 4;
    for (int round = 0; round < 10; ++round) {  // enough for some to collide
        zettest::TestRegistry fresh;
        zettest::SignalDirectory signals;
        std::vector<std::unique_ptr<zettest::ChildProcess>> children;
        for (int i = 0; i < kProcesses; ++i)
            children.emplace_back(new zettest::ChildProcess("seam_key_race", {signals.path(), std::to_string(i)}));
        signals.raise("go");
        for (int i = 0; i < kProcesses; ++i) {
            ASSERT_EQ(0, children[i]->wait());
            const Protection opened = unprotect(signals.read("blob-" + std::to_string(i)));
            EXPECT_TRUE(opened.ok) << "round " << round << ", process " << i;
            EXPECT_EQ(std::to_string(i), opened.bytes);
        }
        const fs::path parent = fs::path(fresh.storeDirectory()).parent_path();
        for (const auto& entry : fs::directory_iterator(parent))
            EXPECT_TRUE(entry.path() == keyPath() || entry.path() == fresh.storeDirectory()) << entry.path();
    }
}

}  // namespace
