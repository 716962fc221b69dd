#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "CaptureReader.h"
#include "Clock.h"
#include "ReplaySerialPorts.h"

namespace ovka {

/// A capture in place of a live session's serial lines: its blocks come when they came, on the real
/// clock, so that everything beside the lines (music, saving, playback) works as on an amplifier.
/// Outlives the engine that reads from it.
class LiveReplay {
 public:
  explicit LiveReplay(const Clock& clock) : clock_(clock) {}

  /// Empty, or one line about a file that cannot be read or is no capture. Once.
  [[nodiscard]] std::string open(const std::string& path);
  [[nodiscard]] SerialPorts& lines() { return *lines_; }
  [[nodiscard]] const CaptureSettings& settings() const { return reader_.settings(); }
  /// The paths of the lines, in the order of their ports.
  [[nodiscard]] std::vector<std::string> inputs();

  /// Ends waits for recorded moments: what waits goes on at once. Any thread.
  void stop();
  /// Nothing is left to give to the open lines. Any thread.
  [[nodiscard]] bool ended() const { return lines_->finished(); }
  /// Empty, or why the capture ended before its end; once ended() was true.
  [[nodiscard]] const std::string& damage() const { return reader_.error(); }

 private:
  void waitUntil(std::int64_t nanoseconds);

  const Clock& clock_;
  FileSource source_;
  CaptureReader reader_{source_};
  std::unique_ptr<ReplaySerialPorts> lines_;
  std::mutex lock_;  // guards stopped_
  std::condition_variable stop_;
  bool stopped_ = false;
};

}  // namespace ovka
