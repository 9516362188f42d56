// Replays the kept inputs of the caption fuzz target through its own checks, so that a fixed
// finding stays fixed in the ordinary test run.
#include "support/FuzzCorpus.h"
#include "support/TestRegistry.h"
#include "zetsettings/params/fuzz/CaptionFuzzBody.h"

class CaptionFuzzCorpusTest : public zettest::RegistryTest {};

TEST_F(CaptionFuzzCorpusTest, InputsPassEveryCheck)
{
    zetfuzz::prepareCaptionStore();
    zettest::replayFuzzFolder(std::filesystem::path(ZET_SOURCE_DIR) / "src/zetsettings/params/fuzz", 10,
                              zetfuzz::runCaptionLoad);
}
