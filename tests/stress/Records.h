// The records that the crash and contention tests write by name, and the check of what the store
// holds of them: every record there is one that was written whole, the store lists no other,
// and nothing once written or seen is gone or older.
#ifndef ZETSETTINGS_TESTS_STRESS_RECORDS_H
#define ZETSETTINGS_TESTS_STRESS_RECORDS_H

#include <array>
#include <istream>
#include <map>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "Forms.h"
#include "Processes.h"

namespace zetstress {

// A kind of record: each writer (process, thread) owns `perThread` names of it; read says
// whether the record is there, and gives the state it holds, empty when that is not whole.
struct Kind {
    const char* what;
    unsigned perThread;
    std::wstring (*name)(long process, long thread, unsigned k);
    void (*write)(const std::wstring& name, const std::wstring& state);
    bool (*read)(const std::wstring& name, std::wstring& state);
    std::vector<std::wstring> (*list)();  // every name the store holds; null where it lists none
    bool onOff;                           // states are "0" and "1", not tags
    bool lastWins;                        // reads back as written last; else only whole
};

const std::size_t kAlerts = 0, kUsers = 1, kProfiles = 2, kFallback = 3, kKindCount = 4;
extern const Kind kKinds[kKindCount];

// Per kind, every name with its state.
using States = std::array<std::map<std::wstring, std::wstring>, kKindCount>;

// Writes the records of one writer, in tags that name the record and order its writes.
class RecordWriter {
public:
    RecordWriter(long process, long thread, unsigned long incarnation, unsigned seed)
        : m_process(process), m_thread(thread), m_incarnation(incarnation), m_random(seed)
    {
    }
    unsigned draw(unsigned below) { return std::uniform_int_distribution<unsigned>(0, below - 1)(m_random); }
    std::wstring tag(const std::wstring& name) { return makeTag(lowerCase(name), m_incarnation, ++m_sequence); }
    std::wstring ownName(std::size_t kind)
    {
        return kKinds[kind].name(m_process, m_thread, draw(kKinds[kind].perThread));
    }
    // Writes a new state of the record and keeps it in `written`.
    void write(std::size_t kind, const std::wstring& name);

    States written;

private:
    long m_process;
    long m_thread;
    unsigned long m_incarnation;
    unsigned long m_sequence = 0;
    std::mt19937 m_random;
};

// Reads every record that `processes` x `threads` writers may have written; one there that is
// not whole, and one listed that is not among them, is a violation.
States readAll(long processes, long threads, Violations& fault);

// Every record of `before` must be in `after`; one written last wins must hold the same state
// when `exact`, else a tag no older.
void compareStates(const States& before, const States& after, bool exact, Violations& fault);

// Lines "<kind> <name> <state>"; parseState is false for a line of another form.
void printStates(const States& states, std::ostream& out);
bool parseState(const std::string& line, States& states);

}  // namespace zetstress

#endif
