#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ovka {

// Numbers as documents hold them, whatever the locale of the process. Any thread.

/// "%d".
[[nodiscard]] std::string integerText(std::int64_t value);
/// "%f": six places. What is not finite is written as 0.
[[nodiscard]] std::string floatText(double value);
/// The number at the front of a text, after white space; nothing when there is none or it is not
/// finite. Whole numbers of documents are read with srtToLong instead.
[[nodiscard]] std::optional<double> floatOf(std::string_view text);

}  // namespace ovka
