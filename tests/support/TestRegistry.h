// A machine registry of the test's own, empty at the start and gone at the end.
//
// Natively it is a fresh portable store in a temporary directory (ZET_REGISTRY_DIR); under
// Windows the process's HKEY_LOCAL_MACHINE and HKEY_CURRENT_USER are redirected to fresh keys.
// Child processes started while it lives work on the same registry.
#ifndef ZETSETTINGS_TESTS_SUPPORT_TESTREGISTRY_H
#define ZETSETTINGS_TESTS_SUPPORT_TESTREGISTRY_H

#include <gtest/gtest.h>

#include <optional>
#include <string>

namespace zettest {

class TestRegistry {
public:
    TestRegistry();
    ~TestRegistry();

    TestRegistry(const TestRegistry&) = delete;
    TestRegistry& operator=(const TestRegistry&) = delete;

    // The portable store's directory; empty where the system's registry is used.
    const std::string& storeDirectory() const { return m_storeDirectory; }
    // Whether the registry is the portable one (as opposed to Windows' or Wine's own).
    static bool isPortable();

    // In a child process: work on the registry of the test that started it.
    static void adoptInChild();

private:
    std::string m_root;
    std::string m_storeDirectory;
    std::optional<std::string> m_previous;  // the store directory the process had before
};

// Base of every test that touches the registry.
class RegistryTest : public ::testing::Test {
protected:
    TestRegistry registry;
};

}  // namespace zettest

#endif
