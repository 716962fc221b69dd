#include "StreamDecoder.h"

#include <algorithm>

#include "AmplifierVariables.h"
#include "FrameWriter.h"
#include "Print.h"
#include "SampleLineDecode.h"
#include "StatusLines.h"

namespace ovka {
namespace {

[[nodiscard]] FrameShape shapeOf(const SampleLine& decoding) {
  return {decoding.length(), decoding.isText() || decoding.oldBluetooth, decoding.oldBluetooth};
}

}  // namespace

StreamDecoder::StreamDecoder(SampleStore& store, NotificationCenter& center, LossCounters& losses,
                             ApplicationControl& application)
    : store_(store),
      center_(center),
      losses_(losses),
      application_(application),
      bufferBluetooth(kBufferBytes),
      bufferOriginalOVKA(kBufferBytes),
      bufferInputX(kBufferBytes),
      bufferInputZ(kBufferBytes) {}

bool StreamDecoder::silenced() {
  return amplifier::setNoPortAccess != 0;
}

void StreamDecoder::resetInput() {
  const std::scoped_lock guard(lock_);
  assembler_.reset();
  framing_.reset();
  bufferBluetoothPoint = 0;
  packetListSizeBluetooth = 0;
  bufferInputZN = 0;
  k = 0;
  onBuffer = false;
}

void StreamDecoder::printNumberSTR(std::span<const std::uint8_t> block) {
  const std::scoped_lock guard(lock_);
  if (silenced() || block.empty()) return;
  const SampleLine decoding = SampleLine::current();
  const bool fixed = amplifier::FixedFramingX != 0;
  if (!fixed && decoding.oldBluetooth) {
    decodeOldRecords(decoding, block);
    return;
  }
  if (!fixed && decodeStatusBlock(block)) return;
  decoding.withDecode([&](auto decode) {
    FrameWriter writer(store_);
    const bool passing = passing_;
    const auto onFrame = [&](const std::uint8_t* frame) __attribute__((always_inline)) {
      if (passing) return;
      writer.store(decode(frame));
      frames_ = frames_ + 1;
    };
    if (fixed) {
      decodeFixed(shapeOf(decoding), block, onFrame);
    } else {
      decodeLines(block, onFrame);
    }
  });
}

template <typename OnFrame>
void StreamDecoder::decodeFixed(const FrameShape& shape, std::span<const std::uint8_t> block,
                                OnFrame&& onFrame) {
  framing_.feed(shape, block, losses(), onFrame, [](std::span<const std::uint8_t> line) {
    // As a line, except for the short overflow echo, which only a block of its own is.
    if (!decodeStatusLine(line)) decodeStatusBlock(line);
  });
}

template <typename OnFrame>
void StreamDecoder::decodeLines(std::span<const std::uint8_t> block, OnFrame&& onFrame) {
  assembler_.feed(
      block, losses(), [&](std::span<const std::uint8_t> line) __attribute__((always_inline)) {
        if (mayBeStatusLine(line) && decodeStatusLine(line)) return;
        if (line.size() == SampleLine::kLineBytes) {
          onFrame(line.data());
        } else {
          losses().wrongLengthLines.add(1);
        }
      });
}

// Kept on purpose: of two and more records the first is decoded twice and the last one never.
void StreamDecoder::decodeOldRecords(const SampleLine& decoding,
                                     std::span<const std::uint8_t> block) {
  constexpr std::size_t kBytes = SampleLine::kRecordBytes;
  const std::size_t records = block.size() / kBytes;
  std::size_t decoded = 0;
  if (block.size() == kBytes) {
    storeLine(decoding, block.data());
    decoded = 1;
  } else if (records >= 2) {
    storeLine(decoding, block.data());
    decoded = records - 1;
    for (std::size_t j = 0; j < decoded; ++j) storeLine(decoding, block.data() + j * kBytes);
  }
  const std::size_t begun = (block.size() + kBytes - 1) / kBytes;
  losses().ignoredRecords.add(static_cast<long long>(begun - decoded));
}

void StreamDecoder::printHNumber(std::span<const std::uint8_t> line) {
  const std::scoped_lock guard(lock_);
  const SampleLine decoding = SampleLine::current();
  if (!silenced() && line.size() >= decoding.length()) storeLine(decoding, line.data());
}

void StreamDecoder::storeLine(const SampleLine& decoding, const std::uint8_t* line) {
  if (passing_) return;
  store_.storeFrame(decoding.decode(line));
  frames_ = frames_ + 1;
}

std::int32_t StreamDecoder::retern24bit4chHusb(std::uint8_t char1, std::uint8_t char2,
                                               std::uint8_t char3, std::int32_t channel) {
  const std::array<std::uint8_t, 3> bytes{char1, char2, char3};
  return SampleLine::current().binary24(bytes.data(), channel);
}

std::int32_t StreamDecoder::ASCIIcharToInt(char character) noexcept {
  constexpr std::array<std::int32_t, 10> kDigitKeys{29, 18, 19, 20, 21, 23, 22, 26, 28, 25};
  constexpr std::int32_t kPointKey = 47;
  constexpr std::int32_t kSpaceKey = 49;
  if (character == '.') return kPointKey;
  if (character < '0' || character > '9') return kSpaceKey;
  return kDigitKeys[static_cast<std::size_t>(character - '0')];
}

}  // namespace ovka
