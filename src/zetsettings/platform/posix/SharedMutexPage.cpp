#include "zetsettings/platform/posix/SharedMutexPage.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <map>
#include <mutex>

#include "zetsettings/platform/posix/StoreFiles.h"

namespace zet {
namespace portable {
namespace {

const std::uint32_t kMagic = 0x4d54455au;  // "ZETM"
const std::uint32_t kLayout = 1u | (static_cast<std::uint32_t>(sizeof(pthread_mutex_t)) << 8);

// Without /proc the boot can't be told: a constant, so pages are still set up once.
BootId readBootId()
{
    BootId id = {{1, 1}};
    std::FILE* file = std::fopen("/proc/sys/kernel/random/boot_id", "re");
    if (!file)
        return id;
    unsigned char bytes[16];
    int filled = 0;
    for (int c; filled < 32 && (c = std::fgetc(file)) != EOF;) {
        const char* digits = "0123456789abcdef";
        const char* at = c ? std::strchr(digits, c) : nullptr;
        if (!at)
            continue;  // the dashes
        const int nibble = static_cast<int>(at - digits);
        bytes[filled / 2] = static_cast<unsigned char>(filled % 2 ? (bytes[filled / 2] << 4) | nibble : nibble);
        ++filled;
    }
    std::fclose(file);
    if (filled == 32)
        std::memcpy(id.words, bytes, sizeof(bytes));
    return id;
}

bool isCurrent(const SharedMutexPage& page)
{
    const BootId& boot = currentBootId();
    return page.boot[1].load(std::memory_order_acquire) == boot.words[1] &&
           page.boot[0].load(std::memory_order_relaxed) == boot.words[0] && page.magic == kMagic &&
           page.layout == kLayout;
}

// Normal robust mutexes deadlock a thread that takes one it holds already; error-checking ones
// say so, which a thread that dropped its handle while holding the mutex needs.
int initialiseMutex(pthread_mutex_t& mutex)
{
    pthread_mutexattr_t attributes;
    int failure = pthread_mutexattr_init(&attributes);
    if (failure)
        return failure;
    failure = pthread_mutexattr_setpshared(&attributes, PTHREAD_PROCESS_SHARED);
    if (!failure)
        failure = pthread_mutexattr_setrobust(&attributes, PTHREAD_MUTEX_ROBUST);
    if (!failure)
        failure = pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_ERRORCHECK);
    if (!failure)
        failure = pthread_mutex_init(&mutex, &attributes);
    pthread_mutexattr_destroy(&attributes);
    return failure;
}

// Under the file's flock: nobody else sets the page up meanwhile, and nobody uses a page that
// isn't current.
int initialise(SharedMutexPage& page)
{
    page.boot[1].store(0, std::memory_order_seq_cst);
    page.boot[0].store(0, std::memory_order_relaxed);
    std::memset(&page.mutex, 0, sizeof(page.mutex));
    page.magic = kMagic;
    page.layout = kLayout;
    if (const int failure = initialiseMutex(page.mutex))
        return failure;
    const BootId& boot = currentBootId();
    page.boot[0].store(boot.words[0], std::memory_order_relaxed);
    page.boot[1].store(boot.words[1], std::memory_order_release);
    return 0;
}

int lockWhole(int fd, int operation)
{
    while (flock(fd, operation) != 0) {
        if (errno != EINTR)
            return errno;
    }
    return 0;
}

// The file may be shorter than the page (new, or of an older layout): touching the mapping past
// its end would fault, so it is grown first; growing keeps the bytes that are there.
int setUpUnderFlock(int fd, SharedMutexPage& page, const StoreOwnership& store)
{
    if (const int failure = lockWhole(fd, LOCK_EX))
        return failure;
    int failure = 0;
    struct stat info;
    if (fstat(fd, &info) != 0)
        failure = errno;
    else if (info.st_size < static_cast<off_t>(kSharedMutexPageBytes) &&
             ftruncate(fd, static_cast<off_t>(kSharedMutexPageBytes)) != 0)
        failure = errno;
    else if (!isCurrent(page)) {
        failure = initialise(page);
        // Whoever made the file first, every user of the store must be able to take it.
        if (!failure && (info.st_uid == geteuid() || geteuid() == 0))
            store.adopt(fd, store.lockMode());
    }
    lockWhole(fd, LOCK_UN);
    return failure;
}

std::string directoryOf(const std::string& path)
{
    const std::string::size_type slash = path.rfind('/');
    return slash == std::string::npos ? "." : path.substr(0, slash == 0 ? 1 : slash);
}

int openLockFile(const std::string& path, const StoreOwnership& store)
{
    int fd = open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (fd >= 0)
        store.adopt(fd, store.lockMode());
    else if (errno == EEXIST)
        fd = open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW);
    return fd;
}

// A file unlinked since the path led to it (its directory removed meanwhile) would order
// nobody; a folder in its place is not ours to use.
SharedMutexPage* mapLinkedFile(int fd, const StoreOwnership& store)
{
    struct stat info;
    if (fstat(fd, &info) != 0)
        return nullptr;
    if (!S_ISREG(info.st_mode) || info.st_nlink == 0) {
        errno = EACCES;
        return nullptr;
    }
    void* mapped = mmap(nullptr, kSharedMutexPageBytes, PROT_READ | PROT_WRITE, MAP_SHARED, fd, 0);
    if (mapped == MAP_FAILED)
        return nullptr;
    SharedMutexPage* page = static_cast<SharedMutexPage*>(mapped);
    const bool whole = info.st_size >= static_cast<off_t>(kSharedMutexPageBytes);
    if (whole && isCurrent(*page))
        return page;
    if (const int failure = setUpUnderFlock(fd, *page, store)) {
        munmap(mapped, kSharedMutexPageBytes);
        errno = failure;
        return nullptr;
    }
    return page;
}

// The mapping outlives the descriptor, and the flock of the set-up is done with it.
SharedMutexPage* openAndMap(const std::string& path)
{
    StoreOwnership store;
    if (!store.readFrom(directoryOf(path)))
        return nullptr;
    const int fd = openLockFile(path, store);
    if (fd < 0)
        return nullptr;
    SharedMutexPage* page = mapLinkedFile(fd, store);
    const int failure = errno;
    close(fd);
    errno = failure;
    return page;
}

}  // namespace

const BootId& currentBootId()
{
    static const BootId id = readBootId();
    return id;
}

// Never destroyed, as the mutexes that use it may be used while static objects are destroyed.
// Held across fork(), so that a child finds the table whole and its guard free.
class MappedPages {
public:
    static MappedPages& instance()
    {
        static MappedPages* pages = new MappedPages;
        return *pages;
    }

    SharedMutexPage* at(const std::string& path)
    {
        std::lock_guard<std::mutex> lock(m_guard);
        const auto found = m_pages.find(path);
        if (found != m_pages.end())
            return found->second;
        SharedMutexPage* page = openAndMap(path);
        if (page)
            m_pages.emplace(path, page);
        return page;
    }

private:
    MappedPages() { pthread_atfork(&beforeFork, &afterFork, &afterFork); }
    static void beforeFork() { instance().m_guard.lock(); }
    static void afterFork() { instance().m_guard.unlock(); }

    std::mutex m_guard;
    std::map<std::string, SharedMutexPage*> m_pages;
};

SharedMutexPage* sharedMutexPageAt(const std::string& path)
{
    return MappedPages::instance().at(path);
}

}  // namespace portable
}  // namespace zet
