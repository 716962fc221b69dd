#include <algorithm>
#include <cmath>
#include <cstddef>
#include <doctest/doctest.h>
#include <limits>
#include <random>
#include <span>
#include <vector>

#include "PeakLimiter.h"

using namespace ovka;

namespace {

struct Sound {
  std::vector<float> left;
  std::vector<float> right;
};

/// Loud and quiet stretches, single clicks, and everything a broken source may send.
Sound wildSound(std::size_t length, bool broken) {
  std::mt19937 random(11);
  std::uniform_real_distribution<float> noise(-1, 1);
  Sound sound;
  float level = 1;
  const std::vector<float> oddities{
      std::numeric_limits<float>::quiet_NaN(),  std::numeric_limits<float>::infinity(),
      -std::numeric_limits<float>::infinity(),  std::numeric_limits<float>::max(),
      std::numeric_limits<float>::denorm_min(), -1e30F};
  const auto sample = [&] {
    if (broken && random() % 500 == 0) return oddities[random() % oddities.size()];
    return noise(random) * level * (random() % 300 == 0 ? 40.0F : 1.0F);
  };
  for (std::size_t i = 0; i < length; ++i) {
    if (random() % 2000 == 0) level = std::pow(10.0F, 1.5F * noise(random));
    sound.left.push_back(sample());
    sound.right.push_back(sample());
  }
  return sound;
}

/// Limited in blocks of changing lengths up to `block`.
Sound limited(const PeakLimiter::Settings& settings, Sound sound, std::size_t block) {
  PeakLimiter limiter(settings);
  std::size_t at = 0;
  for (std::size_t length = 1; at < sound.left.size(); at += length) {
    length = std::min(length % block + 1, sound.left.size() - at);
    limiter.process(std::span(sound.left).subspan(at, length),
                    std::span(sound.right).subspan(at, length));
  }
  return sound;
}

}  // namespace

TEST_CASE("nothing exceeds the ceiling, whatever comes in and however it is cut") {
  for (const bool broken : {false, true}) {
    const Sound sound = wildSound(60000, broken);
    for (const PeakLimiter::Settings settings :
         {PeakLimiter::Settings{}, PeakLimiter::Settings{.ceiling = -20, .lookAhead = 0},
          PeakLimiter::Settings{.sampleRate = 8000, .ceiling = 0, .lookAhead = 0.02, .release = 0},
          PeakLimiter::Settings{.sampleRate = std::nan(""),
          .ceiling = 7,
          .lookAhead = 1e9,
          .release = std::nan("")}}) {
      const Sound out = limited(settings, sound, 64);
      const float ceiling = PeakLimiter(settings).ceiling();
      CHECK(ceiling <= 1);
      const auto within = [&](float value) { return std::fabs(value) <= ceiling; };
      CHECK(std::all_of(out.left.begin(), out.left.end(), within));
      CHECK(std::all_of(out.right.begin(), out.right.end(), within));
      // Cut otherwise, and with the channels exchanged.
      const Sound again = limited(settings, {sound.right, sound.left}, 1009);
      CHECK(out.left == again.right);
      CHECK(out.right == again.left);
    }
  }
}

TEST_CASE("quiet sound passes unchanged but later; loud sound keeps its picture") {
  PeakLimiter limiter({.sampleRate = 48000, .ceiling = -1, .lookAhead = 0.001, .release = 0.01});
  const std::size_t delay = limiter.delay();
  CHECK(delay == 48);
  const std::size_t length = 48000;
  std::vector<float> left(length);
  std::vector<float> right(length);
  // Quiet, then a single click on the right, then loud with the left at half the right.
  for (std::size_t i = 0; i < length; ++i) {
    const double size = i < 32000 ? 0.5 : 4.0;
    right[i] = static_cast<float>(size * std::sin(0.05 * static_cast<double>(i)));
    left[i] = right[i] / 2;
  }
  right[8000] = 8.9125F;
  const std::vector<float> leftIn = left;
  const std::vector<float> rightIn = right;
  limiter.process(left, right);

  bool unchanged = true;
  for (std::size_t i = delay; i < 8000; ++i)
    unchanged = unchanged && right[i] == rightIn[i - delay];
  for (std::size_t i = 30000; i < 32000; ++i) unchanged = unchanged && left[i] == leftIn[i - delay];
  CHECK(unchanged);
  // The click itself reaches the ceiling (a tenth of it), and the gain has faded in before it.
  CHECK(right[8000 + delay] == doctest::Approx(0.89125).epsilon(0.001));
  CHECK(std::fabs(left[8000 + delay / 2]) < std::fabs(leftIn[8000 - delay / 2]));
  float loudest = 0;
  for (std::size_t i = 34000; i < length; ++i) {
    loudest = std::max(loudest, std::fabs(right[i]));
    CHECK(left[i] == doctest::Approx(right[i] / 2).epsilon(1e-5));
  }
  CHECK(loudest > 0.85F);
}
