// The roles of the stress program: each test's driver, and the children it starts.
#ifndef ZETSETTINGS_TESTS_STRESS_STRESSROLES_H
#define ZETSETTINGS_TESTS_STRESS_STRESSROLES_H

#include "Options.h"

namespace zetstress {

int crashDriver(const Options& options);
int crashWorker(const Options& options);
int crashCheck(const Options& options);

int contentionDriver(const Options& options);
int contentionWorker(const Options& options);
int contentionCheck(const Options& options);

int faultDriver(const Options& options);
int faultWriter(const Options& options);
int faultCheck(const Options& options);

int wholeDriver(const Options& options);
int wholeFallbackWorker(const Options& options);
int wholeCheck(const Options& options);

int fullDisk(const Options& options);
int unmadeStore(const Options& options);
int unmadeStoreCase(const Options& options);
int unreadableKey(const Options& options);
int unreadableKeyCase(const Options& options);

}  // namespace zetstress

#endif
