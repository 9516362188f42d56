#include <gtest/gtest.h>

#include "zetsettings/components/ZETMiscUtil.h"

namespace {

const std::wstring kNul(1, L'\0');

TEST(ZETMiscUtilSplitJoin, NulDelimiterCountsByItsLength)
{
    const std::wstring multi(L"alpha\0Beta\0failover", 19);
    const std::vector<std::wstring> pieces = ZETMiscUtil::split(multi, kNul);
    ASSERT_EQ(3u, pieces.size());
    EXPECT_EQ(L"alpha", pieces[0]);
    EXPECT_EQ(L"Beta", pieces[1]);
    EXPECT_EQ(L"failover", pieces[2]);
    EXPECT_EQ(multi, ZETMiscUtil::join(pieces, kNul));
}

TEST(ZETMiscUtilSplitJoin, EmptyTextHasNoPiecesAndDelimitersAtTheEndsGiveEmptyPieces)
{
    EXPECT_TRUE(ZETMiscUtil::split(L"", L"\"").empty());
    const std::vector<std::wstring> pieces = ZETMiscUtil::split(L"\"a\",\"b\"", L"\"");
    const std::vector<std::wstring> expected = {L"", L"a", L",", L"b", L""};
    EXPECT_EQ(expected, pieces);
}

TEST(ZETMiscUtilSplitJoin, JoinOfADelimiterEntryEndsAMultiStringWithTwoNuls)
{
    const std::vector<std::wstring> entries = {L"alpha", L"failover", kNul};
    const std::wstring joined = ZETMiscUtil::join(entries, kNul);
    EXPECT_EQ(std::wstring(L"alpha\0failover\0\0", 16), joined);
}

TEST(ZETMiscUtilTrim, TrimRemovesEveryRunAtBothEndsOnly)
{
    EXPECT_EQ(L"a  b", ZETMiscUtil::trim(L"   a  b ", L' '));
    EXPECT_EQ(L"", ZETMiscUtil::trim(L"    ", L' '));
    EXPECT_EQ(std::wstring(L"x\0y", 3), ZETMiscUtil::trim(std::wstring(L"\0\0x\0y\0\0\0", 8), L'\0'));
}

TEST(ZETMiscUtilTrim, TrimOneRemovesAtMostOneAtEachEnd)
{
    std::vector<std::wstring> texts = {L",,a,,", L",", L"", L"b"};
    ZETMiscUtil::trimone(texts, L',');
    const std::vector<std::wstring> expected = {L",a,", L"", L"", L"b"};
    EXPECT_EQ(expected, texts);
}

TEST(ZETMiscUtilToLower, FoldsAsciiAndOtherScriptsTheSameInEveryLocale)
{
    std::wstring text = L"Corp-\u00C4\u00D6\u00DC \u0391\u03A3 \u0416 \u0178 \u00DF";
    ZETMiscUtil::toLower(text);
    EXPECT_EQ(L"corp-\u00E4\u00F6\u00FC \u03B1\u03C3 \u0436 \u00FF \u00DF", text);
}

TEST(ZETMiscUtilToLower, LeavesCharactersWithoutASimpleLowerCaseAlone)
{
    // Dotted capital I lower-cases to two characters: it has no one-to-one form.
    std::wstring text = L"\u0130\u00D7\u2160x9_";
    ZETMiscUtil::toLower(text);
    EXPECT_EQ(L"\u0130\u00D7\u2170x9_", text);
}

}  // namespace
