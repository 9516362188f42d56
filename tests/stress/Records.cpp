#include "Records.h"

#include <set>
#include <sstream>

namespace zetstress {
namespace {

std::wstring numbered(const wchar_t* prefix, long process, long thread, unsigned k)
{
    return prefix + std::to_wstring(process) + L"-t" + std::to_wstring(thread) + L"-n" + std::to_wstring(k);
}

// The tag, when it is one of this record's; else empty.
std::wstring ownTag(const std::wstring& name, const std::wstring& tag)
{
    std::wstring tagName;
    TagOrder order;
    return parseTag(tag, tagName, order) && tagName == lowerCase(name) ? tag : L"";
}

// "<owner>/<network>": the owner is the writer's, in mixed case, which the store may change;
// the network's is kept, so it is lower case already for the tag's sake.
std::pair<std::wstring, std::wstring> fallbackPlace(const std::wstring& name)
{
    return {name.substr(0, name.find(L'/')), name.substr(name.find(L'/') + 1)};
}

std::vector<std::wstring> fallbackPlaces()
{
    std::vector<std::wstring> places;
    const boost::shared_ptr<std::vector<std::wstring>> owners = ZETSettings::getListOfOwners();
    for (const std::wstring& owner : *owners) {
        const boost::shared_ptr<std::vector<std::wstring>> networks = ZETSettings::getListOfNetworks(owner);
        for (const std::wstring& network : *networks)
            places.push_back(owner + L"/" + network);
    }
    return places;
}

// Read below the library, where a lost state shows, and through it, which must agree; read
// again while they don't, as a writer may change the state between the two reads.
bool readAlert(const std::wstring& name, std::wstring& state)
{
    for (int attempt = 0; attempt < 3; ++attempt) {
        ZETAlertSettings stored;
        const std::string read = readStored(kAlertValue, stored);
        const auto found = stored.states.find(TSerVar<unsigned int>(std::stoi(name)));
        if (read == "absent" || (read.empty() && found == stored.states.end()))
            return false;
        const bool agrees = read.empty() && found->second.value ==
                                                unsigned(ZETSettings::isAlertNotificationEnabled(std::stoi(name)));
        state = agrees ? std::to_wstring(found->second.value) : L"";
        if (agrees)
            break;
    }
    return true;
}

std::vector<std::wstring> listAlerts()
{
    ZETAlertSettings stored;
    readStored(kAlertValue, stored);
    std::vector<std::wstring> names;
    for (const auto& state : stored.states)
        names.push_back(std::to_wstring(state.first));
    return names;
}

}  // namespace

const Kind kKinds[kKindCount] = {
    {"alert ", 32, [](long p, long t, unsigned k) { return std::to_wstring(100000 + p * 1000 + t * 100 + k); },
     [](const std::wstring& name, const std::wstring& state) {
         ZETSettings::updateAlertNotificationState(std::stoi(name), state == L"1");
     },
     readAlert, listAlerts, true, true},
    {"user ", 8, [](long p, long t, unsigned k) { return numbered(L"u-p", p, t, k); },
     [](const std::wstring& name, const std::wstring& tag) { ZETSettings::setUserSettings(name, userForm(tag)); },
     [](const std::wstring& name, std::wstring& tag) {
         const boost::shared_ptr<ZETUserSettings> record = ZETSettings::getUserSettings(name);
         tag = record && sameForm(*record, *userForm(record->userText)) ? ownTag(name, record->userText) : L"";
         return bool(record);
     },
     nullptr, false, true},
    {"profile ", 4, [](long p, long t, unsigned k) { return numbered(L"p", p, t, k); },
     [](const std::wstring& name, const std::wstring& tag) { ZETSettings::setNetworkSettings(name, profileForm(tag)); },
     [](const std::wstring& name, std::wstring& tag) {
         const boost::shared_ptr<ZETNetworkSettings> record = ZETSettings::getNetworkSettings(name);
         tag = record && sameForm(*record, *profileForm(record->profileText)) ? ownTag(name, record->profileText) : L"";
         return bool(record);
     },
     ZETSettings::getNetworkSettingsKeys, false, true},
    // Writers of the fallback database in other processes may put back an older form of a
    // record (their rewrite of the whole database is ordered only within a process), so the
    // check is that it is there and whole.
    {"fallback record ", 2,
     [](long p, long t, unsigned k) {
         return L"Owner-P" + std::to_wstring(p) + L"/t" + std::to_wstring(t) + L"n" + std::to_wstring(k);
     },
     [](const std::wstring& name, const std::wstring& tag) {
         ZETSettings::setFallbackSettings(fallbackForm(fallbackPlace(name).first, fallbackPlace(name).second, tag));
     },
     [](const std::wstring& name, std::wstring& tag) {
         const auto record = ZETSettings::getFallbackSettings(fallbackPlace(name).first, fallbackPlace(name).second);
         if (!record || !isFallbackForm(*record, tag))
             tag.clear();
         tag = ownTag(name, tag);
         return bool(record);
     },
     fallbackPlaces, false, false},
};

void RecordWriter::write(std::size_t kind, const std::wstring& name)
{
    written[kind][name] = kKinds[kind].onOff ? std::to_wstring(draw(2)) : tag(name);
    kKinds[kind].write(name, written[kind][name]);
}

States readAll(long processes, long threads, Violations& fault)
{
    States found;
    for (std::size_t which = 0; which < kKindCount; ++which) {
        const Kind& kind = kKinds[which];
        // Listed first: writers may go on, but nothing is ever removed.
        const std::vector<std::wstring> listed = kind.list ? kind.list() : std::vector<std::wstring>();
        std::set<std::wstring> present;
        for (long p = 0; p < processes; ++p)
            for (long t = 0; t < threads; ++t)
                for (unsigned k = 0; k < kind.perThread; ++k) {
                    const std::wstring name = kind.name(p, t, k);
                    std::wstring state;
                    if (!kind.read(name, state))
                        continue;
                    present.insert(lowerCase(name));
                    if (state.empty() || (kind.onOff && state != L"0" && state != L"1"))
                        fault(kind.what + narrow(name) + " holds a form never written: '" + narrow(state) + "'");
                    else
                        found[which][name] = state;
                }
        for (const std::wstring& name : listed)
            fault.expect(present.count(lowerCase(name)) != 0,
                         kind.what + narrow(name) + " is listed but was never written or can't be read");
    }
    return found;
}

void compareStates(const States& before, const States& after, bool exact, Violations& fault)
{
    for (std::size_t which = 0; which < kKindCount; ++which)
        for (const auto& record : before[which]) {
            const std::string what = kKinds[which].what + narrow(record.first);
            const auto now = after[which].find(record.first);
            std::wstring name;
            TagOrder then, later;
            if (now == after[which].end())
                fault(what + " was lost");
            else if (kKinds[which].lastWins && exact && now->second != record.second)
                fault(what + " holds '" + narrow(now->second) + "', not '" + narrow(record.second) + "'");
            else if (kKinds[which].lastWins && parseTag(record.second, name, then) &&
                     parseTag(now->second, name, later) && later < then)
                fault(what + " went back from " + narrow(record.second) + " to " + narrow(now->second));
        }
}

void printStates(const States& states, std::ostream& out)
{
    for (std::size_t kind = 0; kind < kKindCount; ++kind)
        for (const auto& record : states[kind])
            out << kind << " " << narrow(record.first) << " " << narrow(record.second) << "\n";
}

bool parseState(const std::string& line, States& states)
{
    std::istringstream fields(line);
    std::size_t kind = kKindCount;
    std::string name, state;
    if (!(fields >> kind >> name >> state) || kind >= kKindCount)
        return false;
    states[kind][std::wstring(name.begin(), name.end())] = std::wstring(state.begin(), state.end());
    return true;
}

}  // namespace zetstress
