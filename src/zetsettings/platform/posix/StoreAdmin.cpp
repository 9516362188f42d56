#include "zetsettings/platform/posix/StoreAdmin.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <lmdb.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <memory>

#include "zetsettings/platform/posix/Deadline.h"
#include "zetsettings/platform/posix/LockFile.h"
#include "zetsettings/platform/posix/MachineKey.h"
#include "zetsettings/platform/posix/StoreFiles.h"
#include "zetsettings/platform/posix/StoreLocation.h"
#include "zetsettings/platform/posix/registry/StoreCatalog.h"

namespace zet {
namespace portable {
namespace {

const char kBackupMagic[16] = {'Z', 'E', 'T', 'S', 'T', 'O', 'R', 'E', '-', 'B', 'A', 'C', 'K', 'U', 'P', '1'};
const std::size_t kTrailerSize = MachineKey::kSize + sizeof(kBackupMagic);
const wchar_t kProductMutex[] = L"zetPreferredNetMutex";

std::string octal(mode_t mode)
{
    char text[8];
    snprintf(text, sizeof(text), "%04o", static_cast<unsigned>(mode & 07777));
    return text;
}

std::string errorText(int error)
{
    return std::strerror(error);
}

bool mayAccess(const std::string& path, int how)
{
    return faccessat(AT_FDCWD, path.c_str(), how, AT_EACCESS) == 0;
}

// ---- what the files say ----------------------------------------------------------------------

StoreFileReport look(const std::string& role, const std::string& path)
{
    StoreFileReport file;
    file.role = role;
    file.path = path;
    struct stat info;
    if (lstat(path.c_str(), &info) != 0)
        return file;
    file.present = true;
    file.owner = info.st_uid;
    file.group = info.st_gid;
    file.mode = info.st_mode;
    file.size = static_cast<std::uint64_t>(info.st_size);
    return file;
}

// What a file of the store must not be: a stranger's, or open to others beyond `expected`;
// and what it must be: open to all of the store's users as `expected` says.
// Others reading LMDB's or the lock files in a directory closed to them is harmless: they
// can't reach them; writing them, where the store lets them reach, is not.
std::string problemOf(const StoreFileReport& file, const StoreOwnership& store, mode_t expected)
{
    if (!S_ISREG(file.mode))
        return "not a regular file";
    if (file.owner != 0 && file.owner != store.owner)
        return "owned by uid " + std::to_string(file.owner) + ", neither root nor the store's owner";
    if (file.mode & S_IWOTH & ~expected)
        return "open to others (mode " + octal(file.mode) + ", the store gives " + octal(expected) + ")";
    if ((file.mode & 0070) && file.group != store.group)
        return "open to gid " + std::to_string(file.group) + ", not the store's group";
    if ((file.mode & 0777) != (expected & 0777))
        return "mode " + octal(file.mode) + ", not the store's " + octal(expected);
    return "";
}

std::string directoryProblem(const StoreFileReport& directory)
{
    if (!S_ISDIR(directory.mode))
        return "not a directory";
    if (directory.mode & S_IWOTH)
        return "open to others: writable by every user (mode " + octal(directory.mode) + ")";
    return "";
}

std::vector<std::string> mutexLockFiles(const std::string& directory)
{
    std::vector<std::string> names;
    if (DIR* listing = opendir(directory.c_str())) {
        while (const dirent* entry = readdir(listing)) {
            const std::string name = entry->d_name;
            if (name.compare(0, 5, "mutex") == 0 && name.size() > 5 && name.substr(name.size() - 5) == ".lock")
                names.push_back(name);
        }
        closedir(listing);
    }
    return names;
}

void describeKey(StoreReport& report, StoreFileReport& key, const StoreOwnership& store)
{
    if (!key.present) {
        report.keyState = "absent";
        return;
    }
    struct stat info;
    lstat(key.path.c_str(), &info);
    if (const char* reason = untrustedKeyReason(info, store))
        key.problem = reason;
    else if (key.size != MachineKey::kSize)
        key.problem = "not a key: " + std::to_string(key.size) + " bytes";
    else if (store.keyMode() & 0040 && !(key.mode & 0040))
        key.problem = "mode " + octal(key.mode) + ", not the store's " + octal(store.keyMode());
    MachineKey loaded;
    const DWORD error = loaded.load(report.directory);
    report.keyState = error == ERROR_SUCCESS ? "usable" : "unusable";
    if (error == ERROR_SUCCESS)
        return;
    if (!key.problem.empty())
        report.keyReason = key.problem;
    else if (!mayAccess(key.path, R_OK))
        report.keyReason = "this process may not read it";
    else
        report.keyReason = "Windows error " + std::to_string(error);
}

// ---- LMDB, opened apart from the registry ----------------------------------------------------

struct Environment {
    MDB_env* env = nullptr;
    bool locked = false;
    ~Environment()
    {
        if (env)
            mdb_env_close(env);
    }
    int open(const std::string& directory, unsigned int flags)
    {
        int rc = mdb_env_create(&env);
        if (rc == MDB_SUCCESS)
            mdb_env_set_maxreaders(env, 510);
        if (rc == MDB_SUCCESS)
            rc = mdb_env_open(env, directory.c_str(), flags, 0600);
        if (rc != MDB_SUCCESS) {
            mdb_env_close(env);
            env = nullptr;
        }
        return rc;
    }
    // With a reader slot where this process may have one, so that writers keep our snapshot.
    int openToRead(const std::string& directory)
    {
        int rc = open(directory, MDB_RDONLY | MDB_NOTLS);
        locked = rc == MDB_SUCCESS;
        if (rc == EACCES)
            rc = open(directory, MDB_RDONLY | MDB_NOTLS | MDB_NOLOCK);
        return rc;
    }
};

// Lines of "pid thread txnid" (after a heading, or "(no active readers)"); an idle slot shows
// "-" as its transaction.
int countReading(const char* line, void* counter)
{
    int pid = 0;
    char thread[32], transaction[32];
    if (std::sscanf(line, "%d %31s %31s", &pid, thread, transaction) == 3 && std::strcmp(transaction, "-") != 0)
        ++*static_cast<std::uint64_t*>(counter);
    return 0;
}

void describeEnvironment(StoreReport& report)
{
    Environment store;
    const int rc = store.openToRead(report.directory);
    if (rc != MDB_SUCCESS) {
        report.openError = mdb_strerror(rc);
        return;
    }
    MDB_stat statistics;
    MDB_envinfo info;
    if (mdb_env_stat(store.env, &statistics) != MDB_SUCCESS || mdb_env_info(store.env, &info) != MDB_SUCCESS) {
        report.openError = "the store's statistics can't be read";
        return;
    }
    report.opened = true;
    report.entries = statistics.ms_entries;
    report.mapSize = info.me_mapsize;
    if (store.locked) {
        // Slots of processes that died would count as readers; any user of the store clears them.
        int dead = 0;
        mdb_reader_check(store.env, &dead);
        mdb_reader_list(store.env, &countReading, &report.liveReaders);
    }
}

// ---- making files ----------------------------------------------------------------------------

void makeParents(const std::string& directory)
{
    const std::string::size_type slash = directory.rfind('/');
    if (slash == std::string::npos || slash == 0)
        return;
    if (const int failure = ensureStoreDirectory(directory.substr(0, slash)))
        throw StoreAdminError("can't make " + directory.substr(0, slash) + ": " + errorText(failure));
}

gid_t groupNamed(const std::string& name)
{
    if (name.empty())
        return getegid();
    const group* found = getgrnam(name.c_str());
    if (!found)
        throw StoreAdminError("there is no group \"" + name + "\"");
    return found->gr_gid;
}

std::string groupName(gid_t gid)
{
    const group* found = getgrgid(gid);
    return found ? found->gr_name : std::to_string(gid);
}

bool makeDirectory(const std::string& directory, const std::string& group)
{
    const gid_t gid = groupNamed(group);
    makeParents(directory);
    if (mkdir(directory.c_str(), 0700) != 0) {
        if (errno == EEXIST)
            return false;
        throw StoreAdminError("can't make " + directory + ": " + errorText(errno));
    }
    if (chown(directory.c_str(), geteuid(), gid) != 0 ||
        chmod(directory.c_str(), group.empty() ? 0700 : 02770) != 0) {
        const int failure = errno;
        rmdir(directory.c_str());
        throw StoreAdminError("can't give " + directory + " its owner and mode: " + errorText(failure));
    }
    return true;
}

void refuseUnsafe(const StoreReport& report, const std::string& group)
{
    std::vector<std::string> reasons = report.problems();
    const StoreFileReport& directory = report.files.front();
    if (geteuid() != 0 && directory.owner != geteuid())
        reasons.push_back(directory.path + ": owned by uid " + std::to_string(directory.owner) +
                          ", not by this user");
    if (!group.empty() && (!report.groupStore || directory.group != groupNamed(group)))
        reasons.push_back(directory.path + ": a store of " +
                          (report.groupStore ? "the group " + groupName(directory.group) : "its owner alone") +
                          ", not of the group " + group + " (change it by hand, or init elsewhere)");
    if (reasons.empty())
        return;
    std::string text = "refused, nothing changed:";
    for (const std::string& reason : reasons)
        text += "\n  " + reason;
    throw StoreAdminError(text);
}

// A file of the store's owner or root that only has another mode than the store gives.
bool isRepairable(const std::string& problem)
{
    return problem.compare(0, 5, "mode ") == 0;
}

std::string userName(uid_t uid)
{
    const passwd* found = getpwuid(uid);
    return found ? found->pw_name : std::to_string(uid);
}

std::string describeFile(const StoreFileReport& file)
{
    return file.path + " (" + userName(file.owner) + ":" + groupName(file.group) + " " + octal(file.mode) + ")";
}

void takeProductMutexOnce(const std::string& directory)
{
    LockFile lock(kProductMutex);
    DWORD error = ERROR_SUCCESS;
    const LockFile::Outcome outcome = lock.lock(directory.c_str(), Deadline(0), error);
    if (outcome == LockFile::Outcome::Failed)
        throw StoreAdminError("can't make the lock file of the named mutex: Windows error " + std::to_string(error));
    if (outcome != LockFile::Outcome::TimedOut)
        lock.unlock();
}

// ---- backup and restore ----------------------------------------------------------------------

bool readAllAt(int fd, void* bytes, std::size_t size, off_t offset)
{
    char* at = static_cast<char*>(bytes);
    while (size > 0) {
        const ssize_t got = pread(fd, at, size, offset);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return false;
        at += got;
        offset += got;
        size -= static_cast<std::size_t>(got);
    }
    return true;
}

class Descriptor {
public:
    explicit Descriptor(int fd) : m_fd(fd) {}
    ~Descriptor()
    {
        if (m_fd >= 0)
            close(m_fd);
    }
    int get() const { return m_fd; }

private:
    int m_fd;
};

// Copies `size` bytes from `from` at its start into a new file `path`, given the store's
// ownership and `mode`, synced.
void writeRestored(int from, off_t size, const std::string& path, const StoreOwnership& store, mode_t mode)
{
    Descriptor to(open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (to.get() < 0)
        throw StoreAdminError("can't write " + path + ": " + errorText(errno));
    store.adopt(to.get(), mode);
    char buffer[1 << 16];
    for (off_t done = 0; done < size;) {
        const std::size_t chunk = static_cast<std::size_t>(std::min<off_t>(sizeof(buffer), size - done));
        if (!readAllAt(from, buffer, chunk, done) || !writeAll(to.get(), buffer, chunk))
            throw StoreAdminError("can't copy the backup into " + path + ": " + errorText(errno));
        done += static_cast<off_t>(chunk);
    }
    if (fsync(to.get()) != 0)
        throw StoreAdminError("can't sync " + path + ": " + errorText(errno));
}

void checkIsStore(const std::string& dataFile)
{
    Environment copy;
    const int rc = copy.open(dataFile, MDB_RDONLY | MDB_NOTLS | MDB_NOLOCK | MDB_NOSUBDIR);
    MDB_stat statistics;
    if (rc != MDB_SUCCESS || mdb_env_stat(copy.env, &statistics) != MDB_SUCCESS)
        throw StoreAdminError("the backup holds no store: " + std::string(mdb_strerror(rc)));
}

void placeOver(const std::string& temporary, const std::string& path)
{
    if (rename(temporary.c_str(), path.c_str()) != 0) {
        const int failure = errno;
        unlink(temporary.c_str());
        throw StoreAdminError("can't put " + path + " in place: " + errorText(failure));
    }
}

}  // namespace

std::vector<std::string> StoreReport::problems() const
{
    std::vector<std::string> lines;
    for (const StoreFileReport& file : files)
        if (!file.problem.empty())
            lines.push_back(file.path + ": " + file.problem);
    return lines;
}

std::string currentStoreDirectory(std::string& chosenBy)
{
    const char* named = getenv("ZET_REGISTRY_DIR");
    chosenBy = named && *named ? "ZET_REGISTRY_DIR" : "default";
    return storeDirectory();
}

StoreReport inspectStore(const std::string& directory)
{
    StoreReport report = inspectFiles(directory);
    if (report.exists && !mayAccess(directory, X_OK))
        report.openError = "this process may not enter the store's directory: it is not one of the store's users";
    else if (report.hasData)
        describeEnvironment(report);
    return report;
}

StoreReport inspectFiles(const std::string& directory)
{
    StoreReport report;
    report.directory = directory;
    StoreFileReport folder = look("directory", directory);
    report.exists = folder.present;
    StoreOwnership store;
    if (folder.present) {
        folder.problem = directoryProblem(folder);
        store.readFrom(directory);
        report.groupStore = store.isGroupStore();
    }
    report.files.push_back(folder);
    if (folder.present && S_ISDIR(folder.mode)) {
        for (const char* name : {"data.mdb", "lock.mdb"}) {
            StoreFileReport file = look(name[0] == 'd' ? "data" : "lock", directory + "/" + name);
            if (file.present)
                file.problem = problemOf(file, store, store.dataMode());
            report.files.push_back(file);
        }
        for (const std::string& name : mutexLockFiles(directory)) {
            StoreFileReport file = look("mutex lock", directory + "/" + name);
            file.problem = problemOf(file, store, store.lockMode());
            report.files.push_back(file);
        }
    }
    StoreFileReport key = look("key", machineKeyPath(directory));
    describeKey(report, key, store);
    report.files.push_back(key);

    const std::string data = directory + "/data.mdb";
    report.hasData = report.files.size() > 2 && report.files[1].present;
    report.mayRead = report.hasData && mayAccess(directory, X_OK) && mayAccess(data, R_OK);
    report.mayWrite = report.mayRead && mayAccess(data, W_OK) && mayAccess(directory + "/lock.mdb", W_OK);
    return report;
}

std::vector<std::string> initStore(const std::string& directory, const std::string& group)
{
    std::vector<std::string> lines;
    const bool made = makeDirectory(directory, group);
    if (made) {
        lines.push_back("made: " + describeFile(look("directory", directory)));
    } else {
        const StoreReport before = inspectFiles(directory);
        if (before.files.front().present && !S_ISDIR(before.files.front().mode))
            throw StoreAdminError(directory + " is not a directory");
        StoreReport checked = before;
        for (StoreFileReport& file : checked.files)
            if (isRepairable(file.problem))
                file.problem.clear();
        refuseUnsafe(checked, group);
    }
    StoreOwnership store;
    store.readFrom(directory);
    // The registry makes LMDB's files and the key with the store's owners and modes. A store
    // that is whole is left untouched, its lock files included.
    if (!look("", directory + "/data.mdb").present || !look("", directory + "/lock.mdb").present) {
        try {
            registry::StoreCatalog::instance().forDirectory(directory);
        } catch (const registry::StoreFailure& failure) {
            throw StoreAdminError("can't open the store: Windows error " + std::to_string(failure.win32Error()));
        }
    }
    if (!look("", directory + "/" + LockFile::fileName(kProductMutex)).present)
        takeProductMutexOnce(directory);
    MachineKey key;
    const DWORD keyError = key.loadOrCreate(directory);

    const StoreReport after = inspectFiles(directory);
    for (const StoreFileReport& file : after.files) {
        if (isRepairable(file.problem)) {
            store.adopt(file.path, file.role == "key"          ? store.keyMode()
                                   : file.role == "mutex lock" ? store.lockMode()
                                                               : store.dataMode());
            lines.push_back("given the store's mode: " + describeFile(look(file.role, file.path)));
        } else if (file.role != "directory" || !made) {
            lines.push_back((made ? "made: " : "there: ") + describeFile(file));
        }
    }
    if (keyError != ERROR_SUCCESS)
        throw StoreAdminError("the machine key can't be made or used (" + machineKeyPath(directory) +
                              "): Windows error " + std::to_string(keyError));
    return lines;
}

void backupStore(const std::string& directory, const std::string& file)
{
    MachineKey key;
    const DWORD keyError = key.load(directory);
    if (keyError != ERROR_SUCCESS)
        throw StoreAdminError("the machine key can't be used (Windows error " + std::to_string(keyError) +
                              "): a backup without it would lose every secret");
    Environment store;
    const int rc = store.open(directory, MDB_RDONLY | MDB_NOTLS);
    if (rc != MDB_SUCCESS)
        throw StoreAdminError("can't open the store " + directory + " as one of its users: " + mdb_strerror(rc));

    const int fd = open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (fd < 0)
        throw StoreAdminError("can't make " + file + ": " + errorText(errno));
    Descriptor backup(fd);
    (void)fchmod(fd, 0600);
    // LMDB's copy is one read transaction: consistent while writers go on.
    int copied = mdb_env_copyfd2(store.env, fd, MDB_CP_COMPACT);
    const bool written = copied == MDB_SUCCESS && lseek(fd, 0, SEEK_END) >= 0 &&
                         writeAll(fd, key.bytes(), MachineKey::kSize) &&
                         writeAll(fd, kBackupMagic, sizeof(kBackupMagic)) && fsync(fd) == 0;
    if (!written) {
        const std::string why = copied != MDB_SUCCESS ? mdb_strerror(copied) : errorText(errno);
        unlink(file.c_str());
        throw StoreAdminError("can't write " + file + ": " + why);
    }
}

void restoreStore(const std::string& directory, const std::string& file, const std::string& group, bool replace)
{
    Descriptor backup(open(file.c_str(), O_RDONLY | O_CLOEXEC));
    if (backup.get() < 0)
        throw StoreAdminError("can't open " + file + ": " + errorText(errno));
    struct stat info;
    unsigned char trailer[kTrailerSize];
    if (fstat(backup.get(), &info) != 0 || info.st_size <= static_cast<off_t>(kTrailerSize) ||
        !readAllAt(backup.get(), trailer, kTrailerSize, info.st_size - static_cast<off_t>(kTrailerSize)) ||
        std::memcmp(trailer + MachineKey::kSize, kBackupMagic, sizeof(kBackupMagic)) != 0)
        throw StoreAdminError(file + " is not a backup of a store");

    const std::string data = directory + "/data.mdb";
    const std::string keyPath = machineKeyPath(directory);
    if (!replace && (look("", data).present || look("", keyPath).present))
        throw StoreAdminError("a store or its key is there already (" + directory +
                              "): --replace replaces both, once its users are stopped");
    makeDirectory(directory, group);
    StoreOwnership store;
    store.readFrom(directory);

    const std::string suffix = ".restore-" + std::to_string(getpid());
    const off_t storeBytes = info.st_size - static_cast<off_t>(kTrailerSize);
    writeRestored(backup.get(), storeBytes, data + suffix, store, store.dataMode());
    try {
        checkIsStore(data + suffix);
    } catch (...) {
        unlink((data + suffix).c_str());
        throw;
    }
    Descriptor key(open((keyPath + suffix).c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (key.get() < 0 || (store.adopt(key.get(), store.keyMode()), !writeAll(key.get(), trailer, MachineKey::kSize)) ||
        fsync(key.get()) != 0) {
        const int failure = errno;
        unlink((data + suffix).c_str());
        unlink((keyPath + suffix).c_str());
        throw StoreAdminError("can't write the key " + keyPath + ": " + errorText(failure));
    }
    // The reader table of a replaced store describes it, not this one.
    unlink((directory + "/lock.mdb").c_str());
    placeOver(data + suffix, data);
    placeOver(keyPath + suffix, keyPath);
}

}  // namespace portable
}  // namespace zet
