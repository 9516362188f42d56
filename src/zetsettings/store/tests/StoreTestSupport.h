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

#endif
