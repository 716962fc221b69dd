#pragma once

#include <cstdint>

#include "BufferVariables.h"
#include "Shared.h"

/// What both mappings share.
namespace ovka::mapping {

/// 1: the performance profile. A set-up that refreshes its inputs (`ONInput`) does not send what it
/// sent before: once its interval has passed it waits for the next samples and sends within a tick
/// of their arrival. It never sends more often than its interval; when no samples come for
/// `kStaleWait` more, it sends all the same. The user.
inline constexpr Shared<std::int32_t>& PerformanceProfileX = buffer::PerformanceProfileX;
/// Seconds beyond the interval; longer than the slowest line needs for a batch of samples.
inline constexpr double kStaleWait = 0.1;

/// 1: samples are expected and no line brings any: what is left would only repeat the last values,
/// so the mappings are silent as in a pause; whoever watches the lines.
inline constinit Shared<std::int32_t> inputLostX{0};

}  // namespace ovka::mapping
