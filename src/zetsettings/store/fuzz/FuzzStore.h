// For the fuzz targets that go through the registry: a portable store of the target's own,
// made at start in a fresh folder (under /dev/shm where it exists, so that durable writes
// stay cheap) and removed when the run ends. The machine key goes beside the store, in the
// same folder.
#ifndef ZETSETTINGS_STORE_FUZZ_FUZZSTORE_H
#define ZETSETTINGS_STORE_FUZZ_FUZZSTORE_H

#include <stdlib.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

namespace zetfuzz {

inline std::string& fuzzStoreRoot()
{
    static std::string root;
    return root;
}

inline void removeFuzzStore()
{
    std::error_code ignored;
    std::filesystem::remove_all(fuzzStoreRoot(), ignored);
}

inline void useStoreOfOwn(const char* targetName)
{
    const std::string base = std::filesystem::is_directory("/dev/shm") ? "/dev/shm" : "/tmp";
    std::string pattern = base + "/" + targetName + "-XXXXXX";
    if (!mkdtemp(&pattern[0])) {
        std::perror("mkdtemp");
        std::abort();
    }
    fuzzStoreRoot() = pattern;
    setenv("ZET_REGISTRY_DIR", (pattern + "/store").c_str(), 1);
    std::atexit(removeFuzzStore);
}

}  // namespace zetfuzz

#endif
