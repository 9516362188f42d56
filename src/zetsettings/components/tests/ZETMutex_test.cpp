// ZETMutex as the store uses it: recursive for its holder, exclusive between threads and
// between processes, and passed on when a holding process is killed.
#include <atomic>
#include <fstream>
#include <memory>
#include <vector>

#include "support/TestRegistry.h"
#include "zetsettings/components/ZETMutex.h"
#include "zetsettings/components/ZETMutexGrabber.h"
#include "zetsettings/components/ZETSecurityAttributes.h"
#include "zetsettings/components/tests/ProcessSignals.h"

namespace {

using zettest::SignalDirectory;

// A negative observation ("still waiting") can only be made over some time; this much is
// enough for a broken lock to show, and keeps the tests quick.
const std::chrono::milliseconds kSettle(50);

std::unique_ptr<ZETMutex> makeNamed(const std::wstring& name)
{
    ZETSecurityAttributes attributes;
    return std::unique_ptr<ZETMutex>(new ZETMutex(name, false, attributes));
}

// Locks on a thread of its own, so the test can watch whether it gets through.
class Contender {
public:
    explicit Contender(ZETMutex& mutex)
        : m_thread([this, &mutex] {
              mutex.lock();
              m_acquired = true;
              while (!m_letGo)
                  std::this_thread::sleep_for(std::chrono::milliseconds(1));
              mutex.unlock();
          })
    {
    }
    ~Contender()
    {
        m_letGo = true;
        m_thread.join();
    }
    bool acquired() const { return m_acquired; }
    bool awaitAcquired() const
    {
        return zettest::eventually([this] { return acquired(); });
    }

private:
    std::atomic<bool> m_acquired{false}, m_letGo{false};
    std::thread m_thread;
};

class ZETMutexThreads : public zettest::RegistryTest, public ::testing::WithParamInterface<bool> {
protected:
    std::unique_ptr<ZETMutex> mutex =
        GetParam() ? makeNamed(zettest::uniqueMutexName("threads")) : std::unique_ptr<ZETMutex>(new ZETMutex);
};

TEST_P(ZETMutexThreads, HolderEntersAgainAndOthersWaitForItsLastUnlock)
{
    for (int i = 0; i < 3; ++i)
        ASSERT_TRUE(mutex->lock());
    Contender other(*mutex);
    std::this_thread::sleep_for(kSettle);
    EXPECT_FALSE(other.acquired());

    mutex->unlock();
    mutex->unlock();
    std::this_thread::sleep_for(kSettle);
    EXPECT_FALSE(other.acquired()) << "one unlock short of the locks still holds";

    mutex->unlock();
    EXPECT_TRUE(other.awaitAcquired());
}

TEST_P(ZETMutexThreads, GrabbersOnManyThreadsNeverOverlapAndLetGoOnExceptions)
{
    const int kThreads = 4;
    const int kRounds = 500;
    std::atomic<bool> inside{false};
    std::atomic<int> overlaps{0};
    long counter = 0;  // deliberately unsynchronised but for the mutex
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < kRounds; ++i) {
                ZETMutexGrabber outer(*mutex, true);
                ZETMutexGrabber inner(*mutex, true);
                if (inside.exchange(true))
                    ++overlaps;
                ++counter;
                inside = false;
            }
        });
    }
    for (auto& thread : threads)
        thread.join();
    EXPECT_EQ(0, overlaps.load());
    EXPECT_EQ(kThreads * kRounds, counter);

    try {
        ZETMutexGrabber grabber(*mutex, true);
        throw std::runtime_error("passing through");
    } catch (const std::runtime_error&) {
    }
    Contender other(*mutex);
    EXPECT_TRUE(other.awaitAcquired()) << "a grabber must let go while an exception passes";
}

INSTANTIATE_TEST_SUITE_P(UnnamedAndNamed, ZETMutexThreads, ::testing::Values(false, true),
                         [](const ::testing::TestParamInfo<bool>& info) {
                             return info.param ? "Named" : "Unnamed";
                         });

// Holds the named mutex until told to let go (or for ever, to be killed).
// args: mutex name, signal directory.
ZET_CHILD_SCENARIO(zetmutex_hold)
{
    SignalDirectory signals(args.at(1));
    std::unique_ptr<ZETMutex> mutex = makeNamed(zettest::widen(args.at(0)));
    if (!mutex->lock())
        return 2;
    signals.raise("held");
    if (!signals.awaitRaised("release"))
        return 3;
    mutex->unlock();
    return 0;
}

// Adds one to the number in a file, again and again, under the named mutex.
// args: mutex name, signal directory, rounds.
ZET_CHILD_SCENARIO(zetmutex_count)
{
    SignalDirectory signals(args.at(1));
    std::unique_ptr<ZETMutex> mutex = makeNamed(zettest::widen(args.at(0)));
    const int rounds = std::stoi(args.at(2));
    if (!signals.awaitRaised("go"))
        return 3;
    for (int i = 0; i < rounds; ++i) {
        ZETMutexGrabber grabber(*mutex, true);
        long value = 0;
        std::ifstream(signals.file("counter")) >> value;
        std::ofstream(signals.file("counter"), std::ios::trunc) << value + 1;
    }
    return 0;
}

class ZETMutexProcesses : public zettest::RegistryTest {
protected:
    SignalDirectory signals;
    const std::wstring name = zettest::uniqueMutexName("processes");
};

TEST_F(ZETMutexProcesses, CountsOfTwoProcessesAddUp)
{
    const int kRounds = 250;
    signals.write("counter", "0");
    const std::vector<std::string> args = {zettest::narrow(name), signals.path(), std::to_string(kRounds)};
    zettest::ChildProcess first("zetmutex_count", args);
    zettest::ChildProcess second("zetmutex_count", args);
    signals.raise("go");
    EXPECT_EQ(0, first.wait());
    EXPECT_EQ(0, second.wait());
    EXPECT_EQ(std::to_string(2 * kRounds), signals.read("counter"));
}

// That the mutex keeps others out again after an abandonment is the portable layer's to show
// (NamedMutex_test); here, that the grabber counts an abandoned mutex as held.
TEST_F(ZETMutexProcesses, AKilledHolderPassesItToTheNextWaiter)
{
    std::unique_ptr<ZETMutex> mutex = makeNamed(name);
    zettest::ChildProcess holder("zetmutex_hold", {zettest::narrow(name), signals.path()});
    ASSERT_TRUE(signals.awaitRaised("held"));
    Contender waiting(*mutex);
    std::this_thread::sleep_for(kSettle);
    ASSERT_FALSE(waiting.acquired());
    holder.killHard();
    EXPECT_EQ(-1, holder.wait());
    EXPECT_TRUE(waiting.awaitAcquired());
}

}  // namespace
