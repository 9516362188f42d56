// Replays a fuzz target's kept inputs (seeds/ and regressions/ beside the target) through the
// target's own checks, without libFuzzer, so that a fixed finding stays fixed in the ordinary
// test run. A check gives the empty string when it held, or what went wrong.
#ifndef ZETSETTINGS_TESTS_SUPPORT_FUZZCORPUS_H
#define ZETSETTINGS_TESTS_SUPPORT_FUZZCORPUS_H

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace zettest {

// Every input of the folder must pass; at least atLeast of them must be there, so that a
// moved folder does not pass by holding nothing.
template <class Check>
void replayFuzzInputs(const std::filesystem::path& folder, std::size_t atLeast, Check check)
{
    ASSERT_TRUE(std::filesystem::is_directory(folder)) << folder << " not found";
    std::size_t replayed = 0;
    for (const auto& item : std::filesystem::directory_iterator(folder)) {
        if (!item.is_regular_file() || item.path().filename().string()[0] == '.')
            continue;
        std::ifstream file(item.path(), std::ios::binary);
        const std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
        EXPECT_EQ(check(bytes.data(), bytes.size()), "") << item.path();
        ++replayed;
    }
    EXPECT_GE(replayed, atLeast) << folder;
}

// The seeds and every kept finding of the fuzz folder.
template <class Check>
void replayFuzzFolder(const std::filesystem::path& fuzzFolder, std::size_t seedsAtLeast, Check check)
{
    replayFuzzInputs(fuzzFolder / "seeds", seedsAtLeast, check);
    // git keeps no empty folder: a target without findings yet has no regressions/ in a checkout.
    if (std::filesystem::is_directory(fuzzFolder / "regressions"))
        replayFuzzInputs(fuzzFolder / "regressions", 0, check);
}

}  // namespace zettest

#endif
