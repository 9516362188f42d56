// Text helpers: split and join by whole delimiters, trimming, and locale-free lower case.
#include <gtest/gtest.h>

#include "zetsettings/components/ZETMiscUtil.h"

namespace {

const std::wstring kNul(1, L'\0');

TEST(ZETMiscUtil, SplitAndJoinCountTheDelimiterByItsLength)
{
    const std::wstring multi(L"alpha\0Beta\0failover", 19);
    const std::vector<std::wstring> pieces = {L"alpha", L"Beta", L"failover"};
    EXPECT_EQ(pieces, ZETMiscUtil::split(multi, kNul));
    EXPECT_EQ(multi, ZETMiscUtil::join(pieces, kNul));
    EXPECT_TRUE(ZETMiscUtil::split(L"", L"\"").empty());
    // Delimiters at the ends give empty pieces.
    EXPECT_EQ((std::vector<std::wstring>{L"", L"a", L",", L"b", L""}), ZETMiscUtil::split(L"\"a\",\"b\"", L"\""));
    // A delimiter entry ends a multi-string with two NULs.
    EXPECT_EQ(std::wstring(L"alpha\0failover\0\0", 16), ZETMiscUtil::join({L"alpha", L"failover", kNul}, kNul));
}

TEST(ZETMiscUtil, TrimTakesEveryRunAtBothEndsAndTrimOneAtMostOne)
{
    EXPECT_EQ(L"a  b", ZETMiscUtil::trim(L"   a  b ", L' '));
    EXPECT_EQ(L"", ZETMiscUtil::trim(L"    ", L' '));
    EXPECT_EQ(std::wstring(L"x\0y", 3), ZETMiscUtil::trim(std::wstring(L"\0\0x\0y\0\0\0", 8), L'\0'));

    std::vector<std::wstring> texts = {L",,a,,", L",", L"", L"b"};
    ZETMiscUtil::trimone(texts, L',');
    EXPECT_EQ((std::vector<std::wstring>{L",a,", L"", L"", L"b"}), texts);
}

TEST(ZETMiscUtil, ToLowerFoldsEveryScriptAlikeInEveryLocale)
{
    // Dotted capital I lower-cases to two characters: it has no one-to-one form and stays.
    std::wstring text = L"Corp-\u00C4\u00D6\u00DC \u0391\u03A3 \u0416 \u0178 \u00DF \u0130\u00D7\u2160x9_";
    ZETMiscUtil::toLower(text);
    EXPECT_EQ(L"corp-\u00E4\u00F6\u00FC \u03B1\u03C3 \u0436 \u00FF \u00DF \u0130\u00D7\u2170x9_", text);
}

}  // namespace
