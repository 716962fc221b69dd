#pragma once

#include <cstdint>
#include <string_view>

namespace ovka {

/// Reads an integer from the end of the text: each character counts its digit value times 10 to the
/// power of its distance from the end. "0" and every character that is no digit count 0, so a point
/// still takes a decimal place ("4.6.4" is 40604), and a "-" anywhere makes the result negative.
/// Places from 10^18 on are left out: no number of the system is that long. Any thread.
[[nodiscard]] std::int64_t srtToLong(std::string_view text) noexcept;

}  // namespace ovka
