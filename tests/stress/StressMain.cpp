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
#include <cstring>
#include <iostream>

#include "StressRoles.h"

namespace {

struct Role {
    const char* name;
    int (*run)(const zetstress::Options&);
};

const Role kRoles[] = {
    {"crash", zetstress::crashDriver},
    {"crash-worker", zetstress::crashWorker},
    {"crash-check", zetstress::crashCheck},
    {"contention", zetstress::contentionDriver},
    {"contention-worker", zetstress::contentionWorker},
    {"contention-check", zetstress::contentionCheck},
    {"fault", zetstress::faultDriver},
    {"fault-write", zetstress::faultWriter},
    {"fault-check", zetstress::faultCheck},
    {"whole", zetstress::wholeDriver},
    {"whole-fallback-worker", zetstress::wholeFallbackWorker},
    {"whole-check", zetstress::wholeCheck},
    {"full-disk", zetstress::fullDisk},
    {"unmade-store", zetstress::unmadeStore},
    {"unmade-store-case", zetstress::unmadeStoreCase},
    {"unreadable-key", zetstress::unreadableKey},
    {"unreadable-key-case", zetstress::unreadableKeyCase},
};

}  // namespace

int main(int argc, char** argv)
{
    try {
        for (const Role& role : kRoles)
            if (argc >= 2 && std::strcmp(argv[1], role.name) == 0)
                return role.run(zetstress::Options(argc, argv, 2));
    } catch (const std::exception& error) {
        std::cerr << (argc >= 2 ? argv[1] : "") << ": " << error.what() << "\n";
        return 2;
    }
    std::cerr << "usage: zetsettings_stress crash|contention|fault|whole|full-disk|unmade-store|unreadable-key [--option value]...\n";
    return 2;
}
