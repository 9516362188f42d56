// The process's resident memory as the system reports it, for measuring growth over a long run.
#ifndef ZETSETTINGS_BENCH_RESIDENTMEMORY_H
#define ZETSETTINGS_BENCH_RESIDENTMEMORY_H

namespace opsuite {

// Bytes resident now; 0 if the system would not say.
double residentBytes();

}  // namespace opsuite

#endif
