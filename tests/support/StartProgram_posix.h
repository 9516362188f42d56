// Starting a program as a real process: the native tests' children, the tool's runs and the
// stress program's roles all start this way.
#ifndef ZETSETTINGS_TESTS_SUPPORT_STARTPROGRAM_POSIX_H
#define ZETSETTINGS_TESTS_SUPPORT_STARTPROGRAM_POSIX_H

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace zettest {

const char kThisProgram[] = "/proc/self/exe";

// Runs the program with the arguments in a new process. `inChild` runs in that process first
// (to plug in pipes, set variables, drop rights); when it fails the child exits with 126.
pid_t startProgram(const std::string& path, const std::vector<std::string>& args,
                   const std::function<bool()>& inChild = {});

}  // namespace zettest

#endif
