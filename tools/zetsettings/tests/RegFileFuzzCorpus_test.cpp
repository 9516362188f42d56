// Replays the kept inputs of the .reg fuzz target through its own checks, so that a fixed
// finding stays fixed in the ordinary test run.
#include <gtest/gtest.h>

#include <filesystem>

#include "regfile/fuzz/RegFileFuzzBody.h"
#include "support/FuzzCorpus.h"

TEST(RegFileFuzzCorpus, InputsPassEveryCheck)
{
    zettest::replayFuzzFolder(std::filesystem::path(__FILE__).parent_path().parent_path() / "regfile" / "fuzz", 5,
                              zetfuzz::runRegFile);
}
