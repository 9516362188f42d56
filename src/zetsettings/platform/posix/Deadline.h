// The moment a wait gives up, from a Win32 timeout in milliseconds (INFINITE: never).
#ifndef ZETSETTINGS_PLATFORM_POSIX_DEADLINE_H
#define ZETSETTINGS_PLATFORM_POSIX_DEADLINE_H

#include <chrono>

#include "zetsettings/platform/posix/Win32Portable.h"

namespace zet {
namespace portable {

class Deadline {
public:
    typedef std::chrono::steady_clock Clock;

    // An infinite wait, the common one, has no moment to compute: no clock read.
    explicit Deadline(DWORD milliseconds)
        : m_infinite(milliseconds == INFINITE),
          m_at(m_infinite ? Clock::time_point::max() : Clock::now() + std::chrono::milliseconds(milliseconds))
    {
    }

    bool isInfinite() const { return m_infinite; }
    Clock::time_point at() const { return m_at; }
    bool hasPassed() const { return !m_infinite && Clock::now() >= m_at; }
    // Zero once passed; meaningless for an infinite deadline.
    Clock::duration remaining() const
    {
        const Clock::time_point now = Clock::now();
        return now >= m_at ? Clock::duration::zero() : m_at - now;
    }

private:
    bool m_infinite;
    Clock::time_point m_at;
};

}  // namespace portable
}  // namespace zet

#endif
