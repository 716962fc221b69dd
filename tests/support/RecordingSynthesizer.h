#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "HeardNotes.h"
#include "Synthesizer.h"

namespace ovka::testing {

/// A synthesizer that keeps what it is asked to play. Any thread.
class RecordingSynthesizer final : public Synthesizer {
 public:
  int startResult = 0;  ///< what start() answers

  /// Messages since forget(), in order; messages to a stopped synthesizer are not heard.
  [[nodiscard]] std::vector<std::vector<std::uint8_t>> messages() const {
    const std::scoped_lock guard(lock_);
    return messages_;
  }
  void forget() {
    const std::scoped_lock guard(lock_);
    messages_.clear();
  }
  /// Channel and note of every sounding note.
  [[nodiscard]] HeardNotes sounding() const {
    const std::scoped_lock guard(lock_);
    return sounding_;
  }
  [[nodiscard]] int starts() const { return starts_; }
  [[nodiscard]] int silences() const { return silences_; }

  // Synthesizer

  std::string name() const override { return "recording synthesizer"; }
  int start() override {
    ++starts_;
    if (startResult == 0) started_ = true;
    return startResult;
  }
  std::string explanation() const override {
    return startResult != 0 ? "no sound: scripted failure" : std::string();
  }
  bool started() const override { return started_; }
  void message(std::span<const std::uint8_t> bytes) override {
    if (!started_ || bytes.empty()) return;
    const std::scoped_lock guard(lock_);
    messages_.emplace_back(bytes.begin(), bytes.end());
    sounding_.hear(bytes);
  }
  void silence() override {
    const std::scoped_lock guard(lock_);
    ++silences_;
    sounding_.clear();
  }
  void stop() override {
    started_ = false;
    silence();
  }

 private:
  mutable std::mutex lock_;
  std::vector<std::vector<std::uint8_t>> messages_;
  HeardNotes sounding_;
  std::atomic<bool> started_{false};
  std::atomic<int> starts_{0};
  std::atomic<int> silences_{0};
};

}  // namespace ovka::testing
