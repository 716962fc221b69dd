#include "CaptureWriter.h"

#include <algorithm>
#include <cerrno>
#include <vector>

#include "Crc32.h"
#include "LittleEndian.h"

namespace ovka {
namespace {

using namespace captureformat;

std::span<const std::uint8_t> bytesOf(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

bool fitsALine(const std::string& name, const std::string& value) {
  constexpr std::string_view lineEnds{"\n\r\0", 3};
  return !name.empty() && name.find('=') == std::string::npos &&
         name.find_first_of(lineEnds) == std::string::npos &&
         value.find_first_of(lineEnds) == std::string::npos;
}

}  // namespace

bool CaptureWriter::begin(std::int64_t startWallNanoseconds, const CaptureSettings& settings) {
  if (begun_ || failure_ != 0) return false;
  std::string text;
  bool usable = true;
  for (const auto& [name, value] : settings) {
    usable = usable && fitsALine(name, value);
    text += name + '=' + value + '\n';
  }
  if (!usable || text.size() > kMaximumSettings) {
    failure_ = EINVAL;
    return false;
  }
  std::vector<std::uint8_t> head(kFileHeadBytes);
  const std::span<std::uint8_t> at(head);
  std::copy(kMagic.begin(), kMagic.end(), head.begin());
  putLittleEndian(at.subspan(8), kVersion);
  putLittleEndian(at.subspan(12), static_cast<std::uint32_t>(text.size()));
  putLittleEndian(at.subspan(16), startWallNanoseconds);
  const auto textBytes = bytesOf(text);
  head.insert(head.end(), textBytes.begin(), textBytes.end());
  std::array<std::uint8_t, 4> sum{};
  putLittleEndian<std::uint32_t>(sum, crc32(head));
  head.insert(head.end(), sum.begin(), sum.end());
  begun_ = true;
  return put(head) && flush();
}

bool CaptureWriter::record(CaptureRecordHead head, std::span<const std::uint8_t> payload) {
  if (!begun_ || ended_ || failure_ != 0 || head.kind == CaptureKind::End ||
      payload.size() > kMaximumPayload) {
    return false;
  }
  if (!putRecord(head, payload)) return false;
  if (head.kind == CaptureKind::Block) {
    ++blocks_;
    bytes_ += payload.size();
  }
  return true;
}

bool CaptureWriter::end(std::int64_t nanoseconds) {
  if (!begun_ || ended_ || failure_ != 0) return false;
  CaptureRecordHead head;
  head.kind = CaptureKind::End;
  head.nanoseconds = nanoseconds;
  const bool written = putRecord(head, countsPayload(blocks_, bytes_)) && flush();
  ended_ = true;
  return written;
}

bool CaptureWriter::putRecord(const CaptureRecordHead& head,
                              std::span<const std::uint8_t> payload) {
  lastTime_ = std::clamp(head.nanoseconds, lastTime_, kMaximumTime);
  std::array<std::uint8_t, kRecordHeadBytes> bytes{};
  const std::span<std::uint8_t> at(bytes);
  bytes[0] = static_cast<std::uint8_t>(head.kind);
  bytes[1] = head.line;
  putLittleEndian(at.subspan(2), head.waits);
  putLittleEndian(at.subspan(4), static_cast<std::uint32_t>(payload.size()));
  putLittleEndian(at.subspan(8), lastTime_);
  putLittleEndian(at.subspan(16), crc32(at.first(16)));
  std::array<std::uint8_t, 4> sum{};
  putLittleEndian<std::uint32_t>(sum, crc32(payload));
  return put(bytes) && put(payload) && put(sum);
}

bool CaptureWriter::flush() {
  if (failure_ == 0) failure_ = sink_.flush();
  return failure_ == 0;
}

bool CaptureWriter::put(std::span<const std::uint8_t> bytes) {
  if (failure_ == 0 && !bytes.empty()) failure_ = sink_.write(bytes);
  return failure_ == 0;
}

std::array<std::uint8_t, 4> hangUpPayload(std::int32_t reason) {
  std::array<std::uint8_t, 4> bytes{};
  putLittleEndian(std::span<std::uint8_t>(bytes), reason);
  return bytes;
}

std::array<std::uint8_t, 16> countsPayload(std::uint64_t blocks, std::uint64_t bytes) {
  std::array<std::uint8_t, 16> payload{};
  const std::span<std::uint8_t> at(payload);
  putLittleEndian(at, blocks);
  putLittleEndian(at.subspan(8), bytes);
  return payload;
}

}  // namespace ovka
