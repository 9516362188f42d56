// The library's families through real processes of the tool: what each prints, what it stores,
// its exit status, and the arguments it refuses.
#include <gtest/gtest.h>

#include "ToolRun.h"
#include "support/TestRegistry.h"

using zettooltest::runTool;
using zettooltest::ToolResult;

namespace {

const std::string kBase = "HKLM\\Software\\Orvane\\QXL";

class StoreCommands : public zettest::RegistryTest {
protected:
    // Runs a command that must succeed and gives what it printed.
    std::string ok(const std::vector<std::string>& args)
    {
        const ToolResult result = runTool(args);
        EXPECT_EQ(result.status, 0) << args[0] << " " << (args.size() > 1 ? args[1] : "") << ": " << result.err;
        return result.out;
    }

    bool stored(const std::string& key, const std::string& value)
    {
        return runTool({"reg", "query", kBase + key, "/v", value}).status == 0;
    }
};

TEST_F(StoreCommands, ValueFamiliesFollowTheirOwnDefaultRules)
{
    // netlib stores the default on a miss, and a later default changes nothing.
    EXPECT_EQ(ok({"netlib", "get-str", "Greeting", "--default", "hello"}), "hello\n");
    EXPECT_EQ(ok({"netlib", "get-str", "Greeting", "--default", "other"}), "hello\n");
    // configurator has no default: -1 and nothing stored.
    EXPECT_EQ(ok({"configurator", "get-int", "Missing"}), "-1\n");
    EXPECT_FALSE(stored("\\ConfiguratorSettings", "Missing"));
    // base and zetguard store the default only when asked to.
    EXPECT_EQ(ok({"base", "get-int", "Runs", "--default", "5"}), "5\n");
    EXPECT_FALSE(stored("", "Runs"));
    EXPECT_EQ(ok({"zetguard", "get-int", "Runs", "--default", "7", "--write-default"}), "7\n");
    EXPECT_TRUE(stored("\\Settings", "Runs"));
    // 32 bits: 0xFFFFFFFF is stored and read as -1.
    ok({"raseap", "set-int", "Mask", "0xFFFFFFFF"});
    EXPECT_EQ(ok({"raseap", "get-int", "Mask", "--default", "0"}), "-1\n");
    EXPECT_EQ(ok({"--json", "raseap", "get-str", "Nothing"}), "{\"family\":\"raseap\",\"name\":\"Nothing\",\"value\":\"\"}\n");
    EXPECT_FALSE(stored("\\RasEapSettings", "Nothing"));
}

TEST_F(StoreCommands, RasmanSaysWhatIsMissing)
{
    ToolResult result = runTool({"rasman", "get", "Anything"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("the key HKEY_LOCAL_MACHINE\\SYSTEM\\CurrentControlSet\\Services\\RasMan\\PPP\\EAP\\26 "
                              "does not exist"),
              std::string::npos)
        << result.err;
    ASSERT_EQ(runTool({"reg", "add", "HKLM\\SYSTEM\\CurrentControlSet\\Services\\RasMan\\PPP\\EAP\\26"}).status, 0);
    result = runTool({"rasman", "get", "Anything"});
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.err.find("no value \"Anything\" in"), std::string::npos) << result.err;
}

TEST_F(StoreCommands, NetworkProfilesKeepTheirSecretOutOfSight)
{
    ok({"network", "set", "MyWLAN", "--text", "office", "--flag2", "255", "--secret-text", "p4ssw0rd",
        "--plain-hex", "01:02"});
    ok({"network", "set", "mywlan", "--text", "other case"});
    EXPECT_EQ(ok({"network", "list"}).size(), std::string("MyWLAN\nmywlan\n").size());

    const std::string shown = ok({"network", "show", "MyWLAN"});
    EXPECT_NE(shown.find("profileFlag2   255"), std::string::npos) << shown;
    EXPECT_NE(shown.find("plainBlob      01 02"), std::string::npos) << shown;
    EXPECT_EQ(shown.find("p4ssw0rd"), std::string::npos);
    EXPECT_EQ(shown.find("70 34"), std::string::npos);
    EXPECT_NE(ok({"--json", "network", "show", "MyWLAN", "--secret"}).find("\"protectedBlob\":\"7034737377307264\""),
              std::string::npos);
    // In the registry the secret is ciphertext: neither its bytes nor their hex appear.
    const std::string raw = ok({"reg", "query", kBase + "\\NetworkSettings", "/v", "MyWLAN_BC"});
    EXPECT_EQ(raw.find("7034737377307264"), std::string::npos) << raw;

    // set keeps the fields not given.
    ok({"network", "set", "MyWLAN", "--flag1", "3"});
    EXPECT_NE(ok({"--json", "network", "show", "MyWLAN", "--secret"}).find("\"profileText\":\"office\",\"profileFlag1\":3,\"profileFlag2\":255"),
              std::string::npos);

    EXPECT_NE(ok({"network", "delete", "MyWLAN"}).find("office"), std::string::npos);
    const ToolResult gone = runTool({"network", "show", "MyWLAN"});
    EXPECT_EQ(gone.status, 1);
    EXPECT_NE(gone.err.find("no profile"), std::string::npos);
    EXPECT_EQ(runTool({"network", "delete", "MyWLAN"}).status, 1);
}

TEST_F(StoreCommands, EncryptedStoresAndTheFallbackDatabase)
{
    ok({"fallback-keys", "set", "Key1", "--text1", "a", "--bytes-hex", "ff"});
    ok({"fallback-keys", "set", "key1", "--text2", "b"});
    ok({"fallback-keys", "set", "Key1", "--text2", "c"});
    const std::string keys = ok({"--json", "fallback-keys", "show"});
    EXPECT_EQ(keys, "[{\"key\":\"Key1\",\"keyText1\":\"a\",\"keyText2\":\"c\",\"keyBytes\":\"ff\"},"
                    "{\"key\":\"key1\",\"keyText1\":\"\",\"keyText2\":\"b\",\"keyBytes\":\"\"}]\n");
    ok({"fallback-keys", "remove", "key1"});
    EXPECT_EQ(runTool({"fallback-keys", "remove", "key1"}).status, 1);

    ok({"user", "set", "Alice", "--text", "prefs"});
    EXPECT_NE(ok({"user", "show", "ALICE"}).find("prefs"), std::string::npos);
    ok({"user", "remove", "alice"});
    EXPECT_EQ(runTool({"user", "show", "Alice"}).status, 1);

    // The switches form a chain: without --enabled neither the password nor the flags stay.
    ok({"login", "set", "--user", "bob", "--password", "pw", "--keep-password"});
    EXPECT_EQ(ok({"--json", "login", "show", "--secret"}),
              "{\"userName\":\"bob\",\"password\":\"\",\"loginEnabled\":false,\"keepPassword\":false,\"dependentFlag\":false}\n");
    ok({"login", "set", "--user", "bob", "--password", "pw", "--enabled", "--keep-password"});
    EXPECT_EQ(ok({"login", "show"}).find("pw"), std::string::npos);
    EXPECT_NE(ok({"login", "show", "--secret"}).find("password       pw"), std::string::npos);
    ok({"login", "remove"});
    EXPECT_NE(ok({"--json", "login", "show"}).find("\"userName\":\"\""), std::string::npos);

    ok({"fallback-db", "set", "Corp", "Lab_Net1", "--bytes1-text", "ab"});
    EXPECT_EQ(ok({"fallback-db", "owners"}), "corp\n");
    EXPECT_EQ(ok({"fallback-db", "networks", "CORP"}), "Lab_Net1\n");
    EXPECT_NE(ok({"fallback-db", "show", "corp", "Lab_Net1"}).find("fallbackBytes1  61 62"), std::string::npos);
    EXPECT_EQ(runTool({"fallback-db", "show", "corp", "lab_net1"}).status, 1);
    ok({"fallback-db", "remove", "Corp", "Lab_Net1"});
    EXPECT_EQ(ok({"fallback-db", "networks", "corp"}), "(none)\n");
}

TEST_F(StoreCommands, TheChooserWalkIsMarkedAndSharedBetweenRuns)
{
    for (const char* name : {"R", "Q", "P"})
        ok({"chooser", "front", name});
    EXPECT_NE(ok({"--json", "chooser", "next", "--first"}).find("{\"entry\":{\"netName\":\"P\""), std::string::npos);
    ok({"chooser", "next"});
    const std::string list = ok({"chooser", "list"});
    EXPECT_NE(list.find("walk      at entry 2 of 3"), std::string::npos) << list;
    EXPECT_NE(list.find("2      <-    Q"), std::string::npos) << list;
    ok({"chooser", "next"});
    const std::string wrapped = ok({"--json", "chooser", "next"});
    EXPECT_NE(wrapped.find("{\"entry\":{\"netName\":\"P\""), std::string::npos) << wrapped;
    EXPECT_NE(wrapped.find("\"wrapped\":true"), std::string::npos) << wrapped;
    ok({"chooser", "stop"});
    EXPECT_EQ(ok({"--json", "chooser", "next"}), "{\"entry\":null,\"wrapped\":false}\n");
    ok({"chooser", "delete", "Q"});
    EXPECT_NE(ok({"--json", "chooser", "list"}).find("\"position\":0"), std::string::npos);

    EXPECT_EQ(ok({"chooser", "active"}), "no\n");
    ok({"chooser", "active", "on"});
    EXPECT_EQ(ok({"--json", "chooser", "active"}), "{\"active\":true}\n");

    EXPECT_EQ(ok({"alert", "get", "-1"}), "enabled\n");
    ok({"alert", "set", "-1", "off"});
    EXPECT_EQ(ok({"--json", "alert", "get", "-1"}), "{\"alert\":-1,\"enabled\":false}\n");
}

TEST_F(StoreCommands, ParametersAndTheNdisCheck)
{
    const std::string table = ok({"--json", "params"});
    EXPECT_NE(table.find("{\"key\":\"ZET_MAIN_WINDOW_TIMEOUT\",\"value\":30}"), std::string::npos) << table;
    EXPECT_NE(table.find("\"rootCertificates\":[\"Class 3 Public Primary Certification Authority\"]"), std::string::npos);
    // The first load stores mode 0 and the table.
    EXPECT_EQ(ok({"configurator", "get-int", "ZET_CONFIGURATOR_REGISTRY_MODE"}), "0\n");
    EXPECT_EQ(ok({"configurator", "get-int", "ZET_CHILD_WINDOW_TIMEOUT"}), "10\n");

    const std::string network = "HKLM\\SYSTEM\\CurrentControlSet\\Control\\Network";
    ok({"reg", "add", network, "/v", "FilterClasses", "/t", "REG_MULTI_SZ", "/d", "failover\\0alpha\\0Beta", "/f"});
    EXPECT_NE(ok({"ndis", "check"}).find("rewritten"), std::string::npos);
    EXPECT_NE(ok({"reg", "query", network, "/v", "FilterClasses"}).find("alpha\\0Beta\\0failover"), std::string::npos);
    EXPECT_EQ(ok({"--json", "ndis", "check"}), "{\"foundInOrder\":true}\n");
}

TEST_F(StoreCommands, BadArgumentsAreNamedAndExitWithTwo)
{
    const struct {
        std::vector<std::string> args;
        std::string message;
    } cases[] = {
        {{"frobnicate"}, "unknown command"},
        {{"network"}, "missing an action"},
        {{"network", "show"}, "missing the network's name"},
        {{"network", "show", "x", "--sekret"}, "unknown option --sekret"},
        {{"network", "set", "x", "--flag1", "256"}, "--flag1 is out of range"},
        {{"network", "set", "x", "--secret-hex", "abc"}, "even number of hex digits"},
        {{"netlib", "get-int", "x"}, "needs --default"},
        {{"configurator", "get-int", "x", "--default", "1"}, "unknown option --default"},
        {{"guihelper", "set-int", "x", "1"}, "text values only"},
        {{"base", "set-int", "x", "12abc"}, "must be a number"},
        {{"alert", "set", "1", "maybe"}, "must be on or off"},
        {{"chooser", "next", "extra"}, "unexpected argument extra"},
    };
    for (const auto& testCase : cases) {
        const ToolResult result = runTool(testCase.args);
        EXPECT_EQ(result.status, 2) << testCase.args[0];
        EXPECT_NE(result.err.find(testCase.message), std::string::npos) << testCase.args[0] << ": " << result.err;
    }
    // Help at every level, on standard output, with success.
    const std::pair<std::vector<std::string>, std::string> helps[] = {
        {{"--help"}, "usage: zetsettings"},
        {{"network", "--help"}, "usage: zetsettings network"},
        {{"network", "set", "--help"}, "usage: zetsettings network"},
        {{"reg", "/?"}, "REG Operation"},
        {{"reg", "query", "/?"}, "REG QUERY KeyName"},
    };
    for (const auto& help : helps) {
        const ToolResult result = runTool(help.first);
        EXPECT_EQ(result.status, 0);
        EXPECT_NE(result.out.find(help.second), std::string::npos) << result.out;
    }
}

}  // namespace
