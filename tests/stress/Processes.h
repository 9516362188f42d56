// Real processes for the stress runs: the program starts copies of itself in a given role,
// kills them hard, and waits for them with a bound, so a hang shows as a failure and not as a
// run that never ends.
#ifndef ZETSETTINGS_TESTS_STRESS_PROCESSES_H
#define ZETSETTINGS_TESTS_STRESS_PROCESSES_H

#include <sys/types.h>

#include <string>
#include <utility>
#include <vector>

namespace zetstress {

// A fresh directory of the run's own, removed at the end (unmounted first when something was
// mounted on it); ZET_REGISTRY_DIR names its "store" folder for this process and every child,
// so the machine key lands beside it. Open to others to read: a child acting as another user
// must reach the store inside.
class RunDirectory {
public:
    explicit RunDirectory(const std::string& name = "stress", const std::string& base = "/tmp");
    ~RunDirectory();
    RunDirectory(const RunDirectory&) = delete;
    RunDirectory& operator=(const RunDirectory&) = delete;
    const std::string& path() const { return m_path; }
    void setMounted() { m_mounted = true; }

private:
    std::string m_path;
    bool m_mounted = false;
};

// Counts broken invariants, each told on standard error.
class Violations {
public:
    explicit Violations(std::string where = "") : m_where(std::move(where)) {}
    void operator()(const std::string& what);
    // Counts a promise that was not kept.
    void expect(bool kept, const std::string& promise)
    {
        if (!kept)
            (*this)(promise);
    }
    int count() const { return m_count; }
    int exitCode() const { return m_count == 0 ? 0 : 1; }

private:
    std::string m_where;
    int m_count = 0;
};

// Starts this program again with the given arguments.
pid_t startSelf(const std::vector<std::string>& args);
// Starts another program, its standard output thrown away.
pid_t startProgram(const std::string& path, const std::vector<std::string>& args);

struct Ending {
    bool finished = false;  // false: still running when the bound passed
    int exitCode = -1;      // -1 when ended by a signal
    int signal = 0;
    bool succeeded() const { return finished && exitCode == 0; }
};
std::string describe(const Ending& ending);

// Kills the process unless it ends within the bound; returns how it had ended, if it had.
Ending killUnlessEnded(pid_t pid, int milliseconds = 0);

// Runs this program in a role, with the given variables set in its environment, and collects
// its standard output, within a bound; on a timeout the child is killed.
using Environment = std::vector<std::pair<std::string, std::string>>;
Ending runSelf(const std::vector<std::string>& args, int milliseconds, std::string& output,
               const Environment& environment = {});
// Runs this program in a role as runSelf does; a run that does not succeed is a violation,
// told as `what` and how it ended. Returns the role's output.
std::string runChecked(const std::vector<std::string>& args, int milliseconds, Violations& fault,
                       const std::string& what);

void pauseMilliseconds(int milliseconds);

}  // namespace zetstress

#endif
