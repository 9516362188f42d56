// The test program's entry: the tests, or a child scenario when a test started this program
// as a second process.
#include <gtest/gtest.h>

#include "support/ChildScenario.h"

int main(int argc, char** argv)
{
    if (zettest::isChildInvocation(argc, argv))
        return zettest::runChildScenario(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
