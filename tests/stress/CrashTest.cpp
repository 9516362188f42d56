// Crash test: writers of every kind are killed with SIGKILL at random instants; after each
// kill a fresh process opens the store and checks that every record is one that was written
// whole, that nothing once seen is gone or rolled back, that the walk's position lies within
// its list, and that the named mutex of a killed holder passes on within a bound.
#include <signal.h>

#include <iostream>
#include <map>
#include <random>
#include <set>
#include <sstream>

#include "Forms.h"
#include "Processes.h"
#include "StressRoles.h"

namespace zetstress {
namespace {

const unsigned kProfilesPerWorker = 4;
const unsigned kFallbackNetworksPerWorker = 3;
const unsigned kAlertsPerWorker = 20;
const unsigned kAlertBlock = 100;

std::wstring profileName(long slot, unsigned k)
{
    return L"crash-s" + std::to_wstring(slot) + L"-p" + std::to_wstring(k);
}

// Mixed case on the way in; the store keeps the lower-case form.
std::wstring ownerName(long slot)
{
    return L"Crash-Owner-S" + std::to_wstring(slot);
}

class CrashWriter {
public:
    explicit CrashWriter(const Options& options)
        : m_slot(options.number("slot", 0)), m_incarnation(options.number("incarnation", 1)),
          m_random(static_cast<unsigned>(options.number("seed", 1)))
    {
    }

    void writeOnce()
    {
        const unsigned pick = draw(100);
        if (pick < 30)
            writeProfile();
        else if (pick < 45)
            writeFallback();
        else if (pick < 80)
            changeChooser();
        else
            writeAlert();
    }

private:
    unsigned draw(unsigned below) { return std::uniform_int_distribution<unsigned>(0, below - 1)(m_random); }
    std::wstring tag(const std::wstring& name) { return makeTag(name, m_incarnation, ++m_sequence); }

    void writeProfile()
    {
        const std::wstring name = profileName(m_slot, draw(kProfilesPerWorker));
        ZETSettings::setNetworkSettings(name, profileForm(tag(name)));
    }

    void writeFallback()
    {
        const std::wstring network = L"Net_" + std::to_wstring(draw(kFallbackNetworksPerWorker));
        ZETSettings::setFallbackSettings(
            fallbackForm(ownerName(m_slot), network, tag(lowerCase(ownerName(m_slot)) + L"/" + network)));
    }

    void writeAlert()
    {
        const int alert = static_cast<int>(m_slot * kAlertBlock + draw(kAlertsPerWorker));
        ZETSettings::updateAlertNotificationState(alert, draw(2) == 1);
    }

    void changeChooser()
    {
        const unsigned pick = draw(100);
        bool wrapped = false;
        if (pick < 30) {
            const unsigned count = 1 + draw(10);
            ZETSettings::updateChooserPreferredNets(
                listForm(tag(L"crash-s" + std::to_wstring(m_slot)) + L"-", count, draw(count + 3)));
        } else if (pick < 65) {
            ZETSettings::nextChooserPreferredNet(draw(4) == 0, wrapped);
        } else if (pick < 80) {
            const boost::shared_ptr<ZETPreferredNetworks> list = ZETSettings::getChooserPreferredNets();
            ZETSettings::moveChooserPreferredNetToFront(
                list->entries.empty() || draw(2) == 0 ? entryForm(tag(L"crash-front")) : pickEntry(*list));
        } else if (pick < 90) {
            const boost::shared_ptr<ZETPreferredNetworks> list = ZETSettings::getChooserPreferredNets();
            if (!list->entries.empty())
                ZETSettings::deleteChooserPreferredNet(pickEntry(*list).netName);
        } else {
            ZETSettings::stopChooserAutoAssociate();
        }
    }

    const ZETPreferredNetEntry& pickEntry(const ZETPreferredNetworks& list)
    {
        return list.entries[draw(static_cast<unsigned>(list.entries.size()))];
    }

    long m_slot;
    unsigned long m_incarnation;
    unsigned long m_sequence = 0;
    std::mt19937 m_random;
};

// ---- the checker: one process per check, printing what it saw for the driver to compare ----

class CrashChecker {
public:
    explicit CrashChecker(long slots) : m_slots(slots) {}

    int run()
    {
        checkProfiles();
        checkFallbackDatabase();
        checkAlerts();
        checkChooser();
        return fault.exitCode();
    }

private:

    void checkProfiles()
    {
        for (const std::wstring& name : ZETSettings::getNetworkSettingsKeys()) {
            const boost::shared_ptr<ZETNetworkSettings> record = ZETSettings::getNetworkSettings(name);
            std::wstring tagName;
            TagOrder order;
            if (!record)
                fault("profile '" + narrow(name) + "' is listed but can't be read");
            else if (!parseTag(record->profileText, tagName, order) || tagName != name || !isProfileForm(*record))
                fault("profile '" + narrow(name) + "' holds a form never written: '" +
                      narrow(record->profileText) + "'");
            else
                std::cout << "profile " << narrow(name) << " " << order.incarnation << " " << order.sequence << "\n";
        }
    }

    void checkFallbackDatabase()
    {
        const boost::shared_ptr<std::vector<std::wstring>> owners = ZETSettings::getListOfOwners();
        for (const std::wstring& owner : *owners) {
            const boost::shared_ptr<std::vector<std::wstring>> networks = ZETSettings::getListOfNetworks(owner);
            for (const std::wstring& network : *networks) {
                const boost::shared_ptr<ZETFallbackSettings> record = ZETSettings::getFallbackSettings(owner, network);
                std::wstring tag;
                const std::string place = narrow(owner) + "/" + narrow(network);
                if (!record)
                    fault("fallback record " + place + " is listed but can't be read");
                else if (record->owner != owner || record->network != network || !isFallbackForm(*record, tag))
                    fault("fallback record " + place + " holds a form never written");
                else
                    std::cout << "fallback " << place << " 0 0\n";
            }
        }
    }

    void checkAlerts()
    {
        ZETAlertSettings alerts;
        const std::string stored = readStored(kAlertValue, alerts);
        if (stored != "absent" && !stored.empty())
            return fault("the stored alert states are " + stored);
        for (const auto& state : alerts.states) {
            const unsigned alert = state.first;
            if (state.second.value > 1 || alert % kAlertBlock >= kAlertsPerWorker ||
                alert / kAlertBlock >= static_cast<unsigned long>(m_slots))
                fault("alert " + std::to_string(alert) + " with state " + std::to_string(state.second.value) +
                      " was never written");
            else
                std::cout << "alert " << alert << " 0 0\n";
        }
    }

    void checkChooser()
    {
        ZETPreferredNetworks list;
        const std::string stored = readStored(kListValue, list);
        if (stored.empty() && !listFault(list).empty())
            fault("stored chooser list: " + listFault(list));
        else if (!stored.empty() && stored != "absent")
            fault("the stored chooser list is " + stored);
        // Through the library too: this waits for the named mutex, which a killed worker may
        // have held; the driver's bound on this process turns a wait that never ends into a
        // failure.
        const std::string seen = listFault(*ZETSettings::getChooserPreferredNets());
        if (!seen.empty())
            fault("chooser list as the library reads it: " + seen);
    }

    long m_slots;
    Violations fault;
};

// ---- the driver ---------------------------------------------------------------------------

// What the checker saw whole: "<kind> <name>" and the write it holds (0.0 where the form tells none).
using Snapshot = std::map<std::string, TagOrder>;

Snapshot parseSnapshot(const std::string& output)
{
    Snapshot snapshot;
    std::istringstream lines(output);
    std::string kind, name;
    TagOrder order;
    while (lines >> kind >> name >> order.incarnation >> order.sequence)
        snapshot[kind + " " + name] = order;
    return snapshot;
}

// What was once stored whole and never removed must still be there, and a profile, which one
// writer process at a time owns, never goes back to an older form.
int compareSnapshots(const Snapshot& before, const Snapshot& after)
{
    Violations fault;
    for (const auto& record : before) {
        const auto now = after.find(record.first);
        if (now == after.end())
            fault(record.first + " was lost");
        else if (now->second < record.second)
            fault(record.first + " went back from write " + std::to_string(record.second.incarnation) + "." +
                  std::to_string(record.second.sequence) + " to " + std::to_string(now->second.incarnation) + "." +
                  std::to_string(now->second.sequence));
    }
    return fault.count();
}

class CrashDriver {
public:
    explicit CrashDriver(const Options& options)
        : m_kills(options.number("kills", 250)), m_slots(options.number("workers", 4)),
          m_checkBound(static_cast<int>(options.number("check-timeout-ms", 20000))),
          m_longestPause(static_cast<int>(options.number("max-pause-ms", 40))),
          m_seed(static_cast<unsigned>(options.number("seed", std::random_device()()))), m_random(m_seed),
          m_counters(m_run.path() + "/operations", static_cast<std::size_t>(m_slots), true),
          m_workers(static_cast<std::size_t>(m_slots), -1)
    {
    }

    int run()
    {
        for (long slot = 0; slot < m_slots; ++slot)
            start(slot);
        long landed = 0;
        int faults = 0;
        for (long kill = 0; kill < m_kills && faults == 0; ++kill) {
            pauseMilliseconds(std::uniform_int_distribution<int>(1, m_longestPause)(m_random));
            const long slot = std::uniform_int_distribution<long>(0, m_slots - 1)(m_random);
            landed += m_counters[static_cast<std::size_t>(slot)].load() > 0 ? 1 : 0;
            faults += killWorker(slot);
            start(slot);
            const uint64_t before = m_counters.sum();
            faults += check();
            faults += awaitProgress(before);
        }
        for (long slot = 0; slot < m_slots; ++slot)
            faults += killWorker(slot);
        faults += check();
        std::cout << "crash test (seed " << m_seed << "): " << m_killed << " SIGKILLs (" << landed
                  << " after the victim had completed at least one operation), " << m_operations
                  << " operations completed by " << m_incarnations << " worker processes (" << m_slots
                  << " at a time), " << m_checks << " checks; at the end " << m_seen.size() << " records; "
                  << (faults == 0 ? "no violation" : std::to_string(faults) + " violation(s)") << "\n";
        return faults == 0 ? 0 : 1;
    }

private:
    void start(long slot)
    {
        m_counters[static_cast<std::size_t>(slot)].store(0);
        m_workers[static_cast<std::size_t>(slot)] =
            startSelf({"crash-worker", "--slot", std::to_string(slot), "--incarnation", std::to_string(++m_incarnations),
                       "--seed", std::to_string(m_random()), "--counters", m_run.path() + "/operations", "--workers",
                       std::to_string(m_slots)});
    }

    // A worker that ended by itself before the kill failed, and that is a finding too.
    int killWorker(long slot)
    {
        const Ending early = killUnlessEnded(m_workers[static_cast<std::size_t>(slot)]);
        m_killed += early.finished ? 0 : 1;
        m_operations += m_counters[static_cast<std::size_t>(slot)].load();
        if (early.finished)
            std::cerr << "VIOLATION: worker " << slot << " " << describe(early) << " by itself\n";
        return early.finished ? 1 : 0;
    }

    int check()
    {
        std::string output;
        const Ending ending = runSelf({"crash-check", "--workers", std::to_string(m_slots)}, m_checkBound, output);
        ++m_checks;
        if (!ending.finished) {
            std::cerr << "VIOLATION: a check after kill " << m_killed << " hangs: the store or the named mutex\n";
            return 1;
        }
        Snapshot now = parseSnapshot(output);
        const int faults = compareSnapshots(m_seen, now) + (ending.succeeded() ? 0 : 1);
        m_seen = now;
        return faults;
    }

    // The workers that were not killed must go on: one that waits forever for a lock that the
    // dead one held stops them all.
    int awaitProgress(uint64_t before)
    {
        for (int waited = 0; waited < m_checkBound; ++waited) {
            if (m_counters.sum() != before)
                return 0;
            pauseMilliseconds(1);
        }
        std::cerr << "VIOLATION: no worker completed an operation within " << m_checkBound << " ms after kill "
                  << m_killed << "\n";
        return 1;
    }

    RunDirectory m_run;
    long m_kills;
    long m_slots;
    int m_checkBound;
    int m_longestPause;
    unsigned m_seed;
    std::mt19937 m_random;
    SharedCounters m_counters;
    std::vector<pid_t> m_workers;
    long m_incarnations = 0;
    long m_killed = 0;
    long m_checks = 0;
    uint64_t m_operations = 0;
    Snapshot m_seen;
};

}  // namespace

int crashWorker(const Options& options)
{
    SharedCounters counters(options.text("counters", ""), static_cast<std::size_t>(options.number("workers", 1)),
                            false);
    std::atomic<uint64_t>& done = counters[static_cast<std::size_t>(options.number("slot", 0))];
    CrashWriter writer(options);
    for (;;) {
        writer.writeOnce();
        ++done;
    }
}

int crashCheck(const Options& options)
{
    return CrashChecker(options.number("workers", 1)).run();
}

int crashDriver(const Options& options)
{
    return CrashDriver(options).run();
}

}  // namespace zetstress
