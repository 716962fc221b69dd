#pragma once

#include <chrono>
#include <doctest/doctest.h>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "BufferBench.h"
#include "FakeDisk.h"
#include "FakeLocks.h"
#include "Folders.h"
#include "HostFacts.h"
#include "JournalCatalogue.h"
#include "JournalWriter.h"
#include "ManualTime.h"

namespace ovka::testing {

struct FixedFolder final : Folders {
  explicit FixedFolder(std::string at = "/disk") : path(std::move(at)) {}
  std::string resolve(std::string_view /*path*/) const override { return path; }
  std::string path;
};

struct FixedHost final : HostFacts {
  std::string machineName() const override { return "machine"; }
  LocalTime localTime(std::int64_t /*wall*/) const override { return {2024, 5, 6, 7, 8, 9}; }
};

/// A value that says which frame and channel it is; channel 0 carries the frame's number.
inline std::int32_t sampleOf(std::int64_t frame, std::int32_t channel) {
  if (channel == 0) return static_cast<std::int32_t>(frame);
  const auto mixed = static_cast<std::uint32_t>(frame) * 2654435761U;
  return static_cast<std::int32_t>(mixed >> (channel * 7));
}

inline Frame frameOf(std::int64_t number) {
  Frame frame;
  for (std::int32_t channel = 0; channel < buffer::kChannels; ++channel) {
    frame.set(static_cast<std::size_t>(channel), sampleOf(number, channel));
  }
  return frame;
}

/// Points of the store whose five channels are not those of one frame, and of points first ... end
/// - 1 those that do not continue the frame before.
inline std::int64_t wrongPoints(const SampleStore& store, std::int64_t first, std::int64_t end,
                                std::int64_t firstFrame) {
  std::int64_t wrong = 0;
  for (std::int64_t point = first; point < end; ++point) {
    for (std::int32_t channel = 0; channel < buffer::kChannels; ++channel) {
      if (store.storedValue(channel, point) == sampleOf(firstFrame + point - first, channel)) {
        continue;
      }
      ++wrong;
      break;
    }
  }
  return wrong;
}

/// An acquisition at `speed` with a journal, on manual time and a disk of its own.
template <typename Disk>
struct JournalBenchOn : BufferBench {
  explicit JournalBenchOn(std::uint64_t capacity = 100'000, std::string folder = "/disk")
      : BufferBench(capacity), folders(std::move(folder)) {
    buffer::setRecModeX = 1;
    journal.start(time);
  }
  ~JournalBenchOn() { time.stopAll(); }

  /// Stores frames at SampleSpeed for a while, a batch every 60 ms.
  void acquire(std::chrono::milliseconds duration) {
    using namespace std::chrono_literals;
    const std::int64_t start = time.nanoseconds();
    std::int64_t stored = 0;
    for (auto past = 0ms; past < duration;) {
      const auto step = std::min<std::chrono::milliseconds>(60ms, duration - past);
      past += step;
      time.advanceTo(start + std::chrono::nanoseconds(past).count());
      const std::int64_t due = past.count() * buffer::SampleSpeed / 1000;
      for (; stored < due; ++stored) store.storeFrame(frameOf(nextFrame++));
    }
  }
  [[nodiscard]] std::vector<JournalSession> sessions() {
    int error = 0;
    return JournalCatalogue(disk, locks, folders).sessions(&error);
  }

  ManualTime time{1'700'000'000'000'000'000};
  Disk disk;
  FakeLocks locks;
  FixedFolder folders;
  FixedHost host;
  std::int64_t nextFrame = 1000;
  JournalWriter journal{{store, disk, locks, folders, host, time}};
};

using JournalBench = JournalBenchOn<FakeDisk>;

/// A recording brought back into a buffer of its own.
struct Recovered : BufferBench {
  Recovered(Files& disk, const std::vector<std::string>& parts) : BufferBench(10) {
    FakeLocks locks;
    const FixedFolder folders;
    JournalCatalogue catalogue(disk, locks, folders);
    const auto found = catalogue.read(parts);
    REQUIRE(found.has_value());
    session = *found;
    problem = catalogue.recover(session, store);
  }
  JournalSession session;
  std::string problem;
};

}  // namespace ovka::testing
