// Record forms whose every byte follows from a tag, so that a reader can tell a form that was
// written whole from a torn or cut one without knowing what the writer last did.
//
// A tag reads "<name>#<incarnation>.<sequence>": the record it belongs to, the writer process
// (incarnations are handed out in increasing order by the driver) and that writer's count.
#ifndef ZETSETTINGS_TESTS_STRESS_FORMS_H
#define ZETSETTINGS_TESTS_STRESS_FORMS_H

#include <cstdint>
#include <string>

#include <zetsettings/ZETSettings.h>

namespace zetstress {

struct TagOrder {
    unsigned long incarnation = 0;
    unsigned long sequence = 0;
    bool operator<(const TagOrder& other) const;
};

// Whether a record gives the same bytes as the form given; with the form of the tag it holds, whether
// it is one written whole.
bool sameForm(const ZETSerializeClass& found, const ZETSerializeClass& expected);

std::wstring makeTag(const std::wstring& name, unsigned long incarnation, unsigned long sequence);
// False for text that is not a tag; name and order are left alone then.
bool parseTag(const std::wstring& tag, std::wstring& name, TagOrder& order);

boost::shared_ptr<ZETNetworkSettings> profileForm(const std::wstring& tag);

// owner and network are the record's place; the tag's name must be "<owner>/<network>".
boost::shared_ptr<ZETFallbackSettings> fallbackForm(const std::wstring& owner, const std::wstring& network,
                                                    const std::wstring& tag);
bool isFallbackForm(const ZETFallbackSettings& record, std::wstring& tag);

ZETPreferredNetEntry entryForm(const std::wstring& tag);

boost::shared_ptr<ZETUserSettings> userForm(const std::wstring& tag);

// A list of fresh entries; the library brings position down if it stands past the end.
boost::shared_ptr<ZETPreferredNetworks> listForm(const std::wstring& tagPrefix, unsigned count,
                                                 unsigned position);

// Why the stored list is not one that was written whole, or empty when it is.
std::string listFault(const ZETPreferredNetworks& list);

std::string narrow(const std::wstring& text);
// Little-endian UTF-16, as .reg files and the library's strings are.
std::string utf16(const std::wstring& text);
// The form in which the store keeps an owner's name.
std::wstring lowerCase(std::wstring text);

// A stored value is one whole serial form when the record takes all its bytes and gives the
// same bytes back; a cut or spliced value fails one of the two.
template <typename Record>
bool isWholeForm(const std::string& bytes, Record& record)
{
    const int length = static_cast<int>(bytes.size());
    if (record.deserialize(reinterpret_cast<const unsigned char*>(bytes.data()), length) != length ||
        record.getSerLength() != length)
        return false;
    std::string again(bytes.size(), '\0');
    record.serialize(reinterpret_cast<unsigned char*>(&again[0]));
    return again == bytes;
}

// Where the chooser's list and the alert states lie, for reads below the library.
const wchar_t* const kSettingsKey = L"Software\\Orvane\\QXL\\Settings";
const wchar_t* const kListValue = L"ZET_NC_PREFERRED_NETWORKS";
const wchar_t* const kAlertValue = L"ZET_ALERT_SETTINGS";

// A binary value read through the registry functions, below the library: empty when absent.
bool readRegistryBinary(const std::wstring& subkey, const std::wstring& value, std::string& bytes,
                        long& status);

// Reads a value of the settings key below the library: "" when it holds one whole form of the
// record, "absent" when there is none, else what is wrong with it.
template <typename Record>
std::string readStored(const wchar_t* value, Record& record)
{
    std::string bytes;
    long status = 0;
    if (!readRegistryBinary(kSettingsKey, value, bytes, status))
        return status == ERROR_FILE_NOT_FOUND ? "absent" : "unreadable, error " + std::to_string(status);
    return isWholeForm(bytes, record) ? "" : "not one whole form (" + std::to_string(bytes.size()) + " bytes)";
}

}  // namespace zetstress

#endif
