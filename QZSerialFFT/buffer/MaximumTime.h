#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

#include "SampleStore.h"

namespace ovka {

/// A choice of the maximum-time menu.
struct MaximumTime {
  std::string_view selector;  ///< the menu action's name
  std::uint32_t seconds;      ///< recording length
};

/// The maximum-time menu; the index is the value of `MaxTimeActionX`.
inline constexpr std::array<MaximumTime, 10> kMaximumTimes{{
    {"setMaxTime3mAction:", 180},
    {"setMaxTime5mAction:", 300},
    {"setMaxTime10mAction:", 600},
    {"setMaxTime30mAction:", 1800},
    {"setMaxTime1hAction:", 3600},
    {"setMaxTime2hAction:", 7200},
    {"setMaxTime4hAction:", 14400},
    {"setMaxTime8hAction:", 28800},
    {"setMaxTime16hAction:", 57600},
    {"setMaxTime24hAction:", 86400},
}};

/// Performs choice `index`: a capacity of `SampleSpeed` times the seconds, at most MAXbuffer, with
/// a cleared tail. False when there is no such choice or memory is refused (nothing changes then).
/// One caller at a time.
bool setMaxTime(SampleStore& store, std::int32_t index);
/// The same by the menu action's name.
bool setMaxTime(SampleStore& store, std::string_view selector);

/// What settings without samples do with the maximum time that they brought (`MaxTimeActionX`;
/// `before`: what it was): performs the choice, but never at the cost of a recording in memory.
/// Empty when done, else why the old one was put back, as one line. One caller at a time.
[[nodiscard]] std::string takeMaximumTime(SampleStore& store, std::int32_t before);

/// Samples per second of the sampling modes 0 to 10; mode 11 is `SampleSpeedX`.
inline constexpr std::array<std::uint32_t, 11> kSamplingModes{128, 256, 512,  1024, 120, 240,
                                                              480, 960, 1200, 1440, 1920};
/// The mode whose speed the user types in.
inline constexpr std::int32_t kCustomSamplingMode = 11;

/// Samples per second of a mode; 0 for a mode that does not exist.
[[nodiscard]] std::uint32_t samplingModeSpeed(std::int32_t mode);

/// Sends a sample speed to the amplifier (`SampleSpeedSet:`) and returns the one that holds now.
using SampleSpeedSender = std::function<std::uint32_t(std::uint32_t samplesPerSecond)>;

/// Chooses a sampling mode: sends its speed, then changes to it as changeSampleSpeed does. False
/// when there is no such mode, the speed is 0, or memory is refused.
bool setSamplingMode(SampleStore& store, std::int32_t mode, const SampleSpeedSender& send);

/// `SampleSpeed` becomes `samplesPerSecond` and the recording keeps its length in whole seconds. A
/// speed of 0 is refused. When memory is refused the new speed holds with the old capacity: the
/// amplifier already runs at it. One caller at a time.
bool changeSampleSpeed(SampleStore& store, std::uint32_t samplesPerSecond);

}  // namespace ovka
