// The LMDB traffic of one call of an operation, recorded as the library makes it and replayed
// directly on the same environment: the floor under what the portable registry can cost.
//
// The recorder sits in front of LMDB's functions (this program defines them and forwards to
// the library's own), so the traffic is what the registry really issued, not what it is
// believed to issue.
#ifndef ZETSETTINGS_BENCH_FLOOR_LMDBTRAFFIC_H
#define ZETSETTINGS_BENCH_FLOOR_LMDBTRAFFIC_H

#include <lmdb.h>

#include <string>
#include <vector>

namespace floorbench {

struct Event {
    enum Kind { BeginRead, BeginWrite, EndRead, Commit, Abort, Get, Put, Del, CursorOpen, CursorGet, CursorClose };
    Kind kind;
    const void* txn;
    const void* cursor;
    MDB_dbi dbi;
    MDB_cursor_op op;
    bool hasKey;
    std::string key;
    std::string data;
    unsigned flags;
};

struct Traffic {
    MDB_env* env = nullptr;
    std::vector<Event> events;

    int count(Event::Kind kind) const;
};

// Records every LMDB call of this process until stopRecording.
void startRecording();
Traffic stopRecording();

// Issues the same calls on the same environment. A delete finds nothing the second time, so
// that each replayed delete has something to delete, restoreDeleted puts the deleted records
// back (to be called untimed).
class Replayer {
public:
    explicit Replayer(const Traffic& traffic);
    ~Replayer();
    Replayer(const Replayer&) = delete;
    Replayer& operator=(const Replayer&) = delete;

    void replay();
    void restoreDeleted();
    bool deletes() const { return !m_deleted.empty(); }
    // Puts and commits of the replay that LMDB refused: a floor is only one if this is 0.
    long failures() const { return m_failures; }

private:
    const Traffic& m_traffic;
    std::vector<MDB_txn*> m_readers;
    std::vector<std::pair<std::string, std::string>> m_deleted;
    MDB_dbi m_dbi = 0;
    long m_failures = 0;
};

}  // namespace floorbench

#endif
