#pragma once

#include <cstdint>

#include "Shared.h"

/// Positions, modes and choices that describe the channel sample buffer.
namespace ovka::buffer {

/// Upper bound for `maxploop`, in sample points.
inline constexpr std::uint64_t MAXbuffer = 130592000;
/// Points allocated beyond the capacity, so that writes at `maxploop` itself stay inside.
inline constexpr std::uint64_t kMarginPoints = 2000;
/// Buffer channels: 1 and 2 left and right, 3 and 4 the second pair, 0 auxiliary.
inline constexpr std::int32_t kChannels = 5;

// name, default: meaning (unit); writer.
/// Capacity in sample points; initMalloc: and loading a recording.
inline constinit Shared<std::uint64_t> maxploop{432000};
/// Index at which the next frame is written, the "now" of every reader; the acquisition thread.
inline constinit Shared<std::int64_t> ploop{0};
/// The point to which looping returns and where appended data starts; the application.
inline constinit Shared<std::int64_t> ploopStart{0};
/// Samples per second per channel, never 0; the user.
inline constinit Shared<std::uint32_t> SampleSpeed{120};
/// 1: writing wraps to `ploopStart` at the end of the buffer; the user.
inline constinit Shared<std::int32_t> setLoopModeX{0};
/// 0: playing back; non-zero: acquiring; 1: a recording runs; the application.
inline constinit Shared<std::int32_t> setRecModeX{0};
/// 1: the write position is frozen; the user and the end of the buffer.
inline constinit Shared<std::int32_t> setPauseX{0};
/// 1: auto-save is armed for the end of the buffer; the user, cleared at the end of the buffer.
inline constinit Shared<std::int32_t> AutoSaveX{0};
/// Wraps made while recording with auto-save; the acquisition thread.
inline constinit Shared<std::int32_t> loopCount{0};
/// Amplifier model 0 to 9; the user.
inline constinit Shared<std::uint32_t> SelectDevice{0};
/// Channel configuration 0 to 3 of the amplifier; the user.
inline constinit Shared<std::uint32_t> DeviceConfig{1};
/// 1: readers see the right-hand channels negated; the user.
inline constinit Shared<std::int32_t> ReversPolarityX{0};
/// 1: readers see left and right swapped in both pairs; the user.
inline constinit Shared<std::int32_t> LeftRightReverse{0};
/// 1: the right-hand channels are negated whatever the polarity; the user.
inline constinit Shared<std::int32_t> ShowReverseWaveX{0};
/// Index of the chosen maximum time, 0 (3 minutes) to 9 (24 hours); the maximum-time actions.
inline constinit Shared<std::int32_t> MaxTimeActionX{4};
/// Index of the chosen sample speed, 0 to 11 (11: `SampleSpeedX`); the sampling-mode choice.
inline constinit Shared<std::int32_t> samplingModeX{4};
/// The custom sample speed of mode 11 (samples per second); the user.
inline constinit Shared<std::uint32_t> SampleSpeedX{120};
/// 1: the upload copy is made with every frame; the upload.
inline constinit Shared<std::int32_t> UploadStartZ{0};
/// 1: the performance profile: every read is handed on at once and outputs follow new data, instead
/// of the usual batches and intervals; the user.
inline constinit Shared<std::int32_t> PerformanceProfileX{0};
/// First point of the upload copy; the upload.
inline constinit Shared<std::int64_t> ploopRockNet{0};

/// Puts every variable back to its default.
void resetVariables();

}  // namespace ovka::buffer
