// Replays the kept inputs of the store's fuzz targets through the targets' own checks, so that
// a fixed finding stays fixed in the ordinary test run.
#include <gtest/gtest.h>

#include <filesystem>

#include "support/FuzzCorpus.h"
#include "support/TestRegistry.h"
#include "zetsettings/store/fuzz/CaseBitmapFuzzBody.h"
#include "zetsettings/store/fuzz/NdisFuzzBody.h"

namespace {

std::filesystem::path fuzzFolder()
{
    return std::filesystem::path(__FILE__).parent_path().parent_path() / "fuzz";
}

}  // namespace

TEST(StoreFuzzCorpus, CaseBitmapInputsPassEveryCheck)
{
    zettest::replayFuzzFolder(fuzzFolder() / "casebitmap", 10, zetfuzz::runCaseBitmap);
}

class StoreFuzzCorpusTest : public zettest::RegistryTest {};

TEST_F(StoreFuzzCorpusTest, FilterClassesInputsPassEveryCheck)
{
    zettest::replayFuzzFolder(fuzzFolder() / "ndis", 10, zetfuzz::runNdisCheck);
}
