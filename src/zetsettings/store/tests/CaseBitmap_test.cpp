#include <gtest/gtest.h>

#include <random>
#include <stdexcept>
#include <string>

#include "support/ZETSettingsTestAccess.h"

namespace {

std::wstring encode(const std::wstring& name)
{
    return ZETSettingsTestAccess::createCaseBitmap(name);
}

std::wstring decode(const std::wstring& valueName)
{
    return ZETSettingsTestAccess::removeCaseBitmap(valueName);
}

TEST(CaseBitmap, WorkedExamplesEncodeAndComeBackExactly)
{
    const struct {
        const wchar_t* name;
        const wchar_t* valueName;
    } examples[] = {
        {L"abc", L"abc_0"},       {L"Abc", L"Abc_8"},           {L"aBC", L"aBC_6"},
        {L"ABCD", L"ABCD_F"},     {L"ABCDE", L"ABCDE_F8"},      {L"MyWLAN", L"MyWLAN_BC"},
        {L"Lab_Net1", L"Lab_Net1_88"}, {L"", L"_"},             {L"Home", L"Home_8"},
        {L"home", L"home_0"},     {L"HOME", L"HOME_F"},         {L"12-AB c", L"12-AB c_18"},
    };
    for (const auto& example : examples) {
        EXPECT_EQ(example.valueName, encode(example.name)) << "name " << example.name;
        EXPECT_EQ(example.name, decode(example.valueName)) << "value " << example.valueName;
    }
}

TEST(CaseBitmap, DecodingFollowsTheDigitsNotTheLetters)
{
    const struct {
        const wchar_t* valueName;
        const wchar_t* name;
    } cases[] = {
        {L"abc_8", L"Abc"},   {L"ABC_0", L"abc"},   {L"a_b_8", L"A_b"}, // the last "_" splits
        {L"abc_f", L"ABC"},   {L"abc_F", L"ABC"},   {L"abc_80", L"Abc"}, // spare digits are ignored
        {L"abc_zz", L"abc"},  {L"abcde_5g", L"aBcDe"},                   // not hex: 0
        {L"abc", L""},        {L"", L""},           {L"_", L""},        {L"_8", L""},
    };
    for (const auto& example : cases)
        EXPECT_EQ(example.name, decode(example.valueName)) << "value " << example.valueName;

    EXPECT_THROW(decode(L"abc_"), std::out_of_range);
    EXPECT_THROW(decode(L"abcde_8"), std::out_of_range);
    EXPECT_THROW(decode(L"a_b_"), std::out_of_range);
}

TEST(CaseBitmap, OnlyAsciiCapitalsCount)
{
    // U+00C4 and U+0414 are capitals outside A-Z: they give 0 bits and never change.
    const std::wstring umlaut = L"\u00C4rger";
    EXPECT_EQ(umlaut + L"_00", encode(umlaut));
    EXPECT_EQ(umlaut, decode(encode(umlaut)));
    EXPECT_EQ(L"\u00E4rger_00", encode(L"\u00E4rger"));
    EXPECT_EQ(L"\u0414a\u00E4B_1", encode(L"\u0414a\u00E4B"));
    EXPECT_EQ(L"\u00E4B", decode(L"\u00E4b_C"));
    EXPECT_EQ(L"\u0434", decode(L"\u0434_8"));
}

TEST(CaseBitmap, CharactersBeyondTheBmpCountAsTwoCodeUnits)
{
    // U+1F600 is a surrogate pair in UTF-16: the name has five units, so two digits.
    const std::wstring smiley = L"\U0001F600";
    EXPECT_EQ(smiley + L"ABC_38", encode(smiley + L"ABC"));
    EXPECT_EQ(L"x" + smiley + L"Y_1", encode(L"x" + smiley + L"Y"));
    EXPECT_EQ(smiley + L"ABC", decode(smiley + L"abc_38"));
    EXPECT_EQ(L"x" + smiley + L"Y", decode(L"X" + smiley + L"y_1"));
    EXPECT_THROW(decode(smiley + L"abc_3"), std::out_of_range);
}

// Any name comes back exactly and gets one digit per four UTF-16 units.
TEST(CaseBitmap, RandomNamesRoundTrip)
{
    const std::wstring alphabet = L"aZbYqQ09_-. \u00C4\u00E4\u0414\u4E2D";
    const std::wstring beyondBmp = L"\U0001F600";
    std::mt19937 random(20240607);
    for (int round = 0; round < 500; ++round) {
        std::wstring name;
        std::size_t units = 0;
        const int length = static_cast<int>(random() % 14);
        for (int i = 0; i < length; ++i) {
            if (random() % 9 == 0) {
                name += beyondBmp;
                units += 2;
            } else {
                name += alphabet[random() % alphabet.size()];
                ++units;
            }
        }
        const std::wstring valueName = encode(name);
        ASSERT_EQ(name, decode(valueName)) << "round " << round;
        ASSERT_EQ(name + L"_", valueName.substr(0, name.size() + 1));
        ASSERT_EQ((units + 3) / 4, valueName.size() - name.size() - 1) << "round " << round;
    }
}

}  // namespace
