// Contention test: processes with several threads each run mixed operations on one store for
// a bounded time. Each thread checks what it can see as it goes (its own records read back
// as it last wrote them, nothing torn, the walk's list intact); at the end a fresh process
// checks the union: every place of the walk handed out exactly once per lap, in order, and
// every entry that somebody wrote and nobody removed still there with its last state.
#include <array>
#include <chrono>
#include <cwchar>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <sstream>
#include <thread>

#include "Forms.h"
#include "Processes.h"
#include "StressRoles.h"

namespace zetstress {
namespace {

using Clock = std::chrono::steady_clock;

const unsigned kAlertsPerThread = 32;
const unsigned kUsersPerThread = 8;
const unsigned kProfilesPerThread = 4;
const unsigned kFallbackPerThread = 2;

std::wstring walkName(unsigned index)
{
    return L"walk-e" + std::to_wstring(index);
}

std::wstring recordName(const wchar_t* kind, long process, long thread, unsigned k)
{
    return kind + std::to_wstring(process) + L"-t" + std::to_wstring(thread) + L"-n" + std::to_wstring(k);
}

std::wstring ownerName(long process)
{
    return L"Cont-Owner-P" + std::to_wstring(process);
}

int alertNumber(long process, long thread, unsigned k)
{
    return static_cast<int>(100000 + process * 1000 + thread * 100 + k);
}

// The records that one thread writes and reads back by name: a user's settings and a profile.
// `read` gives whether the record is there, and its tag when it is one whole form.
struct RecordKind {
    const wchar_t* prefix;
    unsigned perThread;
    void (*write)(const std::wstring& name, const std::wstring& tag);
    bool (*read)(const std::wstring& name, std::wstring& tag);
};

const RecordKind kKinds[] = {
    {L"u-p", kUsersPerThread,
     [](const std::wstring& name, const std::wstring& tag) { ZETSettings::setUserSettings(name, userForm(tag)); },
     [](const std::wstring& name, std::wstring& tag) {
         const boost::shared_ptr<ZETUserSettings> record = ZETSettings::getUserSettings(name);
         tag = record && isUserForm(*record) ? record->userText : L"";
         return bool(record);
     }},
    {L"cont-p", kProfilesPerThread,
     [](const std::wstring& name, const std::wstring& tag) { ZETSettings::setNetworkSettings(name, profileForm(tag)); },
     [](const std::wstring& name, std::wstring& tag) {
         const boost::shared_ptr<ZETNetworkSettings> record = ZETSettings::getNetworkSettings(name);
         tag = record && isProfileForm(*record) ? record->profileText : L"";
         return bool(record);
     }},
};
const std::size_t kUsers = 0, kProfiles = 1;
// Only the first process writes users' settings; the others read them.
const long kUserWriters = 1;

// A record that someone else may have written: absent, or whole with a tag of its own name.
bool isAbsentOrOwnTag(const RecordKind& kind, const std::wstring& name)
{
    std::wstring tag, tagName;
    TagOrder order;
    return !kind.read(name, tag) || (parseTag(tag, tagName, order) && tagName == name);
}

std::string logPath(const std::string& run, long process)
{
    return run + "/contention-p" + std::to_string(process) + ".log";
}

struct Setup {
    long processes;
    long threads;
    unsigned walkLength;
};

// One thread's share of the mix, with what it last wrote so that it can tell a lost entry.
class ContentionThread {
public:
    ContentionThread(const Setup& setup, long process, long thread, unsigned seed)
        : m_setup(setup), m_process(process), m_thread(thread), m_random(seed),
          fault("(process " + std::to_string(process) + ", thread " + std::to_string(thread) + ") "),
          m_places(setup.walkLength + 1, 0)
    {
    }

    void runUntil(Clock::time_point end)
    {
        while (Clock::now() < end) {
            const unsigned pick = draw(100);
            if (pick < 30)
                stepWalk();
            else if (pick < 45)
                alertOperation();
            else if (pick < 60)
                m_process < kUserWriters ? ownRecordOperation(kUsers) : readOtherRecord(kUsers, kUserWriters);
            else if (pick < 75)
                ownRecordOperation(kProfiles);
            else if (pick < 77)
                fallbackOperation();
            else
                readShared();
            ++m_operations;
        }
    }

    void writeLog(std::ostream& log) const
    {
        for (unsigned place = 1; place < m_places.size(); ++place)
            log << "W " << place << " " << m_places[place] << "\n";
        for (const auto& alert : m_alerts)
            log << "A " << alert.first << " " << alert.second << "\n";
        for (std::size_t kind = 0; kind < m_records.size(); ++kind)
            for (const auto& record : m_records[kind])
                log << "R" << kind << " " << narrow(record.first) << " " << narrow(record.second) << "\n";
        for (const std::wstring& network : m_fallbackNetworks)
            log << "F " << narrow(ownerName(m_process)) << " " << narrow(network) << "\n";
        log << "O " << m_operations << "\n";
    }

    int faults() const { return fault.count(); }

private:
    unsigned draw(unsigned below) { return std::uniform_int_distribution<unsigned>(0, below - 1)(m_random); }
    std::wstring tag(const std::wstring& name)
    {
        return makeTag(name, static_cast<unsigned long>(m_process), ++m_sequence);
    }

    // Nobody but this walk's steps touches the list, and nobody stops it, so every step hands
    // out an entry, and only a step past the end comes back to the first.
    void stepWalk()
    {
        bool wrapped = false;
        const boost::shared_ptr<ZETPreferredNetEntry> entry = ZETSettings::nextChooserPreferredNet(false, wrapped);
        unsigned index = 0;
        if (!entry || !isEntryForm(*entry) || swscanf(entry->netName.c_str(), L"walk-e%u", &index) != 1 ||
            index >= m_setup.walkLength || entry->netName != walkName(index))
            return fault("the walk handed out '" + (entry ? narrow(entry->netName) : std::string("nothing")) + "'");
        const unsigned place = index + 1;
        ++m_places[place];
        if (wrapped != (place == 1))
            fault("place " + std::to_string(place) + " came with wrapped " + (wrapped ? "true" : "false"));
    }

    // Only this thread writes its alerts. A lost entry reads as enabled, never seen: so it
    // shows when the state last written was false.
    void alertOperation()
    {
        const unsigned k = draw(kAlertsPerThread);
        const int alert = alertNumber(m_process, m_thread, k);
        const auto written = m_alerts.find(alert);
        if (draw(2) == 0 && written != m_alerts.end()) {
            if (ZETSettings::isAlertNotificationEnabled(alert) != written->second)
                fault("alert " + std::to_string(alert) + " lost its state " + std::to_string(written->second));
            return;
        }
        const bool enabled = draw(2) == 1;
        ZETSettings::updateAlertNotificationState(alert, enabled);
        m_alerts[alert] = enabled;
    }

    // Only this thread writes these records: each reads back as it last wrote it.
    void ownRecordOperation(std::size_t which)
    {
        const RecordKind& kind = kKinds[which];
        const std::wstring name = recordName(kind.prefix, m_process, m_thread, draw(kind.perThread));
        auto& written = m_records[which];
        const auto last = written.find(name);
        if (draw(2) == 0 && last != written.end()) {
            std::wstring found;
            if (!kind.read(name, found) || found != last->second)
                fault(narrow(name) + " does not read back as written last: '" + narrow(found) + "'");
            return;
        }
        written[name] = tag(name);
        kind.write(name, written[name]);
    }

    void readOtherRecord(std::size_t which, long writers)
    {
        const RecordKind& kind = kKinds[which];
        const std::wstring name = recordName(kind.prefix, draw(static_cast<unsigned>(writers)),
                                             draw(static_cast<unsigned>(m_setup.threads)), draw(kind.perThread));
        if (!isAbsentOrOwnTag(kind, name))
            fault(narrow(name) + " holds a form never written");
    }

    // Writers of the fallback database in other processes may put back an older form of this
    // record (their rewrite of the whole database is ordered only within a process), so the
    // check is that it is there and whole.
    void fallbackOperation()
    {
        const std::wstring network =
            L"T" + std::to_wstring(m_thread) + L"N" + std::to_wstring(draw(kFallbackPerThread));
        ZETSettings::setFallbackSettings(
            fallbackForm(ownerName(m_process), network, tag(lowerCase(ownerName(m_process)) + L"/" + network)));
        m_fallbackNetworks.insert(network);
        const boost::shared_ptr<ZETFallbackSettings> record =
            ZETSettings::getFallbackSettings(ownerName(m_process), network);
        std::wstring seen;
        if (!record || !isFallbackForm(*record, seen))
            fault("fallback record " + narrow(ownerName(m_process)) + "/" + narrow(network) + " is not whole");
    }

    void readShared()
    {
        const boost::shared_ptr<ZETPreferredNetworks> list = ZETSettings::getChooserPreferredNets();
        bool same = list->entries.size() == m_setup.walkLength && list->position >= 1;
        for (unsigned i = 0; same && i < list->entries.size(); ++i)
            same = list->entries[i].netName == walkName(i);
        if (!same || !listFault(*list).empty())
            fault("the walk's list changed: position " + std::to_string(list->position) + ", " +
                  std::to_string(list->entries.size()) + " entries " + listFault(*list));
        readOtherRecord(kProfiles, m_setup.processes);
    }

    Setup m_setup;
    long m_process;
    long m_thread;
    std::mt19937 m_random;
    unsigned long m_sequence = 0;
    unsigned long m_operations = 0;
    Violations fault;
    std::vector<unsigned long> m_places;
    std::map<int, bool> m_alerts;
    std::array<std::map<std::wstring, std::wstring>, 2> m_records;
    std::set<std::wstring> m_fallbackNetworks;
};

Setup setupOf(const Options& options)
{
    return {options.number("processes", 8), options.number("threads", 4),
            static_cast<unsigned>(options.number("walk", 61))};
}

// ---- the final check -----------------------------------------------------------------------

struct Written {
    std::vector<unsigned long> places;
    std::map<unsigned, bool> alerts;
    std::map<std::string, std::string> records[2];
    std::vector<std::pair<std::string, std::string>> fallback;
    unsigned long operations = 0;
};

std::wstring widen(const std::string& text)
{
    return std::wstring(text.begin(), text.end());
}

void readLog(const std::string& path, Written& written)
{
    std::ifstream log(path);
    std::string line;
    while (std::getline(log, line)) {
        std::istringstream fields(line);
        std::string kind, a, b;
        fields >> kind >> a >> b;
        if (kind == "W" && std::stoul(a) < written.places.size())
            written.places[std::stoul(a)] += std::stoul(b);
        else if (kind == "A")
            written.alerts[static_cast<unsigned>(std::stol(a))] = b == "1";
        else if (kind == "R0" || kind == "R1")
            written.records[kind[1] - '0'][a] = b;
        else if (kind == "F")
            written.fallback.emplace_back(a, b);
        else if (kind == "O")
            written.operations += std::stoul(a);
    }
}

class ContentionCheck {
public:
    ContentionCheck(const Setup& setup, const std::string& run) : m_setup(setup)
    {
        m_written.places.assign(setup.walkLength + 1, 0);
        for (long process = 0; process < setup.processes; ++process)
            readLog(logPath(run, process), m_written);
    }

    int run()
    {
        checkWalk();
        checkAlerts();
        checkRecords();
        std::cout << "steps " << m_steps << " operations " << m_written.operations << " alerts "
                  << m_written.alerts.size() << " users " << m_written.records[kUsers].size() << " profiles "
                  << m_written.records[kProfiles].size() << " fallback " << m_written.fallback.size() << "\n";
        return fault.exitCode();
    }

private:
    // The driver's first step handed out place 1; step k after it must have handed out place
    // k mod n + 1. So over all processes each place was handed out a known number of times,
    // and the stored position is that of the last step: a step lost or repeated shows in both.
    void checkWalk()
    {
        const unsigned n = m_setup.walkLength;
        for (unsigned place = 1; place <= n; ++place)
            m_steps += m_written.places[place];
        std::vector<unsigned long> expected(n + 1, m_steps / n);
        for (unsigned place = 1; place <= m_steps % n; ++place)
            ++expected[place + 1];
        for (unsigned place = 1; place <= n; ++place)
            if (m_written.places[place] != expected[place])
                fault("place " + std::to_string(place) + " was handed out " + std::to_string(m_written.places[place]) +
                      " times, " + std::to_string(expected[place]) + " expected from " + std::to_string(m_steps) +
                      " steps");
        ZETPreferredNetworks stored;
        const std::string read = readStored(kListValue, stored);
        if (!read.empty())
            return fault("the walk's list is " + read);
        if (stored.position != m_steps % n + 1)
            fault("the walk stands at " + std::to_string(stored.position) + " after " + std::to_string(m_steps) +
                  " steps; " + std::to_string(m_steps % n + 1) + " expected");
    }

    void checkAlerts()
    {
        ZETAlertSettings stored;
        const std::string read = readStored(kAlertValue, stored);
        if (!read.empty())
            return fault("the alert states are " + read);
        for (const auto& alert : m_written.alerts) {
            const auto found = stored.states.find(TSerVar<unsigned int>(alert.first));
            if (found == stored.states.end())
                fault("alert " + std::to_string(alert.first) + " was lost");
            else if (found->second.value != (alert.second ? 1u : 0u))
                fault("alert " + std::to_string(alert.first) + " holds " + std::to_string(found->second.value) +
                      ", not its last state");
        }
    }

    void checkRecords()
    {
        for (std::size_t kind = 0; kind < 2; ++kind)
            for (const auto& record : m_written.records[kind]) {
                std::wstring tag;
                if (!kKinds[kind].read(widen(record.first), tag) || narrow(tag) != record.second)
                    fault(record.first + " was lost or went back");
            }
        for (const auto& place : m_written.fallback) {
            const boost::shared_ptr<ZETFallbackSettings> record =
                ZETSettings::getFallbackSettings(widen(place.first), widen(place.second));
            std::wstring tag;
            if (!record || !isFallbackForm(*record, tag))
                fault("fallback record " + place.first + "/" + place.second + " was lost or is not whole");
        }
    }

    Setup m_setup;
    Written m_written;
    unsigned long m_steps = 0;
    Violations fault;
};

}  // namespace

int contentionWorker(const Options& options)
{
    const Setup setup = setupOf(options);
    const long process = options.number("index", 0);
    const Clock::time_point end = Clock::now() + std::chrono::seconds(options.number("seconds", 60));
    std::mt19937 seeds(static_cast<unsigned>(options.number("seed", 1)));
    std::vector<std::unique_ptr<ContentionThread>> workers;
    for (long thread = 0; thread < setup.threads; ++thread)
        workers.emplace_back(new ContentionThread(setup, process, thread, seeds()));
    std::vector<std::thread> threads;
    for (auto& worker : workers)
        threads.emplace_back([&worker, end] { worker->runUntil(end); });
    int faults = 0;
    std::ofstream log(logPath(options.text("run", "."), process));
    for (std::size_t i = 0; i < threads.size(); ++i) {
        threads[i].join();
        workers[i]->writeLog(log);
        faults += workers[i]->faults();
    }
    log.close();
    return faults == 0 && log ? 0 : 1;
}

int contentionCheck(const Options& options)
{
    return ContentionCheck(setupOf(options), options.text("run", ".")).run();
}

int contentionDriver(const Options& options)
{
    const Setup setup = setupOf(options);
    const long seconds = options.number("seconds", 60);
    RunDirectory run;
    // The walk's list, started: place 1 is handed out here, every later step by the workers.
    ZETSettings::updateChooserPreferredNets(listForm(L"walk-", setup.walkLength, 0));
    bool wrapped = false;
    const boost::shared_ptr<ZETPreferredNetEntry> first = ZETSettings::nextChooserPreferredNet(true, wrapped);
    if (!first || first->netName != walkName(0)) {
        std::cerr << "VIOLATION: the walk does not start at its first entry\n";
        return 1;
    }

    const std::vector<std::string> common{"--processes", std::to_string(setup.processes), "--threads",
                                          std::to_string(setup.threads), "--walk", std::to_string(setup.walkLength),
                                          "--run", run.path()};
    std::random_device entropy;
    std::vector<pid_t> workers;
    for (long process = 0; process < setup.processes; ++process) {
        std::vector<std::string> args{"contention-worker", "--index", std::to_string(process), "--seconds",
                                      std::to_string(seconds), "--seed", std::to_string(entropy())};
        args.insert(args.end(), common.begin(), common.end());
        workers.push_back(startSelf(args));
    }
    int faults = 0;
    // Each worker stops taking new operations at the end of the run; one that is still going
    // long after has hung.
    const int bound = static_cast<int>(seconds * 1000 + 120000);
    for (std::size_t i = 0; i < workers.size(); ++i) {
        const Ending ending = waitWithin(workers[i], bound);
        if (!ending.finished)
            killAndReap(workers[i]);
        if (!ending.succeeded())
            std::cerr << "VIOLATION: worker process " << i << " " << describe(ending) << "\n";
        faults += ending.succeeded() ? 0 : 1;
    }
    std::vector<std::string> args{"contention-check"};
    args.insert(args.end(), common.begin(), common.end());
    std::string summary;
    const Ending checked = runSelf(args, 120000, summary);
    faults += checked.succeeded() ? 0 : 1;
    std::cout << "contention test: " << setup.processes << " processes x " << setup.threads << " threads for "
              << seconds << " s; " << summary
              << (faults == 0 ? "no violation" : "VIOLATIONS in " + std::to_string(faults) + " process(es)") << "\n";
    return faults == 0 ? 0 : 1;
}

}  // namespace zetstress
