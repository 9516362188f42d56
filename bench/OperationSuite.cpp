#include "OperationSuite.h"

#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <map>
#include <memory>
#include <random>
#include <stdexcept>
#include <thread>

#include "support/ChildProcess.h"
#include "support/ChildScenario.h"
#include "support/TestRegistry.h"

namespace opsuite {
namespace {

namespace fs = std::filesystem;

const int kHelperProcesses = 3;

std::vector<Operation>& table()
{
    static std::vector<Operation> operations;
    return operations;
}

const Operation* find(const std::string& name)
{
    for (const Operation& operation : table())
        if (operation.name == name)
            return &operation;
    return nullptr;
}

// One call; a restore runs first, untimed when the call is timed.
void callOnce(const Operation& operation, Call& call, benchmark::State* timed)
{
    if (operation.restore) {
        if (timed)
            timed->PauseTiming();
        operation.restore(call);
        if (timed)
            timed->ResumeTiming();
    }
    operation.invoke(call);
    ++call.iteration;
}

// A folder of files through which the measuring process and its helpers signal each other.
class Signals {
public:
    Signals()
    {
        std::random_device random;
        m_folder = fs::temp_directory_path() / ("zetsettings-bench-" + std::to_string(random()));
        fs::create_directories(m_folder);
    }
    ~Signals()
    {
        std::error_code ignored;
        fs::remove_all(m_folder, ignored);
    }
    std::string folder() const { return m_folder.string(); }
    void raise(const std::string& name) { std::ofstream(m_folder / name) << ""; }
    void waitFor(const std::string& name) const
    {
        while (!fs::exists(m_folder / name))
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }

private:
    fs::path m_folder;
};

// Helpers that call one operation until stopped. They live across the repetitions of their
// benchmark: a process start costs far more than a call, most of all under Wine.
class HelperGroup {
public:
    HelperGroup(const Operation& operation, int entries) : m_key(keyOf(operation, entries))
    {
        for (int i = 1; i <= kHelperProcesses; ++i)
            m_processes.emplace_back(new zettest::ChildProcess(
                "bench_helper", {operation.name, std::to_string(entries), std::to_string(i), m_signals.folder()}));
        for (int i = 1; i <= kHelperProcesses; ++i)
            m_signals.waitFor("ready" + std::to_string(i));
    }
    ~HelperGroup()
    {
        m_signals.raise("stop");
        for (auto& process : m_processes)
            if (process->wait() != 0)
                std::fprintf(stderr, "a helper process of %s failed\n", m_key.c_str());
    }
    bool serves(const Operation& operation, int entries) const { return m_key == keyOf(operation, entries); }

private:
    static std::string keyOf(const Operation& operation, int entries)
    {
        return operation.name + "/" + std::to_string(entries);
    }

    std::string m_key;
    Signals m_signals;
    std::vector<std::unique_ptr<zettest::ChildProcess>> m_processes;
};

// The planted store of the benchmarks running now, and the helpers working on it.
struct Stage {
    std::unique_ptr<zettest::TestRegistry> registry;
    Plant plant = nullptr;
    int entries = 0;
    // Declared last, so destroyed first: the helpers stop before their store goes.
    std::unique_ptr<HelperGroup> helpers;
};

Stage& stage()
{
    static Stage current;
    return current;
}

void runInThreads(benchmark::State& state, const Operation& operation, int entries)
{
    // Thread 0 plants before the start barrier; the others wait there for it.
    if (state.thread_index() == 0) {
        stage().helpers.reset();
        ensurePlanted(operation.plant, entries);
    }
    Call call{entries, state.thread_index(), 0};
    for (auto _ : state)
        callOnce(operation, call, &state);
}

void runWithHelperProcesses(benchmark::State& state, const Operation& operation, int entries)
{
    Stage& current = stage();
    if (!current.helpers || !current.helpers->serves(operation, entries)) {
        current.helpers.reset();
        ensurePlanted(operation.plant, entries);
        current.helpers.reset(new HelperGroup(operation, entries));
    }
    Call call{entries, 0, 0};
    for (auto _ : state)
        callOnce(operation, call, &state);
}

std::string nameOf(const Operation& operation, int entries, const char* mode)
{
    return "op/" + operation.name + "/n:" + std::to_string(entries) + "/" + mode;
}

void registerAt(const Operation& operation, int entries)
{
    benchmark::internal::Benchmark* single =
        benchmark::RegisterBenchmark(nameOf(operation, entries, "1thread").c_str(), runInThreads, operation, entries);
    single->UseRealTime();
    // Ten thousand commits take about half a minute on a disk that syncs: once is enough.
    if ((operation.traits & kRewritesAll) && entries == kSizes[2])
        single->Iterations(1)->Repetitions(1);
    if (!(operation.traits & kShared) || entries != ((operation.traits & kSized) ? kContendedSize : 1))
        return;
    benchmark::RegisterBenchmark(nameOf(operation, entries, "4threads").c_str(), runInThreads, operation, entries)
        ->Threads(4)
        ->UseRealTime();
    benchmark::RegisterBenchmark(nameOf(operation, entries, "4processes").c_str(), runWithHelperProcesses, operation,
                                 entries)
        ->UseRealTime();
}

}  // namespace

const std::vector<Operation>& operations()
{
    return table();
}

void ensurePlanted(Plant plant, int entries)
{
    Stage& current = stage();
    if (current.registry && current.plant == plant && current.entries == entries)
        return;
    current.helpers.reset();
    current.registry.reset();
    current.registry.reset(new zettest::TestRegistry);
    current.plant = plant;
    current.entries = entries;
    plant(entries);
}

bool registerSuite(const std::vector<Operation>& operations)
{
    // Grouped by size, so that each store is planted once per size.
    for (int entries : kSizes)
        for (const Operation& operation : operations)
            if ((operation.traits & kSized) || entries == 1)
                registerAt(operation, entries);
    table().insert(table().end(), operations.begin(), operations.end());
    return true;
}

}  // namespace opsuite

// A helper: calls the operation without pause until the measuring process raises "stop".
// Arguments: operation, entries, slot, folder.
ZET_CHILD_SCENARIO(bench_helper)
{
    const opsuite::Operation* found = opsuite::find(args.at(0));
    if (!found)
        return 2;
    const std::filesystem::path folder = args.at(3);
    opsuite::Call call{std::stoi(args.at(1)), std::stoi(args.at(2)), 0};
    opsuite::callOnce(*found, call, nullptr);
    std::ofstream(folder / ("ready" + args.at(2))) << "";
    while (!std::filesystem::exists(folder / "stop"))
        opsuite::callOnce(*found, call, nullptr);
    return 0;
}
