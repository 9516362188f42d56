#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "support/ZETSettingsTestAccess.h"

namespace {

const auto encode = ZETSettingsTestAccess::createCaseBitmap;
const auto decode = ZETSettingsTestAccess::removeCaseBitmap;
const std::wstring kSmiley = L"\U0001F600";  // two UTF-16 code units, neither a capital

TEST(CaseBitmap, NamesEncodeToKnownValueNamesAndComeBackExactly)
{
    const std::wstring examples[][2] = {
        {L"abc", L"abc_0"}, {L"Abc", L"Abc_8"}, {L"aBC", L"aBC_6"}, {L"ABCD", L"ABCD_F"},
        {L"ABCDE", L"ABCDE_F8"}, {L"MyWLAN", L"MyWLAN_BC"}, {L"Lab_Net1", L"Lab_Net1_88"}, {L"", L"_"},
        {L"Home", L"Home_8"}, {L"home", L"home_0"}, {L"HOME", L"HOME_F"}, {L"12-AB c", L"12-AB c_18"},
        // Capitals outside A-Z give 0 bits and are never changed.
        {L"\u00C4rger", L"\u00C4rger_00"}, {L"\u0414a\u00E4B", L"\u0414a\u00E4B_1"},
        // Bits are counted in UTF-16 code units on every platform.
        {kSmiley + L"ABC", kSmiley + L"ABC_38"}, {L"x" + kSmiley + L"Y", L"x" + kSmiley + L"Y_1"},
        {L"abC" + kSmiley + L"D", L"abC" + kSmiley + L"D_24"},
    };
    for (const auto& example : examples) {
        EXPECT_EQ(example[1], encode(example[0]));
        EXPECT_EQ(example[0], decode(example[1]));
    }
}

TEST(CaseBitmap, DecodingFollowsTheDigitsBehindTheLastUnderscore)
{
    const std::wstring cases[][2] = {
        {L"abc_8", L"Abc"}, {L"ABC_0", L"abc"}, {L"a_b_8", L"A_b"}, {L"abc_f", L"ABC"}, {L"abc_F", L"ABC"},
        {L"abc_80", L"Abc"}, {L"abc_zz", L"abc"}, {L"abcde_5g", L"aBcDe"}, {L"\u00E4b_C", L"\u00E4B"},
        {L"abc", L""}, {L"", L""}, {L"_", L""}, {L"_8", L""},
        {kSmiley + L"abc_38", kSmiley + L"ABC"}, {L"X" + kSmiley + L"y_1", L"x" + kSmiley + L"Y"},
        // A foreign digit beyond U+FFFF is two units: the third digit is there, not missing.
        {L"abcdefghi_8" + kSmiley, L"Abcdefghi"},
    };
    for (const auto& example : cases)
        EXPECT_EQ(example[1], decode(example[0]));

    for (const std::wstring& tooFewDigits :
         {std::wstring(L"abc_"), std::wstring(L"abcde_8"), std::wstring(L"a_b_"), kSmiley + L"abc_3"})
        EXPECT_THROW(decode(tooFewDigits), std::out_of_range);
}

}  // namespace
