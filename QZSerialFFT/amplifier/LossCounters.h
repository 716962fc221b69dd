#pragma once

#include <array>

#include "Shared.h"

namespace ovka {

/// Every way in which received data does not become samples, each counted. Any thread.
struct LossCounters {
  Counter stagingBytes;      ///< bytes that did not fit the staging buffer
  Counter wrongLengthLines;  ///< lines that are neither samples nor a status line
  Counter longLines;         ///< 16 bytes without a line end, thrown away
  Counter resyncBytes;       ///< bytes skipped by the fixed framing while it looked for a frame
  Counter droppedPackets;    ///< Bluetooth packets of 1024 bytes or more
  Counter ignoredRecords;    ///< records of the old Bluetooth head set that its rules leave out
  Counter gapPoints;         ///< points missing against the clock
  Counter lineHangups;       ///< times a line hung up or was unplugged

  void reset() noexcept;
};

/// A cause of loss as a view shows it.
struct LossCause {
  const char* name;  ///< the key of machine-readable output
  const char* text;  ///< a few words for a person
  Counter LossCounters::*count;
};

/// All causes, in the order in which a byte meets them.
inline constexpr std::array<LossCause, 8> kLossCauses{{
    {"lineHangups", "line hang-ups", &LossCounters::lineHangups},
    {"stagingBytes", "bytes beyond the input buffer", &LossCounters::stagingBytes},
    {"droppedPackets", "oversized Bluetooth packets", &LossCounters::droppedPackets},
    {"ignoredRecords", "old Bluetooth records left out", &LossCounters::ignoredRecords},
    {"longLines", "lines without an end", &LossCounters::longLines},
    {"wrongLengthLines", "lines of wrong length", &LossCounters::wrongLengthLines},
    {"resyncBytes", "bytes skipped to find a frame", &LossCounters::resyncBytes},
    {"gapPoints", "points missing against the clock", &LossCounters::gapPoints},
}};

inline void LossCounters::reset() noexcept {
  for (const LossCause& cause : kLossCauses) (this->*cause.count).reset();
}

}  // namespace ovka
