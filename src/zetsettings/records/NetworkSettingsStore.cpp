// One ZETNetworkSettings per wireless network, one binary value each under NetworkSettings,
// its value name the network's name with its case bitmap. Only protectedBlob is encrypted:
// the value holds the clear members around the ciphertext of protectedBlob's own serial form.
#include "zetsettings/ZETSettings.h"

#include <cstdlib>
#include <utility>

#include "zetsettings/components/ZETMutexGrabber.h"
#include "zetsettings/components/ZETProtectData.h"
#include "zetsettings/platform/RegistryBatch.h"
#include "zetsettings/store/MallocedPtr.h"

using JetByteTools::CRegistryKey;

namespace {

// Reads the value into record and decrypts its protected member. False, with record
// untouched, when the registry component handed out no data; stored bytes that are short or
// corrupt fill the record as far as they go.
bool readProfile(const CRegistryKey& key, const std::wstring& valueName, ZETNetworkSettings& record,
                 ZETProtectData& protector)
{
    BYTE* rawData = 0;
    DWORD length = 0;
    key.QueryValue(valueName.c_str(), &rawData, length);
    zet::MallocedPtr<BYTE> data(rawData);
    if (!data)
        return false;
    record.deserialize(data.get(), static_cast<int>(length));
    data.reset();
    // Runs whatever deserialize managed to read.
    const ZETBuf plain = protector.decryptData(record.protectedBlob, ZETBuf(""));
    record.protectedBlob.deserializeFromBuf(plain);
    return true;
}

// Replaces the record's protectedBlob by the ciphertext of its serial form.
void encryptProtectedMember(ZETNetworkSettings& record, ZETProtectData& protector)
{
    ZETBuf plain;
    std::as_const(record.protectedBlob).serializeToBuf(plain);
    record.protectedBlob = protector.encryptData(plain, ZETBuf(""));
}

}  // namespace

void ZETSettings::setNetworkSettings(const std::wstring& name, boost::shared_ptr<ZETNetworkSettings> settings)
{
    ZETMutexGrabber grabber(sm_mutex, true);
    zet::RegistryBatch batch;
    ZETProtectData protector;
    if (!settings || name.empty())
        return;
    try {
        CRegistryKey key = getNetworkSettingsKey();
        // The caller's record keeps the ciphertext: nothing restores the plain form.
        encryptProtectedMember(*settings, protector);
        const int length = settings->getSerLength();
        zet::MallocedPtr<BYTE> block(static_cast<BYTE*>(std::malloc(static_cast<std::size_t>(length))));
        if (block) {
            settings->serialize(block.get());
            key.SetValue(createCaseBitmap(name).c_str(), block.get(), static_cast<DWORD>(length));
        }
    } catch (CRegistryKey::Exception&) {
    }
}

boost::shared_ptr<ZETNetworkSettings> ZETSettings::getNetworkSettings(const std::wstring& name)
{
    ZETMutexGrabber grabber(sm_mutex, true);
    zet::RegistryBatch batch;
    ZETProtectData protector;
    boost::shared_ptr<ZETNetworkSettings> result(new ZETNetworkSettings);
    if (name.empty())
        return result;
    try {
        CRegistryKey key = getNetworkSettingsKey();
        readProfile(key, createCaseBitmap(name), *result, protector);
    } catch (CRegistryKey::Exception&) {
        // An absent value lands here too: the null pointer says nothing was found.
        result.reset();
    }
    return result;
}

boost::shared_ptr<ZETNetworkSettings> ZETSettings::deleteNetworkSettings(const std::wstring& name)
{
    ZETMutexGrabber grabber(sm_mutex, true);
    zet::RegistryBatch batch;
    ZETProtectData protector;
    boost::shared_ptr<ZETNetworkSettings> removed(new ZETNetworkSettings);
    if (name.empty())
        return removed;
    try {
        CRegistryKey key = getNetworkSettingsKey();
        // Deleted whether or not the stored bytes could be read.
        if (readProfile(key, createCaseBitmap(name), *removed, protector))
            key.DeleteValue(createCaseBitmap(name).c_str());
    } catch (CRegistryKey::Exception&) {
        removed.reset();
    }
    return removed;
}

std::vector<std::wstring> ZETSettings::getNetworkSettingsKeys()
{
    ZETMutexGrabber grabber(sm_mutex, true);
    zet::RegistryBatch batch;
    std::vector<std::wstring> names;
    try {
        CRegistryKey key = getNetworkSettingsKey();
        // Every value is listed, in the registry's order, foreign ones included; a name with
        // too few case digits throws std::out_of_range, which is not caught.
        const CRegistryKey::ValueIterator end = key.EndValueIteration();
        for (CRegistryKey::ValueIterator value = key.BeginValueIteration(); value != end; ++value)
            names.push_back(removeCaseBitmap(value.GetName()));
    } catch (CRegistryKey::Exception&) {
        // The names gathered so far.
    }
    return names;
}
