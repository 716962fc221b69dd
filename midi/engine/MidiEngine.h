#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "BoundedRing.h"
#include "Clock.h"
#include "LatencyMeter.h"
#include "MessageLog.h"
#include "MidiBytes.h"
#include "MidiTransport.h"
#include "NoteBooks.h"
#include "NoteOutput.h"
#include "PortList.h"
#include "Receivers.h"
#include "SoundingNotes.h"
#include "Synthesizer.h"
#include "SynthesizerVoices.h"

namespace ovka {

/// What the note engine works with; everything outlives it.
struct MidiEngineParts {
  /// MIDI systems; their destinations make up the port list in this order.
  std::vector<MidiTransport*> transports;
  /// Null: there is none.
  Synthesizer* synthesizer = nullptr;
  /// Shared with a guard process; null: a table of its own.
  SoundingNotes* sounding = nullptr;
  /// The set-up zeroes the first 8 port choices of both families of MIDI set-ups.
  std::function<void()> clearPortChoices;
  /// Restart: the port list is there again; set-ups find their ports by name.
  std::function<void()> convertPortNameToInt;
};

/// The MIDI note engine: owns the program's MIDI clients, knows which notes sound, and turns
/// requests into messages (see NoteOutput). One a process, because its switches are process-wide.
///
/// The port list holds the destinations of all MIDI systems and, behind them, the software
/// synthesizer under the name "OVKA Synthesizer", as platforms list theirs: so a set-up that passes
/// UseQT 0 can choose it, and it alone makes music where there is no MIDI system. That destination
/// is the synthesizer, so it plays whatever `coreMidi` says, and a note that UseQT would play there
/// a second time is played once. Besides, port = findPortCountE means the synthesizer, as does
/// UseQTMIDIX of a set-up.
///
/// Threads: the requests of NoteOutput, panic() and the meters: any. One short lock orders them;
/// under it nothing waits or allocates. Everything marked "slow" opens, closes or lists MIDI
/// systems and may take seconds: any thread but the MIDI thread, one at a time by a second lock.
class MidiEngine final : public NoteOutput {
 public:
  static constexpr std::string_view kSynthesizerName = "OVKA Synthesizer";

  MidiEngine(MidiEngineParts parts, const Clock& clock);
  /// close()
  ~MidiEngine() override;
  MidiEngine(const MidiEngine&) = delete;
  MidiEngine& operator=(const MidiEngine&) = delete;

  // Set-up. Slow.

  /// mainMidi: does nothing while `runMIDI` is 1. A MIDI system that cannot be opened is named with
  /// what to do and left out. Returns 0.
  int mainMidi();
  /// setGetOutMIDIPort: the names of the port list and findPortCountE.
  void setGetOutMIDIPort();
  /// setMIDIRestart: asks the MIDI systems to look for devices again, when MIDIuseX and coreMidi
  /// are set.
  void setMIDIRestart();
  /// sendsetMIDIRestart: ends all notes, takes the clients down and sets everything up anew;
  /// destinations that are still there keep their port numbers.
  void restart() override;
  /// Call it some times a second: notices destinations that came or went and switches that were
  /// turned off while notes sound, sends Note Offs that are owed, prints the bytes of what was
  /// sent.
  void tick();
  /// Ends all notes and takes the clients down.
  void close();
  /// setUseQtMidi: graph: turns the synthesizer on or off; note allocator: opens or closes the
  /// voice of a channel (0 to 15).
  void setUseQtMidi(std::int32_t channel, std::int32_t on);
  /// Takes the synthesizer down and up, so that another sound font or output counts; it starts also
  /// when it was off or could not start. Nothing before mainMidi.
  void restartSynthesizer();

  // Ports. Any thread.

  /// The 24 names of the port pop-ups.
  [[nodiscard]] std::array<std::string, midi::kPorts> portNames() const;
  /// convertPortNameToInt: -1 when no port has that name.
  [[nodiscard]] std::int32_t convertPortNameToInt(std::string_view name) const;
  /// midiPortReturn: a set-up's stored port, or 0 when it is not below findPortCountE.
  [[nodiscard]] static std::int32_t midiPortReturn(std::int32_t stored);

  // Requests. Any thread.

  /// WriteVNote: Note On (on = 1) or Note Off (0), without the bookkeeping.
  void WriteVNote(std::int32_t note, std::int32_t on, std::int32_t velocit, std::int32_t SetupN,
                  std::int32_t channel, std::int32_t MIDIport, std::int32_t UseQT);
  void MidiOutOn(std::int32_t note, std::int32_t velocit, std::int32_t SetupN, std::int32_t channel,
                 std::int32_t MIDIport, std::int32_t UseQT) override;
  void MidiOutOff(std::int32_t note, std::int32_t SetupN, std::int32_t channel,
                  std::int32_t MIDIport, std::int32_t UseQT) override;
  void MidiOutOffOn(std::int32_t note, std::int32_t velocit, std::int32_t SetupN,
                    std::int32_t channel, std::int32_t MIDIport, std::int32_t NOTEN,
                    std::int32_t UseQT) override;
  void MidiOutOnOff(std::int32_t note, std::int32_t velocit, std::int32_t SetupN,
                    std::int32_t channel, std::int32_t MIDIport, std::int32_t NOTEN,
                    std::int32_t UseQT) override;
  void MidiControlChange(std::int32_t controller, std::int32_t value, std::int32_t SetupN,
                         std::int32_t channel, std::int32_t MIDIport, std::int32_t UseQT) override;
  void MidiCpitch(std::int32_t value, std::int32_t SetupN, std::int32_t channel,
                  std::int32_t MIDIport, std::int32_t UseQT) override;
  void MidiCprogram(std::int32_t program, std::int32_t SetupN, std::int32_t channel,
                    std::int32_t MIDIport, std::int32_t UseQT) override;
  void MidiStop(std::int32_t MIDIport) override;
  void MidiCont(std::int32_t MIDIport) override;
  void MidiStart(std::int32_t MIDIport) override;
  void MidiShutDown() override;
  /// SetChannel: the current channel (0 to 15), when MIDIuseX is set.
  void SetChannel(std::int32_t channel);
  void endNotesOf(std::int32_t SetupN) override;
  /// mtimeatMIDIs: the wall clock is asked once, at the engine's start, and time goes on from there
  /// without jumps: a clock that is set back would silence every set-up until it catches up.
  [[nodiscard]] double mtimeatMIDIs() const override;
  /// mtimeatNewwaveX: the packets' time stamp: 0, or with TimeStampON the seconds as they are.
  [[nodiscard]] std::uint64_t mtimeatNewwaveX() const;
  void because(const MidiCause& cause) override;
  [[nodiscard]] bool running() const override { return midi::runMIDI != 0; }
  [[nodiscard]] std::int32_t portCount() const override { return midi::findPortCountE; }

  // Never a stuck note. Any thread.

  /// Ends everything at every receiver that was ever sent to, whatever the switches say.
  void panic();
  /// Note Offs for all that sounds; false when the engine is busy at the moment.
  bool tryEndAllNotes();
  /// What sounds at the receivers. Rows' names: while no slow function runs.
  [[nodiscard]] const SoundingNotes& sounding() const { return receivers_.sounding(); }
  /// Note Offs that wait until their receiver is back.
  [[nodiscard]] std::size_t owedNoteOffs() const;
  [[nodiscard]] bool onRecord(std::int32_t note, std::int32_t SetupN, std::int32_t channel,
                              std::int32_t MIDIport) const;

  // What was sent. Any thread.

  [[nodiscard]] MessageLog& log() { return log_; }
  /// Nanoseconds from the call of a request to the hand-over of its last message.
  [[nodiscard]] LatencyMeter& sendTimes() { return sendTimes_; }
  /// Nanoseconds from the arrival of the newest sample to the hand-over of a mapping's message.
  [[nodiscard]] LatencyMeter& sampleAges() { return sampleAges_; }
  /// Messages refused by their receiver.
  [[nodiscard]] const Counter& refused() const { return refused_; }

  // Incoming MIDI: the readers of the MIDI systems, on their threads.

  /// MyReadProc: of the input port. Re-stamps a copy with gChannel and queues it for the main
  /// thread (MidiInput), when there is a destination at the current channel's port (inputPortX).
  static void MyReadProc(const std::uint8_t* packetList, void* engine, void* sourceContext);
  /// MyReadProcV: of the virtual destination; the same, when there is a virtual source.
  static void MyReadProcV(const std::uint8_t* packetList, void* engine, void* sourceContext);

 private:
  using Row = Receivers::Row;
  struct Target {
    std::int32_t setup, channel, port;  // all in range of the books
    bool qt;
  };

  [[nodiscard]] static Target target(std::int32_t SetupN, std::int32_t channel,
                                     std::int32_t MIDIport, std::int32_t UseQT);
  static void remember(std::int32_t note, std::int32_t SetupN, std::int32_t channel,
                       std::int32_t MIDIport);
  /// Runs `body` under the send lock unless MIDIuseX is 0.
  template <typename Body>
  void request(Body&& body);
  // sendLock_ is held.
  [[nodiscard]] Row rowOf(std::int32_t port) const;
  [[nodiscard]] bool synthesizerToo(const Target& to) const;
  bool toPort(const Target& to, const MidiBytes& message);
  void writeNote(const Target& to, std::int32_t note, bool on, std::int32_t velocity);
  void toPortAndConsole(const Target& to, const MidiBytes& message);
  void book(const Target& to, std::int32_t note, bool on);
  // setupLock_ is held.
  void setUpClients();
  void rescanTransports();
  void setUpNamesAndCount();
  void openTransports();
  void startSynthesizer();
  void stopSynthesizer();
  void closeTransports();
  /// Adds the names of all sources, connected before or now.
  void connectNewSources(std::vector<std::string>& names);
  [[nodiscard]] std::vector<PortEndpoint> destinationsNow();
  [[nodiscard]] bool changed();
  void rebuildPorts();
  void bindPorts();
  void logDevices();
  void connectAndLogSources();
  void logDestinations();
  void logExternalDevices();
  void endWhatSwitchesSilenced();
  void printWaiting();

  MidiEngineParts parts_;
  const Clock& clock_;
  const std::int64_t wallAnchor_;  // wall clock less monotonic clock at the start

  mutable std::mutex setupLock_;  // taken before sendLock_
  std::vector<char> opened_;
  std::vector<std::uint64_t> changesSeen_;
  std::vector<std::vector<std::uint64_t>> connectedSources_;
  bool synthesizerOn_ = false;

  mutable std::mutex portsLock_;  // guards ports_; taken alone or inside setupLock_
  PortList ports_;

  mutable std::mutex sendLock_;  // guards what follows up to the atomics
  MessageLog log_;
  Receivers receivers_;
  SynthesizerVoices voices_{receivers_};
  NoteBooks books_;
  std::array<Row, NoteBooks::kPortSlots> gDestX_{};
  BoundedRing<MidiBytes> console_{4096};
  bool sent_ = false;  // by the request that runs

  std::atomic<std::uint32_t> destinationsThere_{0};  // a bit a port
  std::atomic<bool> anyOpen_{false};
  LatencyMeter sendTimes_;
  LatencyMeter sampleAges_;
  Counter refused_;
};

}  // namespace ovka
