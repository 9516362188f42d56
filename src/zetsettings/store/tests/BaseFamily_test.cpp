#include <thread>
#include <vector>

#include "zetsettings/store/tests/StoreTestSupport.h"

namespace {

const wchar_t kBase[] = L"Software\\Orvane\\QXL";

class BaseFamilyTest : public zettest::RegistryTest {};

TEST_F(BaseFamilyTest, FirstReadCreatesTheBaseKeyButStoresNothingWithoutWriteDefault)
{
    EXPECT_EQ(17, ZETSettings::intGetBaseValue(L"Speed", 17, false));
    EXPECT_EQ(L"dflt", ZETSettings::strGetBaseValue(L"Label", L"dflt", false));
    EXPECT_TRUE(rawreg::keyExists(kBase));
    EXPECT_EQ(L"absent", rawreg::stored(kBase, L"Speed"));
    EXPECT_EQ(L"absent", rawreg::stored(kBase, L"Label"));
}

TEST_F(BaseFamilyTest, WriteDefaultStoresTheDefaultAndLaterReadsFindIt)
{
    EXPECT_EQ(5, ZETSettings::intGetBaseValue(L"Retries", 5, true));
    EXPECT_EQ(5, ZETSettings::intGetBaseValue(L"Retries", 9, true));
    EXPECT_EQ(L"first", ZETSettings::strGetBaseValue(L"Mode", L"first", true));
    EXPECT_EQ(L"first", ZETSettings::strGetBaseValue(L"Mode", L"second", false));
    EXPECT_EQ(L"dword:5", rawreg::stored(kBase, L"Retries"));
    EXPECT_EQ(L"sz:first", rawreg::stored(kBase, L"Mode"));
}

TEST_F(BaseFamilyTest, SettersOverwriteAndKeepTheFull32Bits)
{
    ZETSettings::intSetBaseValue(L"Number", 1);
    ZETSettings::intSetBaseValue(L"number", -2);
    EXPECT_EQ(-2, ZETSettings::intGetBaseValue(L"NUMBER", 0, false));
    ZETSettings::intSetBaseValue(L"Number", 0x7FFFFFFF);
    EXPECT_EQ(0x7FFFFFFF, ZETSettings::intGetBaseValue(L"Number", 0, false));

    ZETSettings::strSetBaseValue(L"Text", L"a\u00E9\u4E2D");
    EXPECT_EQ(L"a\u00E9\u4E2D", ZETSettings::strGetBaseValue(L"Text", L"", false));
}

TEST_F(BaseFamilyTest, AStoredEmptyTextIsReturnedInsteadOfTheDefault)
{
    ZETSettings::strSetBaseValue(L"Empty", L"");
    EXPECT_EQ(L"", ZETSettings::strGetBaseValue(L"Empty", L"dflt", true));
    EXPECT_EQ(L"", ZETSettings::strGetBaseValue(L"Empty", L"dflt", false));
}

TEST_F(BaseFamilyTest, AValueOfAnotherTypeReadsAsAFailedRead)
{
    ZETSettings::strSetBaseValue(L"Mixed", L"12");
    EXPECT_EQ(3, ZETSettings::intGetBaseValue(L"Mixed", 3, false));
    // With writeDefault the failed read is repaired with a number.
    EXPECT_EQ(3, ZETSettings::intGetBaseValue(L"Mixed", 3, true));
    EXPECT_EQ(L"dword:3", rawreg::stored(kBase, L"Mixed"));
}

TEST_F(BaseFamilyTest, ThreadsOfOneProcessDoNotLoseEachOthersValues)
{
    std::vector<std::thread> threads;
    const auto name = [](int t, int i) { return L"T" + std::to_wstring(t) + L"_" + std::to_wstring(i); };
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t, &name] {
            for (int i = 0; i < 50; ++i) {
                ZETSettings::intSetBaseValue(name(t, i), t * 1000 + i);
                ZETSettings::strGetBaseValue(L"Shared", L"s", true);
            }
        });
    for (auto& thread : threads)
        thread.join();
    for (int t = 0; t < 4; ++t)
        for (int i = 0; i < 50; ++i)
            EXPECT_EQ(t * 1000 + i, ZETSettings::intGetBaseValue(name(t, i), -7, false));
}

ZET_CHILD_SCENARIO(BaseFamilyWrite)
{
    ZETSettings::intSetBaseValue(L"FromChild", std::stoi(args.at(0)));
    ZETSettings::strSetBaseValue(L"ChildText", L"written by a child");
    return 0;
}

ZET_CHILD_SCENARIO(BaseFamilyRead)
{
    return ZETSettings::intGetBaseValue(L"FromChild", -1, false) == std::stoi(args.at(0)) ? 0 : 1;
}

TEST_F(BaseFamilyTest, AValueWrittenByOneProcessIsReadByOthers)
{
    ASSERT_EQ(0, zettest::runChild("BaseFamilyWrite", {"4711"}));
    EXPECT_EQ(4711, ZETSettings::intGetBaseValue(L"FromChild", -1, false));
    EXPECT_EQ(L"written by a child", ZETSettings::strGetBaseValue(L"ChildText", L"", false));
    ZETSettings::intSetBaseValue(L"FromChild", 99);
    EXPECT_EQ(0, zettest::runChild("BaseFamilyRead", {"99"}));
}

// Run by a user that may read the store but not write it: reads fall back to the default,
// writes vanish without a word.
ZET_CHILD_SCENARIO(BaseFamilyWithoutWriteRights)
{
    if (!zettest::becomeUnprivileged())
        return 2;
    if (ZETSettings::intGetBaseValue(L"Stored", 8, true) != 8)
        return 3;
    ZETSettings::intSetBaseValue(L"Stored", 9);
    ZETSettings::strSetBaseValue(L"Other", L"x");
    if (ZETSettings::strGetBaseValue(L"Other", L"dflt", true) != L"dflt")
        return 4;
    return 0;
}

TEST_F(BaseFamilyTest, AProcessWithoutWriteRightsGetsDefaultsAndWritesNothing)
{
    ZET_SKIP_UNLESS_RIGHTS_CAN_DROP();
    ZETSettings::intSetBaseValue(L"Stored", 1);
    ASSERT_EQ(0, zettest::runChild("BaseFamilyWithoutWriteRights"));
    EXPECT_EQ(1, ZETSettings::intGetBaseValue(L"Stored", -1, false));
    EXPECT_EQ(L"absent", rawreg::stored(kBase, L"Other"));
}

}  // namespace
