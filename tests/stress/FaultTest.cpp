// The fault test: a writer whose N-th file call on the store fails, for N = 1, 2, ... until the
// writer runs through without a failure, and a check after each run by a process that sees no
// fault.
//
// Each run starts from a copy of the same store, in which a first writer stored generation 0 of
// every item (FaultItems.h), under umask 0. The faulty writer, preloaded with the shim
// (FaultShim.c), stores generation 1 of each, starting from a small map so that it must grow
// it, and prints "ok <item>" for each write that it knows was made: one that reported success,
// or a silent one whose read-back gave the new form. It must end by itself, within a bound. The
// check then reads every item: it must be whole and of generation 0 or 1, of generation 1 where
// the writer printed "ok", and a further write must succeed. It also scans the files for
// secrets in the clear and for modes that let others write.
#include <sys/stat.h>

#include <filesystem>
#include <iostream>
#include <map>
#include <set>
#include <sstream>

#include <zetsettings/ZETSettings.h>
#include <zetsettings/components/ZETMutexException.h>

#include "FaultItems.h"
#include "Processes.h"
#include "StressRoles.h"

namespace zetstress {
namespace {

namespace fs = std::filesystem;

const int kTimeoutMs = 20000;
// Far above the calls of one writer's run: reaching it means the writer never runs through.
const long kMaxN = 5000;

struct Counts {
    long runs = 0;
    long violations = 0;
};

int errnoByName(const std::string& name)
{
    static const std::map<std::string, int> known = {
        {"ENOSPC", ENOSPC}, {"EIO", EIO}, {"EACCES", EACCES}, {"EDQUOT", EDQUOT}, {"EROFS", EROFS}};
    const auto found = known.find(name);
    if (found == known.end())
        throw std::invalid_argument("unknown errno " + name);
    return found->second;
}

std::vector<std::string> splitList(const std::string& text)
{
    std::vector<std::string> words;
    std::stringstream in(text);
    for (std::string word; std::getline(in, word, ',');)
        if (!word.empty())
            words.push_back(word);
    return words;
}

std::string shimPath()
{
    return (fs::read_symlink("/proc/self/exe").parent_path() / "libzetsettings_fault_shim.so").string();
}

std::set<std::string> wordsAfter(const std::string& output, const std::string& first)
{
    std::set<std::string> words;
    std::istringstream in(output);
    for (std::string line; std::getline(in, line);)
        if (line.compare(0, first.size() + 1, first + " ") == 0)
            words.insert(line.substr(first.size() + 1));
    return words;
}

// The errors with which the store says what went wrong with the disk or the rights.
bool isClearError(long code)
{
    static const std::set<long> clear = {ERROR_SUCCESS,       ERROR_ACCESS_DENIED,    ERROR_DISK_FULL,
                                         ERROR_REGISTRY_IO_FAILED, ERROR_BADDB,       ERROR_REGISTRY_CORRUPT,
                                         ERROR_CANTREAD,      ERROR_CANTWRITE,        ERROR_NOT_ENOUGH_MEMORY};
    return clear.count(code) != 0;
}

std::string firstLine(const std::string& text)
{
    return text.substr(0, text.find('\n'));
}

class FaultRun {
public:
    explicit FaultRun(Counts& counts) : m_counts(counts) {}

    // One run with the N-th call failing; false when no call failed (the writer ran through).
    // `start` holds the store to start from; an empty folder makes the writer create the store
    // and the machine key, and the check accept absent items instead of generation 0.
    bool run(const fs::path& start, const fs::path& run, long n, int code, bool always, const std::string& label)
    {
        m_fromEmpty = fs::is_empty(start);
        fs::remove_all(run);
        fs::copy(start, run, fs::copy_options::recursive);
        const fs::path report = fs::path(run).parent_path() / "fault-report";
        fs::remove(report);
        std::string written, checked;
        const Ending writer = runFaulty(run, n, code, always, report, written);
        const std::string faulted = firstLine(fileBytes(report));
        if (faulted.empty() && writer.finished && writer.exitCode == 0)
            return false;
        ++m_counts.runs;
        const std::string where = label + " N=" + std::to_string(n) + " (" + faulted + ")";
        if (!writer.succeeded())
            violation(where, "the writer " + describe(writer));
        const Ending check = runSelf({"fault-check"}, kTimeoutMs, checked);
        if (!check.succeeded())
            violation(where, "the check " + describe(check));
        judge(where, wordsAfter(written, "ok"), checked);
        for (const std::string& code : wordsAfter(written, "code"))
            if (!isClearError(std::stol(code)))
                violation(where, "RegSetValueExW gave " + code);
        return true;
    }

    // Runs N = 1, 2, ... up to `limit` until no call fails; returns the runs with a failed call.
    long upTo(long limit, const fs::path& start, const fs::path& run, int code, bool always, const std::string& label)
    {
        long n = 1;
        while (n <= limit && this->run(start, run, n, code, always, label))
            ++n;
        return n - 1;
    }

private:
    Ending runFaulty(const fs::path& run, long n, int code, bool always, const fs::path& report, std::string& output)
    {
        setenv("LD_PRELOAD", shimPath().c_str(), 1);
        setenv("ZET_FAULT_PREFIX", (run.string() + "/").c_str(), 1);
        setenv("ZET_FAULT_AT", std::to_string(n).c_str(), 1);
        setenv("ZET_FAULT_ERRNO", std::to_string(code).c_str(), 1);
        setenv("ZET_FAULT_ALWAYS", always ? "1" : "0", 1);
        setenv("ZET_FAULT_REPORT", report.c_str(), 1);
        setenv("ZET_REGISTRY_INITIAL_MAP", "65536", 1);
        const Ending ending = runSelf({"fault-write", "--generation", "1"}, kTimeoutMs, output);
        for (const char* name : {"LD_PRELOAD", "ZET_FAULT_PREFIX", "ZET_FAULT_AT", "ZET_FAULT_ERRNO", "ZET_FAULT_ALWAYS",
                                 "ZET_FAULT_REPORT", "ZET_REGISTRY_INITIAL_MAP"})
            unsetenv(name);
        return ending;
    }

    void judge(const std::string& where, const std::set<std::string>& ok, const std::string& checked)
    {
        std::istringstream in(checked);
        for (std::string line; std::getline(in, line);) {
            std::istringstream words(line);
            std::string kind, item, state;
            words >> kind >> item >> state;
            if (kind == "violation") {
                violation(where, line.substr(10));
            } else if (kind == "item") {
                const std::string before = m_fromEmpty ? "absent" : "0";
                if (state != before && state != "1" && state != "without-secret")
                    violation(where, item + " is " + state);
                else if (ok.count(item) && state != "1")
                    violation(where, item + " was written but reads as " + state);
            }
        }
        if (checked.find("further ok") == std::string::npos)
            violation(where, "a further write after the faulty run failed");
    }

    void violation(const std::string& where, const std::string& what)
    {
        ++m_counts.violations;
        std::cerr << "fault: " << where << ": " << what << "\n";
    }

    Counts& m_counts;
    bool m_fromEmpty = false;
};

void seedStore(const fs::path& seeded)
{
    setenv("ZET_REGISTRY_DIR", (seeded / "store").c_str(), 1);
    std::string output;
    // Made under umask 0: the modes that the check sees are the library's own choice.
    const mode_t previous = umask(0);
    const Ending seed = runSelf({"fault-write", "--generation", "0"}, 20000, output);
    umask(previous);
    if (!seed.finished || seed.exitCode != 0 || wordsAfter(output, "ok").size() != items().size())
        throw std::runtime_error("the store could not be seeded: " + output);
}

}  // namespace

int faultWriter(const Options& options)
{
    const int generation = static_cast<int>(options.number("generation", 1));
    if (generation == 0 && !createEapKey())
        return 1;
    for (const Item& item : items()) {
        try {
            const Reported reported = item.write(generation);
            const bool confirmed =
                reported == Reported::Success || (reported == Reported::Silent && item.read() == generation);
            std::cout << (confirmed ? "ok " : "not ") << item.name << std::endl;
        } catch (const ZETMutexException&) {
            // A lock that can't be taken fails its operation in the open: not written, and said.
            std::cout << "not " << item.name << std::endl;
        } catch (const std::exception& error) {
            // Nothing else but the fallback keys' refusal may leave the library: it is broken.
            std::cout << "threw " << item.name << " " << error.what() << std::endl;
            return 1;
        }
    }
    return 0;
}

int faultCheck(const Options&)
{
    const fs::path run = fs::path(getenv("ZET_REGISTRY_DIR")).parent_path();
    for (const Item& item : items())
        std::cout << "item " << item.name << " " << nameOfState(item.read()) << "\n";
    reportExposure(run, std::cout);
    std::cout << (furtherWriteSucceeds() ? "further ok" : "further failed") << std::endl;
    return 0;
}

int faultDriver(const Options& options)
{
    // tmpfs where there is one: the syncs of a few thousand runs stay cheap.
    const RunDirectory folder("fault", fs::is_directory("/dev/shm") ? "/dev/shm" : "/tmp");
    const fs::path seeded = fs::path(folder.path()) / "seeded", empty = fs::path(folder.path()) / "empty",
                   run = fs::path(folder.path()) / "run";
    seedStore(seeded);
    fs::create_directory(empty);
    setenv("ZET_REGISTRY_DIR", (run / "store").c_str(), 1);

    Counts counts;
    FaultRun faultRun(counts);
    for (const char* from : {"seeded", "empty"}) {
        for (const char* mode : {"once", "always"}) {
            for (const std::string& name : splitList(options.text("errnos", "ENOSPC,EIO,EACCES"))) {
                const std::string label = name + " " + mode + " from " + from;
                const long runs = faultRun.upTo(kMaxN, from == std::string("empty") ? empty : seeded, run,
                                                errnoByName(name), mode == std::string("always"), label);
                std::cout << label << ": " << runs << " runs with a failed call" << std::endl;
                // The writer always makes some of the calls counted: none failing means no shim.
                if (runs == 0 || runs == kMaxN)
                    std::cerr << "fault: " << label << ": " << (runs ? "never ran through" : "is the shim loaded?") << "\n";
                counts.violations += runs == kMaxN || runs == 0;
            }
        }
    }
    std::cout << "fault: " << counts.runs << " runs, " << counts.violations << " violations" << std::endl;
    return counts.violations == 0 ? 0 : 1;
}

}  // namespace zetstress
