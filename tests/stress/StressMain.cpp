// zetsettings_stress: the crash, contention, fault, whole-operation and environment tests of
// the store, with real processes.
//
//   zetsettings_stress crash [--kills 250] [--workers 4] [--max-pause-ms 40] [--seed N]
//                            [--check-timeout-ms 20000]
//   zetsettings_stress contention [--seconds 60] [--processes 8] [--threads 4] [--walk 61]
//   zetsettings_stress fault [--errnos ENOSPC,EIO,EACCES]
//   zetsettings_stress whole --tool path [--kills 100] [--records 2000] [--values 2000] [--seed N]
//   zetsettings_stress full-disk | unmade-store | unreadable-key
//
// Each run works on a store of its own in a fresh temporary directory, removed at the end,
// and exits non-zero when any invariant was seen broken. The other roles are the children
// that the drivers start.
#include <iostream>

#include "StressRoles.h"

namespace zetstress {
namespace {

std::map<std::string, Role>& roles()
{
    static std::map<std::string, Role> all;
    return all;
}

}  // namespace

bool addRoles(std::initializer_list<std::pair<const char*, Role>> added)
{
    roles().insert(added.begin(), added.end());
    return true;
}

}  // namespace zetstress

int main(int argc, char** argv)
{
    const auto role = zetstress::roles().find(argc >= 2 ? argv[1] : "");
    try {
        if (role != zetstress::roles().end())
            return role->second(zetstress::Options(argc, argv, 2));
    } catch (const std::exception& error) {
        std::cerr << argv[1] << ": " << error.what() << "\n";
        return 2;
    }
    std::cerr << "usage: zetsettings_stress crash|contention|fault|whole|full-disk|unmade-store|unreadable-key"
                 " [--option value]...\n";
    return 2;
}
