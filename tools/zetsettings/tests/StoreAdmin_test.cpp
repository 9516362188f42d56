// The store's deployment through real processes of the tool, as root and as other users
// (setpriv): who may use a store, what its files are made with, what an outsider leaves behind,
// and backup and restore with the key.
#include <gtest/gtest.h>

#include <grp.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <map>
#include <sstream>
#include <thread>

#include "ToolRun.h"

using namespace zettooltest;
namespace fs = std::filesystem;

namespace {

const uid_t kNobody = 65534;
const char kGroup[] = "users";

std::vector<std::string> member()
{
    const group* found = getgrnam(kGroup);
    return {"--reuid=65534", "--regid=65534", "--groups=" + std::to_string(found ? found->gr_gid : 100)};
}

std::string modeOf(const std::string& path)
{
    struct stat info;
    if (lstat(path.c_str(), &info) != 0)
        return "absent";
    char text[32];
    snprintf(text, sizeof(text), "%u:%u %04o", static_cast<unsigned>(info.st_uid), static_cast<unsigned>(info.st_gid),
             static_cast<unsigned>(info.st_mode & 07777));
    return text;
}

// Every file under the test's folder with its owner, mode and change time (which a write moves too).
std::map<std::string, std::string> snapshot(const std::string& folder)
{
    std::map<std::string, std::string> files;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) {
        struct stat info;
        lstat(entry.path().c_str(), &info);
        files[entry.path()] = modeOf(entry.path()) + " " + std::to_string(info.st_ctim.tv_nsec);
    }
    return files;
}

class StoreAdmin : public ToolTest {
protected:
    const std::string& store() const { return registry.storeDirectory(); }
    std::string key() const { return store() + ".key"; }
    std::string folder() const { return fs::path(store()).parent_path(); }

    // Whether the login's password, as `as` sees it, is `text`.
    bool shows(const std::string& text, const std::vector<std::string>& as = {})
    {
        return contains(ok({"--json", "login", "show", "--secret"}, as), "\"password\":\"" + text + "\"");
    }
    void setPassword(const std::string& text, const std::vector<std::string>& as = {})
    {
        ok({"login", "set", "--user", "u", "--password", text, "--enabled", "--keep-password"}, as);
    }
};

// Tests that act as other users, through setpriv.
class StoreAdminAcrossUsers : public StoreAdmin {
protected:
    void SetUp() override
    {
        if (!otherUsersCanRunTheTool())
            GTEST_SKIP() << "needs root, setpriv and a tool that other users can start";
    }
};

TEST_F(StoreAdmin, InitMakesEveryFileWithItsOwnersAndModesOnceAndRefusesAStoreOrKeyOpenToOthersWhichInfoReports)
{
    const gid_t own = getegid();
    const group* users = getgrnam(kGroup);
    ASSERT_NE(nullptr, users);
    const std::string me = std::to_string(geteuid()) + ":";
    const struct {
        std::vector<std::string> args;
        gid_t group;
        const char *directory, *data, *key;
    } cases[] = {
        {{"store", "init"}, own, "0700", "0600", "0600"},
        {{"store", "init", "--group", kGroup}, users->gr_gid, "2770", "0660", "0640"},
    };
    for (const auto& c : cases) {
        zettest::TestRegistry fresh;
        const std::string store = fresh.storeDirectory();
        if (geteuid() != 0 && c.group != own)
            continue;  // only root may give a store to a group it isn't in
        ok(c.args);
        const std::string group = me + std::to_string(c.group) + " ";
        EXPECT_EQ(group + c.directory, modeOf(store));
        for (const char* file : {"/data.mdb", "/lock.mdb", "/mutex-zetPreferredNetMutex.lock"})
            EXPECT_EQ(group + c.data, modeOf(store + file)) << file;
        EXPECT_EQ(group + c.key, modeOf(store + ".key"));

        const auto before = snapshot(fs::path(store).parent_path());
        const std::string again = ok(c.args);
        EXPECT_FALSE(contains(again, "made")) << again;
        EXPECT_TRUE(contains(again, "there: " + store + ".key")) << again;
        EXPECT_EQ(before, snapshot(fs::path(store).parent_path()));
        const std::string info = ok({"--json", "store", "info"});
        for (const char* field : {"\"chosenBy\":\"ZET_REGISTRY_DIR\"", "\"mayWrite\":true", "\"key\":\"usable\"",
                                  "\"liveReaders\":0"})
            EXPECT_TRUE(contains(info, field)) << field << " in " << info;
    }

    // A store or key open to others, or a stranger's, is refused by init and reported by info.
    const struct {
        const char* what;
        bool needsRoot;
        std::string path;
        std::function<void()> damage;
    } damaged[] = {
        {"key readable by others", false, key(), [&] { chmod(key().c_str(), 0644); }},
        {"key writable by its group", false, key(), [&] { chmod(key().c_str(), 0620); }},
        {"key of a stranger", true, key(), [&] { (void)chown(key().c_str(), kNobody, kNobody); }},
        {"directory writable by all", false, store(), [&] { chmod(store().c_str(), 0777); }},
        {"data writable by others", false, store() + "/data.mdb",
         [&] { chmod((store() + "/data.mdb").c_str(), 0662); }},
    };
    for (const auto& c : damaged) {
        SCOPED_TRACE(c.what);
        if (c.needsRoot && geteuid() != 0)
            continue;
        fs::remove_all(store());
        fs::remove(key());
        ok({"store", "init"});
        c.damage();
        const auto before = snapshot(folder());
        expectSteps({{{"store", "init"}, c.path + ":", 1}});
        EXPECT_EQ(before, snapshot(folder())) << "init changed a refused store";
        const ToolResult info = runTool({"--json", "store", "info"});
        EXPECT_EQ(1, info.status);
        EXPECT_TRUE(contains(info.err, "store: " + c.path + ":")) << info.err;
        if (c.path == key()) {
            EXPECT_TRUE(contains(info.out, "\"key\":\"unusable\",\"keyProblem\":\"")) << info.out;
        }
    }
}

TEST_F(StoreAdminAcrossUsers, AGroupsStoreIsSharedByRootAndItsMembersAndAnOutsiderChangesNoFileNotEvenAMissingKey)
{
    // As under /tmp: anybody may make files beside the store.
    fs::permissions(folder(), fs::perms(01777));
    for (const bool withKey : {true, false}) {
        SCOPED_TRACE(withKey ? "key there" : "key missing");
        fs::remove_all(store());
        fs::remove(key());
        ok({"store", "init", "--group", kGroup});
        setPassword("from root");
        if (!withKey)
            fs::remove(key());
        const auto before = snapshot(folder());
        // The tool turns an outsider away before the library could answer with its defaults.
        for (const std::vector<std::string>& command :
             {std::vector<std::string>{"login", "show", "--secret"},
              {"login", "set", "--user", "x", "--password", "y", "--enabled", "--keep-password"},
              {"fallback-keys", "set", "K", "--text1", "t"}, {"chooser", "next"}}) {
            const ToolResult refused = runTool(command, {{}, kOutsider});
            EXPECT_EQ(1, refused.status) << command[0];
            EXPECT_TRUE(contains(refused.err, "can't use the store")) << refused.err;
            EXPECT_EQ("", refused.out) << command[0];
        }
        EXPECT_EQ(before, snapshot(folder()));
        if (!withKey)
            setPassword("made by root");  // root may write, so root makes the key now
        EXPECT_TRUE(shows(withKey ? "from root" : "made by root", member()));
    }
    setPassword("from member", member());
    EXPECT_TRUE(shows("from member"));
    const std::string lock = store() + "/mutex-zetPreferredNetMutex.lock";
    fs::remove(lock);
    ok({"chooser", "next"});  // root makes the lock file anew
    ok({"chooser", "next"}, member());
    // A lock file the store's users can't take fails the operation visibly.
    ASSERT_EQ(0, chmod(lock.c_str(), 0644));
    // (Not a step: a coverage build's other user adds its own complaints on standard error.)
    const ToolResult refused = runTool({"chooser", "next"}, {{}, member()});
    EXPECT_EQ(1, refused.status);
    EXPECT_TRUE(contains(refused.err, "mutex")) << refused.err;
    ok({"store", "init", "--group", kGroup});  // opens it to the store's users again
    ok({"chooser", "next"}, member());
}

TEST_F(StoreAdminAcrossUsers, AServiceAccountsStoreLetsRootInAndWhatRootMakesThereStaysTheAccounts)
{
    ASSERT_EQ(0, chown(folder().c_str(), kNobody, kNobody));
    const std::vector<std::string>& account = kOutsider;
    setPassword("account's", account);
    EXPECT_EQ(std::to_string(kNobody) + ":" + std::to_string(kNobody) + " 0600", modeOf(key()));
    EXPECT_TRUE(shows("account's"));
    setPassword("root's");
    EXPECT_TRUE(shows("root's", account));
    ok({"chooser", "next"});
    // A store made on the fly lets every local user read it, and take its mutex.
    EXPECT_EQ("65534:65534 0666", modeOf(store() + "/mutex-zetPreferredNetMutex.lock")) << "root's lock file";
    ok({"chooser", "next"}, account);
}

TEST_F(StoreAdmin, ABackupTakenWhileWritersRunRestoresWithEverySecret)
{
    ok({"store", "init"});
    std::atomic<bool> stop{false};
    std::atomic<int> written{0};
    std::vector<std::thread> writers;
    for (int w = 0; w < 3; ++w)
        writers.emplace_back([&, w] {
            for (int i = 0; !stop; ++i) {
                const std::string id = std::to_string(100000 + 10000 * w + i);  // even digits: the secret's hex
                if (runTool({"network", "set", "net" + id, "--secret-hex", id}).status == 0)
                    ++written;
            }
        });
    while (written < 6)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    const std::string backup = scratch("backup");
    const ToolResult made = runTool({"store", "backup", backup});
    stop = true;
    for (std::thread& writer : writers)
        writer.join();
    ASSERT_EQ(0, made.status) << made.err;
    EXPECT_EQ("0600", modeOf(backup).substr(modeOf(backup).size() - 4));

    const zettest::TestRegistry restored;  // the tool's store is now a new one, not there yet
    ok({"store", "restore", backup});
    std::istringstream names(ok({"network", "list"}));
    int checked = 0;
    for (std::string name; std::getline(names, name); ++checked) {
        const std::string shown = ok({"--json", "network", "show", name, "--secret"});
        EXPECT_TRUE(contains(shown, "\"protectedBlob\":\"" + name.substr(3) + "\"")) << shown;
    }
    EXPECT_GE(checked, 6);
    EXPECT_EQ(1, runTool({"store", "restore", backup}).status) << "a store that is there was replaced";
    EXPECT_EQ(0, runTool({"store", "restore", "--replace", backup}).status);
}

}  // namespace
