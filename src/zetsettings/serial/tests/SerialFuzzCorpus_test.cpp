// Replays the fuzz target's seeds and every kept finding through the target's own checks,
// without libFuzzer, so that a fixed finding stays fixed in the ordinary test run.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "zetsettings/serial/fuzz/SerialFuzzBody.h"

namespace {

namespace fs = std::filesystem;

fs::path fuzzFolder()
{
    // Beside this file's own folder, in the source tree.
    return fs::path(__FILE__).parent_path().parent_path() / "fuzz";
}

std::vector<fs::path> inputsIn(const fs::path& folder)
{
    std::vector<fs::path> inputs;
    for (const auto& item : fs::directory_iterator(folder))
        if (item.is_regular_file() && item.path().filename().string()[0] != '.')
            inputs.push_back(item.path());
    return inputs;
}

void replay(const fs::path& folder, std::size_t atLeast)
{
    ASSERT_TRUE(fs::is_directory(folder)) << folder << " not found";
    const std::vector<fs::path> inputs = inputsIn(folder);
    EXPECT_GE(inputs.size(), atLeast) << folder;
    for (const fs::path& input : inputs) {
        std::ifstream file(input, std::ios::binary);
        const std::vector<uint8_t> bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
        EXPECT_EQ(zetfuzz::runOne(bytes.data(), bytes.size()), "") << input;
    }
}

} // namespace

TEST(SerialFuzzCorpus, SeedsAndKeptFindingsPassEveryCheck)
{
    replay(fuzzFolder() / "seeds", 10);
    replay(fuzzFolder() / "regressions", 0);
}
