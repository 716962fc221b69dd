#include "VirtualAmplifier.h"

#include <algorithm>
#include <charconv>
#include <cstdio>

namespace ovka {
namespace {

constexpr std::int64_t kMillisecond = 1'000'000;
constexpr std::int64_t kLongest = 2000 * kMillisecond;
/// The phase counts ns x samples/s x millionths; steps of 100 ms keep it inside 64 bits.
constexpr std::int64_t kPhaseOfFrame = 1'000'000'000'000'000;
constexpr std::int64_t kStep = 100 * kMillisecond;
constexpr std::uint32_t kFastest = 16000;
constexpr std::size_t kLongestCommand = 64;

/// Neither line can be taken for samples or a status report, on its own or joined with the other:
/// no length adds up to a frame, and neither begins as a report does.
constexpr const char* kFirstGreeting = "Amplifier ";  // and the model number
constexpr const char* kSecondGreeting = "Ready.\r";
constexpr std::int64_t kSecondGreetingAfter = 20 * kMillisecond;
constexpr std::int64_t kFirstFrame = 200 * kMillisecond;

void append(std::vector<std::uint8_t>& out, std::string_view text) {
  out.insert(out.end(), text.begin(), text.end());
}

}  // namespace

VirtualAmplifier::VirtualAmplifier(const SimulatorOptions& options, std::unique_ptr<Signal> signal)
    : options_(options),
      format_{options.model, options.config, options.oldBluetooth, options.port},
      signal_(std::move(signal)),
      faults_(options.faults, options.seed),
      speed_(options.samplesPerSecond) {}

void VirtualAmplifier::hostOpened() {
  hostLeft();
  open_ = true;
}

void VirtualAmplifier::hostLeft() {
  open_ = false;
  streaming_ = false;
  sinceOpening_ = 0;
  greetingsSent_ = 0;
  samplePhase_ = 0;
  line_.clear();
  replies_.clear();
}

void VirtualAmplifier::feed(std::span<const std::uint8_t> bytes) {
  for (const std::uint8_t byte : bytes) {
    if (byte == '\r' || byte == '\n') {
      if (!line_.empty()) command(line_);
      line_.clear();
    } else if (line_.size() <= kLongestCommand) {
      line_.push_back(static_cast<char>(byte));
    }
  }
}

void VirtualAmplifier::command(std::string_view line) {
  const std::string_view value = line.size() > 3 ? line.substr(3) : std::string_view{};
  if (line.substr(0, 3) == "SR ") {
    setSpeed(value);
  } else if (line.substr(0, 3) == "FR " &&
             value.find_first_not_of("0123456789.-+") == std::string_view::npos && !value.empty()) {
    // Ten characters at most: a longer echo would not be known as one.
    reply("fr " + std::string(value.substr(0, 10)) + "\r");
  } else if (line == "BL") {
    char text[8];
    std::snprintf(text, sizeof text, "bl %03X\r",
                  static_cast<unsigned>(options_.batteryVolts * 64.0) & 0xFFFU);
    reply(text);
  } else {
    ++unknownCommands_;
  }
}

void VirtualAmplifier::setSpeed(std::string_view digits) {
  std::uint32_t speed = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), speed);
  if (error != std::errc{} || end != digits.data() + digits.size() || speed < 1 ||
      speed > kFastest) {
    ++unknownCommands_;
    return;
  }
  speed_ = speed;
  samplePhase_ = 0;
  streaming_ = open_;
  reply("sr " + std::to_string(speed) + "\r");
}

void VirtualAmplifier::reply(std::string_view line) {
  if (format_.model != 1 && !format_.oldBluetooth) replies_ += line;
}

void VirtualAmplifier::acknowledge(char letter) {
  if (letter >= 'a' && letter <= 'z') reply(std::string(4, letter) + "\r");
}

void VirtualAmplifier::reportOverflow(std::uint64_t count) {
  char text[24];
  std::snprintf(text, sizeof text, "ov %04llu\r",
                static_cast<unsigned long long>(std::min<std::uint64_t>(count, 9999999999U)));
  reply(text);
}

void VirtualAmplifier::produce(std::int64_t nanoseconds, std::vector<std::uint8_t>& out) {
  if (!open_ || nanoseconds < 0) return;
  if (nanoseconds > kLongest) {
    if (streaming_) skipFrames(nanoseconds - kLongest);
    nanoseconds = kLongest;
  }
  if (!streaming_) {
    greet(nanoseconds, out);
    streaming_ = sinceOpening_ >= kFirstFrame;
    nanoseconds = std::max<std::int64_t>(sinceOpening_ - kFirstFrame, 0);
  }
  append(out, replies_);
  replies_.clear();
  if (streaming_) stream(nanoseconds, out);
}

std::int64_t VirtualAmplifier::rate() const noexcept {
  return std::int64_t{speed_} * (1'000'000 + options_.faults.driftPpm);
}

std::int64_t VirtualAmplifier::untilNextFrame() const noexcept {
  if (!streaming_ || rate() <= 0) return 0;
  return (kPhaseOfFrame - samplePhase_ + rate() - 1) / rate();
}

void VirtualAmplifier::greet(std::int64_t nanoseconds, std::vector<std::uint8_t>& out) {
  sinceOpening_ += nanoseconds;
  if (format_.model == 1) return;
  if (greetingsSent_ == 0) {
    append(out, kFirstGreeting + std::to_string(options_.model) + "\r");
    greetingsSent_ = 1;
  }
  if (greetingsSent_ == 1 && sinceOpening_ >= kSecondGreetingAfter) {
    append(out, kSecondGreeting);
    greetingsSent_ = 2;
  }
}

void VirtualAmplifier::stream(std::int64_t nanoseconds, std::vector<std::uint8_t>& out) {
  const std::int64_t rate = this->rate();
  while (nanoseconds > 0) {
    const std::int64_t step = std::min(nanoseconds, kStep);
    nanoseconds -= step;
    samplePhase_ += step * rate;
    for (; samplePhase_ >= kPhaseOfFrame; samplePhase_ -= kPhaseOfFrame) sendFrame(out);
  }
}

void VirtualAmplifier::sendFrame(std::vector<std::uint8_t>& out) {
  Microvolts microvolts{};
  WireFrame frame;
  if (options_.signal == SignalKind::Sequence) {
    frame = encodeSequence(format_, frames_);
  } else {
    signal_->next(speed_, microvolts);
    frame = encodeFrame(format_, microvolts);
  }
  ++frames_;
  faults_.pass(std::span(frame.bytes).first(frame.size), speed_, out);
}

void VirtualAmplifier::skipFrames(std::int64_t nanoseconds) {
  const double missed = static_cast<double>(nanoseconds) / 1e9 * speed_;
  const auto count = static_cast<std::uint64_t>(missed);
  frames_ += count;
  faults_.counts().skippedFrames += count;
}

}  // namespace ovka
