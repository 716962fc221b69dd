#include "CaptureReader.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "Crc32.h"
#include "LittleEndian.h"

namespace ovka {
namespace {

using namespace captureformat;

/// The payload length a kind must have; blocks and paths are free within the limit.
bool lengthFits(const CaptureRecordHead& head) {
  switch (head.kind) {
    case CaptureKind::Block:
      return head.length > 0 && head.length <= kMaximumPayload;
    case CaptureKind::Opened:
      return head.length <= 4096;
    case CaptureKind::HungUp:
      return head.length == 4;
    case CaptureKind::Closed:
      return head.length == 0;
    case CaptureKind::Lost:
    case CaptureKind::End:
      return head.length == 16;
  }
  return false;
}

}  // namespace

bool CaptureReader::begin() {
  if (begun_) return false;
  begun_ = true;
  std::vector<std::uint8_t> head(kFileHeadBytes);
  const bool whole = fill(head);
  if (source_.error() != 0)
    return fail(std::string("cannot be read: ") + std::strerror(source_.error()));
  const auto length = static_cast<std::size_t>(std::min<std::uint64_t>(at_, kMagic.size()));
  if (length < kMagic.size() || !std::equal(kMagic.begin(), kMagic.end(), head.begin())) {
    return fail("not a capture");
  }
  const std::span<const std::uint8_t> at(head);
  const auto version = getLittleEndian<std::uint32_t>(at.subspan(8));
  if (at_ >= 12 && version > kVersion) {
    return fail("version " + std::to_string(version) + " is newer than this program reads (" +
                std::to_string(kVersion) + ")");
  }
  const auto settings = getLittleEndian<std::uint32_t>(at.subspan(12));
  if (at_ >= 16 && (version == 0 || settings > kMaximumSettings)) return damaged();
  startWall_ = getLittleEndian<std::int64_t>(at.subspan(16));
  if (whole) {
    head.resize(kFileHeadBytes + settings + 4);
    if (fill(std::span(head).subspan(kFileHeadBytes))) {
      const std::size_t covered = kFileHeadBytes + settings;
      const std::span<const std::uint8_t> all(head);
      if (getLittleEndian<std::uint32_t>(all.subspan(covered)) != crc32(all.first(covered))) {
        return damaged();
      }
      return parseSettings({reinterpret_cast<const char*>(head.data()) + kFileHeadBytes, settings});
    }
  }
  return fail("cut off at byte " + std::to_string(at_) + " after 0 blocks");
}

bool CaptureReader::parseSettings(std::string_view text) {
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    const std::size_t equals = text.substr(0, end).find('=');
    if (end == std::string_view::npos || equals == std::string_view::npos || equals == 0) {
      return damaged();
    }
    settings_.emplace_back(text.substr(0, equals), text.substr(equals + 1, end - equals - 1));
    text.remove_prefix(end + 1);
  }
  return true;
}

std::string CaptureReader::setting(std::string_view name) const {
  const auto found = std::find_if(settings_.begin(), settings_.end(),
                                  [name](const auto& entry) { return entry.first == name; });
  return found == settings_.end() ? std::string() : found->second;
}

bool CaptureReader::next(CaptureRecord& record) {
  if (!begun_ || ended_ || !error_.empty()) return false;
  recordStart_ = at_;
  if (readHead(record.head) && readPayload(record.head.length)) return accept(record);
  if (source_.error() != 0)
    return fail(std::string("cannot be read: ") + std::strerror(source_.error()));
  if (!error_.empty()) return false;
  return fail("cut off at byte " + std::to_string(at_) + " after " + std::to_string(blocks_) +
              " blocks");
}

bool CaptureReader::readHead(CaptureRecordHead& head) {
  std::array<std::uint8_t, kRecordHeadBytes> bytes{};
  if (!fill(bytes)) return false;
  const std::span<const std::uint8_t> at(bytes);
  if (getLittleEndian<std::uint32_t>(at.subspan(16)) != crc32(at.first(16))) return damaged();
  head.kind = static_cast<CaptureKind>(bytes[0]);
  head.line = bytes[1];
  head.waits = getLittleEndian<std::uint16_t>(at.subspan(2));
  head.length = getLittleEndian<std::uint32_t>(at.subspan(4));
  head.nanoseconds = getLittleEndian<std::int64_t>(at.subspan(8));
  const bool timeFits = head.nanoseconds >= lastTime_ && head.nanoseconds <= kMaximumTime;
  if (!lengthFits(head) || !timeFits) return damaged();
  lastTime_ = head.nanoseconds;
  return true;
}

bool CaptureReader::readPayload(std::uint32_t length) {
  std::array<std::uint8_t, 4> sum{};
  payload_.resize(length);
  if (!fill(payload_) || !fill(sum)) return false;
  if (getLittleEndian<std::uint32_t>(std::span<const std::uint8_t>(sum)) != crc32(payload_)) {
    return damaged();
  }
  return true;
}

bool CaptureReader::accept(CaptureRecord& record) {
  record.payload = payload_;
  record.hangUpReason = 0;
  record.lostBlocks = 0;
  record.lostBytes = 0;
  switch (record.head.kind) {
    case CaptureKind::Block:
      ++blocks_;
      bytes_ += payload_.size();
      return true;
    case CaptureKind::HungUp:
      record.hangUpReason = getLittleEndian<std::int32_t>(record.payload);
      return true;
    case CaptureKind::Lost:
      record.lostBlocks = getLittleEndian<std::uint64_t>(record.payload);
      record.lostBytes = getLittleEndian<std::uint64_t>(record.payload.subspan(8));
      return true;
    case CaptureKind::End:
      return finish();
    case CaptureKind::Opened:
    case CaptureKind::Closed:
      return true;
  }
  return damaged();
}

bool CaptureReader::finish() {
  const std::span<const std::uint8_t> at(payload_);
  if (getLittleEndian<std::uint64_t>(at) != blocks_ ||
      getLittleEndian<std::uint64_t>(at.subspan(8)) != bytes_) {
    return damaged();
  }
  std::array<std::uint8_t, 1> more{};
  recordStart_ = at_;
  if (source_.read(more) != 0) return damaged();
  ended_ = true;
  return false;
}

bool CaptureReader::fill(std::span<std::uint8_t> bytes) {
  if (bytes.empty()) return true;
  const std::size_t count = source_.read(bytes);
  at_ += count;
  return count == bytes.size();
}

bool CaptureReader::damaged() {
  return fail("damaged at byte " + std::to_string(recordStart_));
}

bool CaptureReader::fail(std::string text) {
  error_ = std::move(text);
  return false;
}

}  // namespace ovka
