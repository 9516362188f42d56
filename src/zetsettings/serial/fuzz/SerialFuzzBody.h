// What the fuzz target does with one input, shared with the test that replays the kept
// inputs, so that both run the same code path. Returns the empty string when every check
// held, or what went wrong.
//
// For every record and for the fallback key map: read the bytes through a cursor, then write
// what was read (a failed read leaves a partial record, and the stores write those too) into
// a buffer of exactly getSerLength bytes, read that again and write it again. The two writes
// must agree byte for byte, and the read of a written form must consume all of it.
#ifndef ZETSETTINGS_SERIAL_FUZZ_SERIALFUZZBODY_H
#define ZETSETTINGS_SERIAL_FUZZ_SERIALFUZZBODY_H

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "zetsettings/serial/ZETAlertSettings.h"
#include "zetsettings/serial/ZETFallbackKeySettings.h"
#include "zetsettings/serial/ZETFallbackSettings.h"
#include "zetsettings/serial/ZETLoginData.h"
#include "zetsettings/serial/ZETNetworkSettings.h"
#include "zetsettings/serial/ZETNetworkToFallbackSettingsMap.h"
#include "zetsettings/serial/ZETOwnerToNetworkMap.h"
#include "zetsettings/serial/ZETPreferredNetEntry.h"
#include "zetsettings/serial/ZETPreferredNetworks.h"
#include "zetsettings/serial/ZETUserSettings.h"
#include "zetsettings/serial/ZETUserSettingsMap.h"
#include "zetsettings/serial/ser_map.h"
#include "zetsettings/serial/ser_wstring.h"

namespace zetfuzz {

struct FreeDeleter {
    void operator()(unsigned char* p) const { std::free(p); }
};

// The writer's path: size, one allocation of exactly that size, write. The allocation is
// exact so that AddressSanitizer sees a write past the length.
inline std::string writeExact(const ZETSerializeInterface& object, std::string& bytes)
{
    const int length = object.getSerLength();
    if (length <= 0)
        return "getSerLength " + std::to_string(length);
    std::unique_ptr<unsigned char, FreeDeleter> block(static_cast<unsigned char*>(std::malloc(length)));
    if (!block)
        return "out of memory";
    const int written = object.serialize(block.get());
    if (written != length)
        return "serialize wrote " + std::to_string(written) + " of " + std::to_string(length);
    bytes.assign(reinterpret_cast<const char*>(block.get()), static_cast<std::size_t>(length));
    return std::string();
}

template <typename T>
std::string checkOne(const char* name, const uint8_t* data, std::size_t size)
{
    const std::string where = std::string(name) + ": ";
    const uint32_t size32 = size > 0xFFFFFFFFu ? 0xFFFFFFFFu : static_cast<uint32_t>(size);
    T first;
    const ZETBufferBChk cursor(data, size32);
    const int read = first.deserialize(cursor);
    if (read < 0 || static_cast<uint32_t>(read) > size32)
        return where + "result " + std::to_string(read) + " for " + std::to_string(size) + " bytes";
    if (cursor.position > size32)
        return where + "cursor past the end";
    if (read > 0 && cursor.position != static_cast<uint32_t>(read))
        return where + "result " + std::to_string(read) + " but cursor at " + std::to_string(cursor.position);

    std::string written;
    std::string failure = writeExact(first, written);
    if (!failure.empty())
        return where + "first write: " + failure;

    // A copy of the written bytes on the heap, exactly as long, so a read past it is seen.
    std::unique_ptr<unsigned char[]> copy(new unsigned char[written.size()]);
    std::memcpy(copy.get(), written.data(), written.size());
    T second;
    const int reread = second.deserialize(copy.get(), static_cast<int>(written.size()));
    if (reread != static_cast<int>(written.size()))
        return where + "reading its own " + std::to_string(written.size()) + " bytes gave " + std::to_string(reread);

    std::string rewritten;
    failure = writeExact(second, rewritten);
    if (!failure.empty())
        return where + "second write: " + failure;
    if (rewritten != written)
        return where + "written form changed on a second round";
    return std::string();
}

inline std::string runOne(const uint8_t* input, std::size_t size)
{
    // An exact copy on the heap, so that AddressSanitizer sees the first byte past the end
    // whoever called (a std::vector may have room behind its end).
    std::unique_ptr<uint8_t[]> exact(new uint8_t[size ? size : 1]);
    if (size)
        std::memcpy(exact.get(), input, size);
    const uint8_t* data = exact.get();
    std::string failure;
    auto check = [&](std::string result) {
        if (failure.empty() && !result.empty())
            failure = result;
    };
    check(checkOne<ZETNetworkSettings>("ZETNetworkSettings", data, size));
    check(checkOne<ZETFallbackKeySettings>("ZETFallbackKeySettings", data, size));
    check(checkOne<ser_map<ser_wstring, ZETFallbackKeySettings>>("fallback key map", data, size));
    check(checkOne<ZETUserSettings>("ZETUserSettings", data, size));
    check(checkOne<ZETUserSettingsMap>("ZETUserSettingsMap", data, size));
    check(checkOne<ZETLoginData>("ZETLoginData", data, size));
    check(checkOne<ZETPreferredNetEntry>("ZETPreferredNetEntry", data, size));
    check(checkOne<ZETPreferredNetworks>("ZETPreferredNetworks", data, size));
    check(checkOne<ZETAlertSettings>("ZETAlertSettings", data, size));
    check(checkOne<ZETFallbackSettings>("ZETFallbackSettings", data, size));
    check(checkOne<ZETNetworkToFallbackSettingsMap>("ZETNetworkToFallbackSettingsMap", data, size));
    check(checkOne<ZETOwnerToNetworkMap>("ZETOwnerToNetworkMap", data, size));
    return failure;
}

} // namespace zetfuzz

#endif
