// The tool as an administrator uses it, through real processes: a store it can't use is never
// taken for an empty one, imports say what they apply, and secrets that don't open are never
// shown or carried over.
#include <gtest/gtest.h>

#include "ToolRun.h"

using zettooltest::contains;
using zettooltest::runTool;
using zettooltest::ToolResult;
using zettooltest::ToolSetting;

namespace {

const std::string kBase = "HKLM\\Software\\Orvane\\QXL";

class ToolAdministration : public zettooltest::ToolTest {};

TEST_F(ToolAdministration, AStoreThatCantBeUsedIsNamedAndFailsEveryCommand)
{
    ok({"network", "set", "Net", "--text", "t"});
    ok({"chooser", "front", "Net"});
    zettooltest::writeFile(scratch("a-file"), "not a store");
    const std::vector<std::vector<std::string> > commands = {
        {"network", "list"},       {"chooser", "list"},          {"fallback-db", "owners"},
        {"base", "set-int", "N", "1"}, {"chooser", "active", "on"}, {"login", "set", "--user", "u"},
    };
    std::vector<std::pair<ToolSetting, std::string> > settings = {
        {{{{"ZET_REGISTRY_DIR", scratch("a-file")}}, false}, "not a directory"},
        {{{{"ZET_REGISTRY_DIR", ""}}, false}, "ZET_REGISTRY_DIR is set but empty"},
    };
    if (zettooltest::otherUsersCanRunTheTool()) {
        settings.push_back({{{}, true}, "may not write it"});
    } else {
        std::cout << "[  SKIPPED ] the run without rights needs root and a tool that other users can start\n";
    }
    for (const auto& setting : settings) {
        for (const auto& command : commands) {
            const ToolResult result = runTool(command, setting.first);
            EXPECT_EQ(result.status, 1) << setting.second << ": " << command[0] << " " << command[1];
            EXPECT_TRUE(contains(result.err, "can't use the store") && contains(result.err, setting.second)) << result.err;
            EXPECT_EQ(result.out, "") << setting.second << ": " << command[0];
        }
    }
    // reg reads what the process may read; the data was never lost.
    if (zettooltest::otherUsersCanRunTheTool()) {
        EXPECT_TRUE(contains(runTool({"reg", "query", kBase + "\\NetworkSettings"}, settings.back().first).out, "Net_"));
    }
}

TEST_F(ToolAdministration, ImportsSayWhatTheyApplyAndDryRunWritesNothing)
{
    // REGEDIT4 in Windows-1252, as Windows writes it: "café" = "€".
    zettooltest::writeFile(scratch("ansi.reg"), "REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\Orvane\\QXL]\r\n"
                                                "\"caf\xE9\"=\"\x80\"\r\n\"gone\"=-\r\n\r\n[-HKEY_LOCAL_MACHINE\\Software\\x]\r\n"
                                                "[HKEY_LOCAL_MACHINE\\Software\\Orvane\\QXL\\Empty]\r\n");
    const std::string counts = "2 key(s) with 1 value(s) set, 1 value(s) deleted, 1 key(s) deleted";
    zettooltest::expectSteps({
        {{"reg", "import", scratch("ansi.reg"), "--dry-run"}, "..." + counts + ". Nothing was written"},
        {{"reg", "query", kBase}, "unable to find", 1},
        {{"reg", "import", scratch("ansi.reg")}, "Imported " + counts + ".\nThe operation completed successfully.\n"},
        {{"base", "get-str", "caf\xC3\xA9", "--default", "missing"}, "\xE2\x82\xAC\n"},
    });
    // Exported to standard output, the file comes alone; the outcome goes to standard error.
    const ToolResult result = runTool({"reg", "export", kBase, "/dev/stdout"});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out.substr(0, 2), "\xFF\xFE");
    EXPECT_FALSE(contains(result.out, "completed")) << result.out;
    EXPECT_TRUE(contains(result.err, "The operation completed successfully."));
}

TEST_F(ToolAdministration, SecretsThatDontOpenAreNeverShownNorCarriedOver)
{
    ok({"network", "set", "Net", "--secret-text", "s"});
    ok({"login", "set", "--user", "u", "--password", "p", "--enabled", "--keep-password"});
    ok({"user", "set", "alice", "--text", "t"});
    ok({"fallback-keys", "set", "k", "--text1", "t"});
    ToolResult result = runTool({"reg", "export", "HKLM", scratch("secrets.reg"), "/y"});
    EXPECT_TRUE(contains(result.err, "4 encrypted value(s)") && contains(result.err, "zetsettings store backup"))
        << result.err;

    // Another machine key: the values stay, and open no more.
    zettooltest::writeFile(registry.storeDirectory() + ".key", std::string(32, '\x5A'));
    const std::string refused = "with this machine's key";
    zettooltest::expectSteps({
        {{"network", "show", "Net", "--secret"}, refused, 1},   {{"network", "set", "Net", "--text", "x"}, refused, 1},
        {{"login", "show", "--secret"}, refused, 1},            {{"user", "show", "alice"}, refused, 1},
        {{"user", "set", "alice", "--text", "x"}, refused, 1},  {{"fallback-keys", "show"}, refused, 1},
        {{"fallback-keys", "set", "k2"}, refused, 1},           {{"fallback-keys", "remove", "k"}, refused, 1},
        // A new secret replaces one that does not open.
        {{"network", "set", "Net", "--secret-text", "new"}, "..."},
    });
    result = runTool({"reg", "import", scratch("secrets.reg")});
    EXPECT_EQ(result.status, 0);
    EXPECT_TRUE(contains(result.err, "4 of 4 encrypted value(s) do not open with this machine's key")) << result.err;
}

}  // namespace
