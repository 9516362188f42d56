// Contention test: processes with several threads each run mixed operations on one store for
// a bounded time. Each thread checks what it can see as it goes (its own records read back
// as it last wrote them, nothing torn, the walk's list intact); at the end a fresh process
// checks the union: every place of the walk handed out exactly once per lap, in order, and
// every entry that somebody wrote and nobody removed still there with its last state.
#include <chrono>
#include <cwchar>
#include <deque>
#include <fstream>
#include <iostream>
#include <map>
#include <random>
#include <sstream>
#include <thread>

#include "Processes.h"
#include "Records.h"
#include "StressRoles.h"

namespace zetstress {
namespace {

using Clock = std::chrono::steady_clock;

std::wstring walkName(unsigned index)
{
    return L"walk-e" + std::to_wstring(index);
}

// Only the first process writes users' settings; the others read them.
const long kUserWriters = 1;

std::string logPath(const std::string& run, long process)
{
    return run + "/contention-p" + std::to_string(process) + ".log";
}

struct Setup {
    long processes;
    long threads;
    unsigned walkLength;
};

Setup setupOf(const Options& options)
{
    return {options.number("processes", 8), options.number("threads", 4),
            static_cast<unsigned>(options.number("walk", 61))};
}

// What the threads wrote, in their logs: how often each place of the walk was handed out, and
// per kind every name with its last state.
struct Written {
    std::vector<unsigned long> places;
    States states;
    unsigned long operations = 0;
};

// One thread's share of the mix, with what it last wrote so that it can tell a lost entry.
class ContentionThread {
public:
    ContentionThread(const Setup& setup, long process, long thread, unsigned seed)
        : m_setup(setup), m_process(process), m_writer(process, thread, static_cast<unsigned long>(process), seed),
          fault("(process " + std::to_string(process) + ", thread " + std::to_string(thread) + ") ")
    {
        m_written.places.assign(setup.walkLength + 1, 0);
    }

    void runUntil(Clock::time_point end)
    {
        while (Clock::now() < end) {
            const unsigned pick = draw(100);
            if (pick < 30)
                stepWalk();
            else if (pick < 45)
                ownOperation(kAlerts);
            else if (pick < 60)
                m_process < kUserWriters ? ownOperation(kUsers) : readOther(kUsers, kUserWriters);
            else if (pick < 75)
                ownOperation(kProfiles);
            else if (pick < 77)
                ownOperation(kFallback);
            else
                readShared();
            ++m_written.operations;
        }
    }

    void writeLog(std::ostream& log) const
    {
        for (unsigned place = 1; place < m_written.places.size(); ++place)
            log << "W " << place << " " << m_written.places[place] << "\n";
        printStates(m_writer.written, log);
        log << "O " << m_written.operations << "\n";
    }

    int faults() const { return fault.count(); }

private:
    unsigned draw(unsigned below) { return m_writer.draw(below); }

    // Nobody but this walk's steps touches the list, and nobody stops it, so every step hands
    // out an entry, and only a step past the end comes back to the first.
    void stepWalk()
    {
        bool wrapped = false;
        const boost::shared_ptr<ZETPreferredNetEntry> entry = ZETSettings::nextChooserPreferredNet(false, wrapped);
        unsigned index = 0;
        if (!entry || !sameForm(*entry, entryForm(entry->netName)) ||
            swscanf(entry->netName.c_str(), L"walk-e%u", &index) != 1 || index >= m_setup.walkLength ||
            entry->netName != walkName(index))
            return fault("the walk handed out '" + (entry ? narrow(entry->netName) : std::string("nothing")) + "'");
        const unsigned place = index + 1;
        ++m_written.places[place];
        if (wrapped != (place == 1))
            fault("place " + std::to_string(place) + " came with wrapped " + (wrapped ? "true" : "false"));
    }

    // Only this thread writes these records: each reads back as it last wrote it.
    void ownOperation(std::size_t which)
    {
        const Kind& kind = kKinds[which];
        const std::wstring name = m_writer.ownName(which);
        const auto last = m_writer.written[which].find(name);
        if (draw(2) == 0 && last != m_writer.written[which].end()) {
            std::wstring found;
            if (!kind.read(name, found) || found.empty() || (kind.lastWins && found != last->second))
                fault(kind.what + narrow(name) + " does not read back as written last: '" + narrow(found) + "'");
            return;
        }
        m_writer.write(which, name);
    }

    // A record that someone else may have written: absent, or whole with a tag of its own name.
    void readOther(std::size_t which, long writers)
    {
        const Kind& kind = kKinds[which];
        const std::wstring name = kind.name(draw(static_cast<unsigned>(writers)),
                                            draw(static_cast<unsigned>(m_setup.threads)), draw(kind.perThread));
        std::wstring found;
        if (kind.read(name, found) && found.empty())
            fault(kind.what + narrow(name) + " holds a form never written");
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
        readOther(kProfiles, m_setup.processes);
    }

    Setup m_setup;
    long m_process;
    RecordWriter m_writer;
    Violations fault;
    Written m_written;
};

// ---- the final check -----------------------------------------------------------------------

void readLog(const std::string& path, Written& written)
{
    std::ifstream log(path);
    for (std::string line; std::getline(log, line);) {
        std::istringstream fields(line);
        std::string kind, a, b;
        fields >> kind >> a >> b;
        if (kind == "W" && std::stoul(a) < written.places.size())
            written.places[std::stoul(a)] += std::stoul(b);
        else if (kind == "O")
            written.operations += std::stoul(a);
        else
            parseState(line, written.states);
    }
}

// The driver's first step handed out place 1; step k after it must have handed out place
// k mod n + 1. So over all processes each place was handed out a known number of times, and
// the stored position is that of the last step: a step lost or repeated shows in both.
unsigned long checkWalk(const std::vector<unsigned long>& places, unsigned n, Violations& fault)
{
    unsigned long steps = 0;
    for (unsigned place = 1; place <= n; ++place)
        steps += places[place];
    std::vector<unsigned long> expected(n + 1, steps / n);
    for (unsigned place = 1; place <= steps % n; ++place)
        ++expected[place + 1];
    for (unsigned place = 1; place <= n; ++place)
        fault.expect(places[place] == expected[place], "place " + std::to_string(place) + " was handed out " +
                                                           std::to_string(places[place]) + " times, " +
                                                           std::to_string(expected[place]) + " expected from " +
                                                           std::to_string(steps) + " steps");
    ZETPreferredNetworks stored;
    const std::string read = readStored(kListValue, stored);
    fault.expect(read.empty(), "the walk's list is " + read);
    fault.expect(!read.empty() || stored.position == steps % n + 1,
                 "the walk stands at " + std::to_string(stored.position) + " after " + std::to_string(steps) +
                     " steps; " + std::to_string(steps % n + 1) + " expected");
    return steps;
}

int contentionWorker(const Options& options)
{
    const Setup setup = setupOf(options);
    const long process = options.number("index", 0);
    const Clock::time_point end = Clock::now() + std::chrono::seconds(options.number("seconds", 60));
    std::mt19937 seeds(static_cast<unsigned>(options.number("seed", 1)));
    std::deque<ContentionThread> workers;
    std::vector<std::thread> threads;
    for (long thread = 0; thread < setup.threads; ++thread) {
        workers.emplace_back(setup, process, thread, seeds());
        threads.emplace_back(&ContentionThread::runUntil, &workers.back(), end);
    }
    int faults = 0;
    std::ofstream log(logPath(options.text("run", "."), process));
    for (std::size_t i = 0; i < threads.size(); ++i) {
        threads[i].join();
        workers[i].writeLog(log);
        faults += workers[i].faults();
    }
    log.close();
    return faults == 0 && log ? 0 : 1;
}

int contentionCheck(const Options& options)
{
    const Setup setup = setupOf(options);
    Written written;
    written.places.assign(setup.walkLength + 1, 0);
    for (long process = 0; process < setup.processes; ++process)
        readLog(logPath(options.text("run", "."), process), written);
    Violations fault;
    const unsigned long steps = checkWalk(written.places, setup.walkLength, fault);
    compareStates(written.states, readAll(setup.processes, setup.threads, fault), true, fault);
    std::cout << "steps " << steps << " operations " << written.operations << " alerts "
              << written.states[kAlerts].size() << " users " << written.states[kUsers].size() << " profiles "
              << written.states[kProfiles].size() << " fallback " << written.states[kFallback].size() << "\n";
    return fault.exitCode();
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

    // The check takes the setup; each worker takes it too, with options of its own behind.
    const std::vector<std::string> check{"contention-check", "--processes", std::to_string(setup.processes),
                                         "--threads", std::to_string(setup.threads), "--walk",
                                         std::to_string(setup.walkLength), "--run", run.path()};
    std::random_device entropy;
    std::vector<pid_t> workers;
    for (long process = 0; process < setup.processes; ++process) {
        std::vector<std::string> args = check;
        args[0] = "contention-worker";
        args.insert(args.end(), {"--index", std::to_string(process), "--seconds", std::to_string(seconds), "--seed",
                                 std::to_string(entropy())});
        workers.push_back(startSelf(args));
    }
    Violations fault;
    // Each worker stops taking new operations at the end of the run; one that is still going
    // long after has hung.
    const int bound = static_cast<int>(seconds * 1000 + 120000);
    for (std::size_t i = 0; i < workers.size(); ++i) {
        const Ending ending = killUnlessEnded(workers[i], bound);
        fault.expect(ending.succeeded(), "worker process " + std::to_string(i) + " " + describe(ending));
    }
    const std::string summary = runChecked(check, 120000, fault, "the final check");
    std::cout << "contention test: " << setup.processes << " processes x " << setup.threads << " threads for "
              << seconds << " s; " << summary << fault.count() << " process(es) with violations\n";
    return fault.exitCode();
}

const bool kRoles = addRoles({{"contention", contentionDriver}, {"contention-worker", contentionWorker},
                              {"contention-check", contentionCheck}});

}  // namespace
}  // namespace zetstress
