// JetByteTools::CRegistryKey: a registry key owned by one object.
//
// The object closes what it opened when it goes. It is made by a constructor or returned by
// value from an open or create, and never copied (it may be moved). Every failure is thrown as
// CRegistryKey::Exception carrying the Windows error code; a read of an absent value throws
// ERROR_FILE_NOT_FOUND, which is how callers learn of absence. When a read throws, its
// out-parameters are unchanged.
//
// Reads of another type than asked: a number read accepts REG_DWORD only, a text read
// REG_SZ and REG_EXPAND_SZ only, and both throw ERROR_INVALID_DATA otherwise; a byte read
// accepts every type and hands out the data as the registry holds it for this platform.
//
// Text and bytes handed out through pointers are allocated with malloc and released by the
// caller with free. Handed-out text is always zero-terminated, also when the stored value
// was not.
#ifndef ZETSETTINGS_COMPONENTS_CREGISTRYKEY_H
#define ZETSETTINGS_COMPONENTS_CREGISTRYKEY_H

#include <cstddef>
#include <string>

#include "zetsettings/components/CWin32Exception.h"
#include "zetsettings/platform/Win32.h"

namespace JetByteTools {

class CRegistryKey {
public:
    class Exception : public CWin32Exception {
    public:
        Exception(const std::wstring& where, DWORD error);
    };

    // A value read whole, whatever its type. The text view is valid while the Value lives.
    class Value {
    public:
        Value(const std::wstring& name, DWORD type, std::basic_string<BYTE> data);

        const std::wstring& Name() const { return m_name; }
        DWORD Type() const { return m_type; }
        const BYTE* Data() const { return m_data.data(); }
        DWORD Size() const { return static_cast<DWORD>(m_data.size()); }

        // Text values as text (trailing terminators dropped); a DWORD as its decimal digits;
        // anything else as the empty text.
        std::wstring AsString() const;
        operator const wchar_t*() const;
        // REG_DWORD as its number; throws ERROR_INVALID_DATA for any other type.
        DWORD AsDWORD() const;

    private:
        std::wstring m_name;
        DWORD m_type;
        std::basic_string<BYTE> m_data;
        std::wstring m_text;
    };

    // Walks the subkeys or the values of one key by index, as RegEnumKeyExW and RegEnumValueW
    // do. The iterator refers to the key it came from, which must outlive it.
    class SubkeyIteratorImpl {
    public:
        SubkeyIteratorImpl(HKEY key, DWORD index);
        bool Fetch(std::wstring& name) const;
        CRegistryKey OpenKey(const std::wstring& name, REGSAM access) const;

        HKEY m_key;
        DWORD m_index;
    };

    class ValueIteratorImpl {
    public:
        ValueIteratorImpl(HKEY key, DWORD index);
        bool Fetch(std::wstring& name) const;

        HKEY m_key;
        DWORD m_index;
    };

    template <class Impl>
    class TRegKeyIterator {
    public:
        TRegKeyIterator(HKEY key, bool atEnd) : m_impl(key, 0), m_atEnd(atEnd) { Load(); }

        TRegKeyIterator& operator++()
        {
            ++m_impl.m_index;
            Load();
            return *this;
        }
        bool operator==(const TRegKeyIterator& other) const
        {
            if (m_atEnd || other.m_atEnd)
                return m_atEnd == other.m_atEnd;
            return m_impl.m_key == other.m_impl.m_key && m_impl.m_index == other.m_impl.m_index;
        }
        bool operator!=(const TRegKeyIterator& other) const { return !(*this == other); }

        const std::wstring& GetName() const { return m_name; }
        CRegistryKey OpenKey(REGSAM access = KEY_ALL_ACCESS) const { return m_impl.OpenKey(m_name, access); }

    private:
        void Load()
        {
            if (!m_atEnd)
                m_atEnd = !m_impl.Fetch(m_name);
        }

        Impl m_impl;
        bool m_atEnd;
        std::wstring m_name;
    };

    typedef TRegKeyIterator<SubkeyIteratorImpl> SubkeyIterator;
    typedef TRegKeyIterator<ValueIteratorImpl> ValueIterator;

    // Wraps a predefined root (HKEY_LOCAL_MACHINE, ...); the root is never closed.
    explicit CRegistryKey(HKEY key);
    // Opens an existing key; never creates. The last argument is reserved and always null.
    CRegistryKey(HKEY key, const wchar_t* subKey, REGSAM access = KEY_ALL_ACCESS, void* reserved = 0);

    CRegistryKey(CRegistryKey&& other) noexcept;
    CRegistryKey& operator=(CRegistryKey&& other) noexcept;
    CRegistryKey(const CRegistryKey&) = delete;
    CRegistryKey& operator=(const CRegistryKey&) = delete;
    ~CRegistryKey();

    HKEY GetHandle() const { return m_key; }
    void Close();

    CRegistryKey OpenKey(const wchar_t* subKey, REGSAM access = KEY_ALL_ACCESS) const;
    CRegistryKey CreateOrOpenKey(const wchar_t* subKey, DWORD* disposition, const wchar_t* className,
                                 DWORD options, REGSAM access,
                                 LPSECURITY_ATTRIBUTES securityAttributes) const;
    CRegistryKey CreateOrOpenKeyEx(const wchar_t* subKey, DWORD* disposition, const wchar_t* className,
                                   DWORD options, REGSAM access) const;
    bool HasSubkey(const wchar_t* subKey, REGSAM access = KEY_READ) const;

    bool QueryValue(const wchar_t* name, DWORD& value) const;
    bool QueryValue(const wchar_t* name, wchar_t** text) const;
    bool QueryValue(const wchar_t* name, BYTE** data, DWORD& length) const;
    // A null name is the key's default value.
    Value QueryValue(const wchar_t* name) const;

    void SetValue(const wchar_t* name, DWORD value, DWORD type = REG_DWORD);
    void SetValue(const wchar_t* name, const wchar_t* text, DWORD type = REG_SZ);
    void SetValue(const wchar_t* name, const BYTE* data, DWORD size);
    void DeleteValue(const wchar_t* name);

    SubkeyIterator BeginSubkeyIteration() const { return SubkeyIterator(m_key, false); }
    SubkeyIterator EndSubkeyIteration() const { return SubkeyIterator(m_key, true); }
    ValueIterator BeginValueIteration() const { return ValueIterator(m_key, false); }
    ValueIterator EndValueIteration() const { return ValueIterator(m_key, true); }

private:
    CRegistryKey(HKEY key, bool owned);
    CRegistryKey Create(const wchar_t* subKey, DWORD* disposition, const wchar_t* className, DWORD options,
                        REGSAM access, LPSECURITY_ATTRIBUTES securityAttributes) const;
    // Reads the raw value; returns false for nothing to read, throws on any failure.
    void Read(const wchar_t* name, DWORD& type, std::basic_string<BYTE>& data) const;
    // Reads the raw value into a block from malloc that the caller frees; throws on failure.
    BYTE* ReadBlock(const wchar_t* name, DWORD& size) const;

    HKEY m_key;
    bool m_owned;
};

}  // namespace JetByteTools

#endif
