// Running a test's child process without the right to change the machine's registry.
#ifndef ZETSETTINGS_TESTS_SUPPORT_PROCESSRIGHTS_H
#define ZETSETTINGS_TESTS_SUPPORT_PROCESSRIGHTS_H

#include <string>

namespace zettest {

// Makes this process an unprivileged user that may read the test's store but not write it.
// Returns false where that can't be done (not root, or a registry that ignores rights, as
// Wine's does): the caller skips the test then.
bool becomeUnprivileged();
// Whether becomeUnprivileged can work in a child of this process.
bool canDropPrivileges();

// Hands the machine key of the test store in storeDirectory to the user of becomeUnprivileged
// while it lives (the store becomes a group store of that user's group, its files still closed
// to the group's writes), so that such a process can encrypt and decrypt and only the registry
// refuses it. lent() is false where that can't be done.
class MachineKeyLoan {
public:
    explicit MachineKeyLoan(const std::string& storeDirectory);
    ~MachineKeyLoan();
    MachineKeyLoan(const MachineKeyLoan&) = delete;
    MachineKeyLoan& operator=(const MachineKeyLoan&) = delete;
    bool lent() const { return m_lent; }

private:
    std::string m_storeDirectory;
    std::string m_keyFile;
    bool m_lent = false;
};

}  // namespace zettest

#endif
