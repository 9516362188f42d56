// A scalar with a serial form: one member, value, written as its width in bytes, low byte
// first (1 byte for unsigned char, 4 for unsigned int, whatever the width of the machine's
// int). It starts at 0, is built from a T and converts back to T, so that it compares and
// orders as the number it holds.
#ifndef ZETSETTINGS_SERIAL_TSERVAR_H
#define ZETSETTINGS_SERIAL_TSERVAR_H

#include <cstdint>
#include <type_traits>

#include "zetsettings/components/ZETSerializeInterface.h"

template <typename T>
class TSerVar final : public ZETSerializeInterface {
    static_assert(std::is_same<T, unsigned char>::value || std::is_same<T, unsigned int>::value,
                  "the wire knows bytes and 32-bit numbers only");
    static_assert(sizeof(T) <= 4, "unsigned int wider than its 32-bit wire form");

public:
    static constexpr int kWidth = std::is_same<T, unsigned char>::value ? 1 : 4;

    TSerVar() : value(0) {}
    TSerVar(T initial) : value(initial) {}
    TSerVar(const TSerVar& other) = default;
    TSerVar& operator=(const TSerVar& other) = default;
    ~TSerVar() = default;

    operator T() const { return value; }

    int serialize(unsigned char* dest) const override
    {
        for (int i = 0; i < kWidth; ++i)
            dest[i] = static_cast<unsigned char>(static_cast<uint32_t>(value) >> (8 * i));
        return kWidth;
    }

    // Fails with 0, value and position unchanged, when fewer than the width remain.
    int deserialize(const ZETBufferBChk& src) override
    {
        if (src.exceedsFromPosition(kWidth))
            return 0;
        const unsigned char* bytes = src.current();
        uint32_t read = 0;
        for (int i = 0; i < kWidth; ++i)
            read |= static_cast<uint32_t>(bytes[i]) << (8 * i);
        value = static_cast<T>(read);
        src.advance(kWidth);
        return kWidth;
    }

    int getSerLength() const override { return kWidth; }

    T value;
};

extern template class TSerVar<unsigned char>;
extern template class TSerVar<unsigned int>;

#endif
