#include "zetsettings/store/ValueFamily.h"

#include "zetsettings/components/ZETMutexGrabber.h"
#include "zetsettings/platform/RegistryBatch.h"
#include "zetsettings/store/MallocedPtr.h"

using JetByteTools::CRegistryKey;

namespace zet {

ValueFamily::ValueFamily(ZETMutex& mutex, BaseOpener openBase, const wchar_t* subkey)
    : m_mutex(mutex), m_openBase(openBase), m_subkey(subkey)
{
}

int ValueFamily::getInt(const std::wstring& name) const
{
    return get<int>(name, -1, nullptr, IntSetter(nullptr));
}

std::wstring ValueFamily::getText(const std::wstring& name) const
{
    return get<std::wstring>(name, std::wstring(), nullptr, TextSetter(nullptr));
}

int ValueFamily::getInt(const std::wstring& name, int defaultValue, IntSetter storeDefault) const
{
    return get<int>(name, -1, &defaultValue, storeDefault);
}

std::wstring ValueFamily::getText(const std::wstring& name, const std::wstring& defaultValue,
                                  TextSetter storeDefault) const
{
    return get<std::wstring>(name, std::wstring(), &defaultValue, storeDefault);
}

void ValueFamily::setInt(const std::wstring& name, int value) const
{
    set([&](CRegistryKey& key) { key.SetValue(name.c_str(), static_cast<DWORD>(value), REG_DWORD); });
}

void ValueFamily::setText(const std::wstring& name, const std::wstring& value) const
{
    set([&](CRegistryKey& key) { key.SetValue(name.c_str(), value.c_str(), REG_SZ); });
}

template <class T, class Setter>
T ValueFamily::get(const std::wstring& name, T preset, const T* defaultValue, Setter storeDefault) const
{
    ZETMutexGrabber grabber(m_mutex, true);
    zet::RegistryBatch batch;
    T result = preset;
    if (!tryRead(name, result) && defaultValue) {
        // The default is returned whether or not storing it worked.
        if (storeDefault)
            storeDefault(name, *defaultValue);
        result = *defaultValue;
    }
    return result;
}

template <class Write>
void ValueFamily::set(const Write& write) const
{
    ZETMutexGrabber grabber(m_mutex, true);
    zet::RegistryBatch batch;
    try {
        CRegistryKey base = m_openBase();
        CRegistryKey subkey = openSubkey(base);
        write(subkey);
    } catch (CRegistryKey::Exception&) {
    }
}

CRegistryKey ValueFamily::openSubkey(const CRegistryKey& base) const
{
    return base.CreateOrOpenKeyEx(m_subkey, 0, L"", 0, KEY_ALL_ACCESS);
}

bool ValueFamily::tryRead(const std::wstring& name, int& result) const
{
    try {
        CRegistryKey base = m_openBase();
        CRegistryKey subkey = openSubkey(base);
        DWORD value = static_cast<DWORD>(result);
        subkey.QueryValue(name.c_str(), value);
        result = static_cast<int>(value);
        return true;
    } catch (CRegistryKey::Exception&) {
        return false;
    }
}

bool ValueFamily::tryRead(const std::wstring& name, std::wstring& result) const
{
    try {
        wchar_t* text = 0;
        {
            CRegistryKey base = m_openBase();
            CRegistryKey subkey = openSubkey(base);
            subkey.QueryValue(name.c_str(), &text);
        }
        // The text is taken only once both keys are closed.
        takeText(text, result);
        return true;
    } catch (CRegistryKey::Exception&) {
        return false;
    }
}

}  // namespace zet
