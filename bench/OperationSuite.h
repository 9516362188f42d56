// The operation suite: every public operation of the library described once in a table and
// registered by one helper, so that the same names run natively and under Wine and the report
// can set the two side by side.
//
// Names: op/<operation>/n:<entries>/<mode>, mode 1thread, 4threads or 4processes. With 4
// threads the time is the wall time per call of all four together; with 4 processes it is the
// time of one call of the measuring process while three more call the same operation.
#ifndef ZETSETTINGS_BENCH_OPERATIONSUITE_H
#define ZETSETTINGS_BENCH_OPERATIONSUITE_H

#include <string>
#include <vector>

namespace opsuite {

// What one call knows: the store's size, which caller it is (0 to 7, distinct per thread
// and process) and how many calls it made before.
struct Call {
    int entries;
    int slot;
    long iteration;
};

typedef void (*Plant)(int entries);
typedef void (*Invoke)(const Call& call);

enum Traits : unsigned {
    kRead = 0,
    kWrite = 1u << 0,    // waits for the disk: timed by the clock
    kSized = 1u << 1,    // cost depends on the store's size: run at every size
    kShared = 1u << 2,   // takes a lock: also run by 4 threads and by 4 processes
    kRewritesAll = 1u << 3,  // one durable write per stored entry: timed once at the largest size
};

struct Operation {
    std::string name;
    Plant plant;      // fills a fresh store for a size; operations with the same plant share it
    Invoke invoke;    // one call, timed
    unsigned traits;
    Invoke restore;   // puts back what the call took away, untimed; may be null
};

const int kSizes[] = {1, 100, 10000};
// The size at which shared operations also run by several callers.
const int kContendedSize = 100;

// Registers every operation; returns true so that a file can call it at static initialisation.
bool registerSuite(const std::vector<Operation>& operations);

// Every registered operation, in the order of registration.
const std::vector<Operation>& operations();

// Makes a store planted by plant for entries the current registry. One store per plant and
// size is kept while the benchmarks that share it run: filling 10,000 entries is far dearer
// than any single benchmark.
void ensurePlanted(Plant plant, int entries);

}  // namespace opsuite

#endif
