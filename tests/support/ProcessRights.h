// Running a test's child process without the right to change the machine's registry.
#ifndef ZETSETTINGS_TESTS_SUPPORT_PROCESSRIGHTS_H
#define ZETSETTINGS_TESTS_SUPPORT_PROCESSRIGHTS_H

namespace zettest {

// Makes this process an unprivileged user that may read the test's store but not write it.
// Returns false where that can't be done (not root, or a registry that ignores rights, as
// Wine's does): the caller skips the test then.
bool becomeUnprivileged();
// Whether becomeUnprivileged can work in a child of this process.
bool canDropPrivileges();

}  // namespace zettest

#endif
