#include "JournalFormat.h"

#include <algorithm>

#include "Crc32.h"
#include "LittleEndian.h"

namespace ovka::journalformat {
namespace {

template <typename T>
void put(Bytes& to, T value) {
  const std::size_t at = to.size();
  to.resize(at + sizeof(T));
  putLittleEndian(std::span(to).subspan(at), value);
}

void putText(Bytes& to, std::string_view text) {
  to.insert(to.end(), text.begin(), text.end());
}

/// Takes numbers from the front; a payload that is too short leaves `good` false.
class Taker {
 public:
  explicit Taker(View from) : rest_(from) {}
  template <typename T>
  [[nodiscard]] T take() {
    if (rest_.size() < sizeof(T)) {
      good_ = false;
      return T{};
    }
    const T value = getLittleEndian<T>(rest_);
    rest_ = rest_.subspan(sizeof(T));
    return value;
  }
  [[nodiscard]] std::string text(std::size_t length) {
    if (rest_.size() < length || length > kLongestText) {
      good_ = false;
      return {};
    }
    std::string result(rest_.begin(), rest_.begin() + static_cast<std::ptrdiff_t>(length));
    rest_ = rest_.subspan(length);
    return result;
  }
  [[nodiscard]] View bytes(std::size_t length) {
    if (rest_.size() < length) {
      good_ = false;
      return {};
    }
    const View result = rest_.first(length);
    rest_ = rest_.subspan(length);
    return result;
  }
  [[nodiscard]] std::size_t left() const { return rest_.size(); }
  /// Whether everything was there and nothing is left.
  [[nodiscard]] bool done() const { return good_ && rest_.empty(); }

 private:
  View rest_;
  bool good_ = true;
};

[[nodiscard]] bool isPoint(std::int64_t point) {
  return point >= 0 && point <= static_cast<std::int64_t>(buffer::MAXbuffer);
}

/// Bytes a value of the channel: 0 when all are equal, else what the largest needs.
[[nodiscard]] std::uint8_t widthOf(const std::vector<std::int32_t>& values) {
  const auto [low, high] = std::minmax_element(values.begin(), values.end());
  if (values.empty() || *low == *high) return 0;
  for (std::uint8_t width = 1; width < 4; ++width) {
    const std::int32_t limit = std::int32_t{1} << (8 * width - 1);
    if (*low >= -limit && *high < limit) return width;
  }
  return 4;
}

void putValues(Bytes& to, const std::vector<std::int32_t>& values, std::uint8_t width) {
  if (width == 0) {
    put(to, values.empty() ? 0 : values.front());
    return;
  }
  std::size_t at = to.size();
  to.resize(at + values.size() * width);
  for (const std::int32_t value : values) {
    const auto bits = static_cast<std::uint32_t>(value);
    for (unsigned byte = 0; byte < width; ++byte) {
      to[at++] = static_cast<std::uint8_t>(bits >> (8 * byte));
    }
  }
}

[[nodiscard]] bool takeValues(Taker& from, std::uint32_t count, std::uint8_t width,
                              std::vector<std::int32_t>& values) {
  if (width == 0) {
    values.assign(count, from.take<std::int32_t>());
    return true;
  }
  const View bytes = from.bytes(std::size_t{count} * width);
  if (bytes.empty()) return false;
  values.resize(count);
  const unsigned shift = 32U - 8U * width;
  for (std::size_t i = 0; i < count; ++i) {
    std::uint32_t bits = 0;
    for (unsigned byte = 0; byte < width; ++byte) {
      bits |= static_cast<std::uint32_t>(bytes[i * width + byte]) << (8 * byte);
    }
    values[i] = static_cast<std::int32_t>(bits << shift) >> shift;
  }
  return true;
}

}  // namespace

std::uint32_t sumOf(View payload) {
  return crc32(payload);
}

void appendChunk(Bytes& to, ChunkHead head, View payload) {
  const std::size_t start = to.size();
  to.insert(to.end(), kMarker.begin(), kMarker.end());
  put(to, head.version);
  put(to, static_cast<std::uint8_t>(head.kind));
  put(to, head.part);
  put(to, static_cast<std::uint32_t>(payload.size()));
  put(to, sumOf(payload));
  put(to, head.session);
  put(to, head.sequence);
  put(to, std::uint32_t{0});
  put(to, crc32(View(to).subspan(start, kHeadBytes - sizeof(std::uint32_t))));
  to.insert(to.end(), payload.begin(), payload.end());
}

std::optional<ChunkHead> headAt(View bytes) {
  if (bytes.size() < kHeadBytes || !std::equal(kMarker.begin(), kMarker.end(), bytes.begin())) {
    return std::nullopt;
  }
  constexpr std::size_t kSummed = kHeadBytes - sizeof(std::uint32_t);
  if (getLittleEndian<std::uint32_t>(bytes.subspan(kSummed)) != crc32(bytes.first(kSummed))) {
    return std::nullopt;
  }
  Taker from(bytes.subspan(kMarker.size(), kSummed - kMarker.size()));
  ChunkHead head;
  head.version = from.take<std::uint8_t>();
  head.kind = static_cast<ChunkKind>(from.take<std::uint8_t>());
  head.part = from.take<std::uint16_t>();
  head.length = from.take<std::uint32_t>();
  head.payloadSum = from.take<std::uint32_t>();
  head.session = from.take<std::uint64_t>();
  head.sequence = from.take<std::uint64_t>();
  if (head.length > kLongestPayload) return std::nullopt;
  return head;
}

void encode(const Session& from, Bytes& to) {
  to.clear();
  const std::string_view mark = std::string_view(from.processMark).substr(0, kLongestText);
  const std::string_view settings = std::string_view(from.settings).substr(0, kLongestText);
  put(to, from.startWall);
  put(to, static_cast<std::uint8_t>(from.locked ? 1 : 0));
  put(to, static_cast<std::uint8_t>(from.bigEndian ? 2 : 1));
  put(to, std::uint16_t{0});
  put(to, static_cast<std::uint32_t>(mark.size()));
  put(to, static_cast<std::uint32_t>(settings.size()));
  putText(to, mark);
  putText(to, settings);
}

bool decode(View bytes, Session& to) {
  Taker from(bytes);
  to.startWall = from.take<std::int64_t>();
  to.locked = from.take<std::uint8_t>() != 0;
  to.bigEndian = from.take<std::uint8_t>() == 2;
  static_cast<void>(from.take<std::uint16_t>());
  const auto mark = from.take<std::uint32_t>();
  const auto settings = from.take<std::uint32_t>();
  to.processMark = from.text(mark);
  to.settings = from.text(settings);
  return from.done();
}

void encode(const State& from, Bytes& to) {
  to.clear();
  put(to, from.wall);
  put(to, from.ploop);
  put(to, from.ploopStart);
  put(to, from.maxploop);
  put(to, from.SampleSpeed);
  put(to, from.SelectDevice);
  put(to, from.DeviceConfig);
  put(to, from.setRecModeX);
  put(to, from.setLoopModeX);
  put(to, from.setPauseX);
}

bool decode(View bytes, State& to) {
  Taker from(bytes);
  to.wall = from.take<std::int64_t>();
  to.ploop = from.take<std::int64_t>();
  to.ploopStart = from.take<std::int64_t>();
  to.maxploop = from.take<std::uint64_t>();
  to.SampleSpeed = from.take<std::uint32_t>();
  to.SelectDevice = from.take<std::uint32_t>();
  to.DeviceConfig = from.take<std::uint32_t>();
  to.setRecModeX = from.take<std::int32_t>();
  to.setLoopModeX = from.take<std::int32_t>();
  to.setPauseX = from.take<std::int32_t>();
  return from.done() && isPoint(to.ploop) && isPoint(to.ploopStart) &&
         to.maxploop <= buffer::MAXbuffer && to.SampleSpeed > 0;
}

void encode(const Frames& from, Bytes& to) {
  to.clear();
  put(to, from.first);
  put(to, from.framesBefore);
  put(to, from.count);
  put(to, from.SampleSpeed);
  std::array<std::uint8_t, buffer::kChannels> widths{};
  for (std::size_t i = 0; i < widths.size(); ++i) {
    widths[i] = widthOf(from.values[i]);
    put(to, widths[i]);
  }
  put(to, from.SelectDevice);
  put(to, from.DeviceConfig);
  put(to, std::uint8_t{0});
  for (std::size_t i = 0; i < widths.size(); ++i) putValues(to, from.values[i], widths[i]);
}

bool decode(View bytes, Frames& to) {
  Taker from(bytes);
  to.first = from.take<std::int64_t>();
  to.framesBefore = from.take<std::uint64_t>();
  to.count = from.take<std::uint32_t>();
  to.SampleSpeed = from.take<std::uint32_t>();
  std::array<std::uint8_t, buffer::kChannels> widths{};
  for (std::uint8_t& width : widths) width = from.take<std::uint8_t>();
  to.SelectDevice = from.take<std::uint8_t>();
  to.DeviceConfig = from.take<std::uint8_t>();
  static_cast<void>(from.take<std::uint8_t>());
  if (to.count == 0 || to.count > kFramePoints || !isPoint(to.first) ||
      !isPoint(to.first + to.count) || to.SampleSpeed == 0) {
    return false;
  }
  for (std::size_t i = 0; i < widths.size(); ++i) {
    if (widths[i] > 4 || !takeValues(from, to.count, widths[i], to.values[i])) return false;
  }
  return from.done();
}

void encode(const Mark& from, Bytes& to) {
  to.clear();
  put(to, static_cast<std::uint64_t>(from.what));
  put(to, from.point);
  put(to, from.wall);
  putText(to, std::string_view(from.text).substr(0, kLongestText));
}

bool decode(View bytes, Mark& to) {
  Taker from(bytes);
  const auto what = from.take<std::uint64_t>();
  to.point = from.take<std::int64_t>();
  to.wall = from.take<std::int64_t>();
  to.text = from.text(from.left());
  to.what = static_cast<MarkKind>(what);
  return from.done() && what >= 1 && what <= 3 && isPoint(to.point);
}

void encode(const Annotation& from, Bytes& to) {
  to.clear();
  put(to, static_cast<std::uint64_t>(from.change));
  put(to, from.id);
  put(to, from.point);
  putText(to, std::string_view(from.text).substr(0, kLongestText));
}

bool decode(View bytes, Annotation& to) {
  Taker from(bytes);
  const auto change = from.take<std::uint64_t>();
  to.id = from.take<std::uint64_t>();
  to.point = from.take<std::int64_t>();
  to.text = from.text(from.left());
  to.change = static_cast<AnnotationChange>(change);
  return from.done() && change >= 1 && change <= 3 && isPoint(to.point);
}

void encode(const End& from, Bytes& to) {
  to.clear();
  put(to, from.frames);
  put(to, from.ploop);
}

bool decode(View bytes, End& to) {
  Taker from(bytes);
  to.frames = from.take<std::uint64_t>();
  to.ploop = from.take<std::int64_t>();
  return from.done() && isPoint(to.ploop);
}

void encode(const Dropped& from, Bytes& to) {
  to.clear();
  put(to, from.frames);
}

bool decode(View bytes, Dropped& to) {
  Taker from(bytes);
  to.frames = from.take<std::uint64_t>();
  return from.done();
}

}  // namespace ovka::journalformat
