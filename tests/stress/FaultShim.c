/* An LD_PRELOAD library that makes the N-th file call on the store's files fail.
 *
 * Only calls on paths below ZET_FAULT_PREFIX (the run's folder: store, lock files, machine key)
 * and on descriptors opened there are counted; everything else passes untouched. Settings, read
 * once at load:
 *
 *   ZET_FAULT_PREFIX   the folder whose files are counted
 *   ZET_FAULT_AT       the number of the call to fail, from 1; 0 or unset counts only
 *   ZET_FAULT_ERRNO    the errno that the failed call sets
 *   ZET_FAULT_ALWAYS   "1": every counted call from the N-th on fails, as a disk that stays bad
 *   ZET_FAULT_REPORT   a file to which each failed call appends a line "<call> <path or fd>"
 *
 * Linux and glibc only: a test tool of the portable store. */
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdarg.h>
#include <stdatomic.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/uio.h>
#include <unistd.h>

#define TRACKED_DESCRIPTORS 4096

static char g_prefix[4096];
static size_t g_prefixLength;
static long g_failAt;
static int g_errno = EIO;
static int g_always;
static int g_report = -1;
static atomic_long g_calls;
static atomic_uchar g_tracked[TRACKED_DESCRIPTORS];

#define REAL(name) ((__typeof__(&name))dlsym(RTLD_NEXT, #name))

__attribute__((constructor)) static void readSettings(void)
{
    const char* prefix = getenv("ZET_FAULT_PREFIX");
    if (prefix && strlen(prefix) < sizeof(g_prefix)) {
        strcpy(g_prefix, prefix);
        g_prefixLength = strlen(prefix);
    }
    const char* at = getenv("ZET_FAULT_AT");
    g_failAt = at ? atol(at) : 0;
    const char* code = getenv("ZET_FAULT_ERRNO");
    if (code)
        g_errno = atoi(code);
    const char* always = getenv("ZET_FAULT_ALWAYS");
    g_always = always && strcmp(always, "1") == 0;
    const char* report = getenv("ZET_FAULT_REPORT");
    if (report)
        g_report = REAL(open)(report, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
}

static int isOurPath(const char* path)
{
    return g_prefixLength > 0 && path && strncmp(path, g_prefix, g_prefixLength) == 0;
}

static int isOurDescriptor(int fd)
{
    return fd >= 0 && fd < TRACKED_DESCRIPTORS && atomic_load(&g_tracked[fd]);
}

static void track(int fd, int ours)
{
    if (fd >= 0 && fd < TRACKED_DESCRIPTORS)
        atomic_store(&g_tracked[fd], ours ? 1 : 0);
}

/* Counts a call on our files; nonzero when this one is to fail (errno is then set). */
static int failsNow(const char* call, const char* path, int fd)
{
    const long number = atomic_fetch_add(&g_calls, 1) + 1;
    if (g_failAt <= 0 || number < g_failAt || (number > g_failAt && !g_always))
        return 0;
    if (g_report >= 0) {
        char line[4200];
        const int length = path ? snprintf(line, sizeof(line), "%s %s\n", call, path)
                                : snprintf(line, sizeof(line), "%s fd %d\n", call, fd);
        if (length > 0)
            (void)!REAL(write)(g_report, line, (size_t)length < sizeof(line) ? (size_t)length : sizeof(line) - 1);
    }
    errno = g_errno;
    return 1;
}

#define ON_PATH(call, path, failure) \
    if (isOurPath(path) && failsNow(call, path, -1)) \
        return failure;
#define ON_FD(call, fd, failure) \
    if (isOurDescriptor(fd) && failsNow(call, NULL, fd)) \
        return failure;

/* Calls that only need counting: the N-th fails, the others go on to the real one. */
#define FAULT_ON_FD(type, name, params, args) \
    type name params { ON_FD(#name, fd, -1); return REAL(name) args; }
#define FAULT_ON_PATH(name, path, params, args) \
    int name params { ON_PATH(#name, path, -1); return REAL(name) args; }

static mode_t modeOf(int flags, va_list args)
{
    return (flags & (O_CREAT | O_TMPFILE)) ? (mode_t)va_arg(args, int) : 0;
}

static int opened(int fd, const char* path)
{
    if (fd >= 0)
        track(fd, isOurPath(path));
    return fd;
}

/* The opens: counted by path, and what they open is tracked as ours or not. */
#define FAULT_ON_OPEN(name, call, params, args) \
    int name params \
    { \
        va_list rest; \
        va_start(rest, flags); \
        const mode_t mode = modeOf(flags, rest); \
        va_end(rest); \
        ON_PATH(call, path, -1); \
        return opened(REAL(name) args, path); \
    }
FAULT_ON_OPEN(open, "open", (const char* path, int flags, ...), (path, flags, mode))
FAULT_ON_OPEN(open64, "open", (const char* path, int flags, ...), (path, flags, mode))
FAULT_ON_OPEN(openat, "openat", (int dir, const char* path, int flags, ...), (dir, path, flags, mode))

int close(int fd)
{
    track(fd, 0);
    return REAL(close)(fd);
}

FAULT_ON_FD(ssize_t, read, (int fd, void* buffer, size_t size), (fd, buffer, size))
FAULT_ON_FD(ssize_t, pread, (int fd, void* buffer, size_t size, off_t offset), (fd, buffer, size, offset))
FAULT_ON_FD(ssize_t, write, (int fd, const void* buffer, size_t size), (fd, buffer, size))
FAULT_ON_FD(ssize_t, pwrite, (int fd, const void* buffer, size_t size, off_t offset), (fd, buffer, size, offset))
FAULT_ON_FD(ssize_t, writev, (int fd, const struct iovec* parts, int count), (fd, parts, count))
FAULT_ON_FD(ssize_t, pwritev, (int fd, const struct iovec* parts, int count, off_t offset), (fd, parts, count, offset))
FAULT_ON_FD(int, fsync, (int fd), (fd))
FAULT_ON_FD(int, fdatasync, (int fd), (fd))
FAULT_ON_FD(int, ftruncate, (int fd, off_t length), (fd, length))
FAULT_ON_FD(int, fchmod, (int fd, mode_t mode), (fd, mode))

int flock(int fd, int operation)
{
    /* An unlock can't fail in a way a caller could act on. */
    if (!(operation & LOCK_UN))
        ON_FD("flock", fd, -1);
    return REAL(flock)(fd, operation);
}

int fcntl(int fd, int command, ...)
{
    va_list args;
    va_start(args, command);
    void* argument = va_arg(args, void*);
    va_end(args);
    const int locking = command == F_SETLK || command == F_SETLKW || command == F_OFD_SETLK ||
                        command == F_OFD_SETLKW;
    if (locking && ((struct flock*)argument)->l_type != F_UNLCK)
        ON_FD("fcntl", fd, -1);
    return REAL(fcntl)(fd, command, argument);
}

void* mmap(void* address, size_t length, int protection, int flags, int fd, off_t offset)
{
    ON_FD("mmap", fd, MAP_FAILED);
    return REAL(mmap)(address, length, protection, flags, fd, offset);
}

FAULT_ON_PATH(mkdir, path, (const char* path, mode_t mode), (path, mode))
FAULT_ON_PATH(rename, to, (const char* from, const char* to), (from, to))
FAULT_ON_PATH(renameat2, to, (int fromDir, const char* from, int toDir, const char* to, unsigned int flags),
              (fromDir, from, toDir, to, flags))
FAULT_ON_PATH(link, to, (const char* from, const char* to), (from, to))
FAULT_ON_PATH(chmod, path, (const char* path, mode_t mode), (path, mode))
