// The library's families through real processes of the tool: what each prints, what it stores,
// its exit status, and the arguments it refuses; a store it can't use is never taken for an
// empty one, and secrets that don't open are never shown or carried over.
#include <gtest/gtest.h>

#include "ToolRun.h"

using namespace zettooltest;

namespace {

const std::string kNdis = "HKLM\\SYSTEM\\CurrentControlSet\\Control\\Network";

class StoreCommands : public ToolTest {};

TEST_F(StoreCommands, ValueFamiliesParametersAndTheNdisCheck)
{
    expectSteps({
        // netlib stores the default on a miss, and a later default changes nothing.
        {{"netlib", "get-str", "Greeting", "--default", "hello"}, "hello\n"},
        {{"netlib", "get-str", "Greeting", "--default", "other"}, "hello\n"},
        // configurator has no default: -1 and nothing stored.
        {{"configurator", "get-int", "Missing"}, "-1\n"},
        {{"reg", "query", kBase + "\\ConfiguratorSettings", "/v", "Missing"}, kMissing, 1},
        // base and zetguard store the default only when asked to.
        {{"base", "get-int", "Runs", "--default", "5"}, "5\n"},
        {{"reg", "query", kBase, "/v", "Runs"}, kMissing, 1},
        {{"base", "set-int", "Runs", "9"}, "..."},
        {{"base", "get-int", "Runs", "--default", "5"}, "9\n"},
        {{"zetguard", "get-int", "Runs", "--default", "7", "--write-default"}, "7\n"},
        {{"reg", "query", kBase + "\\Settings", "/v", "Runs"}, "...Runs"},
        // 32 bits: 0xFFFFFFFF is stored and read as -1.
        {{"raseap", "set-int", "Mask", "0xFFFFFFFF"}, "..."},
        {{"raseap", "get-int", "Mask", "--default", "0"}, "-1\n"},
        {{"--json", "raseap", "get-str", "Nothing"}, "{\"family\":\"raseap\",\"name\":\"Nothing\",\"value\":\"\"}\n"},
        {{"reg", "query", kBase + "\\RasEapSettings", "/v", "Nothing"}, kMissing, 1},
        // rasman names what is missing: first the key, then the value.
        {{"rasman", "get", "Anything"},
         "the key HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Services\\RasMan\\PPP\\EAP\\26 does not exist", 1},
        {{"reg", "add", "HKLM\\SYSTEM\\CurrentControlSet\\Services\\RasMan\\PPP\\EAP\\26"}, "..."},
        {{"rasman", "get", "Anything"}, "no value \"Anything\" in", 1},
        // params gives the table, its defaults filled in.
        {{"--json", "params"}, "...{\"key\":\"ZET_MAIN_WINDOW_TIMEOUT\",\"value\":30}"},
        {{"--json", "params"}, "...\"rootCertificates\":[\"Class 3 Public Primary Certification Authority\"]"},
        // ndis puts failover last and says so; then it finds the list in order.
        {{"reg", "add", kNdis, "/v", "FilterClasses", "/t", "REG_MULTI_SZ", "/d", "failover\\0alpha\\0Beta", "/f"},
         "..."},
        {{"ndis", "check"}, "...rewritten"},
        {{"reg", "query", kNdis, "/v", "FilterClasses"}, "...alpha\\0Beta\\0failover"},
        {{"--json", "ndis", "check"}, "{\"foundInOrder\":true}\n"},
    });
}

TEST_F(StoreCommands, EveryRecordKeepsItsFieldsAndItsSecretsOutOfSightAndTheChoosersWalkLastsBetweenRuns)
{
    ok({"network", "set", "MyWLAN", "--text", "office", "--flag2", "255", "--secret-text", "p4ssw0rd", "--plain-hex",
        "01:02"});
    ok({"network", "set", "mywlan", "--text", "other case"});
    const std::string list = ok({"network", "list"});
    EXPECT_TRUE(list == "MyWLAN\nmywlan\n" || list == "mywlan\nMyWLAN\n") << list;
    for (const char* name : {"R", "Q", "P"})
        ok({"chooser", "front", name});
    expectSteps({
        {{"network", "show", "MyWLAN"}, "name           MyWLAN\nprofileText    office\nprofileFlag1   0\n"
                                        "profileFlag2   255\nprofileFlag3   0\nprofileFlag4   0\n"
                                        "protectedBlob  (hidden; --secret shows it)\nplainBlob      01 02\n"},
        {{"--json", "network", "show", "MyWLAN"}, "...\"protectedBlob\":null"},
        {{"--json", "network", "show", "MyWLAN", "--secret"}, "...\"protectedBlob\":\"7034737377307264\""},
        // In the registry the secret is ciphertext: neither its bytes nor their hex appear.
        {{"reg", "query", kBase + "\\NetworkSettings", "/v", "MyWLAN_BC"}, "!7034737377307264"},
        // set keeps the fields not given.
        {{"network", "set", "MyWLAN", "--flag1", "3"}, "..."},
        {{"--json", "network", "show", "MyWLAN"},
         "...\"profileText\":\"office\",\"profileFlag1\":3,\"profileFlag2\":255"},
        {{"network", "delete", "MyWLAN"}, "...office"},
        {{"network", "show", "MyWLAN"}, "no profile", 1},
        {{"fallback-keys", "set", "Key1", "--text1", "a", "--bytes-hex", "ff"}, "..."},
        {{"fallback-keys", "set", "key1", "--text2", "b"}, "..."},
        {{"fallback-keys", "set", "Key1", "--text2", "c"}, "..."},
        {{"--json", "fallback-keys", "show"},
         "[{\"key\":\"Key1\",\"keyText1\":\"a\",\"keyText2\":\"c\",\"keyBytes\":\"ff\"},"
         "{\"key\":\"key1\",\"keyText1\":\"\",\"keyText2\":\"b\",\"keyBytes\":\"\"}]\n"},
        {{"fallback-keys", "remove", "key1"}, "..."},
        {{"user", "set", "Alice", "--text", "prefs"}, "..."},
        {{"user", "show", "ALICE"}, "...prefs"},
        {{"user", "remove", "alice"}, "..."},
        {{"user", "show", "Alice"}, "", 1},
        // The switches form a chain: without --enabled neither the password nor the flags stay.
        {{"login", "set", "--user", "bob", "--password", "pw", "--keep-password"}, "..."},
        {{"--json", "login", "show", "--secret"}, "{\"userName\":\"bob\",\"password\":\"\",\"loginEnabled\":false,"
                                                  "\"keepPassword\":false,\"dependentFlag\":false}\n"},
        {{"login", "set", "--user", "bob", "--password", "pw", "--enabled", "--keep-password"}, "..."},
        {{"login", "show"}, "!pw"},
        {{"login", "show", "--secret"}, "...password       pw"},
        {{"login", "remove"}, "..."},
        {{"--json", "login", "show"}, "...\"userName\":\"\""},
        {{"fallback-db", "set", "Corp", "Lab_Net1", "--bytes1-text", "ab"}, "..."},
        {{"fallback-db", "owners"}, "corp\n"},
        {{"fallback-db", "networks", "CORP"}, "Lab_Net1\n"},
        {{"fallback-db", "show", "corp", "Lab_Net1"}, "...fallbackBytes1  61 62"},
        {{"fallback-db", "show", "corp", "lab_net1"}, "", 1},
        {{"fallback-db", "remove", "Corp", "Lab_Net1"}, "..."},
        {{"fallback-db", "networks", "corp"}, "(none)\n"},
        // The chooser's walk is marked, and shared between runs.
        {{"--json", "chooser", "next", "--first"}, "...{\"entry\":{\"netName\":\"P\""},
        {{"chooser", "next"}, "..."},
        {{"chooser", "list"}, "...walk      at entry 2 of 3"},
        {{"chooser", "list"}, "...2      <-    Q"},
        {{"chooser", "next"}, "..."},
        {{"--json", "chooser", "next"}, "{\"entry\":{\"netName\":\"P\",\"macAddress\":\"\",\"entryFlag\":0,"
                                        "\"matchKind\":0,\"matchByte1\":0,\"matchByte2\":0},\"wrapped\":true}\n"},
        {{"chooser", "stop"}, "..."},
        {{"--json", "chooser", "next"}, "{\"entry\":null,\"wrapped\":false}\n"},
        {{"chooser", "delete", "Q"}, "..."},
        {{"--json", "chooser", "list"}, "...\"position\":0"},
        {{"chooser", "active"}, "no\n"},
        {{"chooser", "active", "on"}, "..."},
        {{"--json", "chooser", "active"}, "{\"active\":true}\n"},
        {{"alert", "get", "-1"}, "enabled\n"},
        {{"alert", "set", "-1", "off"}, "..."},
        {{"--json", "alert", "get", "-1"}, "{\"alert\":-1,\"enabled\":false}\n"},
    });
}

TEST_F(StoreCommands, AStoreThatCantBeUsedIsNamedAndFailsEveryCommand)
{
    ok({"network", "set", "Net", "--text", "t"});
    ok({"chooser", "front", "Net"});
    writeFile(scratch("a-file"), "not a store");
    const std::vector<std::vector<std::string> > commands = {
        {"network", "list"}, {"fallback-db", "owners"}, {"base", "set-int", "N", "1"}, {"chooser", "active", "on"},
    };
    std::vector<std::pair<ToolSetting, std::string> > settings = {
        {ToolSetting{{{"ZET_REGISTRY_DIR", scratch("a-file")}}}, "not a directory"},
        {ToolSetting{{{"ZET_REGISTRY_DIR", ""}}}, "ZET_REGISTRY_DIR is set but empty"},
    };
    if (otherUsersCanRunTheTool())
        settings.push_back({{{}, kOutsider}, "may not write it"});
    else
        std::cout << "[  SKIPPED ] the run without rights needs root and a tool that other users can start\n";
    for (const auto& setting : settings)
        for (const auto& command : commands) {
            const ToolResult result = runTool(command, setting.first);
            EXPECT_EQ(result.status, 1) << setting.second << ": " << command[0] << " " << command[1];
            EXPECT_TRUE(contains(result.err, "can't use the store") && contains(result.err, setting.second))
                << result.err;
            EXPECT_EQ(result.out, "") << setting.second << ": " << command[0];
        }
    // reg reads what the process may read; the data was never lost.
    if (otherUsersCanRunTheTool()) {
        const ToolResult read = runTool({"reg", "query", kBase + "\\NetworkSettings"}, settings.back().first);
        EXPECT_TRUE(contains(read.out, "Net_")) << read.err;
    }
}

TEST_F(StoreCommands, SecretsThatDontOpenAreNeverShownNorCarriedOver)
{
    ok({"network", "set", "Net", "--secret-text", "s"});
    ok({"login", "set", "--user", "u", "--password", "p", "--enabled", "--keep-password"});
    ok({"user", "set", "alice", "--text", "t"});
    ok({"fallback-keys", "set", "k", "--text1", "t"});
    ToolResult result = runTool({"reg", "export", "HKLM", scratch("secrets.reg"), "/y"});
    EXPECT_TRUE(contains(result.err, "4 encrypted value(s)") && contains(result.err, "zetsettings store backup"))
        << result.err;

    // Another machine key: the values stay, and open no more.
    writeFile(registry.storeDirectory() + ".key", std::string(32, '\x5A'));
    const std::string refused = "with this machine's key";
    expectSteps({
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

// Every way a command ends: its status, and the reason it names.
TEST_F(StoreCommands, EachOutcomeHasOneExitStatusAndNamesItsReason)
{
    const std::string longName(17000, 'n');
    expectSteps({
        // Arguments the help does not offer: 2.
        {{"frobnicate"}, "unknown command", 2}, {{"network"}, "missing an action", 2},
        {{"network", "show"}, "missing the network's name", 2},
        {{"network", "show", "x", "--sekret"}, "unknown option --sekret", 2},
        {{"network", "set", "x", "--flag1", "256"}, "--flag1 is out of range", 2},
        {{"network", "set", "x", "--secret-hex", "abc"}, "even number of hex digits", 2},
        {{"netlib", "get-int", "x"}, "needs --default", 2},
        {{"configurator", "get-int", "x", "--default", "1"}, "unknown option --default", 2},
        {{"guihelper", "set-int", "x", "1"}, "text values only", 2},
        {{"base", "set-int", "x", "12abc"}, "must be a number", 2},
        {{"alert", "set", "1", "maybe"}, "must be on or off", 2},
        {{"chooser", "next", "extra"}, "unexpected argument extra", 2},
        {{"chooser", "front", "Y", "--mac", "0011", "--match-kind", "3"}, "6 bytes", 2},
        // Removing what is not there fails, whatever it is.
        {{"user", "remove", "nobody"}, "no settings for the user", 1}, {{"login", "remove"}, "no login is stored", 1},
        {{"chooser", "delete", "Nowhere"}, "no entry for the network", 1},
        {{"network", "delete", "Nowhere"}, "no profile", 1}, {{"fallback-db", "remove", "o", "n"}, "no record", 1},
        {{"fallback-keys", "remove", "k"}, "no fallback key", 1},
        {{"network", "show", longName}, "bytes left out", 1},
        // reg fails as reg.exe does, with 1.
        {{"reg", "query", "HKEY_NOWHERE\\x"}, "ERROR: Invalid key name.", 1},
        {{"reg", "query"}, "ERROR: Invalid syntax.", 1},
        {{"reg", "query", kBase, "/v", "a", "/ve"}, "ERROR: Invalid syntax.", 1},
        {{"reg", "query", kBase, "/s", "/s"}, "ERROR: Invalid syntax.", 1},
        {{"reg", "frobnicate"}, "ERROR: Invalid syntax.", 1},
        {{"reg", "add", kBase, "/v", "n", "/t", "REG_DWORD", "/d", "4294967296", "/f"}, "numeric value", 1},
        {{"reg", "add", kBase, "/v", "n", "/t", "REG_DWORD", "/d", "-1", "/f"}, "numeric value", 1},
        {{"reg", "add", kBase, "/v", "n", "/t", "REG_BINARY", "/d", "abc", "/f"}, "even number", 1},
        {{"reg", "add", kBase, "/v", "n", "/t", "REG_FANCY", "/f"}, "Unknown data type", 1},
        {{"reg", "delete", kBase + "\\Missing", "/f"}, kMissing, 1},
        {{"reg", "delete", "HKLM", "/f"}, "ERROR: Invalid key name.", 1},
        {{"reg", "export", kBase}, "ERROR: Invalid syntax.", 1},
        {{"reg", "import", "/nonexistent/file.reg"}, "ERROR: Error opening the file", 1},
        {{"reg", "import", "/tmp"}, "is a directory", 1},
        // Those the help offers are taken, and help is there at every level, on standard output.
        {{"chooser", "active", "ON"}, "..."}, {{"--version"}, "..."},
        {{"--help"}, "...usage: zetsettings"}, {{"network", "--help"}, "...usage: zetsettings network"},
        {{"network", "set", "--help"}, "...usage: zetsettings network"}, {{"reg", "/?"}, "...REG Operation"},
        {{"reg", "query", "/?"}, "...REG QUERY KeyName"},
        // A getter's help offers --default where the getter takes it, and only there.
        {{"configurator", "--help"}, "!--default"},
        {{"raseap", "--help"}, "...get-int NAME --default N\n"},
        {{"raseap", "--help"}, "...get-str NAME\n"},
        {{"raseap", "get-str", "x", "--default", "1"}, "unknown option --default", 2},
    });
}

}  // namespace
