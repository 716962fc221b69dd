#pragma once

#include <algorithm>
#include <cstdint>
#include <set>
#include <string>
#include <tuple>
#include <vector>

#include "NoteOutput.h"

namespace ovka::testing {

/// A note engine that writes every request down and keeps the books of the real one: which notes it
/// has marked, what its slots hold, and what sounds at the receiver. Time is set by hand.
class RecordingNotes final : public NoteOutput {
 public:
  using I = std::int32_t;
  struct Request {
    std::string text;  ///< "On 60 100 s0 c1 p2 qt0", as the arguments came
    MidiCause cause;
  };
  using Place = std::tuple<I, I, I>;  // port, channel, note

  bool keepRequests = true;
  double now = 1000.0;
  bool isRunning = true;
  I ports = 24;
  long restarts = 0;
  std::vector<Request> requests;

  /// What was asked for since the last take, without the Note Offs that came to nothing.
  std::vector<std::string> take() {
    std::vector<std::string> texts;
    for (Request& request : requests) texts.push_back(std::move(request.text));
    requests.clear();
    return texts;
  }
  [[nodiscard]] const std::set<Place>& sounding() const { return sounding_; }

  void MidiOutOn(I note, I velocity, I setup, I channel, I port, I UseQT) override {
    record("On", {note, velocity}, setup, channel, port, UseQT);
    on(note, setup, channel, port);
  }
  void MidiOutOff(I note, I setup, I channel, I port, I UseQT) override {
    const auto mark = std::tuple{setup, port, std::clamp(channel, 0, 15), std::clamp(note, 0, 127)};
    if (marked_.erase(mark) == 0) return;
    record("Off", {note}, setup, channel, port, UseQT);
    off(note, channel, port);
  }
  void MidiOutOffOn(I note, I velocity, I setup, I channel, I port, I NOTEN, I UseQT) override {
    record("OffOn", {note, velocity, NOTEN}, setup, channel, port, UseQT);
    I& slot = slotOf(setup, channel, port, NOTEN);
    if (NOTEN > 9 || slot != std::clamp(note, 0, 127)) {
      off(slot, channel, port);
      on(note, setup, channel, port);
    }
    slot = std::clamp(note, 0, 127);
  }
  void MidiOutOnOff(I note, I velocity, I setup, I channel, I port, I NOTEN, I UseQT) override {
    record("OnOff", {note, velocity, NOTEN}, setup, channel, port, UseQT);
    off(note, channel, port);
  }
  void MidiControlChange(I controller, I value, I setup, I channel, I port, I UseQT) override {
    record("CC", {controller, value}, setup, channel, port, UseQT);
  }
  void MidiCpitch(I value, I setup, I channel, I port, I UseQT) override {
    record("Bend", {value}, setup, channel, port, UseQT);
  }
  void MidiCprogram(I program, I setup, I channel, I port, I UseQT) override {
    record("Program", {program}, setup, channel, port, UseQT);
  }
  void MidiStop(I port) override {
    if (keepRequests) requests.push_back({"Stop p" + std::to_string(port), cause_});
  }
  void MidiCont(I) override {}
  void MidiStart(I) override {}
  void MidiShutDown() override {}
  [[nodiscard]] double mtimeatMIDIs() const override { return now; }
  void because(const MidiCause& cause) override { cause_ = cause; }
  [[nodiscard]] bool running() const override { return isRunning; }
  [[nodiscard]] I portCount() const override { return ports; }
  void restart() override { ++restarts; }

 private:
  void record(const char* what, std::initializer_list<I> numbers, I setup, I channel, I port,
              I useQT) {
    if (!keepRequests) return;
    std::string text = what;
    for (const I number : numbers) text += " " + std::to_string(number);
    text += " s" + std::to_string(setup) + " c" + std::to_string(channel) + " p" +
            std::to_string(port) + " qt" + std::to_string(useQT);
    requests.push_back({std::move(text), cause_});
  }
  void on(I note, I setup, I channel, I port) {
    note = std::clamp(note, 0, 127);
    channel = std::clamp(channel, 0, 15);
    marked_.insert({setup, port, channel, note});
    sounding_.insert({port, channel, note});
  }
  void off(I note, I channel, I port) {
    sounding_.erase({port, std::clamp(channel, 0, 15), std::clamp(note, 0, 127)});
  }
  I& slotOf(I setup, I channel, I port, I NOTEN) {
    const I index = setup * 1152 + std::clamp(channel, 0, 15) * 72 + port * 3 + NOTEN;
    return slots_.at(static_cast<std::size_t>(index));
  }

  MidiCause cause_;
  std::vector<I> slots_ = std::vector<I>(129 * 1152);
  std::set<std::tuple<I, I, I, I>> marked_;
  std::set<Place> sounding_;
};

}  // namespace ovka::testing
