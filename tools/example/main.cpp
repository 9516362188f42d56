// A round trip through the base family on the machine's store: what a program of the product
// does when it keeps a number and a text, and reads them back, also in a later run.
#include <cstdio>
#include <string>

#include <zetsettings/ZETSettings.h>

namespace {

std::string narrow(const std::wstring& text)
{
    std::string result;
    for (wchar_t character : text)
        result += character < 0x80 ? static_cast<char>(character) : '?';
    return result;
}

}  // namespace

int main()
{
    const int runsBefore = ZETSettings::intGetBaseValue(L"ExampleRuns", 0, true);
    ZETSettings::intSetBaseValue(L"ExampleRuns", runsBefore + 1);
    const std::wstring firstSeen = ZETSettings::strGetBaseValue(L"ExampleFirstRun", L"this run", true);
    ZETSettings::strSetBaseValue(L"ExampleGreeting", L"hello from zetsettings");

    const int runs = ZETSettings::intGetBaseValue(L"ExampleRuns", -1, false);
    const std::wstring greeting = ZETSettings::strGetBaseValue(L"ExampleGreeting", L"(missing)", false);
    std::printf("HKLM\\Software\\Orvane\\QXL\n");
    std::printf("  ExampleRuns      REG_DWORD  %d\n", runs);
    std::printf("  ExampleFirstRun  REG_SZ     %s\n", narrow(firstSeen).c_str());
    std::printf("  ExampleGreeting  REG_SZ     %s\n", narrow(greeting).c_str());
    return runs == runsBefore + 1 && greeting == L"hello from zetsettings" ? 0 : 1;
}
