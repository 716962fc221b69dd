#include "RenderScore.h"

#include <algorithm>

namespace ovka {
namespace {

const char* const kSynthesizer = "Synthesizer";

/// The two ways to end a note are one; velocities of endings do not count.
std::array<std::uint8_t, 3> plain(std::span<const std::uint8_t> message) {
  std::array<std::uint8_t, 3> bytes{};
  std::copy_n(message.begin(), std::min<std::size_t>(message.size(), 3), bytes.begin());
  if ((bytes[0] & 0xF0) == 0x90 && bytes[2] == 0)
    bytes[0] = static_cast<std::uint8_t>(bytes[0] - 0x10);
  if ((bytes[0] & 0xF0) == 0x80) bytes[2] = 0;
  return bytes;
}

}  // namespace

RenderScore::RenderScore(const Clock& clock, StandardMidiFileWriter::Settings settings,
                         OfflineSynthesizer* sound)
    : clock_(clock), begin_(clock.nanoseconds()), file_(std::move(settings)), sound_(sound) {}

bool RenderScore::add(const std::string& receiver, std::span<const std::uint8_t> message) {
  if (message.empty()) return false;
  const int channel = message[0] & 0x0F;
  const auto [track, isNew] = tracks_.try_emplace({receiver, channel}, file_.tracks());
  if (isNew) file_.addTrack(receiver + ", channel " + std::to_string(channel + 1));
  return file_.add(track->second, time(), message);
}

bool RenderScore::toDestination(const std::string& name, std::span<const std::uint8_t> message) {
  if (!add(name, message)) return false;
  last_ = plain(message);
  lastTime_ = time();
  if (sound_ != nullptr) sound_->message(message);
  return true;
}

void RenderScore::toSynthesizer(std::span<const std::uint8_t> message) {
  if (lastTime_ == time() && last_ == plain(message)) return;
  if (add(kSynthesizer, message) && sound_ != nullptr) sound_->message(message);
}

void RenderScore::silence() {
  if (sound_ != nullptr) sound_->silence();
}

}  // namespace ovka
