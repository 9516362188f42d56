// The portable layer's parts one at a time: the conversions at the boundary (caller's wide
// text to the store's UTF-16) and the upcase table by which names compare; the index of names
// beyond what an LMDB key can hold (filed under bounded keys, hashed past a bound, told apart
// when their hashes collide); the process's table of open keys under many threads; and the
// version reported from the emulated machine's settings in the store.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "support/TestRegistry.h"
#include "zetsettings/platform/posix/Win32Portable.h"
#include "zetsettings/platform/posix/registry/CaseFolding.h"
#include "zetsettings/platform/posix/registry/HandleTable.h"
#include "zetsettings/platform/posix/registry/NameIndex.h"
#include "zetsettings/platform/posix/registry/Records.h"
#include "zetsettings/platform/posix/registry/StoreCatalog.h"
#include "zetsettings/platform/posix/registry/StoreFailure.h"
#include "zetsettings/platform/posix/registry/WideText.h"
#include "zetsettings/platform/posix/registry/WriteTransaction.h"
#include "zetsettings/platform/tests/RegistryTestKeys.h"

namespace zet {
namespace portable {
namespace registry {
namespace {

TEST(CaseFolding, FoldsLettersOfEveryScriptButNotWhatWindowsLeavesAlone)
{
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

TEST(WideText, EveryCharacterAndLoneSurrogateGoesThroughUtf16AndBackAndTheRestIsReplacedOrDropped)
{
    std::wstring all;
    for (uint32_t character = 1; character <= 0x10FFFF; character += (character < 0x10000 ? 1 : 97)) {
        if (character < 0xD800 || character > 0xDFFF)
            all.push_back(static_cast<wchar_t>(character));
    }
    all += {static_cast<wchar_t>(0xDC00), L'x', static_cast<wchar_t>(0xD800)};  // lone surrogates pass
    const std::u16string utf16 = WideText::toUtf16(all.data(), all.size());
    ASSERT_EQ(all.size(), WideText::callerUnits(utf16.data(), utf16.size()));
    std::wstring back(all.size(), L'\0');
    EXPECT_EQ(all.size(), WideText::toCaller(utf16.data(), utf16.size(), &back[0]));
    EXPECT_EQ(all, back);
    EXPECT_EQ(u"a\xD83D\xDE00" u"b", WideText::toUtf16(L"a\U0001F600b"));

    // What is no character is replaced.
    const wchar_t beyond[] = {static_cast<wchar_t>(0x110000), 0};
    EXPECT_EQ(u"\uFFFD", WideText::toUtf16(beyond));

    // String data drops a partial last character.
    EXPECT_EQ(std::string("a\0", 2),
              WideText::callerBytesToStored(reinterpret_cast<const BYTE*>(L"ab"), 2 * sizeof(wchar_t) - 1));
    EXPECT_EQ(sizeof(wchar_t), WideText::storedToCallerBytes(reinterpret_cast<const unsigned char*>("a\0b"), 3));
}

// An index on one write transaction of the test's store, aborted at the end.
class NameIndexTest : public zettest::RegistryTest {
protected:
    void insert(const std::u16string& name, uint64_t id)
    {
        index.insert(kOwner, CaseFolding::fold(name), SubkeyEntry::build(name, id));
    }
    // The id filed under the name, 0 if none.
    uint64_t lookUp(const std::u16string& name)
    {
        NameIndex::Found found;
        if (!index.find(kOwner, CaseFolding::fold(name), found))
            return 0;
        return SubkeyEntry::idOf(NamedRecordView::parse(found.data));
    }

    static const uint64_t kOwner = uint64_t(1) << 40;  // no key of the store
    const std::shared_ptr<Store> store = StoreCatalog::instance().current();
    WriteTransaction scratch{*store};
    NameIndex index{scratch.txn(), scratch.dbi(), RecordKeys::kSubkey,
                    [](const std::u16string&) -> uint64_t { return 42; }};  // every name collides
};

// Names of 300 units that share their first 299, one without a case.
std::u16string longName(uint64_t number)
{
    std::u16string name(299, u'n');
    name.push_back(static_cast<char16_t>(0x4E00 + number));
    return name;
}

// Every long name collides here: the whole name tells them apart, among the 256 places that one
// hash has; a freed place is taken again. A name as long as a key holds whole, with the same
// beginning, is another.
TEST_F(NameIndexTest, NamesWhoseHashesCollideAreToldApartByTheWholeName)
{
    const std::u16string direct(RecordKeys::kDirectNameUnits, u'n');
    insert(direct, 1000);
    for (uint64_t number = 1; number <= 256; ++number)
        insert(longName(number), number);
    for (uint64_t number = 1; number <= 256; ++number)
        EXPECT_EQ(number, lookUp(longName(number)));
    EXPECT_EQ(1000u, lookUp(direct));
    EXPECT_EQ(0u, lookUp(longName(257)));
    EXPECT_THROW(insert(longName(257), 257), StoreFailure);

    EXPECT_TRUE(index.erase(kOwner, CaseFolding::fold(longName(2))));
    EXPECT_EQ(0u, lookUp(longName(2)));
    insert(longName(257), 257);
    EXPECT_EQ(257u, lookUp(longName(257)));
    EXPECT_TRUE(index.erase(kOwner, CaseFolding::fold(direct)));
    EXPECT_EQ(0u, lookUp(direct));
    EXPECT_EQ(3u, lookUp(longName(3)));
}

using HandleThreads = zettest::RegistryTest;

TEST_F(HandleThreads, ManyThreadsOpenUseAndCloseKeysAtOnce)
{
    zettest::ScopedKey base = zettest::testKey(L"Threads");
    ASSERT_EQ(ERROR_SUCCESS, zettest::setDword(base.get(), L"Value", 9));
    const size_t openBefore = HandleTable::instance().openCount();
    std::atomic<int> failures(0);
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t) {
        threads.emplace_back([&, t] {
            for (int i = 0; i < 300; ++i) {
                HKEY key = nullptr;
                DWORD value = 0;
                const std::wstring path = std::wstring(zettest::kTestRoot) + L"\\Threads";
                failures += RegOpenKeyExW(HKEY_LOCAL_MACHINE, path.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS;
                failures += zettest::getDword(key, L"Value", value) != ERROR_SUCCESS || value != 9;
                failures += RegCloseKey(key) != ERROR_SUCCESS;
                failures += RegCloseKey(key) != ERROR_INVALID_HANDLE;
                if (i % 50 == t)
                    failures += zettest::setDword(base.get(), L"Written", i) != ERROR_SUCCESS;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(0, failures.load());
    EXPECT_EQ(openBefore, HandleTable::instance().openCount());
}

const wchar_t kVersionKey[] = L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion";

class VersionTest : public zettest::RegistryTest {
protected:
    void setMachine(const wchar_t* version, const wchar_t* servicePack, const wchar_t* build)
    {
        zettest::ScopedKey key;
        ASSERT_EQ(ERROR_SUCCESS, zettest::createKey(HKEY_LOCAL_MACHINE, kVersionKey, key));
        EXPECT_EQ(ERROR_SUCCESS, zettest::setString(key.get(), L"CurrentVersion", version));
        EXPECT_EQ(ERROR_SUCCESS, zettest::setString(key.get(), L"CurrentBuildNumber", build));
        if (servicePack) {
            EXPECT_EQ(ERROR_SUCCESS, zettest::setString(key.get(), L"CSDVersion", servicePack));
        }
    }

    static OSVERSIONINFOEXW query()
    {
        OSVERSIONINFOEXW info{};
        info.dwOSVersionInfoSize = sizeof(info);
        EXPECT_TRUE(GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&info)));
        return info;
    }
};

// The classes that the library tells apart are ParameterDefaultsTest's; here, every field.
TEST_F(VersionTest, TheMachineIsReportedAsSetAnythingUnreadableAsNoKnownClassAndTheBasicRecordShort)
{
    const struct {
        const wchar_t* version;
        const wchar_t* servicePack;
        DWORD major, minor, build;
        WORD servicePackMajor;
    } cases[] = {
        {nullptr, nullptr, 6, 2, 9200, 0},  // nothing set
        {L"5.1", nullptr, 5, 1, 2600, 0},
        {L"5.1", L"Service Pack 2", 5, 1, 2600, 2},
        {L"5.1", L"", 5, 1, 2600, 0},
    };
    for (const auto& c : cases) {
        zettest::TestRegistry fresh;
        if (c.version)
            setMachine(c.version, c.servicePack, std::to_wstring(c.build).c_str());
        const OSVERSIONINFOEXW info = query();
        EXPECT_EQ(c.major, info.dwMajorVersion);
        EXPECT_EQ(c.minor, info.dwMinorVersion);
        EXPECT_EQ(c.build, info.dwBuildNumber);
        EXPECT_EQ(static_cast<DWORD>(VER_PLATFORM_WIN32_NT), info.dwPlatformId);
        EXPECT_EQ(c.servicePackMajor, info.wServicePackMajor);
        const std::wstring servicePack = c.servicePack ? c.servicePack : L"";
        EXPECT_EQ(std::u16string(servicePack.begin(), servicePack.end()), std::u16string(info.szCSDVersion));
    }
    for (const wchar_t* bad : {L"", L"5", L"5.", L".1", L"5.1.0", L"five.one", L"5.1 "}) {
        setMachine(bad, L"Service Pack 2", L"2600");
        const OSVERSIONINFOEXW info = query();
        EXPECT_EQ(6u, info.dwMajorVersion) << std::wstring(bad).size();
        EXPECT_EQ(0, info.wServicePackMajor);
    }

    // The basic record leaves the extended fields alone; other sizes are refused.
    setMachine(L"5.1", L"Service Pack 2", L"2600");
    OSVERSIONINFOEXW info;
    std::memset(&info, 0xAB, sizeof(info));
    info.dwOSVersionInfoSize = sizeof(OSVERSIONINFOW);
    ASSERT_TRUE(GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&info)));
    EXPECT_EQ(5u, info.dwMajorVersion);
    EXPECT_EQ(0xABAB, info.wServicePackMajor);
    std::memset(&info, 0, sizeof(info));
    for (DWORD size : {DWORD(0), DWORD(sizeof(OSVERSIONINFOW) - 1), DWORD(sizeof(OSVERSIONINFOEXW) + 1)}) {
        info.dwOSVersionInfoSize = size;
        SetLastError(0);
        EXPECT_FALSE(GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&info)));
        EXPECT_EQ(static_cast<DWORD>(ERROR_INSUFFICIENT_BUFFER), GetLastError());
        EXPECT_EQ(0u, info.dwMajorVersion);
    }
}

}  // namespace
}  // namespace registry
}  // namespace portable
}  // namespace zet
