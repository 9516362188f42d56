// getNetworkCardsGuids: the machine's network cards, as the system lists them.
#include "zetsettings/ZETConfigParam.h"

#include <stdexcept>

#include "zetsettings/components/CRegistryKey.h"

using JetByteTools::CRegistryKey;

namespace {

// One subkey per card; its ServiceName value holds the card's GUID.
const wchar_t kNetworkCardsKey[] = L"Software\\Microsoft\\Windows NT\\CurrentVersion\\NetworkCards";
const wchar_t kServiceName[] = L"ServiceName";

}  // namespace

boost::shared_ptr<std::vector<std::wstring> > ZETConfigParam::getNetworkCardsGuids()
{
    boost::shared_ptr<std::vector<std::wstring> > guids(new std::vector<std::wstring>);
    // Any failure ends the walk: the caller gets the cards found up to there.
    try {
        CRegistryKey cards(HKEY_LOCAL_MACHINE, kNetworkCardsKey, KEY_READ);
        for (CRegistryKey::SubkeyIterator it = cards.BeginSubkeyIteration(); it != cards.EndSubkeyIteration();
             ++it) {
            CRegistryKey card = it.OpenKey(KEY_READ);
            const std::wstring guid = card.QueryValue(kServiceName).AsString();
            if (!guid.empty())
                guids->push_back(guid);
        }
    } catch (std::exception&) {
    } catch (CRegistryKey::Exception&) {
    }
    return guids;
}
