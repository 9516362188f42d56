// The record stores seen from other processes: what one writes another reads (decryption
// included), and a process that may not write the registry changes nothing.
#include <memory>

#include "zetsettings/records/tests/RecordStoreTestSupport.h"

using namespace recordtest;

namespace {

// One record in each store, its texts tagged. The fallback keys go last: theirs is the one set
// that may throw.
void writeEveryStore(const std::wstring& tag)
{
    ZETSettings::setLoginData(tag + L" user", tag + L" pw", true, true, false);
    ZETSettings::setUserSettings(L"User", userRecord(tag));
    ZETSettings::setFallbackSettings(record(L"Owner", tag));
    setKeys({{L"key", keyEntry(tag)}});
}

// What each store holds, as writeEveryStore tags it.
std::wstring readEveryStore()
{
    std::wstring user, password;
    bool enabled = false, keep = false, dependent = false;
    ZETSettings::getLoginData(user, password, enabled, keep, dependent);
    const auto settings = ZETSettings::getUserSettings(L"user");
    const auto keys = ZETSettings::getFallbackKeySettings();
    const auto networks = ZETSettings::getListOfNetworks(L"owner");
    return user + L"," + password + (enabled && keep && !dependent ? L",110," : L",?,") +
           (settings ? settings->userText : L"-") + L"," + (keys->count(L"key") ? keys->at(L"key").keyText1 : L"-") +
           L"," + (networks->size() == 1 ? networks->front() : L"-");
}

ZET_CHILD_SCENARIO(RecordStoresWrite)
{
    writeEveryStore(L"child");
    return 0;
}

class RecordStoreProcessesTest : public zettest::RegistryTest {};

TEST_F(RecordStoreProcessesTest, WhatOneProcessWritesAnotherReads)
{
    ASSERT_EQ(0, zettest::runChild("RecordStoresWrite"));
    EXPECT_EQ(L"child user,child pw,110,child,child,child", readEveryStore());
}

// Run by a user that may read the store but not write it, and that holds the machine key: of
// all the writes, only the fallback keys' reports the refusal.
ZET_CHILD_SCENARIO(RecordStoresWithoutWriteRights)
{
    if (!zettest::becomeUnprivileged())
        return 2;
    try {
        writeEveryStore(L"intruder");
        return 3;
    } catch (JetByteTools::CRegistryKey::Exception& e) {
        if (e.GetError() != ERROR_ACCESS_DENIED)
            return 4;
    }
    ZETSettings::removeUserSettings(L"user");
    ZETSettings::removeLoginData();
    ZETSettings::removeFallbackSettings(L"owner", L"parent");
    return 0;
}

// With the key or without it (the key is its store's, and this user may not read it): the
// refusal is the registry's, never a failed encryption that would return quietly.
TEST_F(RecordStoreProcessesTest, AProcessWithoutWriteRightsChangesNothing)
{
    writeEveryStore(L"parent");
    for (const bool lend : {true, false}) {
        SCOPED_TRACE(lend ? "key lent" : "key not readable");
        {
            std::unique_ptr<zettest::MachineKeyLoan> loan;
            if (lend)
                loan.reset(new zettest::MachineKeyLoan(registry.storeDirectory()));
            if (!zettest::canDropPrivileges() || (loan && !loan->lent()))
                GTEST_SKIP() << "this registry grants every process every right";
            EXPECT_EQ(0, zettest::runChild("RecordStoresWithoutWriteRights"));
        }
        EXPECT_EQ(L"parent user,parent pw,110,parent,parent,parent", readEveryStore());
    }
}

}  // namespace
