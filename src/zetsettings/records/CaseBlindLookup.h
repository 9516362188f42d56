// Lookup of a name in a map keyed by names that match in any case (user names, owners).
#ifndef ZETSETTINGS_RECORDS_CASEBLINDLOOKUP_H
#define ZETSETTINGS_RECORDS_CASEBLINDLOOKUP_H

#include <string>

#include "zetsettings/components/ZETMiscUtil.h"

namespace zet {
namespace records {

// The first entry, in map order, whose key equals name in lower case; end() when none does.
// A walk rather than a search of the tree: keys that reached the store from outside may be in
// any case, and they must still be found.
template <class Map>
typename Map::iterator findCaseBlind(Map& map, const std::wstring& name)
{
    std::wstring wanted(name);
    ZETMiscUtil::toLower(wanted);
    std::wstring key;
    for (typename Map::iterator entry = map.begin(); entry != map.end(); ++entry) {
        key = entry->first;
        ZETMiscUtil::toLower(key);
        if (key == wanted)
            return entry;
    }
    return map.end();
}

}  // namespace records
}  // namespace zet

#endif
