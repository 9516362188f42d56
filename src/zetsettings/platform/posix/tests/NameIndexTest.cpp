// Names beyond what an LMDB key can hold: filed under bounded keys, hashed past a bound, and
// still told apart when their hashes collide. Runs on an LMDB environment of its own.
#include <gtest/gtest.h>
#include <lmdb.h>
#include <stdlib.h>

#include <filesystem>
#include <string>
#include <vector>

#include "zetsettings/platform/posix/registry/CaseFolding.h"
#include "zetsettings/platform/posix/registry/Cursor.h"
#include "zetsettings/platform/posix/registry/NameIndex.h"
#include "zetsettings/platform/posix/registry/Records.h"

namespace zet {
namespace portable {
namespace registry {
namespace {

uint64_t everyNameCollides(const std::u16string&)
{
    return 42;
}

// A scratch LMDB environment and one write transaction on it, aborted at the end.
class ScratchTransaction {
public:
    ScratchTransaction()
    {
        char pattern[] = "/tmp/zetsettings-nameindex-XXXXXX";
        m_directory = mkdtemp(pattern);
        mdb_env_create(&m_env);
        if (mdb_env_open(m_env, m_directory.c_str(), 0, 0600) != MDB_SUCCESS ||
            mdb_txn_begin(m_env, nullptr, 0, &m_txn) != MDB_SUCCESS || mdb_dbi_open(m_txn, nullptr, 0, &m_dbi) != 0)
            ADD_FAILURE() << "cannot set up LMDB";
    }
    ~ScratchTransaction()
    {
        mdb_txn_abort(m_txn);
        mdb_env_close(m_env);
        std::filesystem::remove_all(m_directory);
    }

    MDB_env* env() const { return m_env; }
    MDB_txn* txn() const { return m_txn; }
    MDB_dbi dbi() const { return m_dbi; }

    size_t keysLongerThan(size_t bytes) const
    {
        Cursor cursor(m_txn, m_dbi);
        MDB_val key, data;
        size_t count = 0;
        for (bool more = cursor.get(key, data, MDB_FIRST); more; more = cursor.next(key, data))
            count += key.mv_size > bytes;
        return count;
    }

private:
    std::string m_directory;
    MDB_env* m_env = nullptr;
    MDB_txn* m_txn = nullptr;
    MDB_dbi m_dbi = 0;
};

class NameIndexTest : public ::testing::Test {
protected:
    void insert(NameIndex& index, const std::u16string& name, uint64_t id)
    {
        index.insert(kOwner, CaseFolding::fold(name), SubkeyEntry::build(name, id));
    }
    // The id filed under the name, 0 if none.
    uint64_t lookUp(NameIndex& index, const std::u16string& name)
    {
        NameIndex::Found found;
        if (!index.find(kOwner, CaseFolding::fold(name), found))
            return 0;
        return SubkeyEntry::idOf(NamedRecordView::parse(found.data));
    }

    static const uint64_t kOwner = 7;
    ScratchTransaction scratch;
};

std::u16string longName(char16_t last, size_t length = 300)
{
    std::u16string name(length - 1, u'n');
    name.push_back(last);
    return name;
}

TEST_F(NameIndexTest, NamesWhoseHashesCollideAreToldApartByTheWholeName)
{
    NameIndex index(scratch.txn(), scratch.dbi(), RecordKeys::kSubkey, &everyNameCollides);
    for (char16_t last = u'a'; last <= u'e'; ++last)
        insert(index, longName(last), last);
    for (char16_t last = u'a'; last <= u'e'; ++last) {
        EXPECT_EQ(last, lookUp(index, longName(last)));
        EXPECT_EQ(last, lookUp(index, CaseFolding::fold(longName(last))));
    }
    EXPECT_EQ(0u, lookUp(index, longName(u'f')));

    EXPECT_TRUE(index.erase(kOwner, CaseFolding::fold(longName(u'b'))));
    EXPECT_EQ(0u, lookUp(index, longName(u'b')));
    EXPECT_EQ(u'c', lookUp(index, longName(u'c')));
    // The freed place is taken again rather than a new one.
    insert(index, longName(u'f'), 'f');
    EXPECT_EQ(u'f', lookUp(index, longName(u'f')));
    EXPECT_EQ(5u, scratch.keysLongerThan(RecordKeys::kHashedStemSize - 1));
}

TEST_F(NameIndexTest, NamesOnEitherSideOfTheHashingBoundNeverMeet)
{
    NameIndex index(scratch.txn(), scratch.dbi(), RecordKeys::kValue);
    const std::u16string direct(RecordKeys::kDirectNameUnits, u'x');
    const std::u16string hashed(RecordKeys::kDirectNameUnits + 1, u'x');
    insert(index, direct, 1);
    insert(index, hashed, 2);
    EXPECT_EQ(1u, lookUp(index, direct));
    EXPECT_EQ(2u, lookUp(index, hashed));
    EXPECT_EQ(1u, scratch.keysLongerThan(RecordKeys::kPrefixSize + 2 * RecordKeys::kDirectNameUnits));
    EXPECT_TRUE(index.erase(kOwner, CaseFolding::fold(direct)));
    EXPECT_EQ(0u, lookUp(index, direct));
    EXPECT_EQ(2u, lookUp(index, hashed));
}

}  // namespace
}  // namespace registry
}  // namespace portable
}  // namespace zet
