// What the tests of the store and of everything built on it start from: a registry of the
// test's own, child processes with or without the right to write it, and the raw registry.
#ifndef ZETSETTINGS_STORE_TESTS_STORETESTSUPPORT_H
#define ZETSETTINGS_STORE_TESTS_STORETESTSUPPORT_H

#include "support/ChildProcess.h"
#include "support/ChildScenario.h"
#include "support/ProcessRights.h"
#include "support/TestRegistry.h"
#include "zetsettings/ZETSettings.h"
#include "zetsettings/store/tests/RawRegistry.h"

// Skips the test where no child of it can be made a user that reads the store but can't write it.
#define ZET_SKIP_UNLESS_RIGHTS_CAN_DROP() \
    if (!zettest::canDropPrivileges()) GTEST_SKIP() << "this registry grants every process every right"

#endif
