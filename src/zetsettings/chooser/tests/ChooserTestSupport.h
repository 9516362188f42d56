// What the chooser and alert tests share: entries built in one line, lists stored and read
// back by name, and the raw bytes of the values in Settings, read and planted past the
// library with the bare Win32 calls.
#ifndef ZETSETTINGS_CHOOSER_TESTS_CHOOSERTESTSUPPORT_H
#define ZETSETTINGS_CHOOSER_TESTS_CHOOSERTESTSUPPORT_H

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "zetsettings/ZETSettings.h"

namespace choosertest {

const std::wstring kSettings = L"Software\\Orvane\\QXL\\Settings";
const std::wstring kListValue = L"ZET_NC_PREFERRED_NETWORKS";
const std::wstring kAlertValue = L"ZET_ALERT_SETTINGS";
const std::wstring kActiveValue = L"ZET_NC_ACTIVE";

typedef std::vector<std::wstring> Names;

inline ZETPreferredNetEntry entry(const std::wstring& name, unsigned char matchKind = 0, unsigned char byte1 = 0,
                                  unsigned char byte2 = 0, const std::string& mac = "", unsigned char flag = 0)
{
    ZETPreferredNetEntry made;
    made.netName = name;
    made.macAddress.assign(mac.data(), mac.size());
    made.entryFlag = flag;
    made.matchKind = matchKind;
    made.matchByte1 = byte1;
    made.matchByte2 = byte2;
    return made;
}

inline boost::shared_ptr<ZETPreferredNetworks> listOf(const std::vector<std::wstring>& names,
                                                       unsigned char position = 0)
{
    boost::shared_ptr<ZETPreferredNetworks> list(new ZETPreferredNetworks);
    for (const std::wstring& name : names)
        list->entries.push_back(entry(name));
    list->position = position;
    return list;
}

inline void storeList(const std::vector<std::wstring>& names, unsigned char position = 0)
{
    ZETSettings::updateChooserPreferredNets(listOf(names, position));
}

inline std::vector<std::wstring> namesOf(const ZETPreferredNetworks& list)
{
    std::vector<std::wstring> names;
    for (const ZETPreferredNetEntry& stored : list.entries)
        names.push_back(stored.netName);
    return names;
}

inline std::vector<std::wstring> storedNames()
{
    return namesOf(*ZETSettings::getChooserPreferredNets());
}

inline unsigned storedPosition()
{
    return ZETSettings::getChooserPreferredNets()->position.value;
}

// The name of the entry that the walk hands out next, "" for nothing; wrapped as it comes.
inline std::wstring step(bool first, bool& wrapped)
{
    boost::shared_ptr<ZETPreferredNetEntry> next = ZETSettings::nextChooserPreferredNet(first, wrapped);
    return next ? std::wstring(next->netName) : std::wstring();
}

inline std::string serialForm(const ZETSerializeInterface& object)
{
    std::string bytes(static_cast<size_t>(object.getSerLength()), '\0');
    object.serialize(reinterpret_cast<unsigned char*>(&bytes[0]));
    return bytes;
}

inline std::string hex(const std::string& bytes)
{
    static const char digits[] = "0123456789ABCDEF";
    std::string text;
    for (unsigned char byte : bytes) {
        text += digits[byte >> 4];
        text += digits[byte & 15];
    }
    return text;
}

// The value's data as stored in Settings; false when it is absent or unreadable.
inline bool readRaw(const std::wstring& name, std::string& data, DWORD* type = 0)
{
    HKEY key = 0;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, kSettings.c_str(), 0, KEY_READ, &key) != ERROR_SUCCESS)
        return false;
    DWORD size = 0;
    LSTATUS status = RegQueryValueExW(key, name.c_str(), 0, type, 0, &size);
    data.assign(size, '\0');
    if (status == ERROR_SUCCESS && size > 0)
        status = RegQueryValueExW(key, name.c_str(), 0, type, reinterpret_cast<BYTE*>(&data[0]), &size);
    RegCloseKey(key);
    return status == ERROR_SUCCESS;
}

inline bool rawExists(const std::wstring& name)
{
    std::string ignored;
    return readRaw(name, ignored);
}

inline std::string rawValue(const std::wstring& name)
{
    std::string data;
    EXPECT_TRUE(readRaw(name, data)) << "no value " << std::string(name.begin(), name.end());
    return data;
}

inline void writeRaw(const std::wstring& name, const void* data, size_t size, DWORD type)
{
    HKEY key = 0;
    ASSERT_EQ(ERROR_SUCCESS, RegCreateKeyExW(HKEY_LOCAL_MACHINE, kSettings.c_str(), 0, 0, 0, KEY_ALL_ACCESS, 0,
                                             &key, 0));
    EXPECT_EQ(ERROR_SUCCESS,
              RegSetValueExW(key, name.c_str(), 0, type, static_cast<const BYTE*>(data), static_cast<DWORD>(size)));
    RegCloseKey(key);
}

inline void plantBytes(const std::wstring& name, const std::string& bytes)
{
    writeRaw(name, bytes.data(), bytes.size(), REG_BINARY);
}

inline void plantDword(const std::wstring& name, DWORD value)
{
    writeRaw(name, &value, sizeof value, REG_DWORD);
}

// A record's form with a stray byte behind it. The library reads past the tail and drops it
// whenever it writes the value again, so a tail still in place proves that nothing was written.
inline std::string withTail(const ZETSerializeInterface& record)
{
    return serialForm(record) + std::string(1, '\x5A');
}

// A folder of the test's own for files that child processes leave for the parent.
class ScratchFolder {
public:
    ScratchFolder()
    {
        static int counter = 0;
        path_ = std::filesystem::temp_directory_path() /
                ("zetsettings-chooser-" + std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()) +
                 "-" + std::to_string(counter++));
        std::filesystem::create_directories(path_);
    }
    ~ScratchFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    std::string file(const std::string& name) const { return (path_ / name).string(); }

private:
    std::filesystem::path path_;
};

inline void touch(const std::string& path)
{
    std::ofstream(path) << "1";
}

// Polls for a file; false when it did not come within the time.
inline bool waitForFile(const std::string& path, std::chrono::milliseconds limit = std::chrono::seconds(20))
{
    const auto until = std::chrono::steady_clock::now() + limit;
    while (!std::filesystem::exists(path)) {
        if (std::chrono::steady_clock::now() > until)
            return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

}  // namespace choosertest

#endif
