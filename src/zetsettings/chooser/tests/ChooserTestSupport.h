// What the chooser and alert tests share: entries and lists built in one line, and the values
// of Settings read and planted in hex past the library, with the bare Win32 calls.
#ifndef ZETSETTINGS_CHOOSER_TESTS_CHOOSERTESTSUPPORT_H
#define ZETSETTINGS_CHOOSER_TESTS_CHOOSERTESTSUPPORT_H

#include "zetsettings/serial/tests/SerialTestBytes.h"
#include "zetsettings/store/tests/StoreTestSupport.h"

namespace choosertest {

using zetserialtest::entry;

const std::wstring kSettings = L"Software\\Orvane\\QXL\\Settings";
const std::wstring kListValue = L"ZET_NC_PREFERRED_NETWORKS";
const std::wstring kAlertValue = L"ZET_ALERT_SETTINGS";
const std::wstring kActiveValue = L"ZET_NC_ACTIVE";

typedef std::vector<std::wstring> Names;
typedef std::vector<ZETPreferredNetEntry> Entries;

inline Entries entriesNamed(const Names& names)
{
    Entries made;
    for (const std::wstring& name : names)
        made.push_back(entry(name));
    return made;
}

inline boost::shared_ptr<ZETPreferredNetworks> listOf(const Entries& entries, unsigned char position = 0)
{
    boost::shared_ptr<ZETPreferredNetworks> list(new ZETPreferredNetworks);
    list->entries.assign(entries.begin(), entries.end());
    list->position = position;
    return list;
}

inline Names namesOf(const ZETPreferredNetworks& list)
{
    Names names;
    for (const ZETPreferredNetEntry& stored : list.entries)
        names.push_back(stored.netName);
    return names;
}

// The name of the entry that the walk hands out, "" for nothing.
inline std::wstring step(bool first, bool& wrapped)
{
    boost::shared_ptr<ZETPreferredNetEntry> next = ZETSettings::nextChooserPreferredNet(first, wrapped);
    return next ? std::wstring(next->netName) : std::wstring();
}

inline std::string hex(const std::string& bytes)
{
    static const char digits[] = "0123456789ABCDEF";
    std::string text;
    for (unsigned char byte : bytes)
        text.append({digits[byte >> 4], digits[byte & 15]});
    return text;
}

inline std::string serialHex(const ZETSerializeInterface& object)
{
    return hex(zetserialtest::plainForm(object));
}

// The value's data in hex as stored in Settings; "absent" when there is none.
inline std::string storedHex(const std::wstring& name, DWORD* type = 0)
{
    const rawreg::RawValue value = rawreg::read(kSettings, name);
    if (type)
        *type = value.type;
    return value.status == ERROR_SUCCESS ? hex(std::string(value.data.begin(), value.data.end())) : "absent";
}

// Writes the value's data, given in hex, past the library.
inline void plant(const std::wstring& name, const std::string& hexData, DWORD type = REG_BINARY)
{
    const zetserialtest::Bytes bytes = zetserialtest::hex(hexData);
    ASSERT_EQ(ERROR_SUCCESS, rawreg::write(kSettings, name, type, bytes.data(), static_cast<DWORD>(bytes.size())));
}

// A stray byte planted behind a record's form: the library drops it whenever it writes the
// value, so a tail still in place proves that nothing was written.
const std::string kTail = "5A";

inline bool tailStillThere(const std::wstring& name)
{
    const std::string stored = storedHex(name);
    return stored.size() >= 2 && stored.substr(stored.size() - 2) == kTail;
}

}  // namespace choosertest

#endif
