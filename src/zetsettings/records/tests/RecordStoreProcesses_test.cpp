// The record stores seen from other processes: what one writes another reads (decryption
// included), and a process without write rights changes nothing.
#include <gtest/gtest.h>

#include <string>

#include "support/ChildProcess.h"
#include "support/ChildScenario.h"
#include "support/ProcessRights.h"
#include "zetsettings/records/tests/RecordStoreTestSupport.h"

using namespace recordtest;

namespace {

// Writes one record to each store, its texts tagged.
void writeEveryStore(const std::wstring& tag)
{
    ZETSettings::setLoginData(tag + L" user", tag + L" pw", true, true, false);
    boost::shared_ptr<ZETUserSettings> user(new ZETUserSettings);
    user->userText = tag;
    ZETSettings::setUserSettings(L"User", user);
    boost::shared_ptr<ZETFallbackSettings> record(new ZETFallbackSettings);
    record->owner = L"Owner";
    record->network = L"Net";
    record->fallbackBytes1 = std::string(tag.begin(), tag.end());
    ZETSettings::setFallbackSettings(record);
    // Last: the one set that may throw.
    boost::shared_ptr<std::map<std::wstring, ZETFallbackKeySettings> > keys(
        new std::map<std::wstring, ZETFallbackKeySettings>);
    (*keys)[L"key"].keyText1 = tag;
    ZETSettings::setFallbackKeySettings(keys);
}

// What each store holds, tagged as writeEveryStore tags it.
std::wstring readEveryStore()
{
    std::wstring user, password;
    bool enabled = false, keep = false, dependent = false;
    ZETSettings::getLoginData(user, password, enabled, keep, dependent);
    const auto settings = ZETSettings::getUserSettings(L"user");
    const auto keys = ZETSettings::getFallbackKeySettings();
    const auto record = ZETSettings::getFallbackSettings(L"owner", L"Net");
    return user + L"," + password + (enabled && keep && !dependent ? L",flags" : L",?") + L"," +
           (settings ? settings->userText : L"-") + L"," + (keys->count(L"key") ? keys->at(L"key").keyText1 : L"-") +
           L"," + (record ? std::wstring(record->fallbackBytes1.begin(), record->fallbackBytes1.end()) : L"-");
}

const wchar_t kChildView[] = L"child user,child pw,flags,child,child,child";
const wchar_t kParentView[] = L"parent user,parent pw,flags,parent,parent,parent";

ZET_CHILD_SCENARIO(RecordStoresWrite)
{
    writeEveryStore(std::wstring(args.at(0).begin(), args.at(0).end()));
    return 0;
}

ZET_CHILD_SCENARIO(RecordStoresRead)
{
    return readEveryStore() == std::wstring(args.at(0).begin(), args.at(0).end()) ? 0 : 1;
}

class RecordStoreProcessesTest : public zettest::RegistryTest {};

TEST_F(RecordStoreProcessesTest, WhatOneProcessWritesAnotherReads)
{
    ASSERT_EQ(0, zettest::runChild("RecordStoresWrite", {"child"}));
    EXPECT_EQ(kChildView, readEveryStore());
    writeEveryStore(L"parent");
    const std::wstring view(kParentView);
    EXPECT_EQ(0, zettest::runChild("RecordStoresRead", {std::string(view.begin(), view.end())}));
}

// Run by a user that may read the store but not write it: every write is refused. The fallback
// keys may report it, or, where such a user can't use data protection either, write nothing.
ZET_CHILD_SCENARIO(RecordStoresWithoutWriteRights)
{
    (void)args;
    if (!zettest::becomeUnprivileged())
        return 2;
    try {
        writeEveryStore(L"intruder");
    } catch (JetByteTools::CRegistryKey::Exception& e) {
        if (e.GetError() != ERROR_ACCESS_DENIED)
            return 3;
    }
    ZETSettings::removeUserSettings(L"user");
    ZETSettings::removeLoginData();
    ZETSettings::removeFallbackSettings(L"owner", L"Net");
    return 0;
}

TEST_F(RecordStoreProcessesTest, AProcessWithoutWriteRightsChangesNothing)
{
    if (!zettest::canDropPrivileges())
        GTEST_SKIP() << "this registry grants every process every right";
    writeEveryStore(L"parent");
    ASSERT_EQ(0, zettest::runChild("RecordStoresWithoutWriteRights"));
    EXPECT_EQ(kParentView, readEveryStore());
}

}  // namespace
