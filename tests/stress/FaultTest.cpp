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
#include <stdexcept>

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

// "EIO,EACCES": the errnos by name.
std::map<std::string, int> errnosOf(const std::string& list)
{
    static const std::map<std::string, int> known = {
        {"ENOSPC", ENOSPC}, {"EIO", EIO}, {"EACCES", EACCES}, {"EDQUOT", EDQUOT}, {"EROFS", EROFS}};
    std::map<std::string, int> errnos;
    std::stringstream in(list);
    for (std::string name; std::getline(in, name, ',');)
        if (!name.empty() && !known.count(name))
            throw std::invalid_argument("unknown errno " + name);
        else if (!name.empty())
            errnos[name] = known.at(name);
    return errnos;
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

// Runs N = 1, 2, ... until a writer runs through without a failed call; each run starts from a
// copy of `start` (an empty folder makes the writer create the store and the machine key, and
// the check accept absent items instead of generation 0). Returns the runs with a failed call.
long runsUntilThrough(const fs::path& start, const fs::path& run, int code, bool always, const std::string& label,
                      Violations& fault)
{
    const fs::path report = run.parent_path() / "fault-report";
    const fs::path shim = fs::read_symlink("/proc/self/exe").parent_path() / "libzetsettings_fault_shim.so";
    for (long n = 1; n <= kMaxN; ++n) {
        fs::remove_all(run);
        fs::copy(start, run, fs::copy_options::recursive);
        fs::remove(report);
        std::string written;
        const Ending writer = runSelf({"fault-write", "--generation", "1"}, kTimeoutMs, written,
                                      {{"LD_PRELOAD", shim.string()},
                                       {"ZET_FAULT_PREFIX", run.string() + "/"},
                                       {"ZET_FAULT_AT", std::to_string(n)},
                                       {"ZET_FAULT_ERRNO", std::to_string(code)},
                                       {"ZET_FAULT_ALWAYS", always ? "1" : "0"},
                                       {"ZET_FAULT_REPORT", report.string()},
                                       {"ZET_REGISTRY_INITIAL_MAP", "65536"}});
        const std::string reported = fileBytes(report), faulted = reported.substr(0, reported.find('\n'));
        if (faulted.empty() && writer.succeeded())
            return n - 1;
        const std::string where = "fault " + label + " N=" + std::to_string(n) + " (" + faulted + "): ";
        fault.expect(writer.succeeded(), where + "the writer " + describe(writer));
        runChecked({"fault-check", "--before", fs::is_empty(start) ? "absent" : "0", "--written", written,
                    "--where", where},
                   kTimeoutMs, fault, where + "the check");
        for (const std::string& code : wordsAfter(written, "code"))
            fault.expect(isClearError(std::stol(code)), where + "RegSetValueExW gave " + code);
    }
    return kMaxN;
}

void seedStore(const fs::path& seeded)
{
    setenv("ZET_REGISTRY_DIR", (seeded / "store").c_str(), 1);
    std::string output;
    // Made under umask 0: the modes that the check sees are the library's own choice.
    const mode_t previous = umask(0);
    const Ending seed = runSelf({"fault-write", "--generation", "0"}, kTimeoutMs, output);
    umask(previous);
    if (!seed.succeeded() || wordsAfter(output, "ok").size() != items().size())
        throw std::runtime_error("the store could not be seeded: " + output);
}

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

// Every item must be whole, of the generation before or of generation 1 (a profile may have
// lost its secret), and of generation 1 where the writer knew it written; a further write must
// succeed, and nothing may be exposed.
int faultCheck(const Options& options)
{
    Violations fault(options.text("where", ""));
    const std::string before = options.text("before", "0");
    const std::set<std::string> ok = wordsAfter(options.text("written", ""), "ok");
    for (const Item& item : items()) {
        const std::string state = nameOfState(item.read());
        if (state != before && state != "1" && state != "without-secret")
            fault(std::string(item.name) + " is " + state);
        else if (ok.count(item.name) && state != "1")
            fault(std::string(item.name) + " was written but reads as " + state);
    }
    reportExposure(fs::path(getenv("ZET_REGISTRY_DIR")).parent_path(), fault);
    fault.expect(furtherWriteSucceeds(), "a further write after the faulty run failed");
    return fault.exitCode();
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

    Violations fault;
    long runs = 0;
    for (const char* from : {"seeded", "empty"}) {
        for (const char* mode : {"once", "always"}) {
            for (const auto& code : errnosOf(options.text("errnos", "ENOSPC,EIO,EACCES"))) {
                const std::string label = code.first + " " + mode + " from " + from;
                const long faulty = runsUntilThrough(from == std::string("empty") ? empty : seeded, run,
                                                     code.second, mode == std::string("always"), label, fault);
                std::cout << label << ": " << faulty << " runs with a failed call" << std::endl;
                // The writer always makes some of the calls counted: none failing means no shim.
                fault.expect(faulty != 0, "fault " + label + ": no call failed; is the shim loaded?");
                fault.expect(faulty != kMaxN, "fault " + label + ": the writer never ran through");
                runs += faulty;
            }
        }
    }
    std::cout << "fault: " << runs << " runs, " << fault.count() << " violations" << std::endl;
    return fault.exitCode();
}

const bool kRoles = addRoles({{"fault", faultDriver}, {"fault-write", faultWriter}, {"fault-check", faultCheck}});

}  // namespace
}  // namespace zetstress
