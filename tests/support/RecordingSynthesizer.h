#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <set>
#include <span>
#include <string>
#include <utility>
#include <vector>

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
  [[nodiscard]] std::set<std::pair<int, int>> sounding() const {
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
    if (bytes.size() != 3) return;
    const int kind = bytes[0] & 0xF0;
    const std::pair<int, int> note{bytes[0] & 0x0F, bytes[1]};
    if (kind == 0x90 && bytes[2] > 0) sounding_.insert(note);
    if (kind == 0x80 || (kind == 0x90 && bytes[2] == 0)) sounding_.erase(note);
    if (kind == 0xB0 && (bytes[1] == 120 || bytes[1] == 123)) {
      std::erase_if(sounding_, [&](const auto& n) { return n.first == note.first; });
    }
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
  std::set<std::pair<int, int>> sounding_;
  std::atomic<bool> started_{false};
  std::atomic<int> starts_{0};
  std::atomic<int> silences_{0};
};

}  // namespace ovka::testing
