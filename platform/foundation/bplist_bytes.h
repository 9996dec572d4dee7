// The byte layout both binary property-list readers agree on: the "bplist00" header, the
// 32-byte trailer, and big-endian integers of 1 to 8 bytes.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/foundation/value.h"

namespace plat::bplist {

constexpr std::size_t kHeaderSize = 8;
constexpr std::size_t kTrailerSize = 32;

inline std::uint64_t readBigEndian(const std::uint8_t* p, std::size_t width) {
    std::uint64_t v = 0;
    for (std::size_t i = 0; i < width; ++i)
        v = (v << 8) | p[i];
    return v;
}

inline void appendBigEndian(Bytes& out, std::uint64_t v, std::size_t width) {
    for (std::size_t i = width; i-- > 0;)
        out.push_back(static_cast<std::uint8_t>(v >> (8 * i)));
}

}  // namespace plat::bplist
