// The base of every record. It holds no data: a record's members are its whole content, and
// a record overrides only getMemberList, which names them.
//
// Wire form: the members' forms one after the other, in list order, and nothing else. No
// header, no class number, no length around them: classNumber never reaches the wire and is
// not tested when reading. A read that fails at one member returns 0 and leaves the members
// before it as read and the members behind it untouched.
#ifndef ZETSETTINGS_COMPONENTS_ZETSERIALIZECLASS_H
#define ZETSETTINGS_COMPONENTS_ZETSERIALIZECLASS_H

#include <initializer_list>

#include "zetsettings/components/ZETSerMemberList.h"
#include "zetsettings/components/ZETSerializeInterface.h"

class ZETSerializeClass : public ZETSerializeInterface {
public:
    int serialize(unsigned char* dest) const override;
    int deserialize(const ZETBufferBChk& src) override;
    int getSerLength() const override;
    int deserializeFromBuf(const ZETBuf& src) override;
    // The hook: the record's members, built once per class in a function-local static.
    virtual const ZETSerMemberList& getMemberList() const = 0;
#if defined(__clang__)
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Woverloaded-virtual"
#elif defined(__GNUC__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Woverloaded-virtual"
#endif
    // Hides the interface's non-const form on purpose: a record is written from a const view.
    virtual int serializeToBuf(ZETBuf& dest) const;
#if defined(__clang__)
#pragma clang diagnostic pop
#elif defined(__GNUC__)
#pragma GCC diagnostic pop
#endif
    // A cursor at 0 over the bytes, read by the cursor form. A negative length reads nothing.
    virtual int deserialize(const unsigned char* src, int length);

protected:
    ZETSerializeClass() = default;
    ZETSerializeClass(const ZETSerializeClass&) = default;
    ZETSerializeClass& operator=(const ZETSerializeClass&) = default;
    ~ZETSerializeClass() = default;

    // Step 2 of every getMemberList: if list is not built yet, give it the class number and
    // the position of each member, in the order given. Always returns true, so that a record
    // can run it as the initializer of a function-local static, which makes the first build
    // safe even when two threads get there together.
    bool buildMemberList(ZETSerMemberList& list, int classNumber,
                         std::initializer_list<const ZETSerializeInterface*> members) const;

private:
    ZETSerializeInterface& memberAt(int position)
    {
        return *reinterpret_cast<ZETSerializeInterface*>(reinterpret_cast<char*>(this) + position);
    }
    const ZETSerializeInterface& memberAt(int position) const
    {
        return *reinterpret_cast<const ZETSerializeInterface*>(reinterpret_cast<const char*>(this) + position);
    }
};

#endif
