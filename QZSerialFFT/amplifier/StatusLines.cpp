#include "StatusLines.h"

#include <algorithm>
#include <limits>

#include "ByteCodes.h"
#include "Print.h"

namespace ovka {
namespace {

using Group = Acknowledgement::Group;
using Bytes = std::span<const std::uint8_t>;

/// Where the number of a status line begins: two letters and a space come first.
constexpr std::size_t kNumberAt = 3;
/// The bytes of a status line that are no digits: letters, space, carriage return.
constexpr std::size_t kFrameBytes = 4;

[[nodiscard]] bool begins(Bytes bytes, char first, char second) {
  return bytes.size() >= 2 && bytes[0] == static_cast<std::uint8_t>(first) &&
         bytes[1] == static_cast<std::uint8_t>(second);
}

/// The decimal number of `digits` characters; a character that is no digit counts 0.
[[nodiscard]] std::int32_t decimal(Bytes line, std::size_t digits) {
  std::int64_t number = 0;
  for (const std::uint8_t character : line.subspan(kNumberAt, digits)) {
    number = 10 * number + (isDigit(character) ? character - '0' : 0);
  }
  constexpr std::int64_t kMost = std::numeric_limits<std::int32_t>::max();
  return static_cast<std::int32_t>(std::min(number, kMost));
}

void decodeSampleSpeed(Bytes line) {
  const std::size_t digits = line.size() < kFrameBytes ? 0 : line.size() - kFrameBytes;
  if (digits >= 1 && digits <= 4) {
    amplifier::rsMonitor = decimal(line, digits);
    Print("printHrsNumber = %d\n", amplifier::rsMonitor.get());
  }
  amplifier::ovMonitor = 0;
}

void decodeBattery(Bytes line) {
  amplifier::batteryMonitor =
      static_cast<double>(hex12(line[kNumberAt], line[kNumberAt + 1], line[kNumberAt + 2])) * 16 /
      1024;
  amplifier::ovMonitor = 0;
}

void decodeOverflow(Bytes line) {
  amplifier::ovMonitor = decimal(line, line.size() - kFrameBytes);
  Print("printHovBNumber = %d\n", amplifier::ovMonitor.get());
}

void decodeShortOverflow(Bytes line) {
  amplifier::ovMonitor = decimal(line, 3);
  Print("printHovNumber = %d\n", amplifier::ovMonitor.get());
}

[[nodiscard]] const Acknowledgement* acknowledgementOf(std::uint8_t letter) {
  for (const Acknowledgement& entry : kAcknowledgements) {
    if (static_cast<std::uint8_t>(entry.letter) == letter) return &entry;
  }
  return nullptr;
}

[[nodiscard]] bool fourEqual(Bytes bytes) {
  return bytes.size() >= 4 && bytes[0] == bytes[1] && bytes[1] == bytes[2] && bytes[2] == bytes[3];
}

/// Length of a status line of two letters, any byte, `least` to `most` characters that pass, and a
/// carriage return; 0 when the bytes do not go so.
template <typename Pass>
[[nodiscard]] std::size_t numberLine(Bytes bytes, std::size_t least, std::size_t most, Pass pass) {
  std::size_t at = kNumberAt;
  while (at < bytes.size() && at - kNumberAt < most && pass(bytes[at])) ++at;
  if (at < kNumberAt + least || at >= bytes.size() || bytes[at] != kCarriageReturn) return 0;
  return at + 1;
}

}  // namespace

const std::array<Acknowledgement, 22> kAcknowledgements{{
    {'s', Group::Filter, &amplifier::printLSFset0OK},
    {'m', Group::Filter, &amplifier::printLSFset1OK},
    {'z', Group::Filter, &amplifier::printLSFset2OK},
    {'q', Group::Filter, &amplifier::printLSFset3OK},
    {'o', Group::Filter, &amplifier::printLSFset4OK},
    {'p', Group::Filter, &amplifier::printLSFset5OK},
    {'i', Group::Filter, &amplifier::printLSFset6OK},
    {'v', Group::ExternalFilter, &amplifier::printLSFset10OK},
    {'w', Group::ExternalFilter, &amplifier::printLSFset20OK},
    {'e', Group::Electrode, &amplifier::printElectrodeSelect0OK},
    {'a', Group::Electrode, &amplifier::printElectrodeSelect1OK},
    {'t', Group::Electrode, &amplifier::printElectrodeSelect2OK},
    {'c', Group::Electrode, &amplifier::printElectrodeSelect3OK},
    {'d', Group::Electrode, &amplifier::printElectrodeSelect4OK},
    {'f', Group::OscillatorFrequency, &amplifier::printOSCFSelect0OK},
    {'g', Group::OscillatorFrequency, &amplifier::printOSCFSelect1OK},
    {'h', Group::OscillatorFrequency, &amplifier::printOSCFSelect2OK},
    {'j', Group::OscillatorPower, &amplifier::printOSCPowerSelect0},
    {'k', Group::OscillatorPower, &amplifier::printOSCPowerSelect1},
    {'y', Group::ChannelMode, &amplifier::print4channelMode},
    {'x', Group::ChannelMode, &amplifier::print2channelMode},
    {'u', Group::ChannelMode, &amplifier::print2channelMode},
}};

bool acknowledge(std::uint8_t letter) {
  const Acknowledgement* found = acknowledgementOf(letter);
  if (found == nullptr) return false;
  for (const Acknowledgement& entry : kAcknowledgements) {
    if (entry.group == found->group && entry.flag != found->flag) *entry.flag = 0;
  }
  *found->flag = 1;
  return true;
}

bool decodeStatusBlock(Bytes block) {
  if (block.size() > 8) return false;
  if (begins(block, 's', 'r')) {
    decodeSampleSpeed(block);
  } else if (block.size() == 7 && begins(block, 'o', 'v')) {
    decodeShortOverflow(block);
  } else if (block.size() == 7 && begins(block, 'b', 'l')) {
    decodeBattery(block);
  } else {
    return false;
  }
  return true;
}

bool decodeStatusLine(Bytes line) {
  if (line.size() < 9 && begins(line, 's', 'r')) {
    decodeSampleSpeed(line);
    return true;
  }
  if (line.size() < 15 && begins(line, 'f', 'r')) return true;
  if (line.size() == 7 && begins(line, 'b', 'l')) {
    decodeBattery(line);
    return true;
  }
  if (line.size() >= 8 && line.size() <= 14 && begins(line, 'o', 'v')) {
    decodeOverflow(line);
    return true;
  }
  return fourEqual(line) && acknowledge(line[0]);
}

std::size_t statusLineLength(Bytes bytes) {
  constexpr std::size_t kAcknowledgementBytes = 5;
  if (begins(bytes, 's', 'r')) return numberLine(bytes, 1, 4, isDigit);
  if (begins(bytes, 'b', 'l')) return numberLine(bytes, 3, 3, isHexDigit);
  if (begins(bytes, 'o', 'v')) return numberLine(bytes, 3, 10, isDigit);
  if (begins(bytes, 'f', 'r')) {
    return numberLine(bytes, 3, 10, [](std::uint8_t c) { return isDigit(c) || c == '.'; });
  }
  const bool acknowledged = bytes.size() >= kAcknowledgementBytes && fourEqual(bytes) &&
                            bytes[4] == kCarriageReturn && acknowledgementOf(bytes[0]) != nullptr;
  return acknowledged ? kAcknowledgementBytes : 0;
}

}  // namespace ovka
