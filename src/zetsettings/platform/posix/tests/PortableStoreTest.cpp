// The store behind the portable registry: its files, its map, damaged files, bounds in UTF-16
// units, what is stored byte for byte, and a forked child on it. (A process that may not write
// it is DataProtection_test's.)
#include <gtest/gtest.h>
#include <lmdb.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "support/ChildProcess.h"
#include "support/ChildScenario.h"
#include "support/TestRegistry.h"
#include "zetsettings/components/tests/ProcessSignals.h"
#include "zetsettings/platform/RegistryBatch.h"
#include "zetsettings/platform/posix/StoreLocation.h"
#include "zetsettings/platform/posix/Win32Portable.h"
#include "zetsettings/platform/posix/registry/CaseFolding.h"
#include "zetsettings/platform/posix/registry/HandleTable.h"
#include "zetsettings/platform/posix/registry/RegistryTree.h"
#include "zetsettings/platform/posix/registry/StoreCatalog.h"
#include "zetsettings/platform/tests/RegistryTestKeys.h"

namespace zet {
namespace portable {
namespace registry {
namespace {

namespace fs = std::filesystem;
using zettest::ScopedKey;

const wchar_t kKeyPath[] = L"Software\\ZetPortable";

LONG writeBlobs(const std::string& prefix, int count, size_t size)
{
    ScopedKey key;
    LONG status = zettest::createKey(HKEY_LOCAL_MACHINE, kKeyPath, key);
    for (int i = 0; i < count && status == ERROR_SUCCESS; ++i) {
        const std::vector<BYTE> data(size, static_cast<BYTE>(i));
        const std::wstring name = zettest::widen(prefix) + std::to_wstring(i);
        status = RegSetValueExW(key.get(), name.c_str(), 0, REG_BINARY, data.data(), static_cast<DWORD>(data.size()));
    }
    return status;
}

// How many of the blobs read back whole.
int intactBlobs(const std::string& prefix, int count, size_t size)
{
    ScopedKey key;
    if (zettest::openKey(HKEY_LOCAL_MACHINE, kKeyPath, key, KEY_READ) != ERROR_SUCCESS)
        return 0;
    int intact = 0;
    for (int i = 0; i < count; ++i) {
        std::vector<BYTE> data(size + 1);
        DWORD bytes = static_cast<DWORD>(data.size());
        const std::wstring name = zettest::widen(prefix) + std::to_wstring(i);
        if (RegQueryValueExW(key.get(), name.c_str(), nullptr, nullptr, data.data(), &bytes) == ERROR_SUCCESS) {
            data.resize(bytes);
            intact += data == std::vector<BYTE>(size, static_cast<BYTE>(i));
        }
    }
    return intact;
}

// args: prefix, count, size.
ZET_CHILD_SCENARIO(portable_write_blobs)
{
    return writeBlobs(args.at(0), std::stoi(args.at(1)), std::stoul(args.at(2))) == ERROR_SUCCESS ? 0 : 1;
}

void overwrite(const std::string& path, size_t size)
{
    std::ofstream(path, std::ios::binary | std::ios::trunc) << std::string(size, '\x5a');
}

// A plain LMDB database of someone else's in the directory.
void makeForeignDatabase(const std::string& directory)
{
    MDB_env* env = nullptr;
    MDB_txn* txn = nullptr;
    MDB_dbi dbi = 0;
    mdb_env_create(&env);
    ASSERT_EQ(MDB_SUCCESS, mdb_env_open(env, directory.c_str(), 0, 0644));
    ASSERT_EQ(MDB_SUCCESS, mdb_txn_begin(env, nullptr, 0, &txn));
    ASSERT_EQ(MDB_SUCCESS, mdb_dbi_open(txn, nullptr, 0, &dbi));
    MDB_val key = {5, const_cast<char*>("hello")}, data = {5, const_cast<char*>("world")};
    ASSERT_EQ(MDB_SUCCESS, mdb_put(txn, dbi, &key, &data, 0));
    ASSERT_EQ(MDB_SUCCESS, mdb_txn_commit(txn));
    mdb_env_close(env);
}

class PortableStore : public zettest::RegistryTest {
protected:
    void TearDown() override { unsetenv("ZET_REGISTRY_INITIAL_MAP"); }

    std::string file(const char* name) const { return registry.storeDirectory() + "/" + name; }
    static std::shared_ptr<Store> store() { return StoreCatalog::instance().current(); }
};

int descriptorsOn(const std::string& path)
{
    int count = 0;
    std::error_code gone;  // a descriptor closed meanwhile counts as none
    for (const auto& entry : fs::directory_iterator("/proc/self/fd"))
        count += fs::read_symlink(entry.path(), gone) == path;
    return count;
}

// The store directory is remembered between calls: every way of changing the environment must
// still be seen by the next call.
TEST_F(PortableStore, TheStoreDirectoryFollowsEveryChangeOfTheEnvironment)
{
    const std::string defaultDirectory = "/var/lib/zetsettings";
    auto current = [] { return std::string(storeDirectoryName()); };
    EXPECT_EQ(registry.storeDirectory(), current());
    ASSERT_EQ(0, setenv("ZET_REGISTRY_DIR", "/nowhere/one", 1));
    EXPECT_EQ("/nowhere/one", current());
    for (int i = 0; i < 64; ++i)  // grows, and so moves, the array
        ASSERT_EQ(0, setenv(("ZET_TEST_FILLER_" + std::to_string(i)).c_str(), "x", 1));
    ASSERT_EQ(0, unsetenv("ZET_TEST_FILLER_0"));
    EXPECT_EQ("/nowhere/one", current());
    ASSERT_EQ(0, unsetenv("ZET_REGISTRY_DIR"));
    EXPECT_EQ(defaultDirectory, current());
    ASSERT_EQ(0, unsetenv("ZET_TEST_FILLER_63"));
    EXPECT_EQ(defaultDirectory, current());
    // One removed and ours added in its place leave the array as long as before.
    ASSERT_EQ(0, unsetenv("ZET_TEST_FILLER_62"));
    ASSERT_EQ(0, setenv("ZET_REGISTRY_DIR", "/nowhere/two", 1));
    EXPECT_EQ("/nowhere/two", current());
    static char given[] = "ZET_REGISTRY_DIR=/nowhere/three";
    ASSERT_EQ(0, putenv(given));
    EXPECT_EQ("/nowhere/three", current());
    ASSERT_EQ(0, setenv("ZET_REGISTRY_DIR", "", 1));
    EXPECT_EQ(defaultDirectory, current());
    for (int i = 1; i < 62; ++i)
        unsetenv(("ZET_TEST_FILLER_" + std::to_string(i)).c_str());
    ASSERT_EQ(0, setenv("ZET_REGISTRY_DIR", registry.storeDirectory().c_str(), 1));
}

TEST_F(PortableStore, FilesTakeTheDirectorysModeNotTheUmaskAndAreSyncedOnCommit)
{
    ASSERT_EQ(0, mkdir(registry.storeDirectory().c_str(), 0750));
    ASSERT_EQ(0, chmod(registry.storeDirectory().c_str(), 0750));
    const mode_t previous = umask(077);
    const LONG written = writeBlobs("File", 1, 16);
    umask(previous);
    ASSERT_EQ(ERROR_SUCCESS, written);

    std::set<std::string> files;
    for (const auto& entry : fs::directory_iterator(registry.storeDirectory()))
        files.insert(entry.path().filename().string());
    EXPECT_EQ((std::set<std::string>{"data.mdb", "lock.mdb"}), files);
    for (const char* name : {"data.mdb", "lock.mdb"})
        EXPECT_EQ(fs::perms(0640), fs::status(file(name)).permissions()) << name;
    unsigned int flags = 0;
    ASSERT_EQ(MDB_SUCCESS, mdb_env_get_flags(store()->environment(), &flags));
    EXPECT_EQ(0u, flags & (MDB_NOSYNC | MDB_MAPASYNC | MDB_WRITEMAP));
    EXPECT_NE(0u, flags & MDB_NOTLS);
    // Only LMDB's own descriptor on the lock file: closing a second one would drop its locks.
    EXPECT_EQ(1, descriptorsOn(fs::canonical(file("lock.mdb")).string()));
}

// From a tiny map: grown by another process and adopted here, then grown several times over
// by one write in the middle of a batch that keeps all its writes and commits once.
TEST_F(PortableStore, TheMapGrowsInAnotherProcessAndInTheMiddleOfABatch)
{
    setenv("ZET_REGISTRY_INITIAL_MAP", "65536", 1);
    ASSERT_EQ(ERROR_SUCCESS, writeBlobs("Parent", 1, 8));
    ASSERT_EQ(65536u, store()->mapSize());
    ASSERT_EQ(0, zettest::runChild("portable_write_blobs", {"Child", "40", "8192"}));
    EXPECT_EQ(40, intactBlobs("Child", 40, 8192)) << "the grown map is adopted";
    const uint64_t before = store()->lastCommitted();
    {
        zet::RegistryBatch batch;
        ASSERT_EQ(ERROR_SUCCESS, writeBlobs("Block", 100, 4096));
        ASSERT_EQ(ERROR_SUCCESS, writeBlobs("Huge", 1, 2 * 1024 * 1024));
        EXPECT_EQ(100, intactBlobs("Block", 100, 4096)) << "read in the batch after the map grew";
        EXPECT_EQ(ERROR_SUCCESS, batch.commit());
    }
    EXPECT_EQ(before + 1, store()->lastCommitted());
    EXPECT_EQ(1, intactBlobs("Huge", 1, 2 * 1024 * 1024));
    EXPECT_EQ(100, intactBlobs("Block", 100, 4096));
    EXPECT_EQ(40, intactBlobs("Child", 40, 8192));
}

// A damaged or foreign data file gives an error, not a crash; a garbage lock file is rebuilt.
TEST_F(PortableStore, ADamagedOrForeignDataFileGivesAnErrorAndAGarbageLockFileIsRebuilt)
{
    const struct {
        const char* what;
        LONG result;
        std::function<void(const std::string&)> damage;
    } cases[] = {
        {"garbage lock file", ERROR_SUCCESS, [](const std::string& directory) {
             ASSERT_EQ(0, zettest::runChild("portable_write_blobs", {"Kept", "3", "100"}));
             overwrite(directory + "/lock.mdb", 8192);
         }},
        {"garbage", ERROR_BADDB, [](const std::string& directory) {
             mkdir(directory.c_str(), 0755);
             overwrite(directory + "/data.mdb", 64 * 1024);
         }},
        {"cut short", ERROR_BADDB, [](const std::string& directory) {
             ASSERT_EQ(0, zettest::runChild("portable_write_blobs", {"Cut", "20", "4096"}));
             ASSERT_EQ(0, truncate((directory + "/data.mdb").c_str(), 3 * 4096));
         }},
        {"another database", ERROR_BADDB, [](const std::string& directory) {
             mkdir(directory.c_str(), 0755);
             makeForeignDatabase(directory);
         }},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        zettest::TestRegistry fresh;
        c.damage(fresh.storeDirectory());
        ScopedKey key;
        EXPECT_EQ(c.result, zettest::openKey(HKEY_LOCAL_MACHINE, kKeyPath, key, KEY_READ));
        EXPECT_EQ(c.result, zettest::createKey(HKEY_LOCAL_MACHINE, kKeyPath, key));
        if (c.result == ERROR_SUCCESS) {
            EXPECT_EQ(3, intactBlobs("Kept", 3, 100));
        }
    }
}

// Beyond the limits that RegistryKeys and RegistryValues check with characters of one unit each.
TEST_F(PortableStore, NameLimitsCountUtf16UnitsAndAPathLongerThanUsualIsFoundInAnyCase)
{
    ScopedKey base = zettest::testKey(L"Limits");
    ScopedKey key;
    const std::wstring pairs(8191, L'\U0001F600');
    const std::wstring keyPairs = pairs.substr(0, 127);
    EXPECT_EQ(ERROR_SUCCESS, zettest::createKey(base.get(), keyPairs + L"x", key));  // 255 units
    EXPECT_EQ(ERROR_INVALID_PARAMETER, zettest::createKey(base.get(), keyPairs + L"\U0001F600", key));  // 256
    EXPECT_EQ(ERROR_SUCCESS, zettest::setDword(base.get(), (pairs + L"x").c_str(), 1));  // 16383 units
    EXPECT_EQ(ERROR_INVALID_PARAMETER, zettest::setDword(base.get(), (pairs + L"\U0001F600").c_str(), 1));

    std::wstring written, shouted;
    for (int level = 0; level < 12; ++level) {
        const std::wstring number = std::to_wstring(level);
        written += L"Level" + number + L"\u00e9" + std::wstring(200, L'n') + L"\\";
        shouted += L"LEVEL" + number + L"\u00c9" + std::wstring(200, L'N') + L"\\";
    }
    ScopedKey longPath = zettest::testKey(L"LongPath");
    ASSERT_EQ(ERROR_SUCCESS, zettest::createKey(longPath.get(), written, key));
    EXPECT_EQ(ERROR_SUCCESS, zettest::openKey(longPath.get(), shouted, key));
    EXPECT_EQ(std::vector<std::wstring>{written.substr(0, written.find(L'\\'))},
              zettest::subkeyNames(longPath.get()));
}

TEST_F(PortableStore, TextIsStoredAsLittleEndianUtf16)
{
    ScopedKey key = zettest::testKey(L"Bytes");
    ASSERT_EQ(ERROR_SUCCESS, zettest::setString(key.get(), L"T\u00ebxt", L"A\u00e9\U0001F600"));
    const uint64_t id = HandleTable::instance().find(key.get())->id;
    std::string stored;
    std::u16string name;
    store()->read([&](ReadTransaction& snapshot) {
        MDB_val record;
        if (RegistryTree(snapshot.txn(), snapshot.dbi()).findValueRecord(id, CaseFolding::fold(u"T\u00cbXT"), record)) {
            const ValueRecordView value = ValueRecordView::parse(record);
            stored.assign(reinterpret_cast<const char*>(value.data), value.size);
            name = value.named.name();
        }
        return 0;
    });
    EXPECT_EQ(std::string("A\0\xE9\0\x3D\xD8\x00\xDE\0\0", 10), stored);
    EXPECT_EQ(u"T\u00ebxt", name);
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

// The child uses the keys it inherited and opens its own, but shares no hold of a mutex; its
// end leaves the parent's store and mutex as they were.
TEST_F(PortableStore, AForkedChildWorksOnItsOwnAndLeavesTheParentWhole)
{
    ScopedKey key;
    ASSERT_EQ(ERROR_SUCCESS, zettest::createKey(HKEY_LOCAL_MACHINE, kKeyPath, key));
    ASSERT_EQ(ERROR_SUCCESS, zettest::setDword(key.get(), L"Parent", 1));
    const std::wstring name = zettest::uniqueMutexName("fork");
    const HANDLE mutex = CreateMutexW(nullptr, TRUE, name.c_str());
    ASSERT_NE(nullptr, mutex);

    EXPECT_EQ(0, inForkedChild([&] {
        DWORD value = 0;
        int failures = zettest::getDword(key.get(), L"Parent", value) != ERROR_SUCCESS || value != 1;
        failures |= (zettest::setDword(key.get(), L"ThroughInherited", 2) != ERROR_SUCCESS) << 1;
        ScopedKey own;
        failures |= (zettest::openKey(HKEY_LOCAL_MACHINE, kKeyPath, own) != ERROR_SUCCESS) << 2;
        failures |= (zettest::setDword(own.get(), L"ThroughOwn", 3) != ERROR_SUCCESS) << 3;
        failures |= (ReleaseMutex(mutex) || GetLastError() != ERROR_NOT_OWNER) << 4;
        failures |= (WaitForSingleObject(mutex, 0) != WAIT_TIMEOUT) << 5;
        return failures;
    }));
    DWORD inherited = 0, own = 0;
    EXPECT_EQ(ERROR_SUCCESS, zettest::getDword(key.get(), L"ThroughInherited", inherited));
    EXPECT_EQ(ERROR_SUCCESS, zettest::getDword(key.get(), L"ThroughOwn", own));
    EXPECT_EQ(23u, inherited * 10 + own);
    // The parent writes, and so do others; it still holds the mutex (tried by NamedMutex_test's
    // scenario), which a child forked after its release takes.
    EXPECT_EQ(ERROR_SUCCESS, zettest::setDword(key.get(), L"ParentAfter", 4));
    ASSERT_EQ(0, zettest::runChild("portable_write_blobs", {"AfterFork", "1", "4"}));
    EXPECT_EQ(1, intactBlobs("AfterFork", 1, 4));
    EXPECT_EQ(1, zettest::runChild("seam_mutex_try", {zettest::narrow(name)}));
    EXPECT_TRUE(ReleaseMutex(mutex));
    EXPECT_EQ(0, inForkedChild([&] {
        return WaitForSingleObject(mutex, 0) == WAIT_OBJECT_0 && ReleaseMutex(mutex) ? 0 : 1;
    }));
    EXPECT_TRUE(CloseHandle(mutex));
}

}  // namespace
}  // namespace registry
}  // namespace portable
}  // namespace zet
