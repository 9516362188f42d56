// Text and bytes that the registry component hands out are malloc'd and go back with free,
// also when an exception passes while they are held.
#ifndef ZETSETTINGS_STORE_MALLOCEDPTR_H
#define ZETSETTINGS_STORE_MALLOCEDPTR_H

#include <cstdlib>
#include <memory>
#include <string>

namespace zet {

struct FreeDeleter {
    void operator()(void* block) const { std::free(block); }
};

template <class T>
using MallocedPtr = std::unique_ptr<T, FreeDeleter>;

// A text read through a pointer preset to null: a null pointer leaves result as it was.
inline void takeText(wchar_t* text, std::wstring& result)
{
    MallocedPtr<wchar_t> owned(text);
    if (owned)
        result = owned.get();
}

}  // namespace zet

#endif
