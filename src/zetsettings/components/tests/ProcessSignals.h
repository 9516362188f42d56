// Plain files through which a test and its child processes tell each other where they are,
// the same way natively and under Wine; and names no other test run shares (named objects are
// machine-wide on Windows). Brings the child processes along.
#ifndef ZETSETTINGS_COMPONENTS_TESTS_PROCESSSIGNALS_H
#define ZETSETTINGS_COMPONENTS_TESTS_PROCESSSIGNALS_H

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <random>
#include <string>
#include <thread>

#include "support/ChildProcess.h"
#include "support/ChildScenario.h"

namespace zettest {

inline std::string uniqueToken()
{
    std::random_device random;
    char token[32];
    std::snprintf(token, sizeof(token), "%08x%08x", random(), random());
    return token;
}

inline std::string narrow(const std::wstring& text)
{
    return std::string(text.begin(), text.end());
}

inline std::wstring widen(const std::string& text)
{
    return std::wstring(text.begin(), text.end());
}

inline std::wstring uniqueMutexName(const std::string& purpose)
{
    return widen("zettest-" + purpose + "-" + uniqueToken());
}

// Polls until the condition holds; false if it still doesn't after the limit.
inline bool eventually(const std::function<bool()>& condition,
                       std::chrono::milliseconds limit = std::chrono::seconds(20))
{
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() >= deadline)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    return true;
}

// A directory of its own for one test, removed at the end.
class SignalDirectory {
public:
    SignalDirectory() : m_path(std::filesystem::temp_directory_path() / ("zettest-signals-" + uniqueToken()))
    {
        std::filesystem::create_directories(m_path);
    }
    // A child's view of the directory that its parent made.
    explicit SignalDirectory(const std::string& path) : m_path(path), m_owned(false) {}
    ~SignalDirectory()
    {
        if (m_owned) {
            std::error_code ignored;
            std::filesystem::remove_all(m_path, ignored);
        }
    }

    SignalDirectory(const SignalDirectory&) = delete;
    SignalDirectory& operator=(const SignalDirectory&) = delete;

    std::string path() const { return m_path.string(); }
    std::string file(const std::string& name) const { return (m_path / name).string(); }

    void raise(const std::string& name) const { std::ofstream(file(name)) << "1"; }
    bool awaitRaised(const std::string& name) const
    {
        return eventually([&] { return std::filesystem::exists(m_path / name); });
    }

    void write(const std::string& name, const std::string& bytes) const
    {
        // Under another name first, so that a reader never sees half of it.
        const std::string partial = file(name + ".partial");
        std::ofstream(partial, std::ios::binary) << bytes;
        std::filesystem::rename(partial, file(name));
    }
    std::string read(const std::string& name) const
    {
        std::ifstream in(file(name), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    }

private:
    std::filesystem::path m_path;
    bool m_owned = true;
};

}  // namespace zettest

#endif
