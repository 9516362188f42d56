#include "Forms.h"

#include <cwchar>
#include <cwctype>
#include <set>

namespace zetstress {
namespace {

uint64_t digest(const std::wstring& text, unsigned salt)
{
    uint64_t hash = 1469598103934665603ull ^ (salt * 0x9E3779B97F4A7C15ull);
    for (wchar_t c : text) {
        hash ^= static_cast<uint32_t>(c);
        hash *= 1099511628211ull;
    }
    return hash;
}

// Bytes of a length and content that only the tag decides; lengths vary so that a cut value
// shows as a short member rather than as a coincidence.
std::string derivedBytes(const std::wstring& tag, unsigned salt, std::size_t longest)
{
    uint64_t state = digest(tag, salt) | 1;
    std::string bytes(static_cast<std::size_t>(state % (longest + 1)), '\0');
    for (char& byte : bytes) {
        state ^= state << 13;
        state ^= state >> 7;
        state ^= state << 17;
        byte = static_cast<char>(state >> 24);
    }
    return bytes;
}

unsigned char derivedByte(const std::wstring& tag, unsigned salt)
{
    return static_cast<unsigned char>(digest(tag, salt) >> 40);
}

}  // namespace

bool sameForm(const ZETSerializeClass& found, const ZETSerializeClass& expected)
{
    ZETBuf foundBytes, expectedBytes;
    found.serializeToBuf(foundBytes);
    expected.serializeToBuf(expectedBytes);
    return foundBytes == expectedBytes;
}

bool TagOrder::operator<(const TagOrder& other) const
{
    return incarnation != other.incarnation ? incarnation < other.incarnation : sequence < other.sequence;
}

std::wstring makeTag(const std::wstring& name, unsigned long incarnation, unsigned long sequence)
{
    return name + L"#" + std::to_wstring(incarnation) + L"." + std::to_wstring(sequence);
}

bool parseTag(const std::wstring& tag, std::wstring& name, TagOrder& order)
{
    const std::size_t hash = tag.rfind(L'#');
    int used = 0;
    if (hash == std::wstring::npos || tag.find_first_not_of(L"0123456789.", hash + 1) != std::wstring::npos ||
        swscanf(tag.c_str() + hash + 1, L"%lu.%lu%n", &order.incarnation, &order.sequence, &used) != 2 ||
        hash + 1 + static_cast<std::size_t>(used) != tag.size())
        return false;
    name = tag.substr(0, hash);
    return true;
}

std::string narrow(const std::wstring& text)
{
    std::string out;
    for (wchar_t c : text)
        out += c < 0x80 ? static_cast<char>(c) : '?';
    return out;
}

std::string utf16(const std::wstring& text)
{
    std::string bytes;
    for (wchar_t c : text)
        bytes.append({static_cast<char>(c & 0xFF), static_cast<char>((c >> 8) & 0xFF)});
    return bytes;
}

std::wstring lowerCase(std::wstring text)
{
    for (wchar_t& c : text)
        c = static_cast<wchar_t>(std::towlower(c));
    return text;
}

boost::shared_ptr<ZETNetworkSettings> profileForm(const std::wstring& tag)
{
    boost::shared_ptr<ZETNetworkSettings> record(new ZETNetworkSettings);
    record->profileText = tag;
    record->profileFlag1 = derivedByte(tag, 1);
    record->profileFlag2 = derivedByte(tag, 2);
    record->profileFlag3 = derivedByte(tag, 3);
    record->profileFlag4 = derivedByte(tag, 4);
    const std::string secret = derivedBytes(tag, 5, 96);
    const std::string plain = derivedBytes(tag, 6, 160);
    record->protectedBlob = ZETBuf(secret.data(), secret.size());
    record->plainBlob = ZETBuf(plain.data(), plain.size());
    return record;
}

boost::shared_ptr<ZETFallbackSettings> fallbackForm(const std::wstring& owner, const std::wstring& network,
                                                    const std::wstring& tag)
{
    boost::shared_ptr<ZETFallbackSettings> record(new ZETFallbackSettings);
    record->owner = owner;
    record->network = network;
    record->fallbackBytes1 = narrow(tag) + "|" + derivedBytes(tag, 7, 64);
    record->fallbackBytes2 = derivedBytes(tag, 8, 64);
    return record;
}

bool isFallbackForm(const ZETFallbackSettings& record, std::wstring& tag)
{
    const std::size_t bar = record.fallbackBytes1.find('|');
    if (bar == std::string::npos)
        return false;
    tag.assign(record.fallbackBytes1.begin(), record.fallbackBytes1.begin() + bar);
    std::wstring name;
    TagOrder order;
    if (!parseTag(tag, name, order) || name != record.owner + L"/" + record.network)
        return false;
    return sameForm(record, *fallbackForm(record.owner, record.network, tag));
}

ZETPreferredNetEntry entryForm(const std::wstring& tag)
{
    ZETPreferredNetEntry entry;
    entry.netName = tag;
    unsigned char mac[6];
    for (unsigned i = 0; i < sizeof(mac); ++i)
        mac[i] = derivedByte(tag, 20 + i);
    entry.macAddress.assign(mac, sizeof(mac));
    entry.entryFlag = derivedByte(tag, 12);
    entry.matchKind = derivedByte(tag, 13) % 4;
    entry.matchByte1 = derivedByte(tag, 14);
    entry.matchByte2 = derivedByte(tag, 15);
    return entry;
}

boost::shared_ptr<ZETUserSettings> userForm(const std::wstring& tag)
{
    boost::shared_ptr<ZETUserSettings> record(new ZETUserSettings);
    record->userText = tag;
    record->userBytes = derivedBytes(tag, 16, 48);
    return record;
}

boost::shared_ptr<ZETPreferredNetworks> listForm(const std::wstring& tagPrefix, unsigned count, unsigned position)
{
    boost::shared_ptr<ZETPreferredNetworks> list(new ZETPreferredNetworks);
    for (unsigned i = 0; i < count; ++i)
        list->entries.push_back(entryForm(tagPrefix + L"e" + std::to_wstring(i)));
    list->position = static_cast<unsigned char>(position);
    return list;
}

std::string listFault(const ZETPreferredNetworks& list)
{
    if (list.position > list.entries.size())
        return "position " + std::to_string(list.position) + " past " + std::to_string(list.entries.size()) +
               " entries";
    std::set<std::wstring> names;
    for (const ZETPreferredNetEntry& entry : list.entries) {
        if (!sameForm(entry, entryForm(entry.netName)))
            return "entry '" + narrow(entry.netName) + "' was never written in this form";
        if (!names.insert(entry.netName).second)
            return "entry '" + narrow(entry.netName) + "' stands twice";
    }
    return std::string();
}

bool readRegistryBinary(const std::wstring& subkey, const std::wstring& value, std::string& bytes, long& status)
{
    bytes.clear();
    HKEY key = nullptr;
    status = RegOpenKeyExW(HKEY_LOCAL_MACHINE, subkey.c_str(), 0, KEY_READ, &key);
    if (status != ERROR_SUCCESS)
        return false;
    DWORD type = 0;
    DWORD size = 0;
    status = RegQueryValueExW(key, value.c_str(), nullptr, &type, nullptr, &size);
    // The value may grow between the two calls: ask again until it fits.
    while (status == ERROR_SUCCESS || status == ERROR_MORE_DATA) {
        bytes.resize(size);
        status = RegQueryValueExW(key, value.c_str(), nullptr, &type,
                                  reinterpret_cast<BYTE*>(bytes.empty() ? nullptr : &bytes[0]), &size);
        if (status == ERROR_SUCCESS) {
            bytes.resize(size);
            break;
        }
    }
    RegCloseKey(key);
    return status == ERROR_SUCCESS;
}

}  // namespace zetstress
