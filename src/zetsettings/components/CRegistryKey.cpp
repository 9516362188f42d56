#include "zetsettings/components/CRegistryKey.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <cwchar>
#include <memory>
#include <new>
#include <utility>

#include "zetsettings/platform/RegistryData.h"

namespace JetByteTools {
namespace {

const wchar_t* orEmpty(const wchar_t* text)
{
    return text ? text : L"";
}

void check(LSTATUS status, const wchar_t* where)
{
    if (status != ERROR_SUCCESS)
        throw CRegistryKey::Exception(where, static_cast<DWORD>(status));
}

bool isText(DWORD type)
{
    return type == REG_SZ || type == REG_EXPAND_SZ;
}

// The characters of a text value, without the terminators that usually end it.
std::wstring textOf(DWORD type, const std::basic_string<BYTE>& data)
{
    std::wstring text = zet::platform::wideTextOfRegistryData(type, data.data(), static_cast<DWORD>(data.size()));
    const std::wstring::size_type end = text.find(L'\0');
    if (end != std::wstring::npos)
        text.resize(end);
    return text;
}

struct FreeBlock {
    void operator()(void* block) const { std::free(block); }
};

void* allocateOrThrow(std::size_t size)
{
    void* block = std::malloc(size ? size : 1);
    if (!block)
        throw std::bad_alloc();
    return block;
}

const DWORD kFirstGuess = 512;

// Reads a value of any length. Most values fit the first guess on the stack, and then one call
// reads them. A longer value reports its size, which may grow again before the next call when
// another process writes: it is asked for again into a buffer from buffer(capacity), as often
// as it takes. Returns where the bytes are, the guess or the last buffer; size is their length.
// Throws on any failure.
template <class Buffer>
const BYTE* queryAnyLength(HKEY key, const wchar_t* name, DWORD& type, BYTE (&guess)[kFirstGuess], DWORD& size,
                           Buffer buffer)
{
    size = kFirstGuess;
    LSTATUS status = RegQueryValueExW(key, name, 0, &type, guess, &size);
    if (status == ERROR_SUCCESS)
        return guess;
    BYTE* bytes = nullptr;
    DWORD capacity = kFirstGuess;
    while (status == ERROR_MORE_DATA) {
        capacity = std::max<DWORD>(size, capacity * 2);
        bytes = buffer(capacity);
        size = capacity;
        status = RegQueryValueExW(key, name, 0, &type, bytes, &size);
    }
    check(status, L"RegQueryValueExW");
    return bytes;
}

}  // namespace

CRegistryKey::Exception::Exception(const std::wstring& where, DWORD error) : CWin32Exception(where, error) {}

// ---- Value ---------------------------------------------------------------------------------

CRegistryKey::Value::Value(const std::wstring& name, DWORD type, std::basic_string<BYTE> data)
    : m_name(name), m_type(type), m_data(std::move(data))
{
    if (isText(m_type))
        m_text = textOf(m_type, m_data);
    else if (m_type == REG_DWORD && m_data.size() >= sizeof(DWORD))
        m_text = std::to_wstring(AsDWORD());
}

std::wstring CRegistryKey::Value::AsString() const
{
    return m_text;
}

CRegistryKey::Value::operator const wchar_t*() const
{
    return m_text.c_str();
}

DWORD CRegistryKey::Value::AsDWORD() const
{
    if (m_type != REG_DWORD || m_data.size() < sizeof(DWORD))
        throw Exception(L"CRegistryKey::Value::AsDWORD " + m_name, ERROR_INVALID_DATA);
    DWORD number;
    std::memcpy(&number, m_data.data(), sizeof(number));
    return number;
}

// ---- iterators -----------------------------------------------------------------------------

CRegistryKey::SubkeyIteratorImpl::SubkeyIteratorImpl(HKEY key, DWORD index) : m_key(key), m_index(index) {}

bool CRegistryKey::SubkeyIteratorImpl::Fetch(std::wstring& name) const
{
    // Key names are at most 255 characters.
    wchar_t buffer[256];
    DWORD length = 256;
    const LSTATUS status = RegEnumKeyExW(m_key, m_index, buffer, &length, 0, 0, 0, 0);
    if (status == ERROR_NO_MORE_ITEMS)
        return false;
    check(status, L"RegEnumKeyExW");
    name.assign(buffer, length);
    return true;
}

CRegistryKey CRegistryKey::SubkeyIteratorImpl::OpenKey(const std::wstring& name, REGSAM access) const
{
    return CRegistryKey(m_key, false).OpenKey(name.c_str(), access);
}

CRegistryKey::ValueIteratorImpl::ValueIteratorImpl(HKEY key, DWORD index) : m_key(key), m_index(index) {}

bool CRegistryKey::ValueIteratorImpl::Fetch(std::wstring& name) const
{
    // Most names fit the stack; value names may reach 16,383 characters, and only those
    // take a block from the heap. A walk over thousands of values then allocates nothing.
    wchar_t small[256];
    DWORD length = 256;
    LSTATUS status = RegEnumValueW(m_key, m_index, small, &length, 0, 0, 0, 0);
    if (status == ERROR_NO_MORE_ITEMS)
        return false;
    if (status != ERROR_MORE_DATA) {
        check(status, L"RegEnumValueW");
        name.assign(small, length);
        return true;
    }
    std::wstring large(16384, L'\0');
    length = 16384;
    status = RegEnumValueW(m_key, m_index, &large[0], &length, 0, 0, 0, 0);
    if (status == ERROR_NO_MORE_ITEMS)
        return false;
    check(status, L"RegEnumValueW");
    name.assign(large.data(), length);
    return true;
}

// ---- the key -------------------------------------------------------------------------------

CRegistryKey::CRegistryKey(HKEY key) : m_key(key), m_owned(false) {}

CRegistryKey::CRegistryKey(HKEY key, bool owned) : m_key(key), m_owned(owned) {}

CRegistryKey::CRegistryKey(HKEY key, const wchar_t* subKey, REGSAM access, void*) : m_key(0), m_owned(true)
{
    check(RegOpenKeyExW(key, orEmpty(subKey), 0, access, &m_key), L"RegOpenKeyExW");
}

CRegistryKey::CRegistryKey(CRegistryKey&& other) noexcept : m_key(other.m_key), m_owned(other.m_owned)
{
    other.m_key = 0;
    other.m_owned = false;
}

CRegistryKey& CRegistryKey::operator=(CRegistryKey&& other) noexcept
{
    if (this != &other) {
        Close();
        m_key = other.m_key;
        m_owned = other.m_owned;
        other.m_key = 0;
        other.m_owned = false;
    }
    return *this;
}

CRegistryKey::~CRegistryKey()
{
    Close();
}

void CRegistryKey::Close()
{
    if (m_owned && m_key)
        RegCloseKey(m_key);
    m_key = 0;
    m_owned = false;
}

CRegistryKey CRegistryKey::OpenKey(const wchar_t* subKey, REGSAM access) const
{
    HKEY opened = 0;
    check(RegOpenKeyExW(m_key, orEmpty(subKey), 0, access, &opened), L"RegOpenKeyExW");
    return CRegistryKey(opened, true);
}

CRegistryKey CRegistryKey::Create(const wchar_t* subKey, DWORD* disposition, const wchar_t* className,
                                  DWORD options, REGSAM access, LPSECURITY_ATTRIBUTES securityAttributes) const
{
    HKEY created = 0;
    check(RegCreateKeyExW(m_key, orEmpty(subKey), 0, const_cast<wchar_t*>(orEmpty(className)), options, access,
                          securityAttributes, &created, disposition),
          L"RegCreateKeyExW");
    return CRegistryKey(created, true);
}

CRegistryKey CRegistryKey::CreateOrOpenKey(const wchar_t* subKey, DWORD* disposition, const wchar_t* className,
                                           DWORD options, REGSAM access,
                                           LPSECURITY_ATTRIBUTES securityAttributes) const
{
    return Create(subKey, disposition, className, options, access, securityAttributes);
}

CRegistryKey CRegistryKey::CreateOrOpenKeyEx(const wchar_t* subKey, DWORD* disposition, const wchar_t* className,
                                             DWORD options, REGSAM access) const
{
    return Create(subKey, disposition, className, options, access, 0);
}

bool CRegistryKey::HasSubkey(const wchar_t* subKey, REGSAM access) const
{
    HKEY opened = 0;
    const LSTATUS status = RegOpenKeyExW(m_key, orEmpty(subKey), 0, access, &opened);
    if (status == ERROR_FILE_NOT_FOUND)
        return false;
    check(status, L"RegOpenKeyExW");
    RegCloseKey(opened);
    return true;
}

void CRegistryKey::Read(const wchar_t* name, DWORD& type, std::basic_string<BYTE>& data) const
{
    BYTE guess[kFirstGuess];
    DWORD size = 0;
    const BYTE* bytes = queryAnyLength(m_key, name, type, guess, size, [&](DWORD capacity) {
        data.resize(capacity);
        return &data[0];
    });
    if (bytes == guess)
        data.assign(guess, size);
    else
        data.resize(size);
}

BYTE* CRegistryKey::ReadBlock(const wchar_t* name, DWORD& size) const
{
    // The bytes go straight into the block handed out, so that a value costs one allocation,
    // not a string and a copy of it.
    BYTE guess[kFirstGuess];
    DWORD type = REG_NONE;
    std::unique_ptr<BYTE, FreeBlock> block;
    const BYTE* bytes = queryAnyLength(m_key, name, type, guess, size, [&](DWORD capacity) {
        block.reset(static_cast<BYTE*>(allocateOrThrow(capacity)));
        return block.get();
    });
    if (bytes == guess) {
        block.reset(static_cast<BYTE*>(allocateOrThrow(size)));
        std::memcpy(block.get(), guess, size);
    }
    return block.release();
}

bool CRegistryKey::QueryValue(const wchar_t* name, DWORD& value) const
{
    DWORD type = REG_NONE;
    DWORD number = 0;
    DWORD size = sizeof(number);
    const LSTATUS status = RegQueryValueExW(m_key, name, 0, &type, reinterpret_cast<BYTE*>(&number), &size);
    // A longer value of another type reports ERROR_MORE_DATA; what counts is that it is no number.
    if (status != ERROR_MORE_DATA || type == REG_DWORD)
        check(status, L"RegQueryValueExW");
    if (type != REG_DWORD || size != sizeof(number))
        throw Exception(L"CRegistryKey::QueryValue", ERROR_INVALID_DATA);
    value = number;
    return true;
}

bool CRegistryKey::QueryValue(const wchar_t* name, wchar_t** text) const
{
    DWORD type = REG_NONE;
    std::basic_string<BYTE> data;
    Read(name, type, data);
    if (!isText(type))
        throw Exception(L"CRegistryKey::QueryValue", ERROR_INVALID_DATA);
    const std::wstring characters = textOf(type, data);
    wchar_t* copy = static_cast<wchar_t*>(allocateOrThrow((characters.size() + 1) * sizeof(wchar_t)));
    std::wmemcpy(copy, characters.c_str(), characters.size() + 1);
    *text = copy;
    return true;
}

bool CRegistryKey::QueryValue(const wchar_t* name, BYTE** data, DWORD& length) const
{
    DWORD size = 0;
    BYTE* block = ReadBlock(name, size);
    *data = block;
    length = size;
    return true;
}

CRegistryKey::Value CRegistryKey::QueryValue(const wchar_t* name) const
{
    DWORD type = REG_NONE;
    std::basic_string<BYTE> data;
    Read(name, type, data);
    return Value(orEmpty(name), type, std::move(data));
}

void CRegistryKey::SetValue(const wchar_t* name, DWORD value, DWORD type)
{
    check(RegSetValueExW(m_key, name, 0, type, reinterpret_cast<const BYTE*>(&value), sizeof(value)),
          L"RegSetValueExW");
}

void CRegistryKey::SetValue(const wchar_t* name, const wchar_t* text, DWORD type)
{
    const wchar_t* characters = orEmpty(text);
    const DWORD size = static_cast<DWORD>((std::wcslen(characters) + 1) * sizeof(wchar_t));
    check(RegSetValueExW(m_key, name, 0, type, reinterpret_cast<const BYTE*>(characters), size), L"RegSetValueExW");
}

void CRegistryKey::SetValue(const wchar_t* name, const BYTE* data, DWORD size)
{
    check(RegSetValueExW(m_key, name, 0, REG_BINARY, data, size), L"RegSetValueExW");
}

void CRegistryKey::DeleteValue(const wchar_t* name)
{
    check(RegDeleteValueW(m_key, name), L"RegDeleteValueW");
}

}  // namespace JetByteTools
