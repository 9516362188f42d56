// The registry as every process of the machine shares it: what one process writes, others
// read, also after it ended or was killed; writers in several processes lose nothing.
#include <cstdio>
#include <memory>

#include "zetsettings/components/tests/ProcessSignals.h"
#include "zetsettings/platform/tests/RegistryTestKeys.h"

namespace zettest {
namespace {

const wchar_t kSharedKey[] = L"Software\\ZetRegistryTests\\Shared";
const DWORD kRoundValues = 8;
const DWORD kRoundValueWords = 128;

std::wstring numberedValue(const std::string& prefix, int number)
{
    return widen(prefix) + std::to_wstring(number);
}

// Ends a child scenario with 1, naming the call, when the call fails.
#define RETURN_IF_FAILED(call)                                                           \
    do {                                                                                 \
        if (const LONG status_ = (call); status_ != ERROR_SUCCESS) {                     \
            std::fprintf(stderr, "%s failed: %ld\n", #call, static_cast<long>(status_)); \
            return 1;                                                                    \
        }                                                                                \
    } while (0)

// args: value prefix, count. Writes prefix0..prefixN-1 = 0..N-1 and a subkey named by prefix.
ZET_CHILD_SCENARIO(registry_write_numbers)
{
    ScopedKey key, subkey;
    RETURN_IF_FAILED(createKey(HKEY_LOCAL_MACHINE, kSharedKey, key));
    for (int i = 0; i < std::stoi(args.at(1)); ++i)
        RETURN_IF_FAILED(setDword(key.get(), numberedValue(args.at(0), i).c_str(), static_cast<DWORD>(i)));
    RETURN_IF_FAILED(createKey(key.get(), widen(args.at(0)), subkey));
    return 0;
}

// Rewrites the values Round0..Round7 with the round's number, round after round, until killed.
ZET_CHILD_SCENARIO(registry_rewrite_rounds)
{
    ScopedKey key;
    RETURN_IF_FAILED(createKey(HKEY_LOCAL_MACHINE, kSharedKey, key));
    for (DWORD round = 1;; ++round) {
        const std::vector<DWORD> words(kRoundValueWords, round);
        for (DWORD i = 0; i < kRoundValues; ++i)
            RETURN_IF_FAILED(RegSetValueExW(key.get(), numberedValue("Round", i).c_str(), 0, REG_BINARY,
                                            reinterpret_cast<const BYTE*>(words.data()),
                                            static_cast<DWORD>(words.size() * sizeof(DWORD))));
        RETURN_IF_FAILED(setDword(key.get(), L"Rounds", round));
    }
}

const wchar_t kRemadeKey[] = L"Software\\ZetRegistryTests\\Shared\\Remade";

// What to do to the remade key. args: "drop" (delete the key); or "set" a value name to a number,
// "remake" (the same, in a new key) or "delete" a value name.
ZET_CHILD_SCENARIO(registry_edit)
{
    const std::string what = args.at(0);
    if (what == "drop" || what == "remake")
        RETURN_IF_FAILED(RegDeleteTreeW(HKEY_LOCAL_MACHINE, kRemadeKey));
    if (what == "drop")
        return 0;
    ScopedKey key;
    const std::wstring name = widen(args.at(1));
    RETURN_IF_FAILED(createKey(HKEY_LOCAL_MACHINE, kRemadeKey, key));
    RETURN_IF_FAILED(what == "delete" ? RegDeleteValueW(key.get(), name.c_str())
                                      : setDword(key.get(), name.c_str(), static_cast<DWORD>(std::stoul(args.at(2)))));
    return 0;
}

// The number a value holds, read through a key opened for this one read; 0 if there is none.
DWORD numberIn(const wchar_t* path, const wchar_t* name)
{
    ScopedKey key;
    DWORD number = 0;
    if (openKey(HKEY_LOCAL_MACHINE, path, key, KEY_READ) == ERROR_SUCCESS)
        getDword(key.get(), name, number);
    return number;
}

// The round a value holds, or 0 if its data is not one round's number throughout.
DWORD roundOf(HKEY key, DWORD index)
{
    std::vector<DWORD> words(kRoundValueWords + 1);
    DWORD size = static_cast<DWORD>(words.size() * sizeof(DWORD));
    const LONG status = RegQueryValueExW(key, numberedValue("Round", index).c_str(), nullptr, nullptr,
                                         reinterpret_cast<BYTE*>(words.data()), &size);
    if (status != ERROR_SUCCESS || size != kRoundValueWords * sizeof(DWORD))
        return 0;
    for (DWORD i = 1; i < kRoundValueWords; ++i)
        if (words[i] != words[0])
            return 0;
    return words[0];
}

using RegistryProcesses = RegistryTest;

TEST_F(RegistryProcesses, WritersInSeveralProcessesLoseNothingAndTheirValuesOutliveThem)
{
    const int writers = 4;
    const int each = 30;
    std::vector<std::unique_ptr<ChildProcess>> children;
    for (int i = 0; i < writers; ++i)
        children.emplace_back(new ChildProcess("registry_write_numbers", {"W" + std::to_string(i) + "-",
                                                                         std::to_string(each)}));
    for (auto& child : children)
        EXPECT_EQ(0, child->wait());
    ScopedKey key;
    ASSERT_EQ(ERROR_SUCCESS, openKey(HKEY_LOCAL_MACHINE, kSharedKey, key, KEY_READ));
    EXPECT_EQ(static_cast<size_t>(writers * each), valueNames(key.get()).size());
    EXPECT_EQ(static_cast<size_t>(writers), subkeyNames(key.get()).size());
    for (int i = 0; i < writers; ++i)
        for (int n = 0; n < each; ++n)
            EXPECT_EQ(DWORD(n), numberAt(key.get(), numberedValue("W" + std::to_string(i) + "-", n).c_str()));
}

// A process that keeps opening one path must follow the key the path names now, whatever another
// process did to it in between.
TEST_F(RegistryProcesses, APathOpenedAgainFindsTheKeyThatAnotherProcessRemadeOrDeleted)
{
    {
        ScopedKey key;
        ASSERT_EQ(ERROR_SUCCESS, createKey(HKEY_LOCAL_MACHINE, kRemadeKey, key));
        ASSERT_EQ(ERROR_SUCCESS, setDword(key.get(), L"Number", 1));
    }
    for (int again = 0; again < 2; ++again)
        ASSERT_EQ(1u, numberIn(kRemadeKey, L"Number"));
    EXPECT_EQ(0, ChildProcess("registry_edit", {"remake", "Number", "2"}).wait());
    EXPECT_EQ(2u, numberIn(kRemadeKey, L"Number"));
    EXPECT_EQ(0, ChildProcess("registry_edit", {"drop"}).wait());
    ScopedKey dropped;
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, openKey(HKEY_LOCAL_MACHINE, kRemadeKey, dropped, KEY_READ));
}

// Reading a value again, by name or right after enumerating it, must give what another process
// wrote or deleted in between.
TEST_F(RegistryProcesses, AValueReadAgainIsWhatAnotherProcessLeftThere)
{
    ScopedKey key;
    ASSERT_EQ(ERROR_SUCCESS, createKey(HKEY_LOCAL_MACHINE, kRemadeKey, key));
    ASSERT_EQ(ERROR_SUCCESS, setDword(key.get(), L"Number", 1));
    for (int again = 0; again < 2; ++again)
        ASSERT_EQ(1u, numberAt(key.get(), L"NUMBER"));
    DWORD number = 0;
    // Names that only begin or end like the one just read are other names.
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, getDword(key.get(), L"Numbe", number));
    ASSERT_EQ(1u, numberAt(key.get(), L"number"));
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, getDword(key.get(), L"Numbers", number));
    EXPECT_EQ(0, ChildProcess("registry_edit", {"set", "Number", "2"}).wait());
    EXPECT_EQ(2u, numberAt(key.get(), L"Number"));

    std::wstring name;
    ASSERT_EQ(ERROR_SUCCESS, enumerateNumber(key.get(), 0, name, number));
    EXPECT_EQ(0, ChildProcess("registry_edit", {"set", "Number", "3"}).wait());
    EXPECT_EQ(3u, numberAt(key.get(), name.c_str()));
    EXPECT_EQ(0, ChildProcess("registry_edit", {"delete", "Number"}).wait());
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, getDword(key.get(), name.c_str(), number));
}

// An enumeration going on while another process changes the key goes on in the key's new state.
TEST_F(RegistryProcesses, AnEnumerationSeesWhatAnotherProcessChangedInBetween)
{
    ScopedKey key;
    ASSERT_EQ(ERROR_SUCCESS, createKey(HKEY_LOCAL_MACHINE, kRemadeKey, key));
    for (DWORD i = 0; i < 5; ++i)
        ASSERT_EQ(ERROR_SUCCESS, setDword(key.get(), (L"V" + std::to_wstring(i)).c_str(), i));
    std::wstring name;
    DWORD number = 0;
    ASSERT_EQ(ERROR_SUCCESS, enumerateNumber(key.get(), 0, name, number));
    EXPECT_EQ(L"V0", name);
    EXPECT_EQ(0, ChildProcess("registry_edit", {"delete", "V1"}).wait());
    EXPECT_EQ(0, ChildProcess("registry_edit", {"set", "V3", "33"}).wait());
    ASSERT_EQ(ERROR_SUCCESS, enumerateNumber(key.get(), 1, name, number));
    EXPECT_EQ(L"V2", name);
    ASSERT_EQ(ERROR_SUCCESS, enumerateNumber(key.get(), 2, name, number));
    EXPECT_EQ(L"V3", name);
    EXPECT_EQ(33u, number);
    EXPECT_EQ(ERROR_NO_MORE_ITEMS, enumerateNumber(key.get(), 4, name, number));
}

TEST_F(RegistryProcesses, AWriterKilledAtAnyInstantLeavesEveryValueOldOrNew)
{
    {
        ChildProcess writer("registry_rewrite_rounds");
        ASSERT_TRUE(eventually([&] { return numberIn(kSharedKey, L"Rounds") >= 3; }, std::chrono::seconds(60)))
            << "the writer made no progress";
        writer.killHard();
        writer.wait();
    }
    ScopedKey key;
    ASSERT_EQ(ERROR_SUCCESS, openKey(HKEY_LOCAL_MACHINE, kSharedKey, key));
    // Values are written in order, each in one piece: a prefix holds the newest round.
    const DWORD newest = roundOf(key.get(), 0);
    ASSERT_NE(0u, newest) << "a value was left half written";
    for (DWORD i = 1; i < kRoundValues; ++i) {
        const DWORD round = roundOf(key.get(), i);
        EXPECT_TRUE(round == newest || round + 1 == newest) << "value " << i << " holds round " << round
                                                            << " beside round " << newest;
        EXPECT_LE(round, roundOf(key.get(), i - 1));
    }
    // The store takes writes again.
    EXPECT_EQ(ERROR_SUCCESS, setDword(key.get(), L"After", 1));
}

}  // namespace
}  // namespace zettest
