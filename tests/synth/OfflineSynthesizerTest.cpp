#include <chrono>
#include <cmath>
#include <cstdint>
#include <doctest/doctest.h>
#include <random>
#include <vector>

#include "PeakLimiter.h"
#include "SynthBench.h"

using namespace ovka;
using namespace ovka::testing;
using namespace std::chrono_literals;

namespace {

constexpr double kRate = 48000;

std::uint8_t byte(std::uint64_t value) {
  return static_cast<std::uint8_t>(value);
}

/// The frequency of the strongest partial: first among the keys of a piano, then cent by cent.
double strongest(const std::vector<float>& sound) {
  double best = 0;
  double most = 0;
  const auto consider = [&](double frequency) {
    const double strength = partial(sound, frequency, kRate);
    if (strength <= most) return;
    most = strength;
    best = frequency;
  };
  for (int key = 33; key <= 100; ++key) consider(440 * std::exp2((key - 69) / 12.0));
  const double near = best;
  for (int cents = -40; cents <= 40; cents += 4) consider(near * std::exp2(cents / 1200.0));
  return best;
}

/// A minute's worth of every kind of message in some seconds, at odd times; `look` moves time in
/// steps of its own in between.
void playAll(Rendering& rendering, std::chrono::nanoseconds look) {
  std::mt19937_64 random(3);
  for (int i = 0; i < 300; ++i) {
    const std::uint8_t channel = byte(random() % 16);
    const std::uint8_t first = byte(random() % 128);
    const std::uint8_t second = byte(random() % 128);
    const std::uint64_t kind = random() % 8;
    if (kind == 0) {
      rendering.play({byte(0xC0 | channel), first});
    } else if (kind == 1) {
      rendering.play({byte(0xE0 | channel), first, second});
    } else if (kind == 2) {
      rendering.play({byte(0xB0 | channel), byte(random() % 2 == 0 ? 7 : 10), second});
    } else {
      rendering.play({byte((kind < 5 ? 0x80 : 0x90) | channel), byte(36 + first / 2), second});
    }
    const auto pause = std::chrono::nanoseconds(random() % 20'000'000);
    for (auto waited = 0ns; waited < pause; waited += look) {
      rendering.time.advance(std::min(look, pause - waited));
      rendering.synthesizer.catchUp();
    }
  }
  rendering.synthesizer.stop();
}

}  // namespace

TEST_CASE("note 69 sounds at 440 Hz, a bend moves it, another program changes its sound") {
  if (!soundFontHere()) return;
  struct Row {
    std::vector<std::vector<std::uint8_t>> messages;
    double frequency;
  };
  const std::vector<Row> rows{
      {{{0x90, 69, 100}}, 440},
      {{{0xC3, 4}, {0x93, 69, 100}}, 440},
      {{{0xEF, 0, 127}, {0x9F, 69, 100}}, 440 * std::exp2(2 * 63.0 / 64 / 12)},
  };
  std::vector<std::vector<float>> sounds;
  for (const Row& row : rows) {
    Rendering rendering;
    for (const auto& message : row.messages) rendering.play(message);
    rendering.wait(1s);
    rendering.synthesizer.catchUp();
    sounds.push_back(rendering.channel(0, 16000));
    const double cents = 1200 * std::log2(strongest(sounds.back()) / row.frequency);
    CHECK(std::fabs(cents) <= 8);
  }
  const auto colour = [](const std::vector<float>& sound) {
    return partial(sound, 880, kRate) / partial(sound, 440, kRate);
  };
  CHECK(std::fabs(std::log(colour(sounds[0]) / colour(sounds[1]))) > 0.1);
}

TEST_CASE("sixteen loud voices stay below the ceiling and reach it") {
  if (!soundFontHere()) return;
  for (const double ceiling : {-1.0, -12.0}) {
    Rendering rendering({.gain = 5, .ceiling = ceiling});
    for (std::uint64_t channel = 0; channel < 16; ++channel) {
      rendering.play({byte(0xB0 | channel), 7, 127});
      rendering.play({byte(0x90 | channel), byte(48 + 2 * channel), 127});
    }
    rendering.wait(700ms);
    rendering.synthesizer.stop();
    const float peak = loudest(rendering.sound);
    const float limit = PeakLimiter({.ceiling = ceiling}).ceiling();
    CHECK(peak <= limit);
    CHECK(peak > 0.9F * limit);
    CHECK(rendering.sound.size() == 2 * 33600);
  }
}

TEST_CASE("a note begins on time, fades after its end, and silence is at once") {
  if (!soundFontHere()) return;
  for (const bool velocityZero : {false, true}) {
    Rendering rendering;
    rendering.wait(250ms);
    rendering.play({0x90, 69, 110});
    rendering.wait(250ms);
    rendering.play({byte(velocityZero ? 0x90 : 0x80), 69, 0});
    const std::size_t ended = rendering.channel(0).size();
    rendering.synthesizer.fade(8'000'000'000);
    rendering.synthesizer.stop();
    const std::vector<float> sound = rendering.channel(0);
    // The limiter's delay is out, the library's block of 64 samples remains.
    std::size_t begun = 0;
    while (begun < sound.size() && std::fabs(sound[begun]) < 1e-6F) ++begun;
    CHECK(begun >= 12000);
    CHECK(begun < 12000 + 480);
    const std::span all(sound);
    CHECK(loudest(all.subspan(ended, 2400)) > 0.001F);  // the release, not a cut
    CHECK(loudest(all.last(2400)) < 2e-5F);
    CHECK(sound.size() < 5 * 48000U);
  }
  Rendering rendering;
  rendering.play({0xC0, 73});
  rendering.play({0xB0, 7, 90});
  rendering.play({0x90, 69, 127});
  rendering.play({0xB0, 64, 127});
  rendering.wait(500ms);
  rendering.synthesizer.silence();
  rendering.wait(250ms);
  rendering.play({0x90, 69, 127});
  rendering.wait(500ms);
  rendering.play({0x80, 69, 0});
  rendering.synthesizer.fade(8'000'000'000);
  rendering.synthesizer.stop();
  const std::vector<float> sound = rendering.channel(0);
  const std::span all(sound);
  CHECK(loudest(all.subspan(24000 - 480, 480)) > 0.06F);
  // Sixty-four samples' worth of echo may remain.
  CHECK(loudest(all.subspan(24000 + 128, 11000)) < 0.003F);
  // Program and volume outlived it, the pedal did not.
  const auto steady = [&](std::size_t from) { return loudest(all.subspan(from, 9600)); };
  CHECK(steady(36000 + 12000) == doctest::Approx(steady(12000)).epsilon(0.05));
  CHECK(loudest(all.last(2400)) < 2e-5F);
}

TEST_CASE("the same messages give the same samples on every run") {
  if (!soundFontHere()) return;
  Rendering once;
  playAll(once, 20ms);
  Rendering again;
  playAll(again, 731'003ns);
  REQUIRE(once.sound.size() > 2 * 48000);
  CHECK(loudest(once.sound) > 0.01F);
  CHECK(once.sound == again.sound);
}

TEST_CASE("what is no channel message is ignored") {
  if (!soundFontHere()) return;
  Rendering rendering;
  std::mt19937_64 random(5);
  for (int i = 0; i < 2000; ++i) {
    std::vector<std::uint8_t> bytes(random() % 6);
    for (std::uint8_t& value : bytes) value = byte(random());
    if (bytes.size() == 2 || bytes.size() == 3) bytes[1] |= 0x80;  // never whole
    rendering.play(bytes);
  }
  rendering.wait(50ms);
  rendering.synthesizer.stop();
  CHECK(loudest(rendering.sound) < 1e-6F);
  rendering.play({0x90, 69, 127});  // ended: goes nowhere
  CHECK(rendering.sound.size() == 2 * 2400);
}
