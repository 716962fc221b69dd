#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <doctest/doctest.h>
#include <fcntl.h>
#include <fstream>
#include <string>
#include <thread>
#include <unistd.h>
#include <vector>

#include "FluidSynthesizer.h"
#include "FluidVoices.h"
#include "SynthBench.h"
#include "TemporaryFolder.h"

using namespace ovka;
using namespace ovka::testing;
using namespace std::chrono_literals;

namespace {

/// What the process writes to standard error meanwhile.
class StandardError {
 public:
  explicit StandardError(const std::string& path) : kept_(dup(2)) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT, 0600);
    REQUIRE(dup2(file, 2) == 2);
    close(file);
  }
  ~StandardError() {
    dup2(kept_, 2);
    close(kept_);
  }
  StandardError(const StandardError&) = delete;
  StandardError& operator=(const StandardError&) = delete;

 private:
  int kept_;
};

bool oneLine(const std::string& text) {
  return !text.empty() && text.find('\n') == std::string::npos;
}

}  // namespace

TEST_CASE("a sound font that is missing, damaged or none is named") {
  const TemporaryFolder folder;
  std::ofstream(folder.at("text.sf2")) << "not a sound font at all";
  const std::string head("sfbkLIST\x04\0\0\0INFO", 16);
  std::ofstream(folder.at("cut.sf2"), std::ios::binary) << std::string("RIFF\x11\0\0\0", 8) + head;
  std::ofstream(folder.at("odd.sf2"), std::ios::binary) << std::string("RIFF\x10\0\0\0", 8) + head;
  for (const char* name : {"none.sf2", "text.sf2", "cut.sf2", "odd.sf2", ""}) {
    const std::string path = folder.at(name);
    CAPTURE(path);
    ManualTime time;
    OfflineSynthesizer offline({.soundFont = path}, time, [](std::span<const float>) {});
    CHECK(offline.start() != 0);
    CHECK(oneLine(offline.explanation()));
    CHECK(offline.explanation().find(path) != std::string::npos);
    CHECK_FALSE(offline.started());
    offline.message(std::array<std::uint8_t, 3>{0x90, 60, 100});
    offline.stop();
  }
}

TEST_CASE("without a sound output one line says so, and nothing else happens") {
  if (!soundFontHere()) return;
  const TemporaryFolder folder;
  FluidSynthesizer synthesizer({.driver = "alsa", .device = "ovka-no-such-card"});
  {
    const StandardError quiet(folder.at("stderr"));
    CHECK(synthesizer.start() == ENODEV);
    synthesizer.tick();
  }
  CHECK(contentsOf(folder.at("stderr")).empty());
  CHECK(oneLine(synthesizer.explanation()));
  CHECK(synthesizer.explanation().find("alsa") != std::string::npos);
  CHECK_FALSE(synthesizer.started());
  synthesizer.message(std::array<std::uint8_t, 3>{0x90, 60, 100});
  synthesizer.silence();
  synthesizer.stop();
}

TEST_CASE("another sound font counts from the next start, another volume at once") {
  if (!soundFontHere()) return;
  const TemporaryFolder folder;
  FluidSynthesizer synthesizer({.driver = "alsa", .device = "null"});
  const bool output = synthesizer.start() == 0;
  synthesizer.setSettings({.soundFont = folder.at("none.sf2")});
  CHECK(synthesizer.started() == output);
  synthesizer.stop();
  CHECK(synthesizer.start() == ENOENT);
  CHECK(synthesizer.explanation().find("none.sf2") != std::string::npos);

  std::string problem;
  const auto voices = FluidVoices::load({.soundFont = findSoundFont({}).path}, &problem);
  REQUIRE(voices != nullptr);
  const auto loudness = [&](double gain) {
    voices->setGain(gain);
    voices->message(std::array<std::uint8_t, 3>{0x90, 60, 100});
    std::vector<float> left(9600);
    std::vector<float> right(left.size());
    voices->render(left, right);
    voices->silence();
    float most = 0;
    for (const float sample : left) most = std::max(most, std::abs(sample));
    return most;
  };
  const float quiet = loudness(0.05);  // before the loud note, whose end would cover it
  CHECK(quiet > 0.001F);
  CHECK(loudness(0.5) > 5 * quiet);
}

TEST_CASE("messages of several threads while the output plays, stops and starts") {
  if (!soundFontHere()) return;
  FluidSynthesizer synthesizer({.driver = "alsa", .device = "null"});
  if (synthesizer.start() != 0) {
    MESSAGE("skipped: ", synthesizer.explanation());
    return;
  }
  CHECK(synthesizer.name().find(", alsa") != std::string::npos);
  std::atomic<bool> ended{false};
  std::vector<std::thread> players;
  for (std::uint8_t channel = 0; channel < 2; ++channel) {
    players.emplace_back([&, channel] {
      for (std::uint8_t key = 0; !ended; key = (key + 1) & 0x7F) {
        const auto status = static_cast<std::uint8_t>(0x90 | channel);
        synthesizer.message(std::array<std::uint8_t, 3>{status, key, 100});
        synthesizer.message(std::array<std::uint8_t, 3>{status, key, 0});
        if (key == 100) synthesizer.silence();
        std::this_thread::sleep_for(200us);
      }
    });
  }
  for (int round = 0; round < 3; ++round) {
    std::this_thread::sleep_for(50ms);
    synthesizer.tick();
    synthesizer.stop();
    CHECK_FALSE(synthesizer.started());
    REQUIRE(synthesizer.start() == 0);
    CHECK(synthesizer.start() == 0);
  }
  ended = true;
  for (std::thread& player : players) player.join();
  synthesizer.stop();
}
