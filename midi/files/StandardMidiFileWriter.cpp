#include "StandardMidiFileWriter.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace ovka {
namespace {

/// The longest distance between two events that the format can express (ticks).
constexpr std::int64_t kLongestDelta = 0x0FFFFFFF;
constexpr std::size_t kMostTracks = 0xFFFF;
constexpr std::uint8_t kTextEvent = 0x01;
constexpr std::uint8_t kTrackName = 0x03;
constexpr std::uint8_t kEndOfTrack = 0x2F;
constexpr std::uint8_t kTempo = 0x51;

void appendBigEndian(std::string& out, std::uint64_t value, int bytes) {
  for (int shift = 8 * (bytes - 1); shift >= 0; shift -= 8)
    out += static_cast<char>((value >> shift) & 0xFF);
}

/// Seven bits a byte, the highest first, all but the last marked.
void appendVariable(std::string& out, std::int64_t value) {
  int shift = 0;
  while (value >> shift > 0x7F) shift += 7;
  for (; shift > 0; shift -= 7) out += static_cast<char>((value >> shift & 0x7F) | 0x80);
  out += static_cast<char>(value & 0x7F);
}

void appendMeta(std::string& out, std::uint8_t kind, const std::string& data) {
  out += static_cast<char>(0xFF);
  out += static_cast<char>(kind);
  const std::string held =
      data.substr(0, static_cast<std::size_t>(std::min<std::uint64_t>(data.size(), kLongestDelta)));
  appendVariable(out, static_cast<std::int64_t>(held.size()));
  out += held;
}

/// The distance to the next event; silent events stand in for what one distance cannot span.
void appendDelta(std::string& out, std::int64_t ticks) {
  while (ticks > kLongestDelta) {
    appendVariable(out, kLongestDelta);
    appendMeta(out, kTextEvent, {});
    ticks -= kLongestDelta;
  }
  appendVariable(out, ticks);
}

std::size_t lengthOf(std::uint8_t status) {
  const std::uint8_t kind = status & 0xF0;
  if (kind < 0x80 || kind == 0xF0) return 0;
  return kind == 0xC0 || kind == 0xD0 ? 2 : 3;
}

}  // namespace

StandardMidiFileWriter::StandardMidiFileWriter(Settings settings) : settings_(std::move(settings)) {
  settings_.ticksPerQuarter =
      std::clamp<std::uint16_t>(settings_.ticksPerQuarter, 1, std::uint16_t{0x7FFF});
  settings_.microsecondsPerQuarter =
      std::clamp<std::uint32_t>(settings_.microsecondsPerQuarter, 1, 0xFFFFFF);
}

std::size_t StandardMidiFileWriter::addTrack(std::string name) {
  tracks_.push_back({std::move(name), {}});
  return tracks_.size() - 1;
}

std::int64_t StandardMidiFileWriter::tickOf(std::int64_t nanoseconds) const {
  const std::int64_t quarter = std::int64_t{settings_.microsecondsPerQuarter} * 1000;
  const std::int64_t ticks = settings_.ticksPerQuarter;
  return nanoseconds / quarter * ticks + (nanoseconds % quarter * ticks + quarter / 2) / quarter;
}

bool StandardMidiFileWriter::add(std::size_t track, std::int64_t nanoseconds,
                                 std::span<const std::uint8_t> message) {
  if (track >= tracks_.size() || nanoseconds < 0 || message.empty()) return false;
  if (message.size() != lengthOf(message[0])) return false;
  if (added_ == std::numeric_limits<std::uint32_t>::max()) return false;
  if (std::any_of(message.begin() + 1, message.end(), [](auto byte) { return byte > 0x7F; }))
    return false;
  Message kept{tickOf(nanoseconds), added_++, static_cast<std::uint8_t>(message.size()), {}};
  std::copy(message.begin(), message.end(), kept.bytes.begin());
  tracks_[track].messages.push_back(kept);
  lastTick_ = std::max(lastTick_, kept.tick);
  return true;
}

void StandardMidiFileWriter::lastUntil(std::int64_t nanoseconds) {
  if (nanoseconds > 0) lastTick_ = std::max(lastTick_, tickOf(nanoseconds));
}

std::string StandardMidiFileWriter::trackBytes(const std::string& name, bool withTempo,
                                               std::vector<Message> messages) const {
  std::sort(messages.begin(), messages.end(), [](const Message& a, const Message& b) {
    return std::pair(a.tick, a.order) < std::pair(b.tick, b.order);
  });
  std::string bytes;
  if (!name.empty()) {
    appendDelta(bytes, 0);
    appendMeta(bytes, kTrackName, name);
  }
  if (withTempo) {
    std::string tempo;
    appendBigEndian(tempo, settings_.microsecondsPerQuarter, 3);
    appendDelta(bytes, 0);
    appendMeta(bytes, kTempo, tempo);
  }
  std::int64_t now = 0;
  for (const Message& message : messages) {
    appendDelta(bytes, message.tick - now);
    now = message.tick;
    bytes.append(message.bytes.begin(), message.bytes.begin() + message.length);
  }
  appendDelta(bytes, lastTick_ - now);
  appendMeta(bytes, kEndOfTrack, {});
  return bytes;
}

std::string StandardMidiFileWriter::write(std::ostream& out) const {
  const bool many = settings_.format == Format::ManyTracks;
  if (many && tracks_.size() >= kMostTracks)
    return "a MIDI file holds at most 65535 tracks; write a file of one track";
  std::string header = "MThd";
  appendBigEndian(header, 6, 4);
  appendBigEndian(header, many ? 1 : 0, 2);
  appendBigEndian(header, many ? tracks_.size() + 1 : 1, 2);
  appendBigEndian(header, settings_.ticksPerQuarter, 2);
  out << header;

  const auto put = [&out](const std::string& bytes) -> std::string {
    if (bytes.size() > 0xFFFFFFFFU)
      return "a track of a MIDI file holds at most 4 GiB; write a shorter piece";
    std::string head = "MTrk";
    appendBigEndian(head, bytes.size(), 4);
    out << head << bytes;
    return out.good() ? std::string() : "the MIDI file could not be written whole";
  };
  std::vector<Message> first;
  if (!many) {
    for (const Track& track : tracks_)
      first.insert(first.end(), track.messages.begin(), track.messages.end());
  }
  std::string problem = put(trackBytes(settings_.title, true, std::move(first)));
  for (std::size_t i = 0; many && problem.empty() && i < tracks_.size(); ++i)
    problem = put(trackBytes(tracks_[i].name, false, tracks_[i].messages));
  if (problem.empty() && !out.flush()) problem = "the MIDI file could not be written whole";
  return problem;
}

}  // namespace ovka
