#include "zetsettings/platform/posix/StoreLocation.h"

#include <errno.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

namespace zet {
namespace portable {

std::string storeDirectory()
{
    return storeDirectoryName();
}

namespace {

const char kVariable[] = "ZET_REGISTRY_DIR=";

// Every registry call that starts from a predefined root asks for the store directory, and
// getenv compares the name with every variable of the environment. The answer is kept, with
// what the environment looked like, and given again while it looks the same. glibc's setenv,
// putenv and unsetenv never change a string in place and never free one: a variable set or
// replaced gets a new pointer in the array, one added grows the array (or moves it), one
// removed shifts the later ones down. So the variable found at an index is still there, with
// its value, while that slot holds the same pointer; and a variable that was absent is still
// absent while the array ends where it ended, after the same last pointer. (A string given to
// putenv and then changed in place by its owner is not seen.)
struct EnvironmentLook {
    char** array = nullptr;
    size_t count = 0;        // entries when it was looked at
    size_t index = 0;        // where the variable was, if found
    const char* entry = nullptr;  // the variable's entry, or null when absent
    const char* last = nullptr;   // the array's last entry, when absent
};

thread_local EnvironmentLook t_look;

bool unchanged(const EnvironmentLook& look)
{
    if (!look.array || environ != look.array)
        return false;
    if (look.entry)
        return environ[look.index] == look.entry;
    return environ[look.count] == nullptr && (look.count == 0 || environ[look.count - 1] == look.last);
}

void lookAgain(EnvironmentLook& look)
{
    look = EnvironmentLook();
    if (!environ)
        return;
    const size_t nameLength = sizeof(kVariable) - 1;
    size_t i = 0;
    for (; environ[i]; ++i) {
        if (!look.entry && std::strncmp(environ[i], kVariable, nameLength) == 0) {
            look.entry = environ[i];
            look.index = i;
        }
    }
    look.count = i;
    look.last = i > 0 ? environ[i - 1] : nullptr;
    look.array = environ;
}

}  // namespace

const char* storeDirectoryName()
{
    EnvironmentLook& look = t_look;
    if (!unchanged(look))
        lookAgain(look);
    const char* named = look.entry ? look.entry + sizeof(kVariable) - 1 : nullptr;
    if (named && *named)
        return named;
    return "/var/lib/zetsettings";
}

int ensureStoreDirectory(const std::string& directory)
{
    struct stat info;
    if (stat(directory.c_str(), &info) == 0)
        return S_ISDIR(info.st_mode) ? 0 : ENOTDIR;
    // Make each missing parent in turn; another process may race us to any of them.
    for (std::string::size_type slash = directory.find('/', 1); ; slash = directory.find('/', slash + 1)) {
        const std::string prefix = directory.substr(0, slash);
        if (!prefix.empty() && mkdir(prefix.c_str(), 0755) != 0 && errno != EEXIST)
            return errno;
        if (slash == std::string::npos)
            break;
    }
    return 0;
}

std::string machineKeyPath(const std::string& directory)
{
    std::string base = directory;
    while (base.size() > 1 && base.back() == '/')
        base.pop_back();
    return base + ".key";
}

}  // namespace portable
}  // namespace zet
