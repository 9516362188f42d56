// zetsettings reg through real processes: reg.exe's output, .reg round trips, a file exported by
// reg.exe under Wine, and imports that say what they apply, and apply whole or not at all.
#include <gtest/gtest.h>

#include <algorithm>

#include "ToolRun.h"
#include "regfile/TextCodec.h"

using namespace zettooltest;

namespace {

const std::string kShownBase = "HKEY_LOCAL_MACHINE\\Software\\Orvane\\QXL";

class RegCommand : public ToolTest {
protected:
    void add(const std::string& key, const std::string& name, const std::string& type, const std::string& data)
    {
        ok({"reg", "add", key, "/v", name, "/t", type, "/d", data, "/f"});
    }

    // Exported to standard output, the file comes alone; the outcome goes to standard error.
    std::string exportOf(const std::string& key = "HKLM")
    {
        const ToolResult result = runTool({"reg", "export", key, "/dev/stdout"});
        EXPECT_EQ(result.status, 0);
        EXPECT_FALSE(contains(result.out, "completed")) << result.out;
        EXPECT_TRUE(contains(result.err, "The operation completed successfully.")) << result.err;
        return result.out;
    }
};

TEST_F(RegCommand, QueryAddAndDeleteAsRegExeAndAnExportOfEveryKindImportsIntoAnEmptyStoreAsTheSameBytes)
{
    add(kBase + "\\Sub", "Text", "REG_SZ", "Hello, World");
    add(kBase + "\\Sub", "Num", "REG_DWORD", "0x123");
    add(kBase + "\\Sub", "Multi", "REG_MULTI_SZ", "a\\0b");
    add(kBase + "\\Sub", "Bin", "REG_BINARY", "00ff10");
    add(kBase + "\\J", "Q", "REG_QWORD", "0xFFFFFFFFFFFFFFFF");
    add(kBase + "\\J", "D", "REG_DWORD", "0xFFFFFFFF");
    ok({"reg", "add", kBase + "\\Sub\\Deeper"});
    expectSteps({
        {{"reg", "query", kBase + "\\Sub"}, "\n" + kShownBase + "\\Sub\n    Bin    REG_BINARY    00FF10\n"
                                            "    Multi    REG_MULTI_SZ    a\\0b\n    Num    REG_DWORD    0x123\n"
                                            "    Text    REG_SZ    Hello, World\n\n" + kShownBase + "\\Sub\\Deeper\n"},
        // /s lists every key below with its values; a key with no values only below the first.
        {{"reg", "query", kBase, "/s"}, "...\n" + kShownBase + "\\Sub\\Deeper\n\n"},
        {{"reg", "query", kBase, "/s"}, "!\n" + kShownBase + "\n"},
        // Found in any case, and shown by the name asked for.
        {{"reg", "query", kBase + "\\Sub", "/v", "num"},
         "\n" + kShownBase + "\\Sub\n    num    REG_DWORD    0x123\n\n"},
        {{"reg", "query", kBase, "/v", "Text", "/s"}, "...End of search: 1 match(es) found."},
        {{"reg", "query", kBase + "\\Sub", "/ve"}, "...    (Default)    REG_SZ    (value not set)\n"},
        {{"--json", "reg", "query", kBase + "\\J"},
         "...{\"name\":\"D\",\"type\":\"REG_DWORD\",\"data\":\"ffffffff\",\"value\":4294967295}"},
        {{"--json", "reg", "query", kBase + "\\J"}, "...\"data\":\"ffffffffffffffff\",\"value\":18446744073709551615}"},
    });
    // add asks before it overwrites; delete removes the value or the whole tree it names.
    add(kBase, "Kept", "REG_SZ", "first");
    const std::vector<std::string> overwrite = {"reg", "add", kBase, "/v", "Kept", "/d", "second"};
    EXPECT_TRUE(contains(runTool(overwrite, {{}, {}, "n\n"}).out, "Value Kept exists, overwrite"));
    expectSteps({{{"reg", "query", kBase, "/v", "Kept"}, "...first"}});
    runTool(overwrite, {{}, {}, "yes\n"});
    add(kBase + "\\Tree\\Leaf", "x", "REG_DWORD", "1");
    expectSteps({
        {{"reg", "query", kBase, "/v", "Kept"}, "...second"},
        {{"reg", "delete", kBase, "/v", "Kept", "/f"}, "..."},
        {{"reg", "query", kBase, "/v", "Kept"}, kMissing, 1},
        {{"reg", "delete", kBase + "\\Tree", "/f"}, "..."},
        {{"reg", "query", kBase + "\\Tree\\Leaf"}, kMissing, 1},
        {{"reg", "query", kBase + "\\Tree"}, kMissing, 1},
    });

    // Every type (those above too) and every kind of name, exported and imported into an empty store, exports
    // the same bytes.
    add(kBase + "\\A", "Text", "REG_SZ", "quote \" backslash \\ \xC3\xA9");
    add(kBase + "\\A", "Expand", "REG_EXPAND_SZ", "%PATH%\\x");
    add(kBase + "\\A\\B", "Long", "REG_BINARY", std::string(200, 'a'));
    add(kBase + "\\A\\B", "Q", "REG_QWORD", "0x1122334455667788");
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
    ok({"reg", "export", "HKLM", scratch("first.reg"), "/y"});
    const std::string first = readFile(scratch("first.reg"));
    ASSERT_EQ(first.substr(0, 2), "\xFF\xFE");

    zettest::TestRegistry emptyStore;  // the process's registry is now a new, empty one
    expectSteps({
        {{"reg", "query", kBase}, kMissing, 1},
        {{"reg", "import", scratch("first.reg")}, "...Imported "},
    });
    EXPECT_EQ(exportOf(), first);

    // A key's export holds that key and those below it, nothing beside it.
    const std::string branch = zetreg::utf16ToUtf8(zetreg::bytesToUtf16(exportOf(kBase + "\\A").substr(2)));
    EXPECT_TRUE(contains(branch, "\r\n[" + kShownBase + "\\A]\r\n\"Expand\"=hex(2):25,00")) << branch;
    EXPECT_TRUE(contains(branch, "\r\n[" + kShownBase + "\\A\\B]\r\n")) << branch;
    EXPECT_FALSE(contains(branch, "\\Sub]")) << branch;
}

TEST_F(RegCommand, FilesAsWindowsWritesThemImportAndSayWhatTheyApplyAndADryRunWritesNothing)
{
    // REGEDIT4 in Windows-1252, as Windows writes it ("café" = "€“q” \u0081", undefined bytes kept as their code
    // points), with comments, spaces, bare line ends, hex data continued across a comment line, deletions, a root's
    // short name, and an 8-bit multi-string.
    writeFile(scratch("ansi.reg"), "REGEDIT4\r\n; a comment\r\n\r\n"
                                   "[HKEY_LOCAL_MACHINE\\Software\\Orvane\\QXL] ; trailing\r\n"
                                   "\"caf\xE9\"=\"\x80\x93q\x94 \x81\"\r\n\"gone\"=-\n  \"spaced\" = dword:2A ; 42\n"
                                   "\"bin\"=hex:01,02,\\\n   ; not data\n  03 , 04\n\r\n"
                                   "[-HKEY_LOCAL_MACHINE\\Software\\x]\r\n[HKLM\\Software\\Orvane\\QXL\\Empty]\r\n"
                                   "[HKEY_LOCAL_MACHINE\\Software\\Orvane\\QXL\\caf\xE9]\r\n\"m\"=hex(7):e9,00,00\r\n");
    // Valid UTF-8 makes a REGEDIT4 file UTF-8, its hex(2) data included.
    writeFile(scratch("utf8.reg"), "REGEDIT4\r\n\r\n[HKEY_LOCAL_MACHINE\\Software\\Orvane\\QXL]\r\n"
                                   "\"e\"=hex(2):25,41,25,00\r\n\"s\"=\"caf\xC3\xA9 \xF0\x9F\x98\x80\"\r\n");
    const std::string counts = "3 key(s) with 4 value(s) set, 1 value(s) deleted, 1 key(s) deleted";
    expectSteps({
        {{"reg", "import", scratch("ansi.reg"), "--dry-run"}, "..." + counts + ". Nothing was written"},
        {{"reg", "query", kBase}, kMissing, 1},
        {{"reg", "import", scratch("ansi.reg")}, "Imported " + counts + ".\nThe operation completed successfully.\n"},
        {{"base", "get-str", "caf\xC3\xA9", "--default", "missing"},
         "\xE2\x82\xAC\xE2\x80\x9Cq\xE2\x80\x9D \xC2\x81\n"},
        {{"base", "get-int", "spaced", "--default", "0"}, "42\n"},
        {{"reg", "query", kBase, "/v", "bin"}, "...bin    REG_BINARY    01020304"},
        {{"--json", "reg", "query", kBase + "\\caf\xC3\xA9"}, "...\"data\":\"e90000000000\""},
        {{"reg", "import", scratch("utf8.reg")}, "..."},
        {{"base", "get-str", "s", "--default", ""}, "caf\xC3\xA9 \xF0\x9F\x98\x80\n"},
        {{"--json", "reg", "query", kBase, "/v", "e"}, "...\"data\":\"2500410025000000\""},
        // A file that reg.exe exported under Wine, read back by the library.
        {{"reg", "import", std::string(ZET_TOOL_FIXTURES) + "/wine-export.reg"}, "..."},
        {{"--json", "chooser", "list"},
         "{\"position\":1,\"walk\":\"at entry 1 of 2\",\"entries\":[{\"place\":1,\"walk\":\"<-\","
         "\"netName\":\"Home\",\"macAddress\":\"\",\"entryFlag\":0,\"matchKind\":0,\"matchByte1\":0,\"matchByte2\":0},"
         "{\"place\":2,\"walk\":\"\",\"netName\":\"Office\",\"macAddress\":\"001122334455\",\"entryFlag\":0,"
         "\"matchKind\":3,\"matchByte1\":0,\"matchByte2\":0}]}\n"},
        {{"chooser", "active"}, "yes\n"},
        {{"alert", "get", "7"}, "disabled\n"},
        {{"netlib", "get-str", "Greeting", "--default", "unset"}, "Gr\xC3\xBC\xC3\x9F" "e \"aus\" C:\\Wine\n"},
        {{"netlib", "get-int", "Retries", "--default", "0"}, "42\n"},
        {{"fallback-db", "show", "Corp", "Lab_Net1"}, "...fallbackBytes1  61 62"},
        {{"reg", "query", kBase + "\\NetlibSettings", "/v", "Paths"}, "...one\\0two"},
    });
}

TEST_F(RegCommand, ABadFileImportsNothing)
{
    add(kBase, "Before", "REG_SZ", "untouched");
    const std::string before = exportOf();
    const std::string header = "Windows Registry Editor Version 5.00\r\n\r\n[" + kShownBase + "]\r\n"
                               "\"Before\"=\"changed\"\r\n\"New\"=dword:1\r\n";
    const struct {
        std::string text;
        std::string message;
    } files[] = {
        {header + "\"Big\"=dword:123456789\r\n", "line 6: the number of a dword: is out of range"},
        {header + "\"Cut\"=hex:01,02,\\", "line 6: hex data continues past the end of the file"},
        // Cut inside a continued value, where the last line still reads as whole.
        {header + "\"c\"=hex:01,02,\\\r\n  03,0", "line 7: the file ends inside continued hex data"},
        {header + "\"a\"=\"cut in the mid", "line 6: a string without its closing quote"},
        {header + "\"a\"=dword:", "line 6: dword: without hex digits"},
        {header + "\"a\"=hex:01,zz", "line 6: not a hex byte"},
        {header + "\"a\"=\"\\q\"", "line 6: an unknown escape"},
        {header + "\"a\"=word:1", "line 6: value data that is neither"},
        {header + "[\"HKEY_LOCAL_MACHINE\\\\a\" x]", "line 6: a quoted key name must be followed by ]"},
        {header + "[HKEY_CURRENT_CONFIG\\x]\r\n", "line 6: the key HKEY_CURRENT_CONFIG\\x lies outside the registry"},
        {header + "[HKEY_LOCAL_MACHINE\\a\\\\b]", "line 6: the key HKEY_LOCAL_MACHINE\\a\\\\b has an empty name"},
        {header + "[HKEY_LOCAL_MACHINE\\a", "line 6: a key line without its closing ]"},
        {header + "[-HKCU\\x]\r\n\"a\"=\"x\"", "line 7: a value under a key that the file removes"},
        {"Windows Registry Editor Version 5.00\r\n\"a\"=\"x\"", "line 2: a value before any [key] line"},
        {"REGEDIT 5\r\n", "line 1: not a .reg file"},
        // Passes the reader; the registry refuses the name's length while applying.
        {header + "\"" + std::string(17000, 'n') + "\"=\"x\"\r\n", "Error accessing the registry"},
        // Data that the registry would keep only in part.
        {header + "\"s\"=hex(1):61,00,62\r\n", "would lose the last byte"},
        {header + "\"m\"=hex(7):61,00,00,00,00\r\n", "would lose the last byte"},
        // Cut or mis-encoded as a whole: no line to blame.
        {"", "bad.reg: the file is empty"},
        {before + "x", "bad.reg: the file is cut or mis-encoded: a UTF-16 file with an odd number of bytes"},
        {std::string("W\0i\0", 4), "bad.reg: the file is mis-encoded: it holds NUL bytes but no"},
        // 8-bit text that is not UTF-8 is Windows-1252 in REGEDIT4 files alone.
        {header + "\"a\"=\"\xC3\x28\"\r\n", "bad.reg: the file is mis-encoded: its 8-bit text is not valid UTF-8"},
        {header + "\"a\"=\"\xED\xA0\x80\"\r\n", "bad.reg: the file is mis-encoded"},  // a surrogate
        {header + "\"a\"=\"\xC0\xAF\"\r\n", "bad.reg: the file is mis-encoded"},      // an overlong form
    };
    for (const auto& file : files) {
        writeFile(scratch("bad.reg"), file.text);  // UTF-8 mostly, as other tools write them
        expectSteps({{{"reg", "import", scratch("bad.reg")}, file.message, 1}});
        EXPECT_EQ(exportOf(), before) << file.message;
    }
}

}  // namespace
