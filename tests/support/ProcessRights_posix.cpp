#include "support/ProcessRights.h"

#include <grp.h>
#include <unistd.h>

namespace zettest {

namespace {
const uid_t kNobody = 65534;
}

bool canDropPrivileges()
{
    return geteuid() == 0;
}

bool becomeUnprivileged()
{
    if (geteuid() != 0)
        return false;
    return setgroups(0, nullptr) == 0 && setgid(kNobody) == 0 && setuid(kNobody) == 0;
}

}  // namespace zettest
