// What a record's getMemberList returns: one static object per record class, built at the
// first call and never changed after.
#ifndef ZETSETTINGS_COMPONENTS_ZETSERMEMBERLIST_H
#define ZETSETTINGS_COMPONENTS_ZETSERMEMBERLIST_H

#include <vector>

class ZETSerMemberList {
public:
    // Byte offset of each serialized member's ZETSerializeInterface inside the record's
    // ZETSerializeClass, in declaration order, which is wire order.
    std::vector<int> positions;
    // 0 until the list is built, then the record class's number.
    int classNumber = 0;
};

#endif
