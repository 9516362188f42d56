#include "support/ProcessRights.h"

#include <gtest/gtest.h>

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

// The key file lies beside the store and may be read by its owner alone.
MachineKeyLoan::MachineKeyLoan(const std::string& storeDirectory) : m_keyFile(storeDirectory + ".key")
{
    m_lent = geteuid() == 0 && chown(m_keyFile.c_str(), kNobody, kNobody) == 0;
}

MachineKeyLoan::~MachineKeyLoan()
{
    if (m_lent && chown(m_keyFile.c_str(), 0, 0) != 0)
        ADD_FAILURE() << "the machine key stays lent";
}

}  // namespace zettest
