// The store where the machine gets in the way: a disk that fills up, a store folder that can't
// be made, a machine key that the process may not read. Each prints what it saw and exits
// non-zero on a broken promise; where the machine won't let it set the case up (no mounts in a
// container, not root) it says so and passes as skipped.
#include <fcntl.h>
#include <grp.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>

#include "FaultItems.h"
#include "Forms.h"
#include "Processes.h"
#include "StressRoles.h"

namespace zetstress {
namespace {

namespace fs = std::filesystem;

const uid_t kNobody = 65534;
const wchar_t kFillKey[] = L"Software\\Orvane\\QXL\\Fill";
const std::size_t kFillBlob = 64 * 1024;

int skipped(const char* test, const std::string& why)
{
    std::cout << test << ": skipped: " << why << std::endl;
    return 0;
}

bool becomeNobody()
{
    return setgroups(0, nullptr) == 0 && setgid(kNobody) == 0 && setuid(kNobody) == 0;
}

// " name=state" of every item: as read, or all of `generation` when one is given.
std::string statesOfItems(const int* generation = nullptr)
{
    std::string states;
    for (const Item& item : items())
        states += " " + std::string(item.name) + "=" + nameOfState(generation ? *generation : item.read());
    return states;
}

bool allItemsRead(int generation)
{
    return statesOfItems() == statesOfItems(&generation);
}

// Writes every item in the given generation; true when each one reads back so.
bool writeAll(int generation)
{
    for (const Item& item : items())
        item.write(generation);
    return allItemsRead(generation);
}

LONG setFill(HKEY key, int index)
{
    const std::string bytes(kFillBlob, static_cast<char>(index));
    return RegSetValueExW(key, (L"Blob" + std::to_wstring(index)).c_str(), 0, REG_BINARY,
                          reinterpret_cast<const BYTE*>(bytes.data()), static_cast<DWORD>(bytes.size()));
}

bool fillIntact(int index)
{
    std::string bytes;
    long status = 0;
    return readRegistryBinary(kFillKey, L"Blob" + std::to_wstring(index), bytes, status) &&
           bytes == std::string(kFillBlob, static_cast<char>(index));
}

// A file that holds `bytes` of the disk in reserve, so that deleting it frees room again.
bool reserve(const fs::path& path, off_t bytes)
{
    const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    const bool made = fd >= 0 && posix_fallocate(fd, 0, bytes) == 0;
    if (fd >= 0)
        close(fd);
    return made;
}

bool largeKeysStored()
{
    const auto keys = ZETSettings::getFallbackKeySettings();
    return keys && keys->count(L"Large") && (*keys)[L"Large"].keyBytes.size() == 256 * 1024;
}

// LMDB reports a write that the disk cut short as EIO, one refused outright as ENOSPC.
bool isDiskError(LONG code)
{
    return code == ERROR_DISK_FULL || code == ERROR_REGISTRY_IO_FAILED;
}

int fullDiskOn(const fs::path& folder)
{
    Violations verdict("full-disk: ");
    setenv("ZET_REGISTRY_DIR", (folder / "store").c_str(), 1);
    verdict.expect(createEapKey() && writeAll(0), "every item is stored before the disk fills");
    verdict.expect(reserve(folder / "reserve", 512 * 1024), "the reserve is made");

    HKEY key = nullptr;
    verdict.expect(RegCreateKeyExW(HKEY_LOCAL_MACHINE, kFillKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                                   nullptr) == ERROR_SUCCESS,
                   "the key of the filling values is made");
    // Values of the store until the disk is full and one is refused.
    int filled = 0;
    LONG refusal = ERROR_SUCCESS;
    while (filled < 1000 && (refusal = setFill(key, filled)) == ERROR_SUCCESS)
        ++filled;
    std::cout << "full-disk: " << filled << " values of 64 KiB fit, the next was refused with " << refusal << "\n";
    verdict.expect(isDiskError(refusal), "a write to a full disk is refused with a disk's error");
    const DWORD keysRefusal = setFallbackKey(L"Large", L"large", 256 * 1024);
    std::cout << "full-disk: setFallbackKeySettings refused with " << keysRefusal << "\n";
    verdict.expect(isDiskError(keysRefusal), "setFallbackKeySettings throws a disk's error");
    auto large = profileForm(L"large#0.0");
    large->plainBlob = ZETBuf(std::string(256 * 1024, 'p').data(), 256 * 1024);
    ZETSettings::setNetworkSettings(L"LargeNet", large);
    const auto stored = ZETSettings::getNetworkSettings(L"LargeNet");
    verdict.expect(!stored || stored->plainBlob.getSize() != 256 * 1024,
                   "a profile too large for the disk isn't stored");
    verdict.expect(allItemsRead(0), "every item stored before reads back whole:" + statesOfItems());
    for (int index = 0; index < filled; ++index)
        verdict.expect(fillIntact(index), "filling value " + std::to_string(index) + " reads back whole");

    fs::remove(folder / "reserve");
    verdict.expect(setFill(key, filled) == ERROR_SUCCESS && fillIntact(filled), "with room again, a value is stored");
    verdict.expect(setFallbackKey(L"Large", L"large", 256 * 1024) == ERROR_SUCCESS && largeKeysStored(),
                   "with room again, setFallbackKeySettings stores");
    verdict.expect(writeAll(1), "with room again, every item is stored:" + statesOfItems());
    RegCloseKey(key);
    reportExposure(folder, verdict);
    return verdict.exitCode();
}

// The store folder named by ZET_REGISTRY_DIR can't be made: every setter fails in silence (the
// fallback keys' reports the registry's refusal where it is one), those under the named mutex
// throw; nothing is read, nothing is made.
int unmadeStoreCase(const Options& options)
{
    Violations verdict("unmade-store: ");
    if (options.number("as-nobody", 0) && !becomeNobody())
        return 3;
    const fs::path store = getenv("ZET_REGISTRY_DIR");
    HKEY key = nullptr;
    const LONG created = RegCreateKeyExW(HKEY_LOCAL_MACHINE, L"Software\\Orvane\\QXL", 0, nullptr, 0, KEY_ALL_ACCESS,
                                         nullptr, &key, nullptr);
    std::cout << "unmade-store: RegCreateKeyExW gave " << created << "\n";
    verdict.expect(created != ERROR_SUCCESS, "RegCreateKeyExW fails");
    for (const Item& item : items()) {
        // The chooser and the alerts go under the named mutex, whose lock file can't be made:
        // they fail aloud instead of running unguarded. The rest fail in silence.
        const bool guarded = std::string(item.name) == "chooser" || std::string(item.name) == "alert";
        try {
            item.write(0);
            verdict.expect(!guarded, std::string(item.name) + " ran without its mutex");
        } catch (const std::exception& error) {
            verdict.expect(guarded, std::string(item.name) + " threw " + error.what());
        }
        try {
            verdict.expect(item.read() < 0, std::string(item.name) + " reads nothing");
        } catch (const std::exception& error) {
            verdict.expect(guarded, std::string(item.name) + " threw " + error.what());
        }
    }
    std::error_code ignored;
    verdict.expect(!fs::exists(store, ignored), "no store folder is made");
    return verdict.exitCode();
}

int fullDisk(const Options&)
{
    // A mount of our own, seen by nobody else and gone with the process.
    if (unshare(CLONE_NEWNS) != 0 || mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0)
        return skipped("full-disk", std::string("no private mount namespace: ") + std::strerror(errno));
    RunDirectory folder("full");
    if (mount("zetsettings-full", folder.path().c_str(), "tmpfs", 0, "size=4m,mode=0755") != 0)
        return skipped("full-disk", std::string("tmpfs can't be mounted: ") + std::strerror(errno));
    folder.setMounted();
    return fullDiskOn(folder.path());
}

int unmadeStore(const Options&)
{
    RunDirectory run("unmade");
    const fs::path folder = run.path();
    Violations verdict("unmade-store: ");
    // Under a plain file: no one can make a folder there.
    std::ofstream((folder / "file").string()) << "not a folder";
    setenv("ZET_REGISTRY_DIR", (folder / "file" / "store").c_str(), 1);
    std::cout << runChecked({"unmade-store-case"}, 30000, verdict, "the case under a file");
    // Under a folder that only its owner, root, may write: a user without the right.
    if (geteuid() != 0)
        return verdict.exitCode() | skipped("unmade-store", "not root: no other user to act as");
    fs::create_directory(folder / "closed");
    chmod((folder / "closed").c_str(), 0755);
    setenv("ZET_REGISTRY_DIR", (folder / "closed" / "store").c_str(), 1);
    std::cout << runChecked({"unmade-store-case", "--as-nobody", "1"}, 30000, verdict, "the case of another user");
    return verdict.exitCode();
}

// A process that may use the store but not read the machine key: it gets no secret, and the
// rest as stored.
int unreadableKeyCase(const Options&)
{
    Violations verdict("unreadable-key: ");
    if (!becomeNobody())
        return 3;
    for (const Item& item : items()) {
        const int state = item.read();
        const std::string name = item.name;
        if (name == "user" || name == "login" || name == "keys")
            verdict.expect(state == kAbsent, name + " gives nothing, got " + nameOfState(state));
        else if (name == "profile")
            verdict.expect(state == kWithoutSecret,
                           "the profile comes without its secret, got " + nameOfState(state));
        else
            verdict.expect(state == 0, name + " reads as stored, got " + nameOfState(state));
    }
    return verdict.exitCode();
}

int unreadableKey(const Options&)
{
    if (geteuid() != 0)
        return skipped("unreadable-key", "not root: no other user to act as");
    RunDirectory run("key");
    const fs::path folder = run.path(), store = folder / "store";
    Violations verdict("unreadable-key: ");
    verdict.expect(createEapKey() && writeAll(0), "every item is stored");
    // The store becomes the other user's; the key stays root's, owner-only.
    for (const auto& entry : fs::recursive_directory_iterator(store))
        verdict.expect(chown(entry.path().c_str(), kNobody, kNobody) == 0, "the store is handed over");
    verdict.expect(chown(store.c_str(), kNobody, kNobody) == 0, "the store is handed over");
    const std::string key = fileBytes(folder / "store.key");
    std::cout << runChecked({"unreadable-key-case"}, 30000, verdict, "the other user's reads");
    verdict.expect(fileBytes(folder / "store.key") == key, "the key is left as it was");
    return verdict.exitCode();
}

const bool kRoles = addRoles({{"full-disk", fullDisk}, {"unmade-store", unmadeStore},
                              {"unmade-store-case", unmadeStoreCase}, {"unreadable-key", unreadableKey},
                              {"unreadable-key-case", unreadableKeyCase}});

}  // namespace
}  // namespace zetstress
