// Replays the kept inputs of the store's fuzz targets through the targets' own checks, so that
// a fixed finding stays fixed in the ordinary test run.
#include "support/FuzzCorpus.h"
#include "support/TestRegistry.h"
#include "zetsettings/store/fuzz/CaseBitmapFuzzBody.h"
#include "zetsettings/store/fuzz/NdisFuzzBody.h"

// Beside this file's own folder, in the source tree.
const std::filesystem::path kFuzzFolder = std::filesystem::path(ZET_SOURCE_DIR) / "src/zetsettings/store/fuzz";

TEST(StoreFuzzCorpus, CaseBitmapInputsPassEveryCheck)
{
    zettest::replayFuzzFolder(kFuzzFolder / "casebitmap", 10, zetfuzz::runCaseBitmap);
}

class StoreFuzzCorpusTest : public zettest::RegistryTest {};

TEST_F(StoreFuzzCorpusTest, FilterClassesInputsPassEveryCheck)
{
    zettest::replayFuzzFolder(kFuzzFolder / "ndis", 10, zetfuzz::runNdisCheck);
}
