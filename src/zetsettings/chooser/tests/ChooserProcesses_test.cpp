// The chooser's list under several real processes at once, and a process that dies holding
// the named mutex.
#include <gtest/gtest.h>

#include <chrono>
#include <fstream>
#include <future>
#include <map>
#include <memory>
#include <thread>

#include "zetsettings/chooser/tests/ChooserTestSupport.h"
#include "support/ChildProcess.h"
#include "support/ChildScenario.h"
#include "support/TestRegistry.h"
#include "support/ZETSettingsTestAccess.h"
#include "zetsettings/components/ZETMutexGrabber.h"

using namespace choosertest;

namespace {

class ChooserProcessesTest : public zettest::RegistryTest {};

const int kWalkers = 4;
const int kPlaces = 20;
const int kRounds = 4;
const int kStepsEach = kPlaces * kRounds / kWalkers;
static_assert(kStepsEach * kWalkers == kPlaces * kRounds, "the walkers share whole rounds");

// args: the file to record into, the file whose appearance starts the walk, the steps to take.
// Records one line per step: the name handed out, then 1 if that step wrapped.
ZET_CHILD_SCENARIO(chooser_walker)
{
    std::ofstream out(args.at(0));
    if (!waitForFile(args.at(1)))
        return 2;
    const int steps = std::stoi(args.at(2));
    for (int i = 0; i < steps; ++i) {
        bool wrapped = false;
        const std::wstring name = step(false, wrapped);
        out << std::string(name.begin(), name.end()) << ' ' << (wrapped ? 1 : 0) << '\n';
    }
    return out ? 0 : 3;
}

// Holds the named mutex as an operation would, says so through a file, and waits to be killed.
ZET_CHILD_SCENARIO(chooser_hold_mutex)
{
    ZETMutexGrabber grabber(ZETSettingsTestAccess::preferredNetMutex(), true);
    touch(args.at(0));
    std::this_thread::sleep_for(std::chrono::seconds(60));
    return 0;
}

std::wstring placeName(int place)
{
    return L"net" + std::to_wstring(place);
}

TEST_F(ChooserProcessesTest, ProcessesWalkingTogetherShareTheConsecutivePlaces)
{
    Names names;
    for (int place = 1; place <= kPlaces; ++place)
        names.push_back(placeName(place));
    // The walk stands at the last place, so the walkers' steps are whole rounds from the top.
    storeList(names, kPlaces);

    ScratchFolder folder;
    const std::string go = folder.file("go");
    std::vector<std::unique_ptr<zettest::ChildProcess>> walkers;
    for (int i = 0; i < kWalkers; ++i)
        walkers.emplace_back(new zettest::ChildProcess(
            "chooser_walker", {folder.file("walker" + std::to_string(i)), go, std::to_string(kStepsEach)}));
    touch(go);
    for (auto& walker : walkers)
        ASSERT_EQ(0, walker->wait());

    std::map<std::wstring, int> handedOut;
    int wraps = 0;
    int steps = 0;
    for (int i = 0; i < kWalkers; ++i) {
        std::ifstream in(folder.file("walker" + std::to_string(i)));
        std::string name;
        int wrapped = 0;
        while (in >> name >> wrapped) {
            ++handedOut[std::wstring(name.begin(), name.end())];
            wraps += wrapped;
            ++steps;
        }
    }
    EXPECT_EQ(kPlaces * kRounds, steps);
    for (const std::wstring& name : names)
        EXPECT_EQ(kRounds, handedOut[name]) << std::string(name.begin(), name.end());
    EXPECT_EQ(static_cast<size_t>(kPlaces), handedOut.size());
    EXPECT_EQ(kRounds, wraps);
    EXPECT_EQ(static_cast<unsigned>(kPlaces), storedPosition());
}

TEST_F(ChooserProcessesTest, AHolderKilledWhileHoldingTheMutexDoesNotStopTheOthers)
{
    storeList({L"P", L"Q", L"R"});
    ScratchFolder folder;
    zettest::ChildProcess holder("chooser_hold_mutex", {folder.file("holding")});
    ASSERT_TRUE(waitForFile(folder.file("holding")));

    // The step waits for the holder; a detached thread, so that a step that never ends fails
    // the test instead of hanging it.
    auto done = std::make_shared<std::promise<std::wstring>>();
    std::future<std::wstring> stepped = done->get_future();
    std::thread([done] {
        bool wrapped = false;
        done->set_value(step(true, wrapped));
    }).detach();
    EXPECT_EQ(std::future_status::timeout, stepped.wait_for(std::chrono::milliseconds(300)));

    holder.killHard();
    holder.wait();
    ASSERT_EQ(std::future_status::ready, stepped.wait_for(std::chrono::seconds(10)));
    EXPECT_EQ(L"P", stepped.get());

    EXPECT_EQ(0, zettest::runChild("chooser_step", {"next", "Q"}));
    ZETSettings::updateAlertNotificationState(1, false);
    EXPECT_FALSE(ZETSettings::isAlertNotificationEnabled(1));
}

}  // namespace
