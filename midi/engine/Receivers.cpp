#include "Receivers.h"

#include <algorithm>
#include <bit>
#include <cerrno>

#include "MidiBytes.h"

namespace ovka {
namespace {

constexpr std::uint8_t kNoteOff = 0x80;
constexpr std::uint8_t kNoteOn = 0x90;
constexpr std::uint8_t kControlChange = 0xB0;
constexpr std::uint8_t kAllSoundOff = 120;
constexpr std::uint8_t kAllNotesOff = 123;

}  // namespace

Receivers::Receivers(std::span<MidiTransport* const> transports, Synthesizer* synthesizer,
                     SoundingNotes* sounding, MessageLog& log, const Clock& clock)
    : transports_(transports.begin(), transports.end()),
      synthesizer_(synthesizer),
      own_(sounding == nullptr ? std::make_unique<SoundingNotes>() : nullptr),
      sounding_(sounding == nullptr ? own_.get() : sounding),
      log_(log),
      clock_(clock),
      start_(clock.nanoseconds()),
      open_(transports.size()) {
  for (std::size_t row = 0; row < SoundingNotes::kRows; ++row) sounding_->retire(row);
  sounding_->name(kVirtualSource, "", MidiNames{}.virtualSource, 0);
  sounding_->name(kSynthesizer, "", "synthesizer", 0);
  places_[kVirtualSource].there = true;
}

Receivers::Row Receivers::take(MidiTransport* transport, std::string_view name) {
  Row spare = kNowhere;
  Row indebted = kNowhere;
  for (Row row = kSynthesizer + 1; row < kNowhere; ++row) {
    const Place& place = places_[row];
    if (place.there) continue;
    if (isFor(row, transport, name)) return row;
    bool owes = false;
    for (const auto& channel : place.owed) owes |= (channel[0] | channel[1]) != 0;
    Row& to = owes ? indebted : spare;
    if (to == kNowhere) to = row;
  }
  // There are more rows than ports: one of those that are not there is always found.
  const Row row = spare != kNowhere ? spare : indebted;
  places_[row] = Place{};
  places_[row].transport = transport;
  sounding_->name(row, transport->name(), name, 0);
  return row;
}

bool Receivers::isFor(Row row, const MidiTransport* transport, std::string_view name) const {
  return row < kNowhere && row != kVirtualSource && places_[row].transport == transport &&
         name.substr(0, SoundingNotes::kDestinationBytes - 1) == sounding_->row(row).destination;
}

void Receivers::bind(Row row, std::uint64_t id) {
  places_[row].id = id;
  places_[row].there = true;
  sounding_->setId(row, id);
}

void Receivers::lose(Row row) {
  Place& place = places_[row];
  place.there = false;
  sounding_->forEachOf(row, [&](std::size_t, unsigned channel, unsigned note) {
    setOwed(place, channel, note, true);
  });
}

void Receivers::loseDestinations() {
  for (Row row = kSynthesizer + 1; row < kNowhere; ++row) {
    if (places_[row].there) lose(row);
  }
}

int Receivers::publish(std::uint64_t timeStamp, std::span<const std::uint8_t> bytes) {
  int result = ENXIO;
  for (std::size_t i = 0; i < transports_.size(); ++i) {
    if (open_[i] == 0) continue;
    const int error = transports_[i]->received(timeStamp, bytes);
    if (result != 0) result = error;
  }
  return result;
}

int Receivers::hand(Row row, std::uint64_t timeStamp, std::span<const std::uint8_t> bytes) {
  const Place& place = places_[row];
  if (!place.there) return ENXIO;
  if (row == kVirtualSource) return publish(timeStamp, bytes);
  if (row != kSynthesizer) return place.transport->send(place.id, timeStamp, bytes);
  synthesizer_->message(bytes);
  return 0;
}

int Receivers::deliver(Row row, std::int32_t port, std::uint64_t timeStamp,
                       std::span<const std::uint8_t> bytes, const MidiCause& cause) {
  if (row >= kNowhere) return ENXIO;
  const auto kind = static_cast<std::uint8_t>(bytes[0] & 0xF0U);
  const unsigned channel = bytes[0] & 0x0FU;
  const bool on = kind == kNoteOn && bytes[2] > 0;
  const bool before = on && sounding_->sounds(row, channel, bytes[1]);
  if (on) sounding_->mark(row, channel, bytes[1]);
  const int error = hand(row, timeStamp, bytes);
  if (on) {
    started(row, channel, bytes[1], error, before);
  } else if (kind == kNoteOff || kind == kNoteOn) {
    ended(row, channel, bytes[1], error);
  } else if (kind == kControlChange && error == 0 &&
             (bytes[1] == kAllNotesOff || bytes[1] == kAllSoundOff)) {
    allEnded(row, channel);
  }
  if (error == 0) places_[row].used = true;
  write(row, port, timeStamp, bytes, cause, error);
  return error;
}

void Receivers::started(Row row, unsigned channel, unsigned note, int error, bool before) {
  if (error == 0) {
    // It sounds anew, so an older debt must not end it.
    setOwed(places_[row], channel, note, false);
  } else if (!before) {
    sounding_->unmark(row, channel, note);
  }
}

void Receivers::ended(Row row, unsigned channel, unsigned note, int error) {
  if (error == 0) sounding_->unmark(row, channel, note);
  setOwed(places_[row], channel, note, sounding_->sounds(row, channel, note));
}

void Receivers::allEnded(Row row, unsigned channel) {
  for (unsigned note = 0; note < 128; ++note) ended(row, channel, note, 0);
}

void Receivers::write(Row row, std::int32_t port, std::uint64_t timeStamp,
                      std::span<const std::uint8_t> bytes, const MidiCause& cause, int error) {
  if (!log_.on()) return;
  SentMessage message;
  message.time = clock_.nanoseconds() - start_;
  message.timeStamp = timeStamp;
  message.cause = cause;
  message.port = port;
  message.error = error;
  message.size = static_cast<std::uint8_t>(bytes.size());
  std::ranges::copy(bytes, message.bytes.begin());
  const std::string_view name = sounding_->row(row).destination;
  name.copy(message.name.data(), message.name.size() - 1);
  log_.push(message);
}

void Receivers::sendOff(Row row, unsigned channel, unsigned note, const MidiCause& cause) {
  deliver(row, -1, 0, noteOff(static_cast<std::int32_t>(channel), static_cast<std::int32_t>(note)),
          cause);
}

void Receivers::endNotes(Row row, const MidiCause& cause) {
  sounding_->forEachOf(row, [&](std::size_t, unsigned channel, unsigned note) {
    sendOff(row, channel, note, cause);
  });
}

void Receivers::endChannel(Row row, std::int32_t channel, const MidiCause& cause) {
  sounding_->forEachOf(row, [&](std::size_t, unsigned of, unsigned note) {
    if (static_cast<std::int32_t>(of) == channel) sendOff(row, of, note, cause);
  });
}

void Receivers::endAllNotes(const MidiCause& cause) {
  for (Row row = 0; row < kNowhere; ++row) endNotes(row, cause);
}

void Receivers::payDebts() {
  const MidiCause cause{MidiCause::Source::Shutdown, -1, -1, -1};
  for (Row row = 0; row < kNowhere; ++row) {
    if (!places_[row].there) continue;
    sounding_->forEachOf(row, [&](std::size_t, unsigned channel, unsigned note) {
      if (isOwed(places_[row], channel, note)) sendOff(row, channel, note, cause);
    });
  }
}

void Receivers::panic(const MidiCause& cause) {
  for (Row row = 0; row < kNowhere; ++row) {
    if (!places_[row].used || !places_[row].there) continue;
    endNotes(row, cause);
    for (std::int32_t channel = 0; channel < 16; ++channel) {
      deliver(row, -1, 0, controlChange(channel, kAllNotesOff, 0), cause);
      deliver(row, -1, 0, controlChange(channel, kAllSoundOff, 0), cause);
    }
  }
  if (places_[kSynthesizer].there) synthesizer_->silence();
}

std::size_t Receivers::owed() const {
  std::size_t count = 0;
  for (const Place& place : places_) {
    for (const auto& channel : place.owed) {
      count += static_cast<std::size_t>(std::popcount(channel[0]) + std::popcount(channel[1]));
    }
  }
  return count;
}

bool Receivers::isOwed(const Place& place, unsigned channel, unsigned note) {
  return (place.owed[channel][note >> 6U] >> (note & 63U) & 1U) != 0;
}

void Receivers::setOwed(Place& place, unsigned channel, unsigned note, bool owed) {
  const std::uint64_t bit = std::uint64_t{1} << (note & 63U);
  std::uint64_t& to = place.owed[channel][note >> 6U];
  to = owed ? to | bit : to & ~bit;
}

}  // namespace ovka
