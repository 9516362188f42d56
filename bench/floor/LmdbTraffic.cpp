#include "floor/LmdbTraffic.h"

#include <dlfcn.h>

#include <map>
#include <mutex>
#include <stdexcept>

namespace floorbench {
namespace {

std::mutex g_mutex;
bool g_recording = false;
Traffic g_traffic;

template <typename Function>
Function real(const char* name)
{
    void* found = dlsym(RTLD_NEXT, name);
    if (!found)
        throw std::runtime_error(std::string("no LMDB function ") + name);
    return reinterpret_cast<Function>(found);
}

std::string bytesOf(const MDB_val* value)
{
    return value ? std::string(static_cast<const char*>(value->mv_data), value->mv_size) : std::string();
}

void record(Event event)
{
    std::lock_guard<std::mutex> lock(g_mutex);
    if (g_recording)
        g_traffic.events.push_back(std::move(event));
}

bool recording()
{
    std::lock_guard<std::mutex> lock(g_mutex);
    return g_recording;
}

MDB_val valueOf(const std::string& bytes)
{
    return MDB_val{bytes.size(), const_cast<char*>(bytes.data())};
}

}  // namespace

int Traffic::count(Event::Kind kind) const
{
    int n = 0;
    for (const Event& event : events)
        n += event.kind == kind;
    return n;
}

void startRecording()
{
    std::lock_guard<std::mutex> lock(g_mutex);
    g_traffic = Traffic();
    g_recording = true;
}

Traffic stopRecording()
{
    std::lock_guard<std::mutex> lock(g_mutex);
    g_recording = false;
    return std::move(g_traffic);
}

Replayer::Replayer(const Traffic& traffic) : m_traffic(traffic)
{
    for (const Event& event : traffic.events) {
        if (event.kind == Event::Del && !event.data.empty())
            m_deleted.emplace_back(event.key, event.data);
        if (event.kind == Event::Get || event.kind == Event::Put || event.kind == Event::Del)
            m_dbi = event.dbi;
    }
}

Replayer::~Replayer()
{
    for (MDB_txn* reader : m_readers)
        mdb_txn_abort(reader);
}

// Read snapshots come from a pool of reset readers and go back to it, as the registry keeps
// them; a write transaction is begun and committed. A transaction ended twice (reset, then
// aborted) ends once.
void Replayer::replay()
{
    struct Open {
        MDB_txn* txn;
        bool reader;
    };
    std::map<const void*, Open> txns;
    std::map<const void*, MDB_cursor*> cursors;
    std::vector<MDB_txn*> idle(m_readers.rbegin(), m_readers.rend());
    const auto end = [&](const void* original, bool commit) {
        const auto found = txns.find(original);
        if (found == txns.end())
            return;
        if (found->second.reader) {
            mdb_txn_reset(found->second.txn);
            idle.push_back(found->second.txn);
        } else if (commit) {
            m_failures += mdb_txn_commit(found->second.txn) != MDB_SUCCESS;
        } else {
            mdb_txn_abort(found->second.txn);
        }
        txns.erase(found);
    };
    for (const Event& event : m_traffic.events) {
        MDB_val key = valueOf(event.key), data = valueOf(event.data);
        const bool begins = event.kind == Event::BeginRead || event.kind == Event::BeginWrite;
        // A call on a transaction begun before the recording has nothing to replay on.
        if (event.txn && !begins && !txns.count(event.txn))
            continue;
        if (event.kind == Event::CursorGet && !cursors.count(event.cursor))
            continue;
        switch (event.kind) {
        case Event::BeginRead:
            if (idle.empty()) {
                MDB_txn* reader = nullptr;
                mdb_txn_begin(m_traffic.env, nullptr, MDB_RDONLY, &reader);
                mdb_txn_reset(reader);
                m_readers.push_back(reader);
                idle.push_back(reader);
            }
            mdb_txn_renew(idle.back());
            txns[event.txn] = Open{idle.back(), true};
            idle.pop_back();
            break;
        case Event::BeginWrite:
            txns[event.txn] = Open{nullptr, false};
            mdb_txn_begin(m_traffic.env, nullptr, 0, &txns[event.txn].txn);
            break;
        case Event::EndRead:
        case Event::Abort:
            end(event.txn, false);
            break;
        case Event::Commit:
            end(event.txn, true);
            break;
        case Event::Get:
            mdb_get(txns[event.txn].txn, event.dbi, &key, &data);
            break;
        case Event::Put:
            m_failures += mdb_put(txns[event.txn].txn, event.dbi, &key, &data, event.flags) != MDB_SUCCESS;
            break;
        case Event::Del:
            mdb_del(txns[event.txn].txn, event.dbi, &key, nullptr);
            break;
        case Event::CursorOpen:
            mdb_cursor_open(txns[event.txn].txn, event.dbi, &cursors[event.cursor]);
            break;
        case Event::CursorGet:
            mdb_cursor_get(cursors[event.cursor], event.hasKey ? &key : nullptr, &data, event.op);
            break;
        case Event::CursorClose:
            mdb_cursor_close(cursors[event.cursor]);
            cursors.erase(event.cursor);
            break;
        }
    }
    // Whatever the recording left open ends here, as the registry's own would.
    while (!txns.empty())
        end(txns.begin()->first, false);
}

void Replayer::restoreDeleted()
{
    MDB_txn* txn = nullptr;
    mdb_txn_begin(m_traffic.env, nullptr, 0, &txn);
    for (const auto& record : m_deleted) {
        MDB_val key = valueOf(record.first), data = valueOf(record.second);
        mdb_put(txn, m_dbi, &key, &data, 0);
    }
    mdb_txn_commit(txn);
}

}  // namespace floorbench

// ---- the recorder: this program's definitions stand in front of LMDB's ---------------------

using floorbench::Event;

extern "C" {

int mdb_txn_begin(MDB_env* env, MDB_txn* parent, unsigned int flags, MDB_txn** txn)
{
    static auto forward = floorbench::real<int (*)(MDB_env*, MDB_txn*, unsigned, MDB_txn**)>("mdb_txn_begin");
    const int rc = forward(env, parent, flags, txn);
    if (rc == MDB_SUCCESS && floorbench::recording()) {
        {
            std::lock_guard<std::mutex> lock(floorbench::g_mutex);
            floorbench::g_traffic.env = env;
        }
        floorbench::record(Event{(flags & MDB_RDONLY) ? Event::BeginRead : Event::BeginWrite, *txn, nullptr, 0,
                                 MDB_FIRST, false, {}, {}, 0});
    }
    return rc;
}

int mdb_txn_renew(MDB_txn* txn)
{
    static auto forward = floorbench::real<int (*)(MDB_txn*)>("mdb_txn_renew");
    const int rc = forward(txn);
    if (rc == MDB_SUCCESS && floorbench::recording()) {
        {
            std::lock_guard<std::mutex> lock(floorbench::g_mutex);
            floorbench::g_traffic.env = mdb_txn_env(txn);
        }
        floorbench::record(Event{Event::BeginRead, txn, nullptr, 0, MDB_FIRST, false, {}, {}, 0});
    }
    return rc;
}

void mdb_txn_reset(MDB_txn* txn)
{
    static auto forward = floorbench::real<void (*)(MDB_txn*)>("mdb_txn_reset");
    floorbench::record(Event{Event::EndRead, txn, nullptr, 0, MDB_FIRST, false, {}, {}, 0});
    forward(txn);
}

int mdb_txn_commit(MDB_txn* txn)
{
    static auto forward = floorbench::real<int (*)(MDB_txn*)>("mdb_txn_commit");
    floorbench::record(Event{Event::Commit, txn, nullptr, 0, MDB_FIRST, false, {}, {}, 0});
    return forward(txn);
}

void mdb_txn_abort(MDB_txn* txn)
{
    static auto forward = floorbench::real<void (*)(MDB_txn*)>("mdb_txn_abort");
    floorbench::record(Event{Event::Abort, txn, nullptr, 0, MDB_FIRST, false, {}, {}, 0});
    forward(txn);
}

int mdb_get(MDB_txn* txn, MDB_dbi dbi, MDB_val* key, MDB_val* data)
{
    static auto forward = floorbench::real<int (*)(MDB_txn*, MDB_dbi, MDB_val*, MDB_val*)>("mdb_get");
    floorbench::record(Event{Event::Get, txn, nullptr, dbi, MDB_FIRST, true, floorbench::bytesOf(key), {}, 0});
    return forward(txn, dbi, key, data);
}

int mdb_put(MDB_txn* txn, MDB_dbi dbi, MDB_val* key, MDB_val* data, unsigned int flags)
{
    static auto forward = floorbench::real<int (*)(MDB_txn*, MDB_dbi, MDB_val*, MDB_val*, unsigned)>("mdb_put");
    floorbench::record(Event{Event::Put, txn, nullptr, dbi, MDB_FIRST, true, floorbench::bytesOf(key),
                             floorbench::bytesOf(data), flags});
    return forward(txn, dbi, key, data, flags);
}

int mdb_del(MDB_txn* txn, MDB_dbi dbi, MDB_val* key, MDB_val* data)
{
    static auto forward = floorbench::real<int (*)(MDB_txn*, MDB_dbi, MDB_val*, MDB_val*)>("mdb_del");
    static auto get = floorbench::real<int (*)(MDB_txn*, MDB_dbi, MDB_val*, MDB_val*)>("mdb_get");
    if (floorbench::recording()) {
        // Kept so that the replay can put the record back before deleting it again.
        MDB_val old = {0, nullptr};
        const bool present = get(txn, dbi, key, &old) == MDB_SUCCESS;
        floorbench::record(Event{Event::Del, txn, nullptr, dbi, MDB_FIRST, true, floorbench::bytesOf(key),
                                 present ? floorbench::bytesOf(&old) : std::string(), 0});
    }
    return forward(txn, dbi, key, data);
}

int mdb_cursor_open(MDB_txn* txn, MDB_dbi dbi, MDB_cursor** cursor)
{
    static auto forward = floorbench::real<int (*)(MDB_txn*, MDB_dbi, MDB_cursor**)>("mdb_cursor_open");
    const int rc = forward(txn, dbi, cursor);
    if (rc == MDB_SUCCESS)
        floorbench::record(Event{Event::CursorOpen, txn, *cursor, dbi, MDB_FIRST, false, {}, {}, 0});
    return rc;
}

int mdb_cursor_get(MDB_cursor* cursor, MDB_val* key, MDB_val* data, MDB_cursor_op op)
{
    static auto forward = floorbench::real<int (*)(MDB_cursor*, MDB_val*, MDB_val*, MDB_cursor_op)>("mdb_cursor_get");
    const bool keyed = op == MDB_SET || op == MDB_SET_KEY || op == MDB_SET_RANGE || op == MDB_GET_BOTH ||
                       op == MDB_GET_BOTH_RANGE;
    floorbench::record(Event{Event::CursorGet, nullptr, cursor, 0, op, keyed, keyed ? floorbench::bytesOf(key) : std::string(),
                             {}, 0});
    return forward(cursor, key, data, op);
}

void mdb_cursor_close(MDB_cursor* cursor)
{
    static auto forward = floorbench::real<void (*)(MDB_cursor*)>("mdb_cursor_close");
    floorbench::record(Event{Event::CursorClose, nullptr, cursor, 0, MDB_FIRST, false, {}, {}, 0});
    forward(cursor);
}

}  // extern "C"
