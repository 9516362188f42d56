// The process's table of open keys under many threads that open, use and close keys at once:
// a closed handle stays closed even when its slot is taken again by another thread's key.
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

}  // namespace
}  // namespace registry
}  // namespace portable
}  // namespace zet
