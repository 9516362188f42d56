// Replays the fuzz target's seeds and every kept finding through the target's own checks,
// without libFuzzer, so that a fixed finding stays fixed in the ordinary test run.
#include "support/FuzzCorpus.h"
#include "zetsettings/serial/fuzz/SerialFuzzBody.h"

TEST(SerialFuzzCorpus, SeedsAndKeptFindingsPassEveryCheck)
{
    // Beside this file's own folder, in the source tree.
    zettest::replayFuzzFolder(std::filesystem::path(ZET_SOURCE_DIR) / "src/zetsettings/serial/fuzz", 10,
                              zetfuzz::runOne);
}
