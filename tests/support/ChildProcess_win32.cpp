#include "support/ChildProcess.h"

#include <windows.h>

#include <stdexcept>
#include <string>

namespace zettest {
namespace {

// A word of the command line, widened and quoted.
std::wstring quoted(const std::string& word)
{
    return L"\"" + std::wstring(word.begin(), word.end()) + L"\"";
}

}  // namespace

struct ChildProcess::Impl {
    PROCESS_INFORMATION info = {};
    bool reaped = false, killed = false;
    DWORD exitCode = 0;
};

ChildProcess::ChildProcess(const std::string& scenario, const std::vector<std::string>& args)
    : m_impl(new Impl)
{
    wchar_t self[MAX_PATH];
    GetModuleFileNameW(nullptr, self, MAX_PATH);
    std::wstring commandLine = L"\"" + std::wstring(self) + L"\" " + quoted("--zet-child=" + scenario);
    for (const auto& arg : args)
        commandLine += L" " + quoted(arg);

    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    // Wine on a busy machine now and then refuses a start that succeeds a moment later; the
    // process under test is the child, not its start.
    DWORD error = ERROR_SUCCESS;
    for (int attempt = 0; attempt < 5; ++attempt) {
        if (CreateProcessW(self, &commandLine[0], nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup,
                           &m_impl->info))
            return;
        error = GetLastError();
        Sleep(200 << attempt);
    }
    throw std::runtime_error("CreateProcess failed, error " + std::to_string(error));
}

ChildProcess::~ChildProcess()
{
    killHard();
    wait();
}

int ChildProcess::wait()
{
    if (!m_impl->reaped) {
        WaitForSingleObject(m_impl->info.hProcess, INFINITE);
        GetExitCodeProcess(m_impl->info.hProcess, &m_impl->exitCode);
        CloseHandle(m_impl->info.hProcess);
        CloseHandle(m_impl->info.hThread);
        m_impl->reaped = true;
    }
    return m_impl->killed ? -1 : static_cast<int>(m_impl->exitCode);
}

void ChildProcess::killHard()
{
    if (!m_impl->reaped && TerminateProcess(m_impl->info.hProcess, 137))
        m_impl->killed = true;
}

}  // namespace zettest
