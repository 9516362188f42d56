// The tool as an administrator uses it, through real processes: a store it can't use is never
// taken for an empty one, backups restore, secrets that don't open are never shown or carried
// over, and every command has one exit status for one outcome.
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>

#include "ToolRun.h"
#include "support/ProcessRights.h"
#include "support/TestRegistry.h"

using zettooltest::runTool;
using zettooltest::ToolResult;
using zettooltest::ToolSetting;

namespace {

const std::string kBase = "HKLM\\Software\\Orvane\\QXL";

bool contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

class ToolAdministration : public zettest::RegistryTest {
protected:
    std::string scratch(const std::string& name) { return zettooltest::scratchPath(registry, name); }

    void ok(const std::vector<std::string>& args)
    {
        const ToolResult result = runTool(args);
        ASSERT_EQ(result.status, 0) << args[0] << " " << args[1] << ": " << result.err;
    }

    ToolResult exportTo(const std::string& file, const ToolSetting& setting = ToolSetting())
    {
        return runTool({"reg", "export", "HKLM", scratch(file), "/y"}, setting);
    }
};

TEST_F(ToolAdministration, AStoreThatCantBeUsedIsNamedAndFailsEveryCommand)
{
    ok({"network", "set", "Net", "--text", "t"});
    ok({"chooser", "front", "Net"});
    std::ofstream(scratch("a-file")) << "not a store";
    const std::vector<std::vector<std::string> > commands = {
        {"network", "list"},       {"chooser", "list"},          {"fallback-db", "owners"},
        {"base", "set-int", "N", "1"}, {"chooser", "active", "on"}, {"login", "set", "--user", "u"},
    };
    struct Setting {
        const char* name;
        ToolSetting setting;
        std::string reason;
    };
    std::vector<Setting> settings = {
        {"a file", {{{"ZET_REGISTRY_DIR", scratch("a-file")}}, false}, "not a directory"},
        {"empty", {{{"ZET_REGISTRY_DIR", ""}}, false}, "ZET_REGISTRY_DIR is set but empty"},
    };
    if (zettooltest::otherUsersCanRunTheTool()) {
        settings.push_back({"no rights", {{}, true}, "may not write it"});
    } else {
        std::cout << "[  SKIPPED ] the run without rights needs root and a tool that other users can start\n";
    }
    for (const Setting& setting : settings) {
        for (const auto& command : commands) {
            const ToolResult result = runTool(command, setting.setting);
            EXPECT_EQ(result.status, 1) << setting.name << ": " << command[0] << " " << command[1];
            EXPECT_TRUE(contains(result.err, "can't use the store") && contains(result.err, setting.reason))
                << setting.name << ": " << result.err;
            EXPECT_EQ(result.out, "") << setting.name << ": " << command[0];
        }
    }
    // reg reads what the process may read; the data was never lost.
    if (zettooltest::otherUsersCanRunTheTool()) {
        EXPECT_TRUE(contains(runTool({"reg", "query", kBase + "\\NetworkSettings"}, settings.back().setting).out, "Net_"));
    }
}

TEST_F(ToolAdministration, ABackupOfEveryKindOfNameRestoresToTheSameExport)
{
    const std::string awkward[] = {"evil\nowner", "cr\r\nlf", "quote \" and \\ back\\slash", "[brackets]]",
                                   "emoji \xF0\x9F\x98\x80 \xC3\xA9", ";comment", "@", "-dash", " blank "};
    for (const std::string& name : awkward) {
        // An owner is a key: a backslash in it would make two.
        std::string owner = name;
        std::replace(owner.begin(), owner.end(), '\\', '/');
        ok({"fallback-db", "set", owner, name, "--bytes1-hex", "01"});
        ok({"network", "set", name, "--text", name, "--secret-text", "s"});
        ok({"chooser", "front", name});
        ok({"user", "set", name, "--text", name});
        ok({"base", "set-str", name, name});
    }
    ASSERT_EQ(exportTo("backup.reg").status, 0);
    const ToolSetting restored{{{"ZET_REGISTRY_DIR", scratch("restored")}}, false};
    const ToolResult imported = runTool({"reg", "import", scratch("backup.reg")}, restored);
    ASSERT_EQ(imported.status, 0) << imported.err;
    ASSERT_EQ(exportTo("again.reg", restored).status, 0);
    EXPECT_EQ(zettooltest::readFile(scratch("again.reg")), zettooltest::readFile(scratch("backup.reg")));
}

TEST_F(ToolAdministration, ImportsSayWhatTheyApplyAndDryRunWritesNothing)
{
    // REGEDIT4 in Windows-1252, as Windows writes it: "café" = "€".
    zettooltest::writeFile(scratch("ansi.reg"), "REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\Orvane\\QXL]\r\n"
                                                "\"caf\xE9\"=\"\x80\"\r\n\"gone\"=-\r\n\r\n[-HKEY_LOCAL_MACHINE\\Software\\x]\r\n");
    const std::string counts = "1 key(s) with 1 value(s) set, 1 value(s) deleted, 1 key(s) deleted";
    ToolResult result = runTool({"reg", "import", scratch("ansi.reg"), "--dry-run"});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_TRUE(contains(result.out, counts) && contains(result.out, "Nothing was written")) << result.out;
    EXPECT_EQ(runTool({"reg", "query", kBase}).status, 1);

    result = runTool({"reg", "import", scratch("ansi.reg")});
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_TRUE(contains(result.out, "Imported " + counts)) << result.out;
    EXPECT_EQ(runTool({"base", "get-str", "caf\xC3\xA9", "--default", "missing"}).out, "\xE2\x82\xAC\n");
}

TEST_F(ToolAdministration, ExportToStandardOutputCarriesTheFileAlone)
{
    ok({"base", "set-int", "N", "1"});
    const ToolResult result = runTool({"reg", "export", kBase, "/dev/stdout"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out.substr(0, 2), "\xFF\xFE");
    EXPECT_FALSE(contains(result.out, "completed")) << result.out;
    EXPECT_TRUE(contains(result.err, "The operation completed successfully."));
}

TEST_F(ToolAdministration, JsonHasOneFormForEveryCommand)
{
    ok({"reg", "add", kBase, "/v", "Q", "/t", "REG_QWORD", "/d", "0xFFFFFFFFFFFFFFFF", "/f"});
    ok({"reg", "add", kBase, "/v", "D", "/t", "REG_DWORD", "/d", "0xFFFFFFFF", "/f"});
    ok({"network", "set", "Net", "--secret-text", "s"});
    const std::string query = runTool({"--json", "reg", "query", kBase}).out;
    EXPECT_TRUE(contains(query, "{\"name\":\"D\",\"type\":\"REG_DWORD\",\"data\":\"ffffffff\",\"value\":4294967295}"))
        << query;
    EXPECT_TRUE(contains(query, "\"data\":\"ffffffffffffffff\",\"value\":18446744073709551615}")) << query;
    EXPECT_TRUE(contains(runTool({"--json", "network", "show", "Net"}).out, "\"protectedBlob\":null"));
    EXPECT_TRUE(contains(runTool({"--json", "network", "show", "Net", "--secret"}).out, "\"protectedBlob\":\"73\""));
}

TEST_F(ToolAdministration, EachOutcomeHasOneExitStatus)
{
    const std::string longName(17000, 'n');
    const struct {
        std::vector<std::string> args;
        int status;
        std::string message;
    } cases[] = {
        // Removing what is not there fails, whatever it is.
        {{"user", "remove", "nobody"}, 1, "no settings for the user"},
        {{"login", "remove"}, 1, "no login is stored"},
        {{"chooser", "delete", "Nowhere"}, 1, "no entry for the network"},
        {{"network", "delete", "Nowhere"}, 1, "no profile"},
        {{"fallback-db", "remove", "o", "n"}, 1, "no record"},
        {{"fallback-keys", "remove", "k"}, 1, "no fallback key"},
        // Arguments the help does not offer are refused, and those it offers are taken.
        {{"chooser", "front", "Y", "--mac", "0011", "--match-kind", "3"}, 2, "6 bytes"},
        {{"chooser", "active", "ON"}, 0, ""},
        {{"network", "show", longName}, 1, "bytes left out"},
        {{"reg", "import", "/tmp"}, 1, "is a directory"},
        {{"--version"}, 0, ""},
    };
    for (const auto& testCase : cases) {
        const ToolResult result = runTool(testCase.args);
        const std::string what = testCase.args[0] + " " + testCase.args.back().substr(0, 20);
        EXPECT_EQ(result.status, testCase.status) << what << ": " << result.err;
        EXPECT_TRUE(contains(result.err, testCase.message)) << what << ": " << result.err;
        EXPECT_LT(result.err.size(), 1000u) << what;
    }
    for (const char* family : {"configurator", "raseap"}) {
        const std::string help = runTool({family, "--help"}).out;
        for (const std::string getter : {"get-int", "get-str"}) {
            const std::size_t line = help.find(getter + " NAME");
            const bool offered = line != std::string::npos &&
                                 contains(help.substr(line, help.find('\n', line) - line), "--default");
            const ToolResult result = runTool({family, getter, "x", "--default", "1"});
            EXPECT_EQ(offered, result.status == 0) << family << " " << getter << ": " << result.err;
        }
    }
}

TEST_F(ToolAdministration, SecretsThatDontOpenAreNeverShownNorCarriedOver)
{
    ok({"network", "set", "Net", "--secret-text", "s"});
    ok({"login", "set", "--user", "u", "--password", "p", "--enabled", "--keep-password"});
    ok({"user", "set", "alice", "--text", "t"});
    ok({"fallback-keys", "set", "k", "--text1", "t"});
    ToolResult result = exportTo("secrets.reg");
    EXPECT_TRUE(contains(result.err, "4 encrypted value(s)") && contains(result.err, "zetsettings store backup"))
        << result.err;

    // Another machine key: the values stay, and open no more.
    const std::string keyFile = registry.storeDirectory() + ".key";
    zettooltest::writeFile(keyFile, std::string(32, '\x5A'));
    const std::vector<std::vector<std::string> > refused = {
        {"network", "show", "Net", "--secret"}, {"network", "set", "Net", "--text", "x"},
        {"login", "show", "--secret"},          {"user", "show", "alice"},
        {"user", "set", "alice", "--text", "x"}, {"fallback-keys", "show"},
        {"fallback-keys", "set", "k2"},         {"fallback-keys", "remove", "k"},
    };
    for (const auto& command : refused) {
        result = runTool(command);
        EXPECT_EQ(result.status, 1) << command[0] << " " << command[1];
        EXPECT_TRUE(contains(result.err, "with this machine's key")) << command[0] << ": " << result.err;
    }
    // A new secret replaces one that does not open.
    ok({"network", "set", "Net", "--secret-text", "new"});
    result = runTool({"reg", "import", scratch("secrets.reg")});
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(contains(result.err, "4 of 4 encrypted value(s) do not open with this machine's key")) << result.err;
}

}  // namespace
