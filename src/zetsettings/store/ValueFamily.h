// The frame that every named value family shares: one subkey of the base key, opened (and
// created, for a read as for a write) anew by each operation under the store's mutex, one
// registry call, and any CRegistryKey::Exception dropped. Families differ only in what a
// failed read gives, which the caller of a getter chooses.
#ifndef ZETSETTINGS_STORE_VALUEFAMILY_H
#define ZETSETTINGS_STORE_VALUEFAMILY_H

#include <string>

#include "zetsettings/components/CRegistryKey.h"
#include "zetsettings/components/ZETMutex.h"

namespace zet {

class ValueFamily {
public:
    typedef JetByteTools::CRegistryKey (*BaseOpener)();
    typedef void (*IntSetter)(const std::wstring& name, int value);
    typedef void (*TextSetter)(const std::wstring& name, const std::wstring& value);

    ValueFamily(ZETMutex& mutex, BaseOpener openBase, const wchar_t* subkey);

    // Without a default: a failed read gives -1 or the empty text and writes nothing.
    int getInt(const std::wstring& name) const;
    std::wstring getText(const std::wstring& name) const;

    // With a default: a failed read gives the default, handed first to storeDefault (the
    // family's own public setter, which takes the mutex again) unless that is null.
    int getInt(const std::wstring& name, int defaultValue, IntSetter storeDefault) const;
    std::wstring getText(const std::wstring& name, const std::wstring& defaultValue,
                         TextSetter storeDefault) const;

    // A failure is dropped: the caller learns nothing.
    void setInt(const std::wstring& name, int value) const;
    void setText(const std::wstring& name, const std::wstring& value) const;

private:
    template <class T, class Setter>
    T get(const std::wstring& name, T preset, const T* defaultValue, Setter storeDefault) const;
    template <class Write>
    void set(const Write& write) const;

    JetByteTools::CRegistryKey openSubkey(const JetByteTools::CRegistryKey& base) const;
    // False when the registry component threw; result is then unchanged.
    bool tryRead(const std::wstring& name, int& result) const;
    bool tryRead(const std::wstring& name, std::wstring& result) const;

    ZETMutex& m_mutex;
    BaseOpener m_openBase;
    const wchar_t* m_subkey;
};

}  // namespace zet

#endif
