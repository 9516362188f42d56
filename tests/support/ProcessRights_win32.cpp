#include "support/ProcessRights.h"

namespace zettest {

// Wine's registry grants every process every right, so there is no user to become.
bool canDropPrivileges()
{
    return false;
}

bool becomeUnprivileged()
{
    return false;
}

MachineKeyLoan::MachineKeyLoan(const std::string&) {}

MachineKeyLoan::~MachineKeyLoan() {}

}  // namespace zettest
