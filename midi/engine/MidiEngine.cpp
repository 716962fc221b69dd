#include "MidiEngine.h"

#include <utility>

#include "AmplifierVariables.h"
#include "MessageQueue.h"
#include "MidiInput.h"
#include "MidiTimeStamp.h"

namespace ovka {
namespace {

thread_local MidiCause cause;

}  // namespace

void MidiEngine::because(const MidiCause& next) {
  cause = next;
}

double MidiEngine::mtimeatMIDIs() const {
  const std::int64_t now = wallAnchor_ + clock_.nanoseconds();
  const std::int64_t seconds = now / 1'000'000'000;
  const std::int64_t microseconds = now % 1'000'000'000 / 1000;
  return static_cast<double>(seconds) + static_cast<double>(microseconds) * 1e-6;
}

std::uint64_t MidiEngine::mtimeatNewwaveX() const {
  return midi::TimeStampON == 0 ? 0 : timeStampOf(mtimeatMIDIs());
}

std::int32_t MidiEngine::midiPortReturn(std::int32_t stored) {
  return stored >= 0 && stored < midi::findPortCountE ? stored : 0;
}

MidiEngine::Target MidiEngine::target(std::int32_t SetupN, std::int32_t channel,
                                      std::int32_t MIDIport, std::int32_t UseQT) {
  // A port that does not exist must not play on somebody else's instrument.
  const bool known = MIDIport >= 0 && MIDIport < NoteBooks::kNoPort;
  return {std::clamp(SetupN, 0, midi::kSetups - 1), clampedChannel(channel),
          known ? MIDIport : NoteBooks::kNoPort, UseQT == 1};
}

template <typename Body>
void MidiEngine::request(Body&& body) {
  if (midi::MIDIuseX == 0) return;
  const std::int64_t start = clock_.nanoseconds();
  {
    const std::scoped_lock guard(sendLock_);
    sent_ = false;
    body();
    if (!sent_) return;
  }
  const std::int64_t end = clock_.nanoseconds();
  sendTimes_.record(end - start);
  const bool played =
      cause.source == MidiCause::Source::Band || cause.source == MidiCause::Source::Single;
  const std::int64_t arrival = amplifier::newestReadAt;
  if (played && arrival != 0) sampleAges_.record(end - arrival);
}

MidiEngine::Row MidiEngine::rowOf(std::int32_t port) const {
  return gDestX_[static_cast<std::size_t>(port)];
}

bool MidiEngine::synthesizerToo(const Target& to) const {
  if (!to.qt || rowOf(to.port) == Receivers::kSynthesizer) return false;
  return midi::UseQTMIDIX[static_cast<std::size_t>(to.setup)] == 1 ||
         to.port == midi::findPortCountE;
}

bool MidiEngine::toPort(const Target& to, const MidiBytes& message) {
  const Row row = rowOf(to.port);
  const bool core = midi::coreMidi != 0;
  if (!core && row != Receivers::kSynthesizer) return false;
  sent_ = true;
  const std::uint64_t stamp = mtimeatNewwaveX();
  const int error = receivers_.deliver(row, to.port, stamp, message, cause);
  if (error != 0 && row != Receivers::kNowhere) refused_.add(1);
  if (core && to.port == midi::findPortCountE - 1) {
    receivers_.deliver(Receivers::kVirtualSource, -1, stamp, message, cause);
  }
  return true;
}

void MidiEngine::writeNote(const Target& to, std::int32_t note, bool on, std::int32_t velocity) {
  toPort(to, on ? noteOn(to.channel, note, velocity) : noteOff(to.channel, note));
  // A Note Off follows its Note On though the set-up's choice was changed between them, or though
  // it comes from the other mapping: both number their set-ups alike, and the books know the
  // number.
  const bool left = !on && books_.onSynthesizer(note, to.setup, to.channel);
  const bool too = synthesizerToo(to);
  if (!too && !left) return;
  sent_ = true;
  voices_.note(to.channel, note, on ? velocity : 0, to.port, cause);
  books_.setOnSynthesizer(note, to.setup, to.channel, on);
}

void MidiEngine::WriteVNote(std::int32_t note, std::int32_t on, std::int32_t velocit,
                            std::int32_t SetupN, std::int32_t channel, std::int32_t MIDIport,
                            std::int32_t UseQT) {
  const Target to = target(SetupN, channel, MIDIport, UseQT);
  request([&] { writeNote(to, clampedData(note), on == 1, clampedData(velocit)); });
}

void MidiEngine::remember(std::int32_t note, std::int32_t SetupN, std::int32_t channel,
                          std::int32_t MIDIport) {
  midi::noteZ = note;
  midi::SetupNZ = SetupN;
  midi::channelZ = channel;
  midi::MIDIportZ = MIDIport;
}

void MidiEngine::book(const Target& to, std::int32_t note, bool on) {
  books_.setOnRecord(note, to.setup, to.channel, to.port, on);
}

void MidiEngine::MidiOutOn(std::int32_t note, std::int32_t velocit, std::int32_t SetupN,
                           std::int32_t channel, std::int32_t MIDIport, std::int32_t UseQT) {
  remember(note, SetupN, channel, MIDIport);
  const Target to = target(SetupN, channel, MIDIport, UseQT);
  request([&] {
    writeNote(to, clampedData(note), true, clampedData(velocit));
    book(to, clampedData(note), true);
  });
}

void MidiEngine::MidiOutOff(std::int32_t note, std::int32_t SetupN, std::int32_t channel,
                            std::int32_t MIDIport, std::int32_t UseQT) {
  const Target to = target(SetupN, channel, MIDIport, UseQT);
  request([&] {
    if (!books_.onRecord(clampedData(note), to.setup, to.channel, to.port)) return;
    writeNote(to, clampedData(note), false, 0);
    book(to, clampedData(note), false);
  });
}

void MidiEngine::MidiOutOffOn(std::int32_t note, std::int32_t velocit, std::int32_t SetupN,
                              std::int32_t channel, std::int32_t MIDIport, std::int32_t NOTEN,
                              std::int32_t UseQT) {
  remember(note, SetupN, channel, MIDIport);
  const Target to = target(SetupN, channel, MIDIport, UseQT);
  const std::int32_t next = clampedData(note);
  request([&] {
    const std::size_t slot = NoteBooks::slot(to.setup, to.channel, to.port, NOTEN);
    const std::int32_t previous = books_.noteOld(slot);
    if (NOTEN > 9 || previous != next) {
      writeNote(to, previous, false, 0);
      book(to, previous, false);
      writeNote(to, next, true, clampedData(velocit));
    }
    books_.store(slot, next, clampedData(velocit));
    book(to, next, true);
  });
}

void MidiEngine::MidiOutOnOff(std::int32_t note, std::int32_t velocit, std::int32_t SetupN,
                              std::int32_t channel, std::int32_t MIDIport, std::int32_t NOTEN,
                              std::int32_t UseQT) {
  const Target to = target(SetupN, channel, MIDIport, UseQT);
  const std::int32_t next = clampedData(note);
  request([&] {
    const std::size_t slot = NoteBooks::slot(to.setup, to.channel, to.port, NOTEN);
    if (NOTEN <= 9 && books_.noteOld(slot) == next) return;
    writeNote(to, next, true, clampedData(velocit));
    writeNote(to, next, false, 0);
    book(to, next, false);
  });
}

void MidiEngine::MidiControlChange(std::int32_t controller, std::int32_t value, std::int32_t SetupN,
                                   std::int32_t channel, std::int32_t MIDIport,
                                   std::int32_t UseQT) {
  const Target to = target(SetupN, channel, MIDIport, UseQT);
  request([&] {
    toPortAndConsole(to, controlChange(to.channel, clampedData(controller), clampedData(value)));
  });
}

void MidiEngine::MidiCpitch(std::int32_t value, std::int32_t SetupN, std::int32_t channel,
                            std::int32_t MIDIport, std::int32_t UseQT) {
  const Target to = target(SetupN, channel, MIDIport, UseQT);
  request([&] {
    toPortAndConsole(to, pitchBend(to.channel, clampedData(value)));
    if (!synthesizerToo(to)) return;
    sent_ = true;
    voices_.PitchBendQtMidi(clampedData(value), to.channel, to.port, cause);
  });
}

void MidiEngine::MidiCprogram(std::int32_t program, std::int32_t SetupN, std::int32_t channel,
                              std::int32_t MIDIport, std::int32_t UseQT) {
  const Target to = target(SetupN, channel, MIDIport, UseQT);
  request([&] {
    toPortAndConsole(to, programChange(to.channel, clampedData(program)));
    if (!synthesizerToo(to)) return;
    sent_ = true;
    voices_.program(clampedData(program), to.channel, to.port, cause);
  });
}

void MidiEngine::toPortAndConsole(const Target& to, const MidiBytes& message) {
  if (toPort(to, message)) console_.push(message);
}

void MidiEngine::MidiStop(std::int32_t /*MIDIport*/) {}
void MidiEngine::MidiCont(std::int32_t /*MIDIport*/) {}
void MidiEngine::MidiStart(std::int32_t /*MIDIport*/) {}
void MidiEngine::MidiShutDown() {}

void MidiEngine::SetChannel(std::int32_t channel) {
  if (midi::MIDIuseX != 0) midi::Channel = clampedChannel(channel);
}

void MidiEngine::endNotesOf(std::int32_t SetupN) {
  const std::int32_t setup = std::clamp(SetupN, 0, midi::kSetups - 1);
  request([&] {
    books_.forEachOnRecord(setup, [&](std::int32_t port, std::int32_t channel, std::int32_t note) {
      const Target to{setup, channel, port, true};
      writeNote(to, note, false, 0);
      book(to, note, false);
    });
  });
}

void MidiEngine::panic() {
  const std::scoped_lock guard(sendLock_);
  receivers_.panic({MidiCause::Source::Panic, -1, -1, -1});
  books_.clearOnRecord();
}

bool MidiEngine::tryEndAllNotes() {
  const std::unique_lock guard(sendLock_, std::try_to_lock);
  if (!guard.owns_lock()) return false;
  receivers_.endAllNotes({MidiCause::Source::Panic, -1, -1, -1});
  books_.clearOnRecord();
  return true;
}

std::size_t MidiEngine::owedNoteOffs() const {
  const std::scoped_lock guard(sendLock_);
  return receivers_.owed();
}

bool MidiEngine::onRecord(std::int32_t note, std::int32_t SetupN, std::int32_t channel,
                          std::int32_t MIDIport) const {
  const Target to = target(SetupN, channel, MIDIport, 0);
  const std::scoped_lock guard(sendLock_);
  return books_.onRecord(clampedData(note), to.setup, to.channel, to.port);
}

void MidiEngine::MyReadProc(const std::uint8_t* packetList, void* engine, void* sourceContext) {
  const auto& self = *static_cast<MidiEngine*>(engine);
  const auto channel = static_cast<std::size_t>(clampedChannel(midi::Channel));
  const std::int32_t port = midi::inputPortX[channel];
  if (port < 0 || port >= midi::kPorts) return;
  if ((self.destinationsThere_.load() >> static_cast<unsigned>(port) & 1U) == 0) return;
  MyReadProcV(packetList, engine, sourceContext);
}

void MidiEngine::MyReadProcV(const std::uint8_t* packetList, void* engine, void* sourceContext) {
  if (!static_cast<MidiEngine*>(engine)->anyOpen_) return;
  const auto copy = restamped(packetList, midi::gChannel);
  // A list that is too long is counted where it is refused.
  midiReadProc(copy ? copy->data() : packetList, engine, sourceContext);
}

}  // namespace ovka
