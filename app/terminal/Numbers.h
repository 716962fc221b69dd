#pragma once

#include <cstdint>
#include <string>

namespace ovka::terminal {

/// The shortest text that reads back as exactly the same number ("0.1", "1e-07", "nan", "inf").
[[nodiscard]] std::string shortestNumber(double value);
void appendNumber(std::string& out, double value);
void appendInteger(std::string& out, std::int64_t value);

/// A number for a person in at most `width` characters, as many digits as fit and are sensible; a
/// number that cannot be shown is "-".
[[nodiscard]] std::string readableNumber(double value, int width);

/// Whole seconds as "00:01:23"; more than 99 hours show all their digits.
[[nodiscard]] std::string clockText(double seconds);

}  // namespace ovka::terminal
