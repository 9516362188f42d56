// std::map with a serial form; every map operation stays available, and copies are deep.
//
// Wire form: the entry count, unsigned 32-bit little-endian, then for each entry in ascending
// key order the key's form and the value's form. No separator, no per-entry length; an empty
// map is 00 00 00 00. Equal maps write equal bytes, however they were filled.
//
// A read empties the map first, whatever happens next. The count is read as a signed 32-bit
// number: 0 or negative reads as empty with the result 4. A key that comes again is consumed
// and counted, but the first entry stays. A key or value that fails ends the read with 0; the
// complete entries before it stay. The count is never trusted for an allocation: each entry
// exists only once its bytes have been read.
#ifndef ZETSETTINGS_SERIAL_SER_MAP_H
#define ZETSETTINGS_SERIAL_SER_MAP_H

#include <cstdint>
#include <functional>
#include <iterator>
#include <map>
#include <tuple>
#include <utility>

#include "zetsettings/components/ZETSerializeInterface.h"

template <typename K, typename V>
class ser_map final : public ZETSerializeInterface, public std::map<K, V, std::less<K>> {
    using Map = std::map<K, V, std::less<K>>;

public:
    ser_map() = default;
    ser_map(const ser_map& other) = default;
    ser_map& operator=(const ser_map& other) = default;
    ~ser_map() = default;

    int serialize(unsigned char* dest) const override
    {
        ZETWire::putU32(dest, static_cast<uint32_t>(this->size()));
        int written = 4;
        for (const auto& entry : *this) {
            written += entry.first.serialize(dest + written);
            written += entry.second.serialize(dest + written);
        }
        return written;
    }

    int deserialize(const ZETBufferBChk& src) override
    {
        this->clear();
        uint32_t rawCount = 0;
        if (!src.readU32(rawCount))
            return 0;
        const int32_t count = static_cast<int32_t>(rawCount);
        int total = 4;
        for (int32_t i = 0; i < count; ++i) {
            K key;
            const int keyRead = key.deserialize(src);
            if (keyRead == 0 || !ZETWire::addResult(total, keyRead))
                return 0;
            // The value is read in place in a new node; a repeated key is read into a scratch
            // value and dropped. Keys arrive sorted when this library wrote them, so the end
            // is the usual place.
            const std::less<K> less;
            auto place = this->end();
            if (!this->empty() && !less(std::prev(this->end())->first, key)) {
                place = this->lower_bound(key);
                if (!less(key, place->first)) {
                    V ignored;
                    const int valueRead = ignored.deserialize(src);
                    if (valueRead == 0 || !ZETWire::addResult(total, valueRead))
                        return 0;
                    continue;
                }
            }
            auto node = this->emplace_hint(place, std::piecewise_construct, std::forward_as_tuple(key),
                                           std::forward_as_tuple());
            const int valueRead = node->second.deserialize(src);
            if (valueRead == 0 || !ZETWire::addResult(total, valueRead)) {
                this->erase(node);
                return 0;
            }
        }
        return total;
    }

    int getSerLength() const override
    {
        int length = 4;
        for (const auto& entry : *this)
            length += entry.first.getSerLength() + entry.second.getSerLength();
        return length;
    }

    // A cursor at 0 over the bytes, read by the cursor form. A negative length reads nothing.
    virtual int deserialize(const unsigned char* src, int length)
    {
        const ZETBufferBChk cursor(src, length > 0 && src ? static_cast<uint32_t>(length) : 0);
        return deserialize(cursor);
    }
};

#endif
