// Real processes for the stress runs: the program starts copies of itself in a given role,
// kills them hard, and waits for them with a bound, so a hang shows as a failure and not as a
// run that never ends.
#ifndef ZETSETTINGS_TESTS_STRESS_PROCESSES_H
#define ZETSETTINGS_TESTS_STRESS_PROCESSES_H

#include <sys/types.h>

#include <atomic>
#include <cstdint>
#include <string>
#include <vector>

namespace zetstress {

// A store of the run's own: a fresh directory whose "store" folder ZET_REGISTRY_DIR names for
// this process and every child; the machine key lands beside it, inside the same directory.
class RunDirectory {
public:
    RunDirectory();
    ~RunDirectory();
    RunDirectory(const RunDirectory&) = delete;
    RunDirectory& operator=(const RunDirectory&) = delete;
    const std::string& path() const { return m_path; }

private:
    std::string m_path;
};

// Starts this program again with the given arguments.
pid_t startSelf(const std::vector<std::string>& args);
// Starts another program, its standard output thrown away.
pid_t startProgram(const std::string& path, const std::vector<std::string>& args);

struct Ending {
    bool finished = false;  // false: still running when the bound passed
    int exitCode = -1;      // -1 when ended by a signal
    int signal = 0;
};

Ending waitWithin(pid_t pid, int milliseconds);
void killAndReap(pid_t pid);

// Runs this program in a role and collects its standard output, within a bound; on a timeout
// the child is killed.
Ending runSelf(const std::vector<std::string>& args, int milliseconds, std::string& output);

// Counters in a file that the driver and its children map shared, so that the driver can
// count the operations of children that it kills.
class SharedCounters {
public:
    SharedCounters(const std::string& path, std::size_t count, bool create);
    ~SharedCounters();
    SharedCounters(const SharedCounters&) = delete;
    SharedCounters& operator=(const SharedCounters&) = delete;
    std::atomic<uint64_t>& operator[](std::size_t index) { return m_counters[index]; }
    uint64_t sum() const;

private:
    std::atomic<uint64_t>* m_counters;
    std::size_t m_count;
};

// A binary value read through the registry functions, below the library: empty when absent.
bool readRegistryBinary(const std::wstring& subkey, const std::wstring& value, std::string& bytes,
                        long& status);

void pauseMilliseconds(int milliseconds);

}  // namespace zetstress

#endif
