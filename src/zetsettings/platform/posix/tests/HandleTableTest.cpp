// The process's table of open keys: values that were never handed out, or are closed, are
// refused; many threads open, use and close keys at once.
#include <gtest/gtest.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "support/TestRegistry.h"
#include "zetsettings/platform/posix/Win32Portable.h"
#include "zetsettings/platform/posix/registry/HandleTable.h"
#include "zetsettings/platform/tests/RegistryTestKeys.h"

namespace zet {
namespace portable {
namespace registry {
namespace {

std::shared_ptr<OpenKey> someKey(uint64_t id)
{
    return std::make_shared<OpenKey>(nullptr, id, KEY_READ);
}

TEST(HandleTable, AClosedHandleStaysInvalidWhenItsSlotIsReused)
{
    HandleTable table;
    const HKEY first = table.add(someKey(1));
    ASSERT_TRUE(table.remove(first));
    const HKEY second = table.add(someKey(2));
    EXPECT_NE(first, second);
    EXPECT_EQ(nullptr, table.find(first));
    EXPECT_FALSE(table.remove(first));
    ASSERT_NE(nullptr, table.find(second));
    EXPECT_EQ(2u, table.find(second)->id);
    EXPECT_EQ(1u, table.openCount());
}

TEST(HandleTable, ValuesNeverHandedOutAreRefused)
{
    HandleTable table;
    const HKEY open = table.add(someKey(1));
    for (HKEY bogus : {HKEY(nullptr), HKEY_LOCAL_MACHINE, HKEY_CLASSES_ROOT, reinterpret_cast<HKEY>(uintptr_t(1)),
                       reinterpret_cast<HKEY>(uintptr_t(0x12345678)), reinterpret_cast<HKEY>(~uintptr_t(0)),
                       reinterpret_cast<HKEY>(reinterpret_cast<uintptr_t>(open) + 1)})
        EXPECT_EQ(nullptr, table.find(bogus)) << bogus;
    EXPECT_NE(reinterpret_cast<uintptr_t>(open) >> (sizeof(uintptr_t) * 8 - 1), 1u) << "looks like a root";
}

class HandleThreads : public zettest::RegistryTest {
};

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

}  // namespace
}  // namespace registry
}  // namespace portable
}  // namespace zet
