// The chooser's list walked by several real processes at once, each started after the walk
// was, and held up by a process that dies holding the named mutex. Children report through
// ZetGuard values, which sm_mutex guards, so that no report waits on the mutex under test.
#include <memory>
#include <sstream>

#include "zetsettings/chooser/tests/ChooserTestSupport.h"
#include "support/ZETSettingsTestAccess.h"
#include "zetsettings/components/tests/ProcessSignals.h"
#include "zetsettings/components/ZETMutexGrabber.h"

using namespace choosertest;

namespace {

class ChooserProcessesTest : public zettest::RegistryTest {};

const int kWalkers = 4;
const int kStepsEach = 25;
const int kPlaces = kWalkers * kStepsEach;

// Waits until the first count children have each set their value named what and their number.
bool waitForAll(const wchar_t* what, int count, std::chrono::seconds limit = std::chrono::seconds(20))
{
    const auto allHave = [&] {
        for (int i = 0; i < count; ++i)
            if (ZETSettings::strGetZetGuardValue(what + std::to_wstring(i), L"", false).empty())
                return false;
        return true;
    };
    return zettest::eventually(allHave, limit);
}

// args: the walker's number. Says it is ready, steps as fast as it can, then reports the
// places handed out, in its order, each with 1 if that step wrapped.
ZET_CHILD_SCENARIO(chooser_walker)
{
    const std::wstring walker(args.at(0).begin(), args.at(0).end());
    ZETSettings::strSetZetGuardValue(L"ready" + walker, L"1");
    std::wostringstream report;
    for (int i = 0; i < kStepsEach; ++i) {
        bool wrapped = false;
        report << step(false, wrapped).substr(1) << L' ' << wrapped << L' ';
    }
    ZETSettings::strSetZetGuardValue(L"report" + walker, report.str());
    return 0;
}

// Holds the named mutex as an operation would, says so, and waits to be killed.
ZET_CHILD_SCENARIO(chooser_hold_mutex)
{
    ZETMutexGrabber grabber(ZETSettingsTestAccess::preferredNetMutex(), true);
    ZETSettings::strSetZetGuardValue(L"holding0", L"1");
    std::this_thread::sleep_for(std::chrono::seconds(60));
    return 0;
}

TEST_F(ChooserProcessesTest, WalkersHeldUpByAKilledHolderShareTheConsecutivePlaces)
{
    Names names;
    for (int place = 1; place <= kPlaces; ++place)
        names.push_back(L"n" + std::to_wstring(place));
    // The walk stands at the last place: the steps of all walkers together are one round.
    ZETSettings::updateChooserPreferredNets(listOf(entriesNamed(names), kPlaces));
    const std::string before = storedHex(kListValue);

    zettest::ChildProcess holder("chooser_hold_mutex");
    ASSERT_TRUE(waitForAll(L"holding", 1));
    std::vector<std::unique_ptr<zettest::ChildProcess>> walkers;
    for (int i = 0; i < kWalkers; ++i)
        walkers.emplace_back(new zettest::ChildProcess("chooser_walker", {std::to_string(i)}));
    ASSERT_TRUE(waitForAll(L"ready", kWalkers));
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    EXPECT_EQ(before, storedHex(kListValue)) << "a step passed the holder";

    holder.killHard();
    holder.wait();
    // A bounded wait: walkers stuck behind the dead holder fail here and are killed.
    ASSERT_TRUE(waitForAll(L"report", kWalkers, std::chrono::seconds(30)));
    std::vector<int> timesHandedOut(kPlaces + 1, 0);
    int wraps = 0;
    for (int i = 0; i < kWalkers; ++i) {
        EXPECT_EQ(0, walkers[i]->wait());
        std::wistringstream report(ZETSettings::strGetZetGuardValue(L"report" + std::to_wstring(i), L"", false));
        int place = 0, wrapped = 0, previous = 0;
        while (report >> place >> wrapped) {
            ASSERT_TRUE(place >= 1 && place <= kPlaces) << place;
            ++timesHandedOut[place];
            wraps += wrapped;
            // Within one round a walker's own places only go forward.
            EXPECT_LT(previous, place);
            previous = place;
        }
    }
    for (int place = 1; place <= kPlaces; ++place)
        EXPECT_EQ(1, timesHandedOut[place]) << "place " << place;
    EXPECT_EQ(1, wraps);
    EXPECT_EQ("64", storedHex(kListValue).substr(0, 2));
}

}  // namespace
