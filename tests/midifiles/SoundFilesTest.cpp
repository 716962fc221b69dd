#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <doctest/doctest.h>
#include <filesystem>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "TemporaryFolder.h"
#include "WavWriter.h"
#include "WholeFile.h"

using namespace ovka;
using ovka::testing::contentsOf;
using ovka::testing::TemporaryFolder;

namespace {

std::uint32_t little(const std::string& bytes, std::size_t at, int count) {
  std::uint32_t value = 0;
  for (int i = count - 1; i >= 0; --i)
    value = value << 8 | static_cast<std::uint8_t>(bytes.at(at + static_cast<std::size_t>(i)));
  return value;
}

}  // namespace

TEST_CASE("a WAV file says what it holds and holds what was written") {
  struct Row {
    WavSamples samples;
    std::uint16_t channels;
    std::uint32_t tag;
    std::uint32_t bytes;
    std::size_t data;  // place of the data chunk
    std::array<std::int64_t, 7> codes;
  };
  constexpr float kNothing = std::numeric_limits<float>::quiet_NaN();
  constexpr float kEndless = std::numeric_limits<float>::infinity();
  const std::array<float, 7> sound{0.5F, -1.0F, 1.0F, kNothing, -kEndless, 2.5e-5F, 0.0F};
  const auto raw = [](float value) {
    std::int32_t bits = 0;
    std::memcpy(&bits, &value, 4);
    return std::int64_t{bits};
  };
  const std::array<Row, 4> rows{{
      {WavSamples::Pcm16, 1, 1, 2, 36, {16384, -32768, 32767, 0, -32768, 1, 0}},
      {WavSamples::Pcm24, 1, 1, 3, 36, {4194304, -8388608, 8388607, 0, -8388608, 210, 0}},
      {WavSamples::Pcm24, 7, 1, 3, 36, {4194304, -8388608, 8388607, 0, -8388608, 210, 0}},
      {WavSamples::Float32, 1, 3, 4, 50, {raw(0.5F), raw(-1.0F), raw(1.0F), 0, 0, raw(2.5e-5F), 0}},
  }};
  for (const Row& row : rows) {
    CAPTURE(row.bytes);
    std::ostringstream out;
    WavWriter writer(out, {.sampleRate = 44100, .channels = row.channels, .samples = row.samples});
    REQUIRE(writer.write(sound).empty());
    REQUIRE(writer.finish().empty());
    const std::string file = out.str();
    const std::uint32_t length = 7 * row.bytes;
    CHECK(file.substr(0, 4) == "RIFF");
    CHECK(little(file, 4, 4) == file.size() - 8);
    CHECK(file.size() == row.data + 8 + length + length % 2);
    CHECK(file.substr(8, 8) == "WAVEfmt ");
    CHECK(little(file, 20, 2) == row.tag);
    CHECK(little(file, 22, 2) == row.channels);
    CHECK(little(file, 24, 4) == 44100);
    CHECK(little(file, 28, 4) == 44100 * row.bytes * row.channels);
    CHECK(little(file, 32, 2) == row.bytes * row.channels);
    CHECK(little(file, 34, 2) == 8 * row.bytes);
    if (row.tag == 3) CHECK(little(file, 46, 4) == 7);
    CHECK(file.substr(row.data, 4) == "data");
    CHECK(little(file, row.data + 4, 4) == length);
    for (std::size_t i = 0; i < sound.size(); ++i) {
      const std::uint32_t unsignedCode =
          little(file, row.data + 8 + i * row.bytes, static_cast<int>(row.bytes));
      const int unused = 32 - 8 * static_cast<int>(row.bytes);
      CHECK((static_cast<std::int32_t>(unsignedCode << unused) >> unused) == row.codes[i]);
    }
  }
}

TEST_CASE("sound that does not fit is refused and what was written stays whole") {
  std::ostringstream out;
  WavWriter writer(out, {.samples = WavSamples::Pcm16, .mostBytes = 2048});
  const std::vector<float> some(800, 0.25F);
  CHECK(writer.write(some).empty());
  CHECK_FALSE(writer.write(some).empty());
  CHECK(writer.write(std::vector<float>(2 * (writer.mostFrames() - 400))).empty());
  CHECK(writer.finish().empty());
  CHECK(little(out.str(), 40, 4) == 4 * writer.mostFrames());
  CHECK(out.str().size() <= 2048);

  std::ostringstream usual;
  CHECK(WavWriter(usual, {}).mostFrames() / 48000 == 14913);  // four hours and eight minutes

  std::ostringstream broken;
  broken.setstate(std::ios::badbit);
  WavWriter lost(broken, {});
  CHECK_FALSE(lost.write(some).empty());
  CHECK_FALSE(lost.finish().empty());
}

TEST_CASE("a file takes its name when it is whole, and not before") {
  const TemporaryFolder folder;
  const std::string path = folder.at("song.mid");
  const auto count = [&] {
    std::size_t files = 0;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path()))
      files += entry.path().empty() ? 0 : 1;
    return files;
  };
  for (const bool whole : {true, false}) {
    WholeFile file;
    REQUIRE(file.open(path).empty());
    file.stream() << (whole ? "first" : "second");
    CHECK(contentsOf(path) == (whole ? "" : "first"));
    if (whole) CHECK(file.commit().empty());
  }
  CHECK(contentsOf(path) == "first");
  WholeFile spoilt;
  REQUIRE(spoilt.open(path).empty());
  spoilt.stream().setstate(std::ios::badbit);
  CHECK(spoilt.commit().find(path) != std::string::npos);
  CHECK(contentsOf(path) == "first");
  CHECK(count() == 1);
  std::filesystem::create_symlink(path, folder.at("link"));
  WholeFile linked;
  REQUIRE(linked.open(folder.at("link")).empty());
  linked.stream() << "third";
  CHECK(linked.commit().empty());
  CHECK(std::filesystem::is_symlink(folder.at("link")));
  CHECK(contentsOf(path) == "third");
  if (std::filesystem::is_character_file("/dev/full")) {
    WholeFile device;
    REQUIRE(device.open("/dev/full").empty());
    device.stream() << "lost";
    CHECK(device.commit().find("/dev/full") != std::string::npos);
    CHECK(std::filesystem::is_character_file("/dev/full"));
  }
  WholeFile nowhere;
  CHECK(nowhere.open(folder.at("none/song.mid")).find("No such file") != std::string::npos);
  CHECK(nowhere.open(folder.path()).find("name a file") != std::string::npos);
}
