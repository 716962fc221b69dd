#pragma once

#include <cstdint>

#include "SampleStore.h"

namespace ovka {

/// Puts a buffer in which looping wrapped into the order of time: of the points first ... end - 1
/// those from `oldest` on come first. Nobody may write to the buffer meanwhile. Takes two pieces of
/// memory, whatever the length.
void straightenRing(SampleStore& store, std::int64_t first, std::int64_t oldest, std::int64_t end);

}  // namespace ovka
