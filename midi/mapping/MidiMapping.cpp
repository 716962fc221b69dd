#include "MidiMapping.h"

#include <algorithm>
#include <utility>

#include "BufferVariables.h"
#include "DocumentVariables.h"
#include "MappingVariables.h"
#include "TickGrid.h"

namespace ovka {

MidiMapping::MidiMapping(const MappingVariables& variables, std::span<const Control> controls,
                         NoteOutput& notes, AnalysisInput& analysis)
    : MidiForwarding(notes),
      variables_(variables),
      controls_(controls),
      analysis_(analysis),
      held_(notes, variables.useQT) {
  sentPoint_.fill(-1);
}

std::optional<std::size_t> MidiMapping::indexOf(std::int32_t setup) {
  if (setup < 0 || setup >= midi::kSetups) return std::nullopt;
  return static_cast<std::size_t>(setup);
}

std::size_t MidiMapping::shownSetup() const {
  return static_cast<std::size_t>(std::clamp(variables_.shown.get(), 0, midi::kSetups - 1));
}

std::int32_t MidiMapping::midiPortReturn(std::int32_t setup) const {
  const std::optional<std::size_t> index = indexOf(setup);
  if (!index) return 0;
  const std::int32_t port = variables_.MIDIport[*index];
  return port >= 0 && port < notes().portCount() ? port : 0;
}

bool MidiMapping::silent() const {
  return document::savingX != 0 || document::openingX != 0 || buffer::setPauseX != 0 ||
         mapping::inputLostX != 0 || holds_.load() != 0;
}

void MidiMapping::runThread(ThreadLauncher& launcher, const Clock& clock, std::string_view name,
                            std::function<void()> after) {
  launcher.loop(name, [this, &clock, after = std::move(after)] {
    timerUpdate();
    if (after) after();
    const bool rests = silent() ? variables_.needOff == 0 : nothingOn();
    const std::chrono::nanoseconds grid = rests ? kRest : kTick;
    return grid - std::chrono::nanoseconds(clock.nanoseconds() % grid.count());
  });
}

/// No set-up is on, and none of them left a note.
bool MidiMapping::nothingOn() {
  const std::scoped_lock guard(lock_);
  const bool quiet = all_ ? schedule_.empty() : variables_.MIDIoutON[shownSetup()] != 1;
  return quiet && held_.setups().empty();
}

void MidiMapping::timerUpdate() {
  const std::scoped_lock guard(lock_);
  if (silent()) {
    if (variables_.needOff != 0) shutDown();
    variables_.needOff = 0;
    return;
  }
  tick();
  variables_.needOff = 1;
}

void MidiMapping::tick() {
  beforeTick();
  const bool all = playsAll();
  const bool profile = mapping::PerformanceProfileX != 0;
  if (all != all_ || profile != profile_) everything_ = true;
  all_ = all;
  profile_ = profile;
  if (all) {
    playDue(notes().mtimeatMIDIs());
  } else {
    playShown();
  }
}

void MidiMapping::playDue(double now) {
  SetupMask due = variables_.changes.take();
  if (everything_) due = SetupMask::all();
  everything_ = false;
  const std::int64_t point = buffer::ploop;
  if (point != tickPoint_) schedule_.takeWaiting(due);
  tickPoint_ = point;
  schedule_.take(now, due);
  due.forEach([this](std::size_t setup) { playScheduled(setup); });
}

void MidiMapping::playShown() {
  const std::size_t shown = shownSetup();
  const bool on = variables_.MIDIoutON[shown] == 1;
  held_.setups().forEach([&](std::size_t setup) {
    if (setup != shown || !on) release(setup);
  });
  if (on) static_cast<void>(play(shown));
}

void MidiMapping::playScheduled(std::size_t setup) {
  if (variables_.MIDIoutON[setup] == 1) {
    schedule(setup, play(setup));
  } else {
    schedule_.remove(setup);
    release(setup);
  }
}

void MidiMapping::schedule(std::size_t setup, Turn turn) {
  const double interval = variables_.tlong[setup];
  if (turn == Turn::WaitsForSamples) {
    schedule_.atOrWithSamples(
        setup, DueSchedule::earliest(variables_.tsave[setup], interval + mapping::kStaleWait));
  } else {
    schedule_.at(setup, DueSchedule::earliest(variables_.tsave[setup], interval));
  }
}

MidiMapping::Turn MidiMapping::turnOf(std::size_t setup, double now) {
  const std::int32_t index = variables_.SendMIDItiming[setup];
  if (index >= 0 && index < static_cast<std::int32_t>(mapping::kIntervals.size())) {
    variables_.tlong.setQuietly(setup, mapping::kIntervals[static_cast<std::size_t>(index)]);
  }
  const double interval = variables_.tlong[setup];
  const double passed = now - variables_.tsave[setup];
  if (passed < interval) return Turn::NotYet;
  point_ = buffer::ploop;
  const bool nothingNew = mapping::PerformanceProfileX != 0 && variables_.ONInput[setup] == 1 &&
                          point_ == sentPoint_[setup];
  if (nothingNew && passed < interval + mapping::kStaleWait) return Turn::WaitsForSamples;
  return Turn::Now;
}

void MidiMapping::sent(std::size_t setup, double now) {
  variables_.tsave.setQuietly(setup, now);
  sentPoint_[setup] = point_;
}

void MidiMapping::because(MidiCause::Source source, std::size_t setup, std::size_t band) {
  notes().because(
      {source, static_cast<std::int32_t>(setup), static_cast<std::int32_t>(band), point_});
}

void MidiMapping::release(std::size_t setup) {
  if (!held_.setups().contains(setup)) return;
  notes().because({MidiCause::Source::Shutdown, static_cast<std::int32_t>(setup), -1, -1});
  held_.release(setup);
  ended(setup);
}

void MidiMapping::endNotesOf(std::size_t setup) {
  const auto number = static_cast<std::int32_t>(setup);
  const std::int32_t port = midiPortReturn(number);
  std::uint32_t done = 0;
  for (const std::int32_t channel : channelsOf(setup)) {
    const std::uint32_t bit = 1U << static_cast<unsigned>(std::clamp(channel, 0, 15));
    if ((done & bit) != 0) continue;
    done |= bit;
    for (std::int32_t note = 0; note <= 127; ++note) {
      notes().MidiOutOff(note, number, channel, port, variables_.useQT);
    }
  }
}

void MidiMapping::shutDown() {
  if (!notes().running()) return;
  notes().because({MidiCause::Source::Shutdown, -1, -1, -1});
  for (std::size_t setup = 0; setup < midi::kSetups; ++setup) {
    if (variables_.MIDIoutON[setup] == 1) endNotesOf(setup);
  }
  endNotesOf(shownSetup());
  // What sounds at a port or channel that the set-up has left since.
  held_.setups().forEach([this](std::size_t setup) { release(setup); });
}

void MidiMapping::sendMidiShutDown() {
  const std::scoped_lock guard(lock_);
  shutDown();
}

void MidiMapping::sendMidiTemporalyOFF() {
  const std::scoped_lock guard(lock_);
  for (std::size_t setup = 0; setup < midi::kSetups; ++setup) {
    const bool before = putAside_ && variables_.temporary[setup] == 1;
    const std::int32_t on = variables_.MIDIoutON[setup];
    variables_.temporary.set(setup, before ? 1 : on);
    if (on == 1) sendMidiStop(midiPortReturn(static_cast<std::int32_t>(setup)));
  }
  putAside_ = true;
  shutDown();
  for (std::size_t setup = 0; setup < midi::kSetups; ++setup) variables_.MIDIoutON.set(setup, 0);
}

void MidiMapping::sendMidiBackON() {
  const std::scoped_lock guard(lock_);
  for (std::size_t setup = 0; setup < midi::kSetups; ++setup) {
    if (variables_.temporary[setup] == 1) variables_.MIDIoutON.set(setup, 1);
  }
  putAside_ = false;
}

void MidiMapping::sendsetMIDIRestart() {
  // Silence instead of the lock: the tick goes on while the systems are slow.
  holds_.fetch_add(1);
  sendMidiShutDown();
  // Setting the client up anew forgets port choices; these are the person's.
  std::array<std::int32_t, midi::kSetups> ports{};
  for (std::size_t i = 0; i < ports.size(); ++i) ports[i] = variables_.MIDIport[i];
  notes().restart();
  for (std::size_t i = 0; i < ports.size(); ++i) variables_.MIDIport.set(i, ports[i]);
  holds_.fetch_sub(1);
  setMIDIport();
}

void MidiMapping::beginPut() {
  holds_.fetch_add(1);
  const std::scoped_lock guard(lock_);
  shutDown();
  variables_.needOff = 0;
}

void MidiMapping::endPut() {
  {
    const std::scoped_lock guard(lock_);
    sendPrograms();
    variables_.opened = 1;
    holds_.fetch_sub(1);
  }
  showAll();
}

}  // namespace ovka
