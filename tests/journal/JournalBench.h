#pragma once

#include <chrono>
#include <doctest/doctest.h>
#include <set>

#include "BufferBench.h"
#include "DeskMachine.h"
#include "FakeDisk.h"
#include "FileLocks.h"
#include "JournalCatalogue.h"
#include "JournalWriter.h"
#include "ManualTime.h"

namespace ovka::testing {

/// Locks of one machine; `dead` processes hold none.
class FakeLocks final : public FileLocks {
 public:
  std::string mark = "1 1 boot";
  bool working = true;
  std::set<std::string> held;
  std::set<std::string> running{"1 1 boot"};

  std::unique_ptr<Lock> lock(const std::string& path, int* error) override {
    *error = !working ? ENOTSUP : held.contains(path) ? EWOULDBLOCK : 0;
    if (*error != 0) return nullptr;
    held.insert(path);
    return std::make_unique<Held>(*this, path);
  }
  std::string processMark() const override { return mark; }
  bool isRunning(const std::string& processMark) const override {
    return running.contains(processMark);
  }

 private:
  struct Held final : Lock {
    Held(FakeLocks& locks, std::string path) : locks_(locks), path_(std::move(path)) {}
    ~Held() override { locks_.held.erase(path_); }
    FakeLocks& locks_;
    std::string path_;
  };
};

struct FixedFolder final : Folders {
  explicit FixedFolder(std::string at = "/disk") : path(std::move(at)) {}
  std::string resolve(std::string_view /*path*/) const override { return path; }
  std::string path;
};

inline std::vector<std::string> namesOn(const FakeDisk& disk) {
  std::vector<std::string> names;
  for (const auto& [path, bytes] : disk.contents) names.push_back(path);
  return names;
}

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
      if (store.storedValue(channel, point) != sampleOf(firstFrame + point - first, channel)) {
        ++wrong;
        break;
      }
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
  FakeHost host;
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
