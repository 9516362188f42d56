// Helper processes that step the chooser's walk without pause while a benchmark runs, so that
// the benchmark's own steps compete with them for the named mutex as the chooser processes of
// one machine would. The benchmark program has no child dispatcher: the helpers are forked
// from it, and the portable layer makes a fork's child open its own store and lock file.
#ifndef ZETSETTINGS_CHOOSER_BENCH_CONCURRENTSTEPPERS_H
#define ZETSETTINGS_CHOOSER_BENCH_CONCURRENTSTEPPERS_H

#include <sys/types.h>

#include <atomic>
#include <vector>

namespace chooserbench {

class ConcurrentSteppers {
public:
    // Returns once every helper has taken its first step.
    explicit ConcurrentSteppers(int helpers);
    // Stops and reaps the helpers if stop() was not called.
    ~ConcurrentSteppers();

    ConcurrentSteppers(const ConcurrentSteppers&) = delete;
    ConcurrentSteppers& operator=(const ConcurrentSteppers&) = delete;

    // Steps taken by all helpers so far.
    long steps() const;
    // Stops the helpers, waits for them, and returns the steps they took.
    long stop();

private:
    struct Shared {
        std::atomic<bool> stop;
        std::atomic<int> started;
        std::atomic<long> steps;
    };

    Shared* m_shared;
    std::vector<pid_t> m_helpers;
};

}  // namespace chooserbench

#endif
