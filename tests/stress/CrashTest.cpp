// Crash test: writers of every kind are killed with SIGKILL at random instants; after each
// kill a fresh process opens the store and checks that every record is one that was written
// whole, that nothing once seen is gone or rolled back, that the walk's position lies within
// its list, and that the named mutex of a killed holder passes on within a bound.
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <iostream>
#include <random>
#include <sstream>

#include "Processes.h"
#include "Records.h"
#include "StressRoles.h"

namespace zetstress {
namespace {

const ZETPreferredNetEntry& pickEntry(RecordWriter& writer, const ZETPreferredNetworks& list)
{
    return list.entries[writer.draw(static_cast<unsigned>(list.entries.size()))];
}

void changeChooser(RecordWriter& writer)
{
    const unsigned pick = writer.draw(100);
    bool wrapped = false;
    if (pick < 30) {
        const unsigned count = 1 + writer.draw(10);
        ZETSettings::updateChooserPreferredNets(listForm(writer.tag(L"crash") + L"-", count, writer.draw(count + 3)));
    } else if (pick < 65) {
        ZETSettings::nextChooserPreferredNet(writer.draw(4) == 0, wrapped);
    } else if (pick < 80) {
        const boost::shared_ptr<ZETPreferredNetworks> list = ZETSettings::getChooserPreferredNets();
        ZETSettings::moveChooserPreferredNetToFront(list->entries.empty() || writer.draw(2) == 0
                                                        ? entryForm(writer.tag(L"crash-front"))
                                                        : pickEntry(writer, *list));
    } else if (pick < 90) {
        const boost::shared_ptr<ZETPreferredNetworks> list = ZETSettings::getChooserPreferredNets();
        if (!list->entries.empty())
            ZETSettings::deleteChooserPreferredNet(pickEntry(writer, *list).netName);
    } else {
        ZETSettings::stopChooserAutoAssociate();
    }
}

void writeOnce(RecordWriter& writer)
{
    const unsigned pick = writer.draw(100);
    if (pick < 30)
        writer.write(kProfiles, writer.ownName(kProfiles));
    else if (pick < 45)
        writer.write(kFallback, writer.ownName(kFallback));
    else if (pick < 80)
        changeChooser(writer);
    else
        writer.write(kAlerts, writer.ownName(kAlerts));
}

// The chooser's list, below the library and through it: the latter waits for the named mutex,
// which a killed worker may have held; the driver's bound on the check turns a wait that never
// ends into a failure.
void checkChooser(Violations& fault)
{
    ZETPreferredNetworks list;
    const std::string stored = readStored(kListValue, list);
    if (stored.empty() && !listFault(list).empty())
        fault("stored chooser list: " + listFault(list));
    else if (!stored.empty() && stored != "absent")
        fault("the stored chooser list is " + stored);
    const std::string seen = listFault(*ZETSettings::getChooserPreferredNets());
    if (!seen.empty())
        fault("chooser list as the library reads it: " + seen);
}

// ---- the driver ---------------------------------------------------------------------------

class CrashDriver {
public:
    explicit CrashDriver(const Options& options)
        : m_kills(options.number("kills", 250)), m_slots(options.number("workers", 4)),
          m_checkBound(static_cast<int>(options.number("check-timeout-ms", 20000))),
          m_longestPause(static_cast<int>(options.number("max-pause-ms", 40))),
          m_seed(static_cast<unsigned>(options.number("seed", std::random_device()()))), m_random(m_seed),
          m_workers(static_cast<std::size_t>(m_slots), -1)
    {
    }

    int run()
    {
        for (long slot = 0; slot < m_slots; ++slot)
            start(slot);
        long landed = 0;
        for (long kill = 0; kill < m_kills && m_fault.count() == 0; ++kill) {
            pauseMilliseconds(std::uniform_int_distribution<int>(1, m_longestPause)(m_random));
            const long slot = std::uniform_int_distribution<long>(0, m_slots - 1)(m_random);
            landed += operations(slot) > 0 ? 1 : 0;
            killWorker(slot);
            start(slot);
            const uint64_t before = allOperations();
            check();
            awaitProgress(before);
        }
        for (long slot = 0; slot < m_slots; ++slot)
            killWorker(slot);
        check();
        std::cout << "crash test (seed " << m_seed << "): " << m_killed << " SIGKILLs (" << landed
                  << " after the victim had completed at least one operation), " << m_operations
                  << " operations completed by " << m_incarnations << " worker processes (" << m_slots
                  << " at a time), " << m_checks << " checks; at the end " << m_seen[kProfiles].size()
                  << " profiles, " << m_seen[kFallback].size() << " fallback records, " << m_seen[kAlerts].size()
                  << " alerts; " << m_fault.count() << " violation(s)\n";
        return m_fault.exitCode();
    }

private:
    // Each worker adds a byte to its file for every operation it completes, so that the driver
    // can count those of workers that it kills, and see that the others go on.
    std::string operationsFile(long slot) const { return m_run.path() + "/operations-" + std::to_string(slot); }
    uint64_t operations(long slot) const
    {
        struct stat info;
        return stat(operationsFile(slot).c_str(), &info) == 0 ? static_cast<uint64_t>(info.st_size) : 0;
    }
    uint64_t allOperations() const
    {
        uint64_t sum = 0;
        for (long slot = 0; slot < m_slots; ++slot)
            sum += operations(slot);
        return sum;
    }

    void start(long slot)
    {
        std::ofstream(operationsFile(slot), std::ios::trunc);
        m_workers[static_cast<std::size_t>(slot)] =
            startSelf({"crash-worker", "--slot", std::to_string(slot), "--incarnation",
                       std::to_string(++m_incarnations), "--seed", std::to_string(m_random()), "--operations",
                       operationsFile(slot)});
    }

    // A worker that ended by itself before the kill failed, and that is a finding too.
    void killWorker(long slot)
    {
        const Ending early = killUnlessEnded(m_workers[static_cast<std::size_t>(slot)]);
        m_killed += early.finished ? 0 : 1;
        m_operations += operations(slot);
        m_fault.expect(!early.finished, "worker " + std::to_string(slot) + " " + describe(early) + " by itself");
    }

    // A check that hangs waits for the store or the named mutex.
    void check()
    {
        const int before = m_fault.count();
        std::istringstream lines(runChecked({"crash-check", "--workers", std::to_string(m_slots)}, m_checkBound,
                                            m_fault, "the check after kill " + std::to_string(m_killed)));
        ++m_checks;
        if (m_fault.count() != before)
            return;
        // What was seen whole must still be there, and a profile, which one writer process at
        // a time owns, never goes back to an older write.
        States now;
        for (std::string line; std::getline(lines, line);)
            parseState(line, now);
        compareStates(m_seen, now, false, m_fault);
        m_seen = now;
    }

    // The workers that were not killed must go on: one that waits forever for a lock that the
    // dead one held stops them all.
    void awaitProgress(uint64_t before)
    {
        for (int waited = 0; waited < m_checkBound; ++waited) {
            if (allOperations() != before)
                return;
            pauseMilliseconds(1);
        }
        m_fault("no worker completed an operation within " + std::to_string(m_checkBound) + " ms after kill " +
                std::to_string(m_killed));
    }

    RunDirectory m_run;
    long m_kills;
    long m_slots;
    int m_checkBound;
    int m_longestPause;
    unsigned m_seed;
    std::mt19937 m_random;
    std::vector<pid_t> m_workers;
    long m_incarnations = 0;
    long m_killed = 0;
    long m_checks = 0;
    uint64_t m_operations = 0;
    States m_seen;
    Violations m_fault;
};

int crashWorker(const Options& options)
{
    const int done = open(options.text("operations", "").c_str(), O_WRONLY | O_APPEND | O_CLOEXEC);
    RecordWriter writer(options.number("slot", 0), 0, static_cast<unsigned long>(options.number("incarnation", 1)),
                        static_cast<unsigned>(options.number("seed", 1)));
    for (;;) {
        writeOnce(writer);
        if (write(done, "+", 1) != 1)
            return 1;
    }
}

// Prints what it saw whole for the driver to compare.
int crashCheck(const Options& options)
{
    Violations fault;
    printStates(readAll(options.number("workers", 1), 1, fault), std::cout);
    checkChooser(fault);
    return fault.exitCode();
}

const bool kRoles = addRoles({{"crash", [](const Options& options) { return CrashDriver(options).run(); }},
                              {"crash-worker", crashWorker}, {"crash-check", crashCheck}});

}  // namespace
}  // namespace zetstress
