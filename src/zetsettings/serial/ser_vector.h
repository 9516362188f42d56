// std::vector with a serial form; every vector operation stays available, and copies are deep.
//
// Wire form: the element count, unsigned 32-bit little-endian, then each element's form in
// vector order. An empty vector is 00 00 00 00.
//
// A read empties the vector first, whatever happens next. The count is read as a signed 32-bit
// number: 0 or negative reads as empty with the result 4. An element that fails ends the read
// with 0; the complete elements before it stay. Capacity is reserved only as far as the bytes
// that remain could hold elements, never by the count alone, and a failed read keeps no more
// than its complete elements take.
#ifndef ZETSETTINGS_SERIAL_SER_VECTOR_H
#define ZETSETTINGS_SERIAL_SER_VECTOR_H

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <vector>

#include "zetsettings/components/ZETSerializeInterface.h"

template <typename T>
class ser_vector final : public ZETSerializeInterface, public std::vector<T> {
public:
    ser_vector() = default;
    ser_vector(const ser_vector& other) = default;
    ser_vector& operator=(const ser_vector& other) = default;
    ~ser_vector() = default;

    int serialize(unsigned char* dest) const override
    {
        ZETWire::putU32(dest, static_cast<uint32_t>(this->size()));
        int written = 4;
        for (const T& element : *this)
            written += element.serialize(dest + written);
        return written;
    }

    int deserialize(const ZETBufferBChk& src) override
    {
        this->clear();
        uint32_t rawCount = 0;
        if (!src.readU32(rawCount))
            return 0;
        const int32_t count = static_cast<int32_t>(rawCount);
        if (count <= 0)
            return 4;
        // Every element reads at least as many bytes as an empty one writes, so the bytes that
        // remain bound how many can follow, whatever the count claims.
        const uint32_t smallest = static_cast<uint32_t>(std::max(1, T().getSerLength()));
        this->reserve(std::min<uint32_t>(static_cast<uint32_t>(count), src.remaining() / smallest));
        int total = 4;
        for (int32_t i = 0; i < count; ++i) {
            // Read in place at the back; an element that fails is taken off again.
            this->emplace_back();
            const int read = this->back().deserialize(src);
            if (read == 0 || !ZETWire::addResult(total, read)) {
                this->pop_back();
                releaseUnused();
                return 0;
            }
        }
        return total;
    }

    int getSerLength() const override
    {
        int length = 4;
        for (const T& element : *this)
            length += element.getSerLength();
        return length;
    }

    // A cursor at 0 over the bytes, read by the cursor form. A negative length reads nothing.
    virtual int deserialize(const unsigned char* src, int length)
    {
        const ZETBufferBChk cursor(src, length > 0 && src ? static_cast<uint32_t>(length) : 0);
        return deserialize(cursor);
    }

private:
    // What was reserved for elements that never came goes again: a hostile count over many
    // bytes must not leave its reserve behind in a record that lives on.
    void releaseUnused()
    {
        std::vector<T> kept(std::make_move_iterator(this->begin()), std::make_move_iterator(this->end()));
        this->std::vector<T>::swap(kept);
    }
};

#endif
