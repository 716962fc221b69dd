#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>

namespace ovka::terminal {

/// Tells on standard error how far the work on a file is, once it takes more than half a second: in
/// place on a terminal, else a line every 10 seconds. A thread of its own shows it, so that a disk
/// which hangs shows too. begin() and end() on the main thread, advance() on any.
class FileProgress {
 public:
  FileProgress() = default;
  ~FileProgress() { end(); }
  FileProgress(const FileProgress&) = delete;
  FileProgress& operator=(const FileProgress&) = delete;

  /// Work begins, as a person says it: "saving night.ovkanote". Ends the work before.
  void begin(const std::string& what);
  void end();
  /// Bytes done of an estimated total; does nothing between works.
  void advance(std::uint64_t done, std::uint64_t total) {
    done_ = done;
    total_ = total;
  }

 private:
  void run();
  [[nodiscard]] std::string line(std::chrono::nanoseconds elapsed) const;

  std::string what_;
  std::atomic<std::uint64_t> done_{0};
  std::atomic<std::uint64_t> total_{0};
  std::mutex lock_;  ///< guards the flag
  std::condition_variable ended_;
  bool over_ = false;
  std::thread shower_;
};

}  // namespace ovka::terminal
