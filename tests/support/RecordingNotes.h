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
  struct Request {
    std::string text;  ///< "On 60 100 s0 c1 p2 qt0", as the arguments came
    MidiCause cause;
  };
  using Place = std::tuple<std::int32_t, std::int32_t, std::int32_t>;  // port, channel, note

  bool keepRequests = true;
  double now = 1000.0;
  bool isRunning = true;
  std::int32_t ports = 24;
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

  void MidiOutOn(std::int32_t note, std::int32_t velocit, std::int32_t SetupN, std::int32_t channel,
                 std::int32_t MIDIport, std::int32_t UseQT) override {
    record("On", {note, velocit}, SetupN, channel, MIDIport, UseQT);
    on(note, SetupN, channel, MIDIport);
  }
  void MidiOutOff(std::int32_t note, std::int32_t SetupN, std::int32_t channel,
                  std::int32_t MIDIport, std::int32_t UseQT) override {
    const auto mark =
        std::tuple{SetupN, MIDIport, std::clamp(channel, 0, 15), std::clamp(note, 0, 127)};
    if (marked_.erase(mark) == 0) return;
    record("Off", {note}, SetupN, channel, MIDIport, UseQT);
    off(note, channel, MIDIport);
  }
  void MidiOutOffOn(std::int32_t note, std::int32_t velocit, std::int32_t SetupN,
                    std::int32_t channel, std::int32_t MIDIport, std::int32_t NOTEN,
                    std::int32_t UseQT) override {
    record("OffOn", {note, velocit, NOTEN}, SetupN, channel, MIDIport, UseQT);
    std::int32_t& slot = slotOf(SetupN, channel, MIDIport, NOTEN);
    if (NOTEN > 9 || slot != std::clamp(note, 0, 127)) {
      off(slot, channel, MIDIport);
      on(note, SetupN, channel, MIDIport);
    }
    slot = std::clamp(note, 0, 127);
  }
  void MidiOutOnOff(std::int32_t note, std::int32_t velocit, std::int32_t SetupN,
                    std::int32_t channel, std::int32_t MIDIport, std::int32_t NOTEN,
                    std::int32_t UseQT) override {
    record("OnOff", {note, velocit, NOTEN}, SetupN, channel, MIDIport, UseQT);
    off(note, channel, MIDIport);
  }
  void MidiControlChange(std::int32_t controller, std::int32_t value, std::int32_t SetupN,
                         std::int32_t channel, std::int32_t MIDIport, std::int32_t UseQT) override {
    record("CC", {controller, value}, SetupN, channel, MIDIport, UseQT);
  }
  void MidiCpitch(std::int32_t value, std::int32_t SetupN, std::int32_t channel,
                  std::int32_t MIDIport, std::int32_t UseQT) override {
    record("Bend", {value}, SetupN, channel, MIDIport, UseQT);
  }
  void MidiCprogram(std::int32_t program, std::int32_t SetupN, std::int32_t channel,
                    std::int32_t MIDIport, std::int32_t UseQT) override {
    record("Program", {program}, SetupN, channel, MIDIport, UseQT);
  }
  void MidiStop(std::int32_t MIDIport) override {
    if (keepRequests) requests.push_back({"Stop p" + std::to_string(MIDIport), cause_});
  }
  void MidiCont(std::int32_t) override {}
  void MidiStart(std::int32_t) override {}
  void MidiShutDown() override {}
  [[nodiscard]] double mtimeatMIDIs() const override { return now; }
  void because(const MidiCause& cause) override { cause_ = cause; }
  [[nodiscard]] bool running() const override { return isRunning; }
  [[nodiscard]] std::int32_t portCount() const override { return ports; }
  void restart() override { ++restarts; }

 private:
  void record(const char* what, std::initializer_list<std::int32_t> numbers, std::int32_t setup,
              std::int32_t channel, std::int32_t port, std::int32_t useQT) {
    if (!keepRequests) return;
    std::string text = what;
    for (const std::int32_t number : numbers) text += " " + std::to_string(number);
    text += " s" + std::to_string(setup) + " c" + std::to_string(channel) + " p" +
            std::to_string(port) + " qt" + std::to_string(useQT);
    requests.push_back({std::move(text), cause_});
  }
  void on(std::int32_t note, std::int32_t setup, std::int32_t channel, std::int32_t port) {
    note = std::clamp(note, 0, 127);
    channel = std::clamp(channel, 0, 15);
    marked_.insert({setup, port, channel, note});
    sounding_.insert({port, channel, note});
  }
  void off(std::int32_t note, std::int32_t channel, std::int32_t port) {
    sounding_.erase({port, std::clamp(channel, 0, 15), std::clamp(note, 0, 127)});
  }
  std::int32_t& slotOf(std::int32_t setup, std::int32_t channel, std::int32_t port,
                       std::int32_t NOTEN) {
    const std::int32_t index = setup * 1152 + std::clamp(channel, 0, 15) * 72 + port * 3 + NOTEN;
    return slots_.at(static_cast<std::size_t>(index));
  }

  MidiCause cause_;
  std::vector<std::int32_t> slots_ = std::vector<std::int32_t>(129 * 1152);
  std::set<std::tuple<std::int32_t, std::int32_t, std::int32_t, std::int32_t>> marked_;
  std::set<Place> sounding_;
};

}  // namespace ovka::testing
