// zetsettings reg through real processes: reg.exe's output and exit codes, .reg round trips,
// a file exported by reg.exe under Wine, and imports that apply whole or not at all.
#include <gtest/gtest.h>

#include "ToolRun.h"
#include "regfile/TextCodec.h"
#include "support/TestRegistry.h"
#include "zetsettings/ZETSettings.h"

using zettooltest::runTool;
using zettooltest::ToolResult;

namespace {

const std::string kBase = "HKLM\\Software\\Orvane\\QXL";

class RegCommand : public zettest::RegistryTest {
protected:
    void add(const std::string& key, const std::string& name, const std::string& type, const std::string& data)
    {
        const ToolResult result = runTool({"reg", "add", key, "/v", name, "/t", type, "/d", data, "/f"});
        ASSERT_EQ(result.status, 0) << result.err;
    }

    std::string scratch(const std::string& name) { return zettooltest::scratchPath(registry, name); }

    std::string exportBase(const std::string& file)
    {
        const ToolResult result = runTool({"reg", "export", kBase, scratch(file), "/y"});
        EXPECT_EQ(result.status, 0) << result.err;
        return zettooltest::readFile(scratch(file));
    }
};

TEST_F(RegCommand, QueryPrintsAsRegExe)
{
    add(kBase + "\\Sub", "Text", "REG_SZ", "Hello, World");
    add(kBase + "\\Sub", "Num", "REG_DWORD", "0x123");
    add(kBase + "\\Sub", "Multi", "REG_MULTI_SZ", "a\\0b");
    add(kBase + "\\Sub", "Bin", "REG_BINARY", "00ff10");
    ASSERT_EQ(runTool({"reg", "add", kBase + "\\Sub\\Deeper"}).status, 0);

    ToolResult result = runTool({"reg", "query", kBase + "\\Sub"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out,
              "\nHKEY_LOCAL_MACHINE\\Software\\Orvane\\QXL\\Sub\n"
              "    Bin    REG_BINARY    00FF10\n"
              "    Multi    REG_MULTI_SZ    a\\0b\n"
              "    Num    REG_DWORD    0x123\n"
              "    Text    REG_SZ    Hello, World\n\n"
              "HKEY_LOCAL_MACHINE\\Software\\Orvane\\QXL\\Sub\\Deeper\n");

    // /s lists every key below with its values; a key with no values only below the first.
    result = runTool({"reg", "query", kBase, "/s"});
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.out.find("\nHKEY_LOCAL_MACHINE\\Software\\Orvane\\QXL\\Sub\\Deeper\n\n"), std::string::npos)
        << result.out;
    EXPECT_EQ(result.out.find("\nHKEY_LOCAL_MACHINE\\Software\\Orvane\\QXL\n"), std::string::npos) << result.out;

    result = runTool({"reg", "query", kBase + "\\Sub", "/v", "num"});
    // Found in any case, and shown by the name asked for.
    EXPECT_EQ(result.out, "\nHKEY_LOCAL_MACHINE\\Software\\Orvane\\QXL\\Sub\n    num    REG_DWORD    0x123\n\n");
    result = runTool({"reg", "query", kBase, "/v", "Text", "/s"});
    EXPECT_EQ(result.status, 0);
    EXPECT_NE(result.out.find("End of search: 1 match(es) found."), std::string::npos);
    result = runTool({"reg", "query", kBase + "\\Sub", "/ve"});
    EXPECT_NE(result.out.find("    (Default)    REG_SZ    (value not set)\n"), std::string::npos);
}

TEST_F(RegCommand, FailuresGiveRegExeMessagesAndStatusOne)
{
    const struct {
        std::vector<std::string> args;
        std::string message;
    } cases[] = {
        {{"reg", "query", kBase + "\\Missing"}, "ERROR: The system was unable to find the specified registry key or value."},
        {{"reg", "query", "HKEY_NOWHERE\\x"}, "ERROR: Invalid key name."},
        {{"reg", "query"}, "ERROR: Invalid syntax."},
        {{"reg", "query", kBase, "/v", "a", "/ve"}, "ERROR: Invalid syntax."},
        {{"reg", "query", kBase, "/s", "/s"}, "ERROR: Invalid syntax."},
        {{"reg", "frobnicate"}, "ERROR: Invalid syntax."},
        {{"reg", "add", kBase, "/v", "n", "/t", "REG_DWORD", "/d", "4294967296", "/f"}, "numeric value"},
        {{"reg", "add", kBase, "/v", "n", "/t", "REG_DWORD", "/d", "-1", "/f"}, "numeric value"},
        {{"reg", "add", kBase, "/v", "n", "/t", "REG_BINARY", "/d", "abc", "/f"}, "even number"},
        {{"reg", "add", kBase, "/v", "n", "/t", "REG_FANCY", "/f"}, "Unknown data type"},
        {{"reg", "delete", kBase + "\\Missing", "/f"}, "unable to find"},
        {{"reg", "delete", "HKLM", "/f"}, "ERROR: Invalid key name."},
        {{"reg", "export", kBase}, "ERROR: Invalid syntax."},
        {{"reg", "import", "/nonexistent/file.reg"}, "ERROR: Error opening the file"},
    };
    for (const auto& testCase : cases) {
        const ToolResult result = runTool(testCase.args);
        EXPECT_EQ(result.status, 1) << testCase.args.back();
        EXPECT_NE(result.err.find(testCase.message), std::string::npos) << testCase.args.back() << ": " << result.err;
        EXPECT_EQ(result.out, "") << testCase.args.back();
    }
}

TEST_F(RegCommand, AddAsksBeforeOverwritingAndDeleteRemovesWhatItNames)
{
    add(kBase, "Kept", "REG_SZ", "first");
    ToolResult result = runTool({"reg", "add", kBase, "/v", "Kept", "/d", "second"}, "n\n");
    EXPECT_NE(result.out.find("Value Kept exists, overwrite"), std::string::npos);
    EXPECT_NE(runTool({"reg", "query", kBase, "/v", "Kept"}).out.find("first"), std::string::npos);
    result = runTool({"reg", "add", kBase, "/v", "Kept", "/d", "second"}, "yes\n");
    EXPECT_NE(runTool({"reg", "query", kBase, "/v", "Kept"}).out.find("second"), std::string::npos);

    add(kBase + "\\Tree\\Leaf", "x", "REG_DWORD", "1");
    EXPECT_EQ(runTool({"reg", "delete", kBase, "/v", "Kept", "/f"}).status, 0);
    EXPECT_EQ(runTool({"reg", "query", kBase, "/v", "Kept"}).status, 1);
    EXPECT_EQ(runTool({"reg", "delete", kBase + "\\Tree", "/f"}).status, 0);
    EXPECT_EQ(runTool({"reg", "query", kBase + "\\Tree\\Leaf"}).status, 1);
    EXPECT_EQ(runTool({"reg", "query", kBase + "\\Tree"}).status, 1);
}

TEST_F(RegCommand, ExportImportIntoAnEmptyStoreAndExportAgainGivesTheSameBytes)
{
    add(kBase + "\\A", "Text", "REG_SZ", "quote \" backslash \\ \xC3\xA9");
    add(kBase + "\\A", "Expand", "REG_EXPAND_SZ", "%PATH%\\x");
    add(kBase + "\\A", "Multi", "REG_MULTI_SZ", "one\\0two\\0three");
    add(kBase + "\\A\\B", "Long", "REG_BINARY", std::string(200, 'a'));
    add(kBase + "\\A\\B", "Q", "REG_QWORD", "0x1122334455667788");
    ASSERT_EQ(runTool({"reg", "add", kBase + "\\Empty"}).status, 0);
    const std::string first = exportBase("first.reg");
    ASSERT_EQ(first.substr(0, 2), "\xFF\xFE");
    zettooltest::writeFile(scratch("kept.reg"), first);

    zettest::TestRegistry emptyStore;  // the process's registry is now a new, empty one
    EXPECT_EQ(runTool({"reg", "query", kBase}).status, 1);
    const ToolResult imported = runTool({"reg", "import", scratch("kept.reg")});
    ASSERT_EQ(imported.status, 0) << imported.err;
    EXPECT_EQ(imported.out, "Imported 4 key(s) with 5 value(s) set, 0 value(s) deleted, 0 key(s) deleted.\n"
                            "The operation completed successfully.\n");
    EXPECT_EQ(exportBase("second.reg"), first);
}

TEST_F(RegCommand, AFileOfRegExeUnderWineImportsAndTheLibraryReadsIt)
{
    const ToolResult result = runTool({"reg", "import", std::string(ZET_TOOL_FIXTURES) + "/wine-export.reg"});
    ASSERT_EQ(result.status, 0) << result.err;

    const boost::shared_ptr<ZETPreferredNetworks> list = ZETSettings::getChooserPreferredNets();
    ASSERT_EQ(list->entries.size(), 2u);
    EXPECT_EQ(list->position, 1);
    EXPECT_EQ(list->entries[0].netName, L"Home");
    EXPECT_EQ(list->entries[1].netName, L"Office");
    EXPECT_EQ(list->entries[1].macAddress.bytes(), std::string("\x00\x11\x22\x33\x44\x55", 6));
    EXPECT_TRUE(ZETSettings::isChooserActive());
    EXPECT_FALSE(ZETSettings::isAlertNotificationEnabled(7));
    EXPECT_EQ(ZETSettings::strGetNetlibValue(L"Greeting", L"unset"), zetreg::utf8ToWide("Gr\xC3\xBC\xC3\x9F" "e \"aus\" C:\\Wine"));
    EXPECT_EQ(ZETSettings::intGetNetlibValue(L"Retries", 0), 42);
    const boost::shared_ptr<ZETFallbackSettings> record = ZETSettings::getFallbackSettings(L"Corp", L"Lab_Net1");
    ASSERT_TRUE(record);
    EXPECT_EQ(std::string(record->fallbackBytes1), "ab");
    EXPECT_EQ(runTool({"reg", "query", kBase + "\\NetlibSettings", "/v", "Paths"}).out.find("one\\0two") !=
                  std::string::npos,
              true);
}

TEST_F(RegCommand, ABadFileImportsNothing)
{
    add(kBase, "Before", "REG_SZ", "untouched");
    const std::string before = exportBase("before.reg");
    const std::string header = "Windows Registry Editor Version 5.00\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\Orvane\\QXL]\r\n"
                               "\"Before\"=\"changed\"\r\n\"New\"=dword:1\r\n";
    const struct {
        std::string name;
        std::string text;
        std::string message;
    } files[] = {
        {"range.reg", header + "\"Big\"=dword:123456789\r\n", "line 6"},
        {"cut.reg", header + "\"Cut\"=hex:01,02,\\", "line 6"},
        {"root.reg", header + "[HKEY_CURRENT_CONFIG\\x]\r\n", "outside the registry's roots"},
        // Passes the reader; the registry refuses the name's length while applying.
        {"refused.reg", header + "\"" + std::string(17000, 'n') + "\"=\"x\"\r\n", "Error accessing the registry"},
        // Data that the registry would keep only in part.
        {"odd.reg", header + "\"s\"=hex(1):61,00,62\r\n", "would lose the last byte"},
        {"odd7.reg", header + "\"m\"=hex(7):61,00,00,00,00\r\n", "would lose the last byte"},
        {"cut-inside.reg", header + "\"c\"=hex:01,02,\\\r\n  03,0", "ends inside continued hex data"},
    };
    for (const auto& file : files) {
        zettooltest::writeFile(scratch(file.name), file.text);  // UTF-8, as other tools write them
        const ToolResult result = runTool({"reg", "import", scratch(file.name)});
        EXPECT_EQ(result.status, 1) << file.name;
        EXPECT_NE(result.err.find(file.message), std::string::npos) << file.name << ": " << result.err;
        EXPECT_EQ(exportBase("after.reg"), before) << file.name;
    }
    // Mis-encoded: UTF-16 with an odd byte count.
    zettooltest::writeFile(scratch("odd-utf16.reg"), before + "x");
    EXPECT_EQ(runTool({"reg", "import", scratch("odd-utf16.reg")}).status, 1);
}

}  // namespace
