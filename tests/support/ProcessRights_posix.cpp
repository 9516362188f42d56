#include "support/ProcessRights.h"

#include <gtest/gtest.h>

#include <grp.h>
#include <unistd.h>

namespace zettest {

const uid_t kNobody = 65534;

bool canDropPrivileges()
{
    return geteuid() == 0;
}

bool becomeUnprivileged()
{
    return geteuid() == 0 && setgroups(0, nullptr) == 0 && setgid(kNobody) == 0 && setuid(kNobody) == 0;
}

// The key belongs to its store: the unprivileged user reads it as a member of the store's group,
// with the store's files still closed to its writes.
MachineKeyLoan::MachineKeyLoan(const std::string& storeDirectory)
    : m_storeDirectory(storeDirectory), m_keyFile(storeDirectory + ".key")
{
    m_lent = geteuid() == 0 && chown(m_storeDirectory.c_str(), 0, kNobody) == 0 &&
             chmod(m_storeDirectory.c_str(), 0775) == 0 && chown(m_keyFile.c_str(), 0, kNobody) == 0 &&
             chmod(m_keyFile.c_str(), 0640) == 0;
}

MachineKeyLoan::~MachineKeyLoan()
{
    if (geteuid() == 0 && (chown(m_keyFile.c_str(), 0, 0) != 0 || chmod(m_keyFile.c_str(), 0600) != 0 ||
                           chown(m_storeDirectory.c_str(), 0, 0) != 0 || chmod(m_storeDirectory.c_str(), 0755) != 0))
        ADD_FAILURE() << "the machine key stays lent";
}

}  // namespace zettest
