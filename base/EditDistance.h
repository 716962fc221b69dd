#pragma once

#include <cstddef>
#include <string_view>

namespace ovka {

/// How many bytes must be changed, added or dropped to make `b` of `a` (V. I. Levenshtein, "Binary
/// codes capable of correcting deletions, insertions, and reversals", 1966): for suggestions after
/// a mistyped name. Any thread; allocates.
[[nodiscard]] std::size_t editDistance(std::string_view a, std::string_view b);

}  // namespace ovka
