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

std::wstring storedOwnerName(long slot)
{
    return L"crash-owner-s" + std::to_wstring(slot);
}

class CrashWriter {
public:
    explicit CrashWriter(const Options& options)
        : m_slot(options.number("slot", 0)), m_incarnation(options.number("incarnation", 1)),
          m_random(static_cast<unsigned>(options.number("seed", 1))), m_only(options.text("only", "all"))
    {
    }

    // --only narrows the mix to some kinds (say "profiles,chooser"), to tell which meet in a fault.
    void writeOnce()
    {
        for (;;) {
            const unsigned pick = draw(100);
            const char* kind = pick < 30 ? "profiles" : pick < 45 ? "fallback" : pick < 80 ? "chooser" : "alerts";
            if (m_only != "all" && m_only.find(kind) == std::string::npos)
                continue;
            if (pick < 30)
                writeProfile();
            else if (pick < 45)
                writeFallback();
            else if (pick < 80)
                changeChooser();
            else
                writeAlert();
            return;
        }
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
            fallbackForm(ownerName(m_slot), network, tag(storedOwnerName(m_slot) + L"/" + network)));
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
    std::string m_only;
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
        return m_faults == 0 ? 0 : 1;
    }

private:
    void fault(const std::string& what)
    {
        std::cerr << "VIOLATION: " << what << "\n";
        ++m_faults;
    }

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
                std::cout << "P " << narrow(name) << " " << order.incarnation << " " << order.sequence << "\n";
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
                    std::cout << "F " << place << "\n";
            }
        }
    }

    void checkAlerts()
    {
        std::string bytes;
        long status = 0;
        if (!readRegistryBinary(kSettingsKey, kAlertValue, bytes, status)) {
            if (status != ERROR_FILE_NOT_FOUND)
                fault("alert states can't be read: error " + std::to_string(status));
            return;
        }
        ZETAlertSettings alerts;
        if (!isWholeForm(bytes, alerts))
            return fault("the stored alert states are not one whole form (" + std::to_string(bytes.size()) +
                         " bytes)");
        for (const auto& state : alerts.states) {
            const unsigned alert = state.first;
            if (state.second.value > 1 || alert % kAlertBlock >= kAlertsPerWorker ||
                alert / kAlertBlock >= static_cast<unsigned long>(m_slots))
                fault("alert " + std::to_string(alert) + " with state " + std::to_string(state.second.value) +
                      " was never written");
            else
                std::cout << "A " << alert << "\n";
        }
    }

    void checkChooser()
    {
        std::string bytes;
        long status = 0;
        if (readRegistryBinary(kSettingsKey, kListValue, bytes, status)) {
            ZETPreferredNetworks stored;
            if (!isWholeForm(bytes, stored))
                fault("the stored chooser list is not one whole form (" + std::to_string(bytes.size()) + " bytes)");
            else if (!listFault(stored).empty())
                fault("stored chooser list: " + listFault(stored));
            else
                std::cout << "C " << int(stored.position) << " " << stored.entries.size() << "\n";
        } else if (status != ERROR_FILE_NOT_FOUND) {
            fault("the chooser list can't be read: error " + std::to_string(status));
        }
        // Through the library too: this waits for the named mutex, which a killed worker may
        // have held; the driver's bound on this process turns a wait that never ends into a
        // failure.
        const std::string seen = listFault(*ZETSettings::getChooserPreferredNets());
        if (!seen.empty())
            fault("chooser list as the library reads it: " + seen);
    }

    long m_slots;
    int m_faults = 0;
};

// ---- the driver ---------------------------------------------------------------------------

struct Snapshot {
    std::map<std::string, TagOrder> profiles;
    std::set<std::string> fallback;
    std::set<std::string> alerts;
    std::string list;
};

Snapshot parseSnapshot(const std::string& output)
{
    Snapshot snapshot;
    std::istringstream lines(output);
    std::string kind;
    while (lines >> kind) {
        std::string name;
        if (kind == "P") {
            TagOrder order;
            lines >> name >> order.incarnation >> order.sequence;
            snapshot.profiles[name] = order;
        } else if (kind == "F") {
            lines >> name;
            snapshot.fallback.insert(name);
        } else if (kind == "A") {
            lines >> name;
            snapshot.alerts.insert(name);
        } else if (kind == "C") {
            std::string entries;
            lines >> name >> entries;
            snapshot.list = name + " of " + entries;
        }
    }
    return snapshot;
}

// What was once stored whole and never removed must still be there, and a profile, which one
// writer process at a time owns, never goes back to an older form.
int compareSnapshots(const Snapshot& before, const Snapshot& after)
{
    int faults = 0;
    for (const auto& profile : before.profiles) {
        const auto now = after.profiles.find(profile.first);
        if (now == after.profiles.end())
            ++faults, std::cerr << "VIOLATION: profile " << profile.first << " was lost\n";
        else if (now->second < profile.second)
            ++faults, std::cerr << "VIOLATION: profile " << profile.first << " went back from write "
                                << profile.second.incarnation << "." << profile.second.sequence << " to "
                                << now->second.incarnation << "." << now->second.sequence << "\n";
    }
    for (const std::string& record : before.fallback)
        if (!after.fallback.count(record))
            ++faults, std::cerr << "VIOLATION: fallback record " << record << " was lost\n";
    for (const std::string& alert : before.alerts)
        if (!after.alerts.count(alert))
            ++faults, std::cerr << "VIOLATION: alert " << alert << " was lost\n";
    return faults;
}

class CrashDriver {
public:
    explicit CrashDriver(const Options& options)
        : m_kills(options.number("kills", 250)), m_slots(options.number("workers", 4)),
          m_checkBound(static_cast<int>(options.number("check-timeout-ms", 20000))),
          m_longestPause(static_cast<int>(options.number("max-pause-ms", 40))), m_only(options.text("only", "all")),
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
        report(landed, faults);
        return faults == 0 ? 0 : 1;
    }

private:
    void start(long slot)
    {
        m_counters[static_cast<std::size_t>(slot)].store(0);
        std::vector<std::string> args{"crash-worker"};
        for (const auto& option : {pass("slot", slot), pass("incarnation", ++m_incarnations),
                                   pass("seed", static_cast<long>(m_random())),
                                   pass("counters", m_run.path() + "/operations"), pass("workers", m_slots),
                                   pass("only", m_only)})
            args.insert(args.end(), option.begin(), option.end());
        m_workers[static_cast<std::size_t>(slot)] = startSelf(args);
    }

    // A worker that ended by itself before the kill failed, and that is a finding too.
    int killWorker(long slot)
    {
        const pid_t pid = m_workers[static_cast<std::size_t>(slot)];
        const Ending early = waitWithin(pid, 0);
        if (!early.finished) {
            killAndReap(pid);
            ++m_killed;
        }
        m_operations += m_counters[static_cast<std::size_t>(slot)].load();
        if (early.finished)
            std::cerr << "VIOLATION: worker " << slot << " ended by itself (exit " << early.exitCode << ", signal "
                      << early.signal << ")\n";
        return early.finished ? 1 : 0;
    }

    int check()
    {
        std::string output;
        const Ending ending = runSelf({"crash-check", "--workers", std::to_string(m_slots)}, m_checkBound, output);
        ++m_checks;
        if (!ending.finished) {
            std::cerr << "VIOLATION: a check after kill " << m_killed << " did not end within " << m_checkBound
                      << " ms: the store or the named mutex hangs\n";
            return 1;
        }
        Snapshot now = parseSnapshot(output);
        const int faults = compareSnapshots(m_seen, now) + (ending.exitCode == 0 ? 0 : 1);
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

    void report(long landed, int faults) const
    {
        std::cout << "crash test (seed " << m_seed << "): " << m_killed << " SIGKILLs (" << landed
                  << " after the victim had completed at least one operation), " << m_operations
                  << " operations completed by " << m_incarnations << " worker processes (" << m_slots
                  << " at a time), " << m_checks << " checks; at the end " << m_seen.profiles.size()
                  << " profiles, " << m_seen.fallback.size() << " fallback records, " << m_seen.alerts.size()
                  << " alerts, chooser position " << m_seen.list << " entries; "
                  << (faults == 0 ? "no violation" : std::to_string(faults) + " violation(s)") << "\n";
    }

    RunDirectory m_run;
    long m_kills;
    long m_slots;
    int m_checkBound;
    int m_longestPause;
    std::string m_only;
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
