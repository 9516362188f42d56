// Keys of the registry as Windows has them: creating, opening, names, paths, deleting, handles.
#include "zetsettings/platform/tests/RegistryTestKeys.h"

namespace zettest {
namespace {

using RegistryKeys = RegistryKeyTest;

TEST_F(RegistryKeys, CreateMakesEveryMissingLevelAndOpenFindsOnlyWhatIsThere)
{
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, openKey(base.get(), L"One\\Two", key));
    EXPECT_EQ(nullptr, key.get());
    for (DWORD expected : {DWORD(REG_CREATED_NEW_KEY), DWORD(REG_OPENED_EXISTING_KEY)}) {
        DWORD disposition = 0;
        ASSERT_EQ(ERROR_SUCCESS, createKey(base.get(), L"One\\Two\\Three", key, KEY_ALL_ACCESS, &disposition));
        EXPECT_EQ(expected, disposition);
    }
    ASSERT_EQ(ERROR_SUCCESS, openKey(base.get(), L"One\\Two", key));
    EXPECT_EQ(std::vector<std::wstring>{L"Three"}, subkeyNames(key.get()));
}

TEST_F(RegistryKeys, NamesIgnoreCaseKeepTheirFirstCaseAndLookAlikesStayApart)
{
    // Dotless i, long s and final sigma have upper-case forms, but Windows does not fold them.
    std::vector<std::wstring> names = {L"MixedCase", L"\u00c4rger\u0391\u03a3", L"Ix",      L"\u0131x",
                                       L"Sx",        L"\u017fx",                L"\u03a3x", L"\u03c2x"};
    for (const std::wstring& name : names)
        ASSERT_EQ(ERROR_SUCCESS, createKey(base.get(), name, key));
    DWORD disposition = 0;
    ASSERT_EQ(ERROR_SUCCESS, createKey(base.get(), L"MIXEDCASE", key, KEY_ALL_ACCESS, &disposition));
    EXPECT_EQ(static_cast<DWORD>(REG_OPENED_EXISTING_KEY), disposition);
    EXPECT_EQ(ERROR_SUCCESS, openKey(base.get(), L"\u00e4RGER\u03b1\u03c3", key));
    EXPECT_EQ(sorted(names), sorted(subkeyNames(base.get())));
}

TEST_F(RegistryKeys, AnEmptySubkeyIsTheKeyItselfAndPathsTakeOnlyTrailingBackslashes)
{
    ScopedKey self, again;
    ASSERT_EQ(ERROR_SUCCESS, openKey(base.get(), L"", self));
    ASSERT_EQ(ERROR_SUCCESS, RegOpenKeyExW(base.get(), nullptr, 0, KEY_ALL_ACCESS, again.out()));
    base.reset();  // the other handles are handles of their own
    ASSERT_EQ(ERROR_SUCCESS, setDword(self.get(), L"Shared", 7));
    EXPECT_EQ(7u, numberAt(again.get(), L"Shared"));

    EXPECT_EQ(ERROR_SUCCESS, createKey(self.get(), L"Trailing\\", key));
    EXPECT_EQ(ERROR_SUCCESS, openKey(self.get(), L"Trailing", key));
    EXPECT_EQ(ERROR_BAD_PATHNAME, createKey(self.get(), L"\\Leading", key));
    EXPECT_EQ(ERROR_BAD_PATHNAME, openKey(self.get(), L"\\Trailing", key));
    EXPECT_EQ(ERROR_BAD_PATHNAME, RegDeleteKeyW(self.get(), L"\\Trailing"));
    EXPECT_EQ(std::vector<std::wstring>{L"Trailing"}, subkeyNames(self.get()));
}

TEST_F(RegistryKeys, KeyNamesOf255UnitsAreFineAndMuchLongerOnesRefused)
{
    const std::wstring longest(255, L'k');
    ASSERT_EQ(ERROR_SUCCESS, createKey(base.get(), longest, key));
    EXPECT_EQ(ERROR_SUCCESS, openKey(base.get(), std::wstring(255, L'K'), key));

    const std::wstring tooLong(257, L'k');
    EXPECT_EQ(ERROR_INVALID_PARAMETER, createKey(base.get(), tooLong, key));
    EXPECT_EQ(ERROR_INVALID_PARAMETER, openKey(base.get(), tooLong, key));
    EXPECT_EQ(std::vector<std::wstring>{longest}, subkeyNames(base.get()));
    // Whether the levels before the long name are made first is not the same everywhere.
    EXPECT_EQ(ERROR_INVALID_PARAMETER, createKey(base.get(), L"Fine\\" + tooLong, key));
}

TEST_F(RegistryKeys, DeletingTakesOnlyKeysWithoutSubkeysAndTheirValuesWithThem)
{
    ASSERT_EQ(ERROR_SUCCESS, createKey(base.get(), L"Parent\\Child", key));
    ASSERT_EQ(ERROR_SUCCESS, setDword(key.get(), L"Value", 1));
    key.reset();

    EXPECT_EQ(ERROR_ACCESS_DENIED, RegDeleteKeyW(base.get(), L"Parent"));
    EXPECT_EQ(ERROR_SUCCESS, RegDeleteKeyW(base.get(), L"PARENT\\child"));
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, RegDeleteKeyW(base.get(), L"Parent\\Child"));
    EXPECT_EQ(ERROR_SUCCESS, RegDeleteKeyW(base.get(), L"Parent"));
    EXPECT_EQ(ERROR_INVALID_PARAMETER, RegDeleteKeyW(base.get(), nullptr));
    EXPECT_TRUE(subkeyNames(base.get()).empty());

    ASSERT_EQ(ERROR_SUCCESS, createKey(base.get(), L"Parent\\Child", key));
    DWORD value = 0;
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, getDword(key.get(), L"Value", value)) << "a recreated key is a new one";
}

TEST_F(RegistryKeys, AKeyDeletedUnderItsHandlesIsReportedThroughThem)
{
    ScopedKey doomed, other;
    ASSERT_EQ(ERROR_SUCCESS, createKey(base.get(), L"Doomed", doomed));
    ASSERT_EQ(ERROR_SUCCESS, openKey(base.get(), L"Doomed", other));
    ASSERT_EQ(ERROR_SUCCESS, RegDeleteKeyW(doomed.get(), L""));

    DWORD value = 0;
    std::wstring name;
    EXPECT_EQ(ERROR_KEY_DELETED, getDword(other.get(), L"Any", value));
    EXPECT_EQ(ERROR_KEY_DELETED, setDword(other.get(), L"Any", 1));
    EXPECT_EQ(ERROR_KEY_DELETED, enumerateNumber(other.get(), 0, name, value));
    EXPECT_EQ(ERROR_KEY_DELETED, createKey(other.get(), L"Below", key));
    EXPECT_EQ(ERROR_SUCCESS, RegCloseKey(other.release()));
    EXPECT_TRUE(subkeyNames(base.get()).empty());
}

TEST_F(RegistryKeys, DeletingATreeTakesEverythingBelowIt)
{
    ScopedKey top;
    for (const wchar_t* path : {L"Top\\A\\A1", L"Top\\A\\A2", L"Top\\B", L"Top\\C\\C1\\C2"}) {
        ASSERT_EQ(ERROR_SUCCESS, createKey(base.get(), path, key));
        ASSERT_EQ(ERROR_SUCCESS, setDword(key.get(), L"V", 1));
    }
    ASSERT_EQ(ERROR_SUCCESS, openKey(base.get(), L"Top", top));
    ASSERT_EQ(ERROR_SUCCESS, setDword(top.get(), L"OnTop", 1));

    // Without a subkey the key itself stays, emptied.
    ASSERT_EQ(ERROR_SUCCESS, RegDeleteTreeW(top.get(), nullptr));
    EXPECT_TRUE(subkeyNames(top.get()).empty());
    EXPECT_TRUE(valueNames(top.get()).empty());

    ASSERT_EQ(ERROR_SUCCESS, createKey(base.get(), L"Top\\Again\\Deeper", key));
    ASSERT_EQ(ERROR_SUCCESS, RegDeleteTreeW(base.get(), L"Top"));
    EXPECT_TRUE(subkeyNames(base.get()).empty());
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, RegDeleteTreeW(base.get(), L"Top"));
}

TEST_F(RegistryKeys, HandlesThatAreNotOpenAreRefusedAndPredefinedOnesStay)
{
    HKEY closed = nullptr;
    ASSERT_EQ(ERROR_SUCCESS, RegOpenKeyExW(base.get(), nullptr, 0, KEY_READ, &closed));
    EXPECT_EQ(ERROR_SUCCESS, RegCloseKey(closed));
    EXPECT_EQ(ERROR_INVALID_HANDLE, RegCloseKey(closed));
    EXPECT_EQ(ERROR_INVALID_HANDLE, RegCloseKey(nullptr));
    DWORD value = 0;
    EXPECT_EQ(ERROR_INVALID_HANDLE, getDword(closed, L"Any", value));

    EXPECT_EQ(ERROR_SUCCESS, RegCloseKey(HKEY_LOCAL_MACHINE));
    ScopedKey again;
    EXPECT_EQ(ERROR_SUCCESS, openKey(HKEY_LOCAL_MACHINE, kTestRoot, again));
    // The two roots are separate trees.
    EXPECT_EQ(ERROR_FILE_NOT_FOUND, openKey(HKEY_CURRENT_USER, std::wstring(kTestRoot) + L"\\" + kBaseName, again));
}

TEST_F(RegistryKeys, HandlesCarryOnlyTheRightsTheyWereOpenedWith)
{
    ASSERT_EQ(ERROR_SUCCESS, setDword(base.get(), L"Value", 5));

    ScopedKey reader, writer;
    ASSERT_EQ(ERROR_SUCCESS, openKey(HKEY_LOCAL_MACHINE, std::wstring(kTestRoot) + L"\\" + kBaseName, reader, KEY_READ));
    DWORD value = 0;
    EXPECT_EQ(ERROR_SUCCESS, getDword(reader.get(), L"Value", value));
    EXPECT_EQ(ERROR_ACCESS_DENIED, setDword(reader.get(), L"Value", 6));
    EXPECT_EQ(ERROR_ACCESS_DENIED, RegDeleteValueW(reader.get(), L"Value"));

    ASSERT_EQ(ERROR_SUCCESS, openKey(base.get(), L"", writer, KEY_SET_VALUE));
    EXPECT_EQ(ERROR_SUCCESS, setDword(writer.get(), L"Value", 6));
    EXPECT_EQ(ERROR_ACCESS_DENIED, getDword(writer.get(), L"Value", value));
    EXPECT_EQ(6u, numberAt(reader.get(), L"Value"));
}

}  // namespace
}  // namespace zettest
