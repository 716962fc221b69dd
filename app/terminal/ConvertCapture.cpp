#include "ConvertCapture.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <memory>
#include <optional>
#include <span>
#include <system_error>

#include "AmplifierModels.h"
#include "AmplifierVariables.h"
#include "BufferVariables.h"
#include "CaptureSettings.h"
#include "CaptureWriter.h"
#include "ConvertLine.h"
#include "Failure.h"
#include "StreamDecoder.h"

namespace ovka::terminal {
namespace {

constexpr std::string_view kPath = "/dev/ovka-converted";
constexpr std::uint32_t kWithoutLine = 4;  ///< the model
constexpr std::uint32_t kInsteadOfIt = 6;
/// The first block comes when the opening is over; the others in the steps of an amplifier's
/// blocks.
constexpr std::int64_t kFirstBlock = 200'000'000;  // ns
constexpr std::uint32_t kBlocksASecond = 20;
/// Waits that time out between two blocks: a replay tells the opening's own read from a poll by it.
constexpr std::uint16_t kWaits = 3;
/// Fixed framing believes the last frames once lines follow them.
constexpr std::size_t kLinesBehind = 3;
constexpr std::int64_t kPiecePoints = 4096;
constexpr std::int32_t kNoChannel = -1;

/// A file of the port as the sink of a capture, in large pieces.
class FileOfPort final : public ByteSink {
 public:
  FileOfPort(Files& files, std::string path) : path_(std::move(path)) {
    file_ = files.write(path_, WriteMode::Atomic, &error_);
  }
  [[nodiscard]] int error() const { return error_; }
  [[nodiscard]] int write(std::span<const std::uint8_t> bytes) override {
    buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());
    return buffer_.size() < kBytes ? 0 : flush();
  }
  [[nodiscard]] int flush() override {
    const int error = file_->write(std::as_bytes(std::span(buffer_)));
    buffer_.clear();
    return error;
  }
  [[nodiscard]] std::string name() const override { return path_; }
  [[nodiscard]] int commit() { return file_->commit(); }

 private:
  static constexpr std::size_t kBytes = 256U << 10U;
  std::string path_;
  int error_ = 0;
  std::unique_ptr<FileWriter> file_;
  std::vector<std::uint8_t> buffer_;
};

/// What becomes of a channel's values.
struct Losses {
  std::uint64_t rounded = 0;
  std::int64_t most = 0;  ///< of the rounding
  std::uint64_t held = 0;
  std::uint64_t missing = 0;  ///< differ from what a channel without samples holds
};

class Converter {
 public:
  Converter(Engine& engine, Files& files, const std::string& path)
      : engine_(engine), sink_(files, path), writer_(sink_) {
    if (sink_.error() != 0) fail(sink_.error());
    format_.model =
        buffer::SelectDevice == kWithoutLine ? kInsteadOfIt : buffer::SelectDevice.get();
    format_.config = buffer::DeviceConfig;
    format_.oldBluetooth = amplifier::oldBluetooth != 0 && format_.model <= 3;
  }

  std::vector<std::string> convert(std::int64_t wallNanoseconds);

 private:
  [[nodiscard]] bool bytesOnly() const { return format_.model == 1 && !format_.oldBluetooth; }
  [[noreturn]] void fail(int error) const {
    throw Failure(ExitCode::Output,
                  "cannot write " + sink_.name() + ": " + std::generic_category().message(error));
  }
  void check(bool written) const {
    if (!written) fail(writer_.failure());
  }
  [[nodiscard]] std::vector<std::int32_t> ports() const;
  [[nodiscard]] CaptureSettings settings(std::size_t lines) const;
  void record(CaptureKind kind, std::size_t line, std::span<const std::uint8_t> payload,
              std::int64_t nanoseconds, std::uint16_t waits);
  void open(std::size_t lines);
  void putBlock(std::int64_t first, std::int64_t count);
  void putLines(const StoredPoint& point);
  void putBytes(const StoredPoint& point);
  void compare(std::size_t channel, std::int32_t wanted, std::optional<std::int32_t> got, bool held,
               std::int32_t copied);
  void finish();
  [[nodiscard]] std::int64_t timeOf(std::int64_t points) const {
    return kFirstBlock + points * 1'000'000'000 / std::max<std::int64_t>(buffer::SampleSpeed, 1);
  }
  [[nodiscard]] std::vector<std::string> report() const;

  Engine& engine_;
  FileOfPort sink_;
  CaptureWriter writer_;
  FrameFormat format_;
  std::optional<LineInverse> inverse_;
  ByteInverse bytes_{amplifier::GainOr};
  std::vector<std::int32_t> ports_;                  ///< channel of each line of model 1
  std::vector<std::vector<std::uint8_t>> payloads_;  ///< of the present block, a line each
  std::array<Losses, buffer::kChannels> losses_;
  std::uint64_t dataBlocks_ = 0;
};

/// Channels of the lines: model 1 has a port a channel, some of which its configurations leave out.
std::vector<std::int32_t> Converter::ports() const {
  if (!bytesOnly()) return {0};
  if (format_.config == 2) return {1, 2, 3};
  if (format_.config == 3) return {1, 2, kNoChannel, 4};
  return {1, 2};
}

/// As captured, but as one straight recording and without the line rules that lose frames.
CaptureSettings Converter::settings(std::size_t lines) const {
  std::vector<std::string> inputs;
  for (std::size_t i = 0; i < lines; ++i)
    inputs.push_back(std::string(kPath) + std::to_string(i + 1));
  CaptureSettings settings = captureSettings(engine_, inputs);
  const auto points = static_cast<std::uint64_t>(buffer::ploop - buffer::ploopStart);
  const std::uint64_t room =
      std::min(std::max(buffer::maxploop.get(), points + 1), buffer::MAXbuffer);
  const std::array<std::pair<std::string_view, std::string>, 5> changes{
      {{"FixedFramingX", "1"},
       {"setLoopModeX", "0"},
       {"ploopStart", "0"},
       {"SelectDevice", std::to_string(format_.model)},
       {"maxploop", std::to_string(room)}}};
  for (auto& [name, value] : settings) {
    for (const auto& [changed, to] : changes) {
      if (name == changed) value = to;
    }
  }
  return settings;
}

void Converter::record(CaptureKind kind, std::size_t line, std::span<const std::uint8_t> payload,
                       std::int64_t nanoseconds, std::uint16_t waits) {
  CaptureRecordHead head;
  head.kind = kind;
  head.line = static_cast<std::uint8_t>(line);
  head.waits = waits;
  head.nanoseconds = nanoseconds;
  check(writer_.record(head, payload));
}

void Converter::open(std::size_t lines) {
  const auto bytesOf = [](const std::string& text) {
    return std::vector<std::uint8_t>(text.begin(), text.end());
  };
  for (std::size_t i = 0; i < lines; ++i)
    record(CaptureKind::Opened, i, bytesOf(std::string(kPath) + std::to_string(i + 1)), 0, 0);
  if (!kAmplifierModels[format_.model].commands) return;
  record(CaptureKind::Block, 0, bytesOf("Converted recording\rReady.\r"), 0, 0);
}

void Converter::compare(std::size_t channel, std::int32_t wanted, std::optional<std::int32_t> got,
                        bool held, std::int32_t copied) {
  Losses& losses = losses_[channel];
  if (!got) {
    const std::int32_t cleared = channel == 0 ? 49 : 0;
    if (wanted != cleared && wanted != copied) ++losses.missing;
    return;
  }
  const std::int64_t off = std::abs(std::int64_t{*got} - wanted);
  if (off == 0) return;
  if (held) {
    ++losses.held;
  } else {
    ++losses.rounded;
    losses.most = std::max(losses.most, off);
  }
}

void Converter::putLines(const StoredPoint& point) {
  const LineInverse::Encoded encoded = inverse_->encode(point);
  const auto frame = std::span(encoded.frame.bytes).first(encoded.frame.size);
  payloads_[0].insert(payloads_[0].end(), frame.begin(), frame.end());
  for (std::size_t c = 0; c < point.size(); ++c) {
    std::optional<std::int32_t> got;
    if (encoded.decoded.present[c]) got = encoded.decoded.values[c];
    // Opening a document makes the copies of two-channel recordings again.
    const bool copies = (c == 3 && format_.config <= 1) || (c == 4 && format_.config == 1);
    compare(c, point[c], got, (encoded.held >> c & 1U) != 0, copies ? point[c - 2] : 0);
  }
}

void Converter::putBytes(const StoredPoint& point) {
  for (std::size_t c = 0; c < point.size(); ++c) {
    const auto line = std::find(ports_.begin(), ports_.end(), static_cast<std::int32_t>(c));
    std::optional<std::int32_t> got;
    bool held = false;
    if (line != ports_.end()) {
      std::int32_t decoded = 0;
      payloads_[static_cast<std::size_t>(line - ports_.begin())].push_back(
          bytes_.encode(point[c], &decoded, &held));
      got = decoded;
    }
    const bool copies = (c == 3 && format_.config <= 1) || (c == 4 && format_.config == 1);
    compare(c, point[c], got, held, copies ? point[c - 2] : 0);
  }
}

void Converter::putBlock(std::int64_t first, std::int64_t count) {
  std::array<std::vector<std::int32_t>, buffer::kChannels> values;
  for (std::size_t c = 0; c < values.size(); ++c) {
    values[c].resize(static_cast<std::size_t>(count));
    engine_.store().copyStored(static_cast<std::int32_t>(c), first, values[c]);
  }
  for (auto& payload : payloads_) payload.clear();
  for (std::size_t i = 0; i < static_cast<std::size_t>(count); ++i) {
    StoredPoint point{};
    for (std::size_t c = 0; c < point.size(); ++c) point[c] = values[c][i];
    if (bytesOnly()) {
      putBytes(point);
    } else {
      putLines(point);
    }
  }
  const std::int64_t now = timeOf(first + count - buffer::ploopStart);
  for (std::size_t line = 0; line < payloads_.size(); ++line) {
    if (!payloads_[line].empty()) record(CaptureKind::Block, line, payloads_[line], now, kWaits);
  }
  ++dataBlocks_;
}

/// The decoder takes reads in batches of four, so the last batch is filled up, with echoes of the
/// sample speed.
void Converter::finish() {
  std::int64_t now = timeOf(buffer::ploop - buffer::ploopStart);
  if (!bytesOnly() && dataBlocks_ > 0) {
    constexpr auto kBatch = static_cast<std::uint64_t>(StreamDecoder::kReadsPerBatch);
    const std::uint32_t shown = std::min<std::uint32_t>(buffer::SampleSpeed, 9999);
    const std::string echo = "sr " + std::to_string(shown) + "\r";
    std::size_t blocks = kLinesBehind;
    while ((dataBlocks_ + blocks) % kBatch != 0) ++blocks;
    for (; blocks > 0; --blocks) {
      now += 1'000'000'000 / kBlocksASecond;
      record(CaptureKind::Block, 0,
             std::span(reinterpret_cast<const std::uint8_t*>(echo.data()), echo.size()), now,
             kWaits);
    }
  }
  check(writer_.end(now + kFirstBlock));
  if (const int error = sink_.commit()) fail(error);
}

std::vector<std::string> Converter::convert(std::int64_t wallNanoseconds) {
  ports_ = ports();
  payloads_.resize(ports_.size());
  if (!bytesOnly()) {
    SampleLine decoding = SampleLine::current();
    decoding.model = format_.model;
    decoding.oldBluetooth = format_.oldBluetooth;
    inverse_.emplace(decoding, format_);
  }
  check(writer_.begin(wallNanoseconds, settings(ports_.size())));
  open(ports_.size());
  const std::int64_t end = buffer::ploop;
  const std::int64_t step =
      std::clamp<std::int64_t>(buffer::SampleSpeed / kBlocksASecond, 1, kPiecePoints);
  for (std::int64_t first = buffer::ploopStart; first < end; first += step)
    putBlock(first, std::min(step, end - first));
  finish();
  return report();
}

std::vector<std::string> Converter::report() const {
  std::vector<std::string> lines;
  const auto say = [&](std::size_t channel, std::uint64_t count, const std::string& what) {
    if (count > 0)
      lines.push_back("channel " + std::to_string(channel) + ": " + std::to_string(count) + what);
  };
  for (std::size_t c = 0; c < losses_.size(); ++c) {
    say(c, losses_[c].missing, " samples are lost: lines of this model carry no such channel");
    say(c, losses_[c].held,
        " samples lie beyond the codes of the line and were held at their ends");
    say(c, losses_[c].rounded,
        " samples have no code of their own; the nearest is off by " +
            std::to_string(losses_[c].most) + " at most");
  }
  if (buffer::SelectDevice == kWithoutLine)
    lines.emplace_back("model 4 has no serial line: the capture is one of model 6, the same lines");
  if (const std::size_t texts = engine_.annotations().list().size(); texts > 0)
    lines.push_back(std::to_string(texts) + " annotations are lost: a capture holds none");
  return lines;
}

}  // namespace

std::vector<std::string> writeCapture(Engine& engine, Files& files, const std::string& path,
                                      std::int64_t wallNanoseconds) {
  return Converter(engine, files, path).convert(wallNanoseconds);
}

}  // namespace ovka::terminal
