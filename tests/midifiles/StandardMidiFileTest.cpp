#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <doctest/doctest.h>
#include <map>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "StandardMidiFileWriter.h"

using namespace ovka;

namespace {

using Bytes = std::vector<std::uint8_t>;

struct Heard {
  double seconds = 0;
  Bytes bytes;
};

struct ReadTrack {
  std::string name;
  std::vector<Heard> messages;
  double end = -1;  // -1: no end event
};

struct ReadFile {
  std::uint32_t format = 99;
  std::vector<ReadTrack> tracks;
  bool whole = false;
};

/// A reader of its own: knows nothing of how the writer works.
class Reader {
 public:
  explicit Reader(const std::string& text) : bytes_(text.begin(), text.end()) {}

  ReadFile read() {
    ReadFile file;
    if (tag() != "MThd" || number(4) != 6) return file;
    file.format = number(2);
    const std::uint32_t tracks = number(2);
    const std::uint32_t division = number(2);
    double secondsPerTick = 0.5 / division;
    for (std::uint32_t i = 0; i < tracks; ++i)
      file.tracks.push_back(track(division, secondsPerTick));
    file.whole = good_ && at_ == bytes_.size();
    return file;
  }

 private:
  std::string tag() {
    std::string text;
    for (int i = 0; i < 4; ++i) text += static_cast<char>(number(1));
    return text;
  }
  std::uint32_t number(int count) {
    std::uint32_t value = 0;
    for (int i = 0; i < count; ++i) {
      if (at_ >= bytes_.size()) good_ = false;
      value = value << 8 | (good_ ? bytes_[at_++] : 0U);
    }
    return value;
  }
  std::uint32_t variable() {
    std::uint32_t value = 0;
    std::uint32_t digit = 0;
    do {
      digit = number(1);
      value = value << 7 | (digit & 0x7F);
    } while ((digit & 0x80) != 0 && good_);
    return value;
  }
  ReadTrack track(std::uint32_t division, double& secondsPerTick) {
    ReadTrack track;
    good_ = good_ && tag() == "MTrk";
    const std::uint32_t length = number(4);
    const std::size_t end = at_ + length;
    std::uint64_t tick = 0;
    while (good_ && at_ < end) {
      tick += variable();
      const std::uint32_t status = number(1);
      if (status == 0xFF) {
        const std::uint32_t kind = number(1);
        std::string data;
        for (std::uint32_t left = variable(); left > 0 && good_; --left)
          data += static_cast<char>(number(1));
        if (kind == 0x03) track.name = data;
        if (kind == 0x51) {
          std::uint32_t tempo = 0;
          for (const char digit : data) tempo = tempo << 8 | static_cast<std::uint8_t>(digit);
          secondsPerTick = tempo / 1e6 / division;
        }
        if (kind == 0x2F) track.end = static_cast<double>(tick) * secondsPerTick;
        if (kind == 0x2F && at_ != end) good_ = false;
        continue;
      }
      Heard heard{static_cast<double>(tick) * secondsPerTick, {static_cast<std::uint8_t>(status)}};
      const std::uint32_t kind = status & 0xF0;
      for (int i = kind == 0xC0 || kind == 0xD0 ? 1 : 2; i > 0; --i)
        heard.bytes.push_back(static_cast<std::uint8_t>(number(1)));
      track.messages.push_back(heard);
    }
    return track;
  }

  Bytes bytes_;
  std::size_t at_ = 0;
  bool good_ = true;
};

struct Sent {
  std::size_t track;
  std::int64_t nanoseconds;
  Bytes bytes;
};

/// Messages out of order, many at one moment, with silences longer than a distance can span.
std::vector<Sent> someMessages() {
  std::mt19937_64 random(7);
  constexpr std::int64_t kHour = 3'600'000'000'000;
  const std::array<std::int64_t, 5> begins{0, kHour, kHour, 100 * kHour, 100 * kHour + 1};
  std::vector<Sent> sent;
  for (int i = 0; i < 600; ++i) {
    const std::int64_t time =
        begins[random() % begins.size()] + static_cast<std::int64_t>(random() % 50) * 1'234'567;
    const auto kind = static_cast<std::uint8_t>(0x80 + 0x10 * (random() % 7));
    Bytes bytes{static_cast<std::uint8_t>(kind | random() % 16)};
    for (int n = kind == 0xC0 || kind == 0xD0 ? 1 : 2; n > 0; --n)
      bytes.push_back(static_cast<std::uint8_t>(random() % 128));
    sent.push_back({random() % 3, time, bytes});
  }
  return sent;
}

}  // namespace

TEST_CASE("a MIDI file gives back every message, in order and on time") {
  std::vector<Sent> sent = someMessages();
  using Format = StandardMidiFileWriter::Format;
  for (const Format format : {Format::OneTrack, Format::ManyTracks}) {
    StandardMidiFileWriter writer({.format = format, .title = "Étude"});
    for (const char* name : {"Piano", "", "Third port"}) writer.addTrack(name);
    for (const Sent& message : sent)
      REQUIRE(writer.add(message.track, message.nanoseconds, message.bytes));
    writer.lastUntil(400'000'000'000'000);
    std::ostringstream out;
    REQUIRE(writer.write(out).empty());

    const ReadFile file = Reader(out.str()).read();
    REQUIRE(file.whole);
    CHECK(file.format == static_cast<std::uint32_t>(format));
    const bool many = format == Format::ManyTracks;
    REQUIRE(file.tracks.size() == (many ? 4U : 1U));
    CHECK(file.tracks[0].name == "Étude");
    if (many) {
      CHECK(file.tracks[1].name == "Piano");
      CHECK(file.tracks[0].messages.empty());
    }
    std::vector<Sent> expected = sent;
    std::stable_sort(expected.begin(), expected.end(), [](const Sent& a, const Sent& b) {
      return (a.nanoseconds + 250'000) / 500'000 < (b.nanoseconds + 250'000) / 500'000;
    });
    std::map<std::size_t, std::size_t> next;
    double worst = 0;
    for (const Sent& message : expected) {
      const std::size_t track = many ? message.track + 1 : 0;
      REQUIRE(next[track] < file.tracks[track].messages.size());
      const Heard& heard = file.tracks[track].messages[next[track]++];
      REQUIRE(heard.bytes == message.bytes);
      worst =
          std::max(worst, std::abs(heard.seconds - static_cast<double>(message.nanoseconds) / 1e9));
    }
    CHECK(worst < 0.000251);
    for (const auto& [track, count] : next) CHECK(count == file.tracks[track].messages.size());
    for (const ReadTrack& track : file.tracks) CHECK(track.end == doctest::Approx(400'000));
  }
}

TEST_CASE("what is no channel message, and a disk that takes no more, are refused") {
  StandardMidiFileWriter writer({});
  const std::size_t track = writer.addTrack("one");
  const std::vector<std::pair<std::int64_t, Bytes>> bad{
      {0, {}},     {0, {0x90, 60}},   {0, {0xC0, 1, 2}},     {0, {60, 60, 60}},
      {0, {0xF8}}, {0, {0xF0, 1, 2}}, {0, {0x90, 60, 0x80}}, {-1, {0x90, 60, 1}}};
  for (const auto& [time, bytes] : bad) CHECK_FALSE(writer.add(track, time, bytes));
  CHECK_FALSE(writer.add(track + 1, 0, Bytes{0x90, 60, 1}));
  CHECK(writer.messages() == 0);
  std::ostringstream broken;
  broken.setstate(std::ios::badbit);
  CHECK_FALSE(writer.write(broken).empty());
}
