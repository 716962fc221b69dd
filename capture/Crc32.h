#pragma once

#include <cstdint>
#include <span>

namespace ovka {

/// CRC-32 with the reflected polynomial 0xEDB88320, start and final value 0xFFFFFFFF (ISO 3309, the
/// one of zlib and PNG). `before` is the result so far, to go on with a further piece.
[[nodiscard]] std::uint32_t crc32(std::span<const std::uint8_t> bytes, std::uint32_t before = 0);

}  // namespace ovka
