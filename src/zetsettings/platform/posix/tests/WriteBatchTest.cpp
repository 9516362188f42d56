// The write batch: one commit for any number of writes, read back inside it, seen by nobody
// else before its end; a refused write inside it, a nested batch and a batch dropped whole (a
// map that grows in the middle of one is PortableStoreTest's). And the library's operations
// that write many values: one commit each.
#include <gtest/gtest.h>

#include <string>
#include <future>

#include "support/TestRegistry.h"
#include "zetsettings/ZETConfigParam.h"
#include "zetsettings/ZETSettings.h"
#include "zetsettings/platform/RegistryBatch.h"
#include "zetsettings/platform/posix/registry/StoreCatalog.h"
#include "zetsettings/platform/tests/RegistryTestKeys.h"

using zet::portable::registry::StoreCatalog;
using zettest::ScopedKey;

namespace {

const wchar_t kParent[] = L"Software\\BatchTest";
const wchar_t kChild[] = L"Software\\BatchTest\\Child";
const wchar_t kDoomed[] = L"Software\\BatchTest\\Doomed";

uint64_t commits()
{
    return StoreCatalog::instance().current()->lastCommitted();
}

template <typename Query>
auto inAnotherThread(Query query)
{
    return std::async(std::launch::async, query).get();
}

// The number stored under name in the key at path, or -1 when the key or the value is missing.
long numberAt(const wchar_t* path, const std::wstring& name)
{
    ScopedKey key;
    DWORD number = 0;
    if (zettest::openKey(HKEY_LOCAL_MACHINE, path, key, KEY_READ) != ERROR_SUCCESS ||
        zettest::getDword(key.get(), name.c_str(), number) != ERROR_SUCCESS)
        return -1;
    return static_cast<long>(number);
}

using WriteBatch = zettest::RegistryTest;

TEST_F(WriteBatch, WritesAreOneCommitThatOthersSeeOnlyAfterItRefusedOnesFailAloneAndANestedBatchNeitherCommitsNorDrops)
{
    const uint64_t before = commits();
    ScopedKey parent, child;
    {
        zet::RegistryBatch batch;
        ASSERT_EQ(ERROR_SUCCESS, zettest::createKey(HKEY_LOCAL_MACHINE, kParent, parent));
        ASSERT_EQ(ERROR_SUCCESS, zettest::createKey(HKEY_LOCAL_MACHINE, kChild, child));
        ASSERT_EQ(ERROR_SUCCESS, zettest::setDword(child.get(), L"first", 1));
        EXPECT_EQ(1, numberAt(kChild, L"first")) << "the new key is found and read in the batch";
        ASSERT_EQ(ERROR_SUCCESS, zettest::setDword(child.get(), L"first", 2));
        EXPECT_EQ(2, numberAt(kChild, L"first")) << "nothing read before the last write is taken for it";
        ASSERT_EQ(ERROR_SUCCESS, zettest::setDword(child.get(), L"second", 3));
        EXPECT_EQ(2u, zettest::valueNames(child.get()).size());
        ASSERT_EQ(ERROR_SUCCESS, RegDeleteValueW(child.get(), L"second"));
        EXPECT_EQ(1u, zettest::valueNames(child.get()).size());
        EXPECT_EQ(-1, inAnotherThread([] { return numberAt(kChild, L"first"); }));
        EXPECT_EQ(before, inAnotherThread(commits)) << "nothing is committed yet";

        ASSERT_EQ(ERROR_SUCCESS, zettest::setDword(parent.get(), L"before", 1));
        EXPECT_EQ(ERROR_ACCESS_DENIED, RegDeleteKeyW(HKEY_LOCAL_MACHINE, kParent)) << "it has a subkey";
        EXPECT_EQ(ERROR_INVALID_PARAMETER, zettest::setDword(parent.get(), std::wstring(16384, L'n').c_str(), 2));
        ScopedKey doomed;
        ASSERT_EQ(ERROR_SUCCESS, zettest::createKey(HKEY_LOCAL_MACHINE, kDoomed, doomed));
        ASSERT_EQ(ERROR_SUCCESS, RegDeleteKeyW(HKEY_LOCAL_MACHINE, kDoomed));
        EXPECT_EQ(ERROR_KEY_DELETED, zettest::setDword(doomed.get(), L"orphan", 3));
        ASSERT_EQ(ERROR_SUCCESS, zettest::setDword(parent.get(), L"after", 4));
    }
    EXPECT_EQ(before + 1, commits());
    EXPECT_EQ(2, inAnotherThread([] { return numberAt(kChild, L"first"); }));
    EXPECT_EQ(1u, zettest::valueNames(child.get()).size());
    EXPECT_EQ(1, numberAt(kParent, L"before"));
    EXPECT_EQ(4, numberAt(kParent, L"after"));
    EXPECT_EQ(2u, zettest::valueNames(parent.get()).size());

    zet::RegistryBatch outer;
    {
        zet::RegistryBatch inner;
        ASSERT_EQ(ERROR_SUCCESS, zettest::setDword(parent.get(), L"inner", 5));
        EXPECT_FALSE(inner.discard()) << "a nested batch can't drop what the outer one holds";
    }
    EXPECT_EQ(5, numberAt(kParent, L"inner"));
    EXPECT_TRUE(outer.discard());
    EXPECT_EQ(before + 1, commits());
    EXPECT_EQ(-1, numberAt(kParent, L"inner"));
}

// Operations that write many values, each once on a fresh store and once more: one commit.
TEST(OperationCommits, AnOperationThatWritesManyValuesCommitsOnce)
{
    zettest::TestRegistry registry;
    for (int i = 0; i < 50; ++i) {
        boost::shared_ptr<ZETFallbackSettings> record(new ZETFallbackSettings);
        record->owner = L"Owner" + std::to_wstring(i % 5);
        record->network = L"Network" + std::to_wstring(i);
        const uint64_t before = commits();
        ZETSettings::setFallbackSettings(record);
        ASSERT_EQ(before + 1, commits()) << "record " << i;
    }
    ZETConfigParam param;
    param.InitializeDefaults();
    for (int load = 0; load < 2; ++load) {
        const uint64_t before = commits();
        param.LoadFromRegistry(L"{00000000-0000-0000-0000-000000000000}");
        EXPECT_EQ(before + 1, commits()) << "load " << load;
    }
    const uint64_t before = commits();
    EXPECT_EQ(7, ZETSettings::intGetNetlibValue(L"FreshValue", 7)) << "a new family key and its default";
    EXPECT_EQ(before + 1, commits());
}

}  // namespace
