// The conversions at the boundary (caller's wide text to the store's UTF-16) and the upcase
// table by which names compare.
#include <gtest/gtest.h>

#include <string>

#include "zetsettings/platform/posix/registry/CaseFolding.h"
#include "zetsettings/platform/posix/registry/WideText.h"

namespace zet {
namespace portable {
namespace registry {
namespace {

TEST(CaseFolding, FoldsLettersOfEveryScriptButNotWhatWindowsLeavesAlone)
{
    EXPECT_EQ(u"HELLO, WORLD 1", CaseFolding::fold(u"Hello, world 1"));
    EXPECT_EQ(u"\u00c4\u00d6\u00dc\u0178", CaseFolding::fold(u"\u00e4\u00f6\u00fc\u00ff"));  // äöüÿ
    EXPECT_EQ(u"\u0391\u03a3\u038a", CaseFolding::fold(u"\u03b1\u03c3\u03af"));              // ασί
    EXPECT_EQ(u"\u0416\u0401\u0100\u0102\uff21", CaseFolding::fold(u"\u0436\u0451\u0101\u0103\uff41"));
    // Their capitals would lower-case to another letter, so Windows does not map them.
    for (char16_t unit : {u'\u0131', u'\u017f', u'\u00b5', u'\u03c2', u'\u01c5', u'\u1e9b', u'\u00df'})
        EXPECT_EQ(unit, CaseFolding::upcase(unit)) << std::hex << static_cast<int>(unit);
    // Halves of surrogate pairs: characters beyond the plane only ever equal themselves.
    EXPECT_EQ(u"\U0001044f", CaseFolding::fold(u"\U0001044f"));
    for (uint32_t unit = 0; unit < 0x10000; ++unit) {
        const char16_t upper = CaseFolding::upcase(static_cast<char16_t>(unit));
        ASSERT_EQ(upper, CaseFolding::upcase(upper)) << "folding twice changed " << std::hex << unit;
    }
}

TEST(WideText, EveryCharacterGoesThroughUtf16AndBack)
{
    std::wstring all;
    for (uint32_t character = 1; character <= 0x10FFFF; character += (character < 0x10000 ? 1 : 97)) {
        if (character < 0xD800 || character > 0xDFFF)
            all.push_back(static_cast<wchar_t>(character));
    }
    const std::u16string utf16 = WideText::toUtf16(all.data(), all.size());
    ASSERT_EQ(all.size(), WideText::callerUnits(utf16.data(), utf16.size()));
    std::wstring back(all.size(), L'\0');
    EXPECT_EQ(all.size(), WideText::toCaller(utf16.data(), utf16.size(), &back[0]));
    EXPECT_EQ(all, back);
    EXPECT_EQ(u"a\xD83D\xDE00" u"b", WideText::toUtf16(L"a\U0001F600b"));
}

TEST(WideText, LoneSurrogatesPassAndNonCharactersAreReplaced)
{
    const wchar_t lone[] = {0xDC00, L'x', 0xD800, 0};
    const std::u16string stored = WideText::toUtf16(lone);
    EXPECT_EQ(std::u16string(u"\xDC00x\xD800"), stored);
    wchar_t back[3];
    ASSERT_EQ(3u, WideText::toCaller(stored.data(), stored.size(), back));
    EXPECT_EQ(std::wstring(lone, 3), std::wstring(back, 3));

    const wchar_t beyond[] = {static_cast<wchar_t>(0x110000), 0};
    EXPECT_EQ(u"\uFFFD", WideText::toUtf16(beyond));
}

TEST(WideText, StringDataDropsAPartialLastCharacter)
{
    const wchar_t text[] = L"ab";
    const std::string stored =
        WideText::callerBytesToStored(reinterpret_cast<const BYTE*>(text), 2 * sizeof(wchar_t) - 1);
    EXPECT_EQ(std::string("a\0", 2), stored);
    EXPECT_EQ(sizeof(wchar_t), WideText::storedToCallerBytes(reinterpret_cast<const unsigned char*>("a\0b"), 3));
}

}  // namespace
}  // namespace registry
}  // namespace portable
}  // namespace zet
