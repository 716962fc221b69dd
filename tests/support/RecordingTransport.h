#pragma once

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <span>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "Clock.h"
#include "HeardNotes.h"
#include "MidiTransport.h"

namespace ovka::testing {

/// A message as a receiver got it.
struct SentMidi {
  std::uint64_t destination = 0;  ///< 0: published on the virtual source
  std::uint64_t timeStamp = 0;
  std::int64_t time = 0;  ///< the clock's nanoseconds; 0 without a clock
  std::vector<std::uint8_t> bytes;
  friend bool operator==(const SentMidi&, const SentMidi&) = default;
};

/// A MIDI system that keeps what it is sent. Endpoints, failures and vanishing are scripted; a send
/// to a destination that it does not have is kept apart, as nobody receives it. Any thread.
class RecordingTransport final : public MidiTransport {
 public:
  explicit RecordingTransport(std::string name = "recording", const Clock* clock = nullptr)
      : name_(std::move(name)), clock_(clock) {}

  // The script.

  /// An endpoint comes; it gets the id of an earlier one of that name, as a system may.
  std::uint64_t addDestination(const std::string& name) { return add(destinations_, name); }
  std::uint64_t addSource(const std::string& name) { return add(sources_, name); }
  void addDevice(MidiDevice device) { devices_.push_back(std::move(device)); }
  void addExternalDevice(MidiDevice device) { external_.push_back(std::move(device)); }
  /// A destination goes; what is sent to it from now on is lost. With `newId` it will return under
  /// another id.
  void vanish(const std::string& name, bool newId = false) {
    const std::scoped_lock guard(lock_);
    std::erase_if(destinations_, [&](const MidiEndpoint& e) { return e.name == name; });
    if (newId) ids_.erase(name);
    ++changes_;
  }
  /// The whole system goes or comes back.
  void setConnected(bool connected) {
    const std::scoped_lock guard(lock_);
    connected_ = connected;
    ++changes_;
  }
  /// What other programs or devices send to us.
  void feedInPort(std::span<const std::uint8_t> packetList) {
    if (readers_.inPort != nullptr) readers_.inPort(packetList.data(), readers_.context, nullptr);
  }
  void feedVirtualDestination(std::span<const std::uint8_t> packetList) {
    if (readers_.virtualDestination != nullptr) {
      readers_.virtualDestination(packetList.data(), readers_.context, nullptr);
    }
  }
  int openResult = 0;                      ///< what open() answers
  std::atomic<int> sendResult{0};          ///< what send() answers; not 0: nothing is delivered
  std::atomic<std::uint64_t> failures{0};  ///< sends that were refused or went nowhere
  std::function<void(const SentMidi&)> onSend;  ///< called with each delivered message

  // What happened.

  [[nodiscard]] std::vector<SentMidi> sent() const {
    const std::scoped_lock guard(lock_);
    return sent_;
  }
  [[nodiscard]] std::vector<SentMidi> published() const {
    const std::scoped_lock guard(lock_);
    return published_;
  }
  void forget() {
    const std::scoped_lock guard(lock_);
    sent_.clear();
    published_.clear();
  }
  /// Notes that sound at the receivers: destination, channel, note. They live on when messages are
  /// forgotten or a destination vanishes, as at a receiver.
  [[nodiscard]] std::set<std::tuple<std::uint64_t, int, int>> sounding() const {
    const std::scoped_lock guard(lock_);
    std::set<std::tuple<std::uint64_t, int, int>> all;
    for (const auto& [destination, notes] : sounding_)
      for (const auto& [channel, note] : notes) all.emplace(destination, channel, note);
    return all;
  }
  [[nodiscard]] const MidiNames& names() const { return names_; }
  [[nodiscard]] std::vector<std::uint64_t> connectedSources() const {
    const std::scoped_lock guard(lock_);
    return connectedSources_;
  }
  [[nodiscard]] bool opened() const { return opened_; }
  [[nodiscard]] int opens() const { return opens_; }
  [[nodiscard]] int rescans() const { return rescans_; }

  // MidiTransport

  std::string name() const override { return name_; }
  int open(const MidiNames& names, const MidiReaders& readers) override {
    const std::scoped_lock guard(lock_);
    ++opens_;
    if (openResult != 0) return openResult;
    names_ = names;
    readers_ = readers;
    opened_ = true;
    return 0;
  }
  std::string explanation() const override {
    return openResult != 0 ? "scripted failure: do nothing" : std::string();
  }
  std::vector<MidiEndpoint> destinations() override {
    const std::scoped_lock guard(lock_);
    return opened_ && connected_ ? destinations_ : std::vector<MidiEndpoint>{};
  }
  std::vector<MidiEndpoint> sources() override {
    const std::scoped_lock guard(lock_);
    return opened_ && connected_ ? sources_ : std::vector<MidiEndpoint>{};
  }
  std::vector<MidiDevice> devices() override { return devices_; }
  std::vector<MidiDevice> externalDevices() override { return external_; }
  int connectSource(std::uint64_t source) override {
    const std::scoped_lock guard(lock_);
    connectedSources_.push_back(source);
    return 0;
  }
  int send(std::uint64_t destination, std::uint64_t timeStamp,
           std::span<const std::uint8_t> message) override {
    SentMidi sent{destination, timeStamp, now(), {message.begin(), message.end()}};
    {
      const std::scoped_lock guard(lock_);
      if (const int refused = refusal(destination)) {
        failures = failures + 1;
        return refused;
      }
      sounding_[destination].hear(sent.bytes);
      sent_.push_back(sent);
    }
    if (onSend) onSend(sent);
    return 0;
  }
  int received(std::uint64_t timeStamp, std::span<const std::uint8_t> message) override {
    const std::scoped_lock guard(lock_);
    if (!opened_ || !connected_) return ENODEV;
    published_.push_back({0, timeStamp, now(), {message.begin(), message.end()}});
    return 0;
  }
  void rescan() override { ++rescans_; }
  std::uint64_t changes() const override { return changes_; }
  bool connected() const override { return connected_; }
  std::uint64_t dropped() const override { return failures; }
  void close() override {
    const std::scoped_lock guard(lock_);
    opened_ = false;
    readers_ = {};
    connectedSources_.clear();
  }

 private:
  [[nodiscard]] std::int64_t now() const { return clock_ != nullptr ? clock_->nanoseconds() : 0; }
  std::uint64_t add(std::vector<MidiEndpoint>& to, const std::string& name) {
    const std::scoped_lock guard(lock_);
    const auto [known, fresh] = ids_.try_emplace(name, nextId_);
    if (fresh) ++nextId_;
    to.push_back({known->second, name});
    ++changes_;
    return known->second;
  }
  [[nodiscard]] int refusal(std::uint64_t destination) const {
    if (sendResult != 0) return sendResult;
    if (!opened_ || !connected_) return ENODEV;
    const bool known = std::any_of(destinations_.begin(), destinations_.end(),
                                   [&](const MidiEndpoint& e) { return e.id == destination; });
    return known ? 0 : ENXIO;
  }
  std::string name_;
  const Clock* clock_;
  mutable std::mutex lock_;
  std::vector<MidiEndpoint> destinations_;
  std::vector<MidiEndpoint> sources_;
  std::vector<MidiDevice> devices_;
  std::vector<MidiDevice> external_;
  std::map<std::string, std::uint64_t> ids_;
  std::uint64_t nextId_ = 1;
  std::vector<SentMidi> sent_;
  std::vector<SentMidi> published_;
  std::map<std::uint64_t, HeardNotes> sounding_;
  std::vector<std::uint64_t> connectedSources_;
  MidiNames names_;
  MidiReaders readers_;
  std::atomic<std::uint64_t> changes_{0};
  std::atomic<bool> connected_{true};
  std::atomic<bool> opened_{false};
  std::atomic<int> opens_{0};
  std::atomic<int> rescans_{0};
};

}  // namespace ovka::testing
