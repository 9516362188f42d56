#include "support/TestRegistry.h"

#include <stdlib.h>
#include <sys/stat.h>

#include <filesystem>
#include <stdexcept>

namespace zettest {

TestRegistry::TestRegistry()
{
    char pattern[] = "/tmp/zetsettings-test-XXXXXX";
    if (!mkdtemp(pattern))
        throw std::runtime_error("mkdtemp failed");
    m_root = pattern;
    // Readable by all, so that a child that drops its privileges can still read the store.
    chmod(m_root.c_str(), 0755);
    // The machine key lives beside the store, never in it: keep both inside the test's folder.
    m_storeDirectory = m_root + "/store";
    if (const char* previous = getenv("ZET_REGISTRY_DIR"))
        m_previous = previous;
    setenv("ZET_REGISTRY_DIR", m_storeDirectory.c_str(), 1);
}

TestRegistry::~TestRegistry()
{
    if (m_previous)
        setenv("ZET_REGISTRY_DIR", m_previous->c_str(), 1);
    else
        unsetenv("ZET_REGISTRY_DIR");
    std::error_code ignored;
    std::filesystem::remove_all(m_root, ignored);
}

bool TestRegistry::isPortable()
{
    return true;
}

void TestRegistry::adoptInChild()
{
    // ZET_REGISTRY_DIR is inherited: nothing to do.
}

}  // namespace zettest
