// How many write transactions the portable store has committed, counted by LMDB itself: a
// benchmark reads it before and after its loop to report durable writes per call as measured,
// not as the code is believed to do them.
#ifndef ZETSETTINGS_RECORDS_BENCH_STORECOMMITS_H
#define ZETSETTINGS_RECORDS_BENCH_STORECOMMITS_H

#include <lmdb.h>

#include <benchmark/benchmark.h>

#include "zetsettings/platform/posix/registry/StoreCatalog.h"

namespace recordbench {

inline double committedTransactions()
{
    MDB_envinfo info;
    mdb_env_info(zet::portable::registry::StoreCatalog::instance().current()->environment(), &info);
    return static_cast<double>(info.me_last_txnid);
}

// Sets the counter to the commits per iteration since committedBefore.
inline void reportCommits(benchmark::State& state, const char* counter, double committedBefore)
{
    state.counters[counter] = (committedTransactions() - committedBefore) / static_cast<double>(state.iterations());
}

}  // namespace recordbench

#endif
