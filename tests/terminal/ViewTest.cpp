#include <algorithm>
#include <cmath>
#include <doctest/doctest.h>
#include <limits>
#include <string>

#include "LiveView.h"

using namespace ovka::terminal;

namespace {

LiveSnapshot typical() {
  LiveSnapshot snapshot;
  snapshot.source = "virtual amplifier";
  snapshot.model = "model 6, 24-bit, 5 channels";
  snapshot.sampleSpeed = 256;
  snapshot.measuredRate = 255.9;
  snapshot.binWidth = 0.25;
  snapshot.fftPoints = 1024;
  snapshot.recording = true;
  snapshot.elapsed = 83;
  snapshot.capacity = 3600;
  for (std::size_t c = 0; c < snapshot.channels.size(); ++c) {
    ChannelReading& channel = snapshot.channels[c];
    channel.powers.bands = {20, 40, 60, 100, 80, 10, 5, 0};
    channel.powers.total = 315;
    channel.peaks[0] = {49.8, 10.0, 40};
  }
  snapshot.losses = {{"wrongLengthLines", "lines of wrong length", 0}, {"gapPoints", "missing", 0}};
  snapshot.notices = {"fftinit", "init FFT", "Read main loop"};
  return snapshot;
}

const Look kUnicode{.unicode = true, .colour = true};
const Look kAscii{.unicode = false, .colour = false};

std::size_t columns(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
  }));
}

std::string whole(const Canvas& canvas, const Look& look) {
  std::string out;
  for (int row = 0; row < canvas.height(); ++row) out += canvas.rowText(row, look) + "\n";
  return out;
}

/// The row whose text begins with `start` (after a blank).
std::string rowOf(const Canvas& canvas, const Look& look, const std::string& start) {
  for (int row = 0; row < canvas.height(); ++row) {
    const std::string text = canvas.rowText(row, look);
    if (text.rfind(" " + start, 0) == 0) return text;
  }
  return {};
}

}  // namespace

TEST_CASE("80 by 24 shows everything") {
  LiveView view(kUnicode);
  LiveSnapshot snapshot = typical();
  snapshot.losses[0].count = 12;
  snapshot.hint = lossHint(snapshot.losses, false);
  const std::string text = whole(view.draw(snapshot, 80, 24, 0), kUnicode);
  for (const char* part :
       {"virtual amplifier", "● recording", "00:01:23 / 01:00:00", "model 6", "255.9 measured",
        "0.250 Hz", "E  channel 4", "highbeta", "50–60", "315.0", "a full bar is 100", "10.00 Hz",
        "49.80", "12 lines of wrong length", "FixedFramingX=1", "Read main loop"}) {
    CAPTURE(std::string(part));
    CHECK(text.find(part) != std::string::npos);
  }
}

TEST_CASE("no line is ever wider than the window, in any state") {
  LiveSnapshot wild = typical();
  wild.source = std::string(300, 'x') + "\xFF\x1b[2J 漢字";
  wild.notices.assign(50, std::string(400, 'n'));
  wild.hint = std::string(300, 'h');
  wild.losses[0].count = std::numeric_limits<std::int64_t>::max();
  wild.channels[0].powers.bands.fill(1e300);
  wild.channels[1].powers.bands.fill(std::nan(""));
  wild.channels[2].powers.total = 0;
  wild.channels[3].peaks[0] = {std::numeric_limits<double>::infinity(), -1e300, -5};
  LiveSnapshot idle;
  for (ChannelReading& channel : idle.channels) channel.active = false;
  for (const LiveSnapshot& snapshot : {typical(), wild, idle}) {
    for (const Look& look : {kUnicode, kAscii}) {
      LiveView view(look);
      for (const LiveKey key : {LiveKey::None, LiveKey::Shares, LiveKey::Help}) {
        view.press(key);
        for (const int width : {-5, 1, 20, 27, 28, 40, 59, 60, 79, 80, 81, 132, 400, 100000}) {
          for (const int height : {0, 1, 6, 10, 23, 24, 25, 34, 60}) {
            const Canvas canvas = view.draw(snapshot, width, height, 0);
            const std::size_t limit = static_cast<std::size_t>(std::clamp(width, 1, 2000));
            for (int row = 0; row < canvas.height(); ++row) {
              const std::string text = canvas.rowText(row, look);
              REQUIRE(columns(text) <= limit);
              REQUIRE(text.find('\x1b') == std::string::npos);
              if (!look.unicode)
                REQUIRE(std::all_of(text.begin(), text.end(), [](char c) { return c >= ' '; }));
            }
          }
        }
      }
    }
  }
}

TEST_CASE("small windows keep the essential lines and say what they leave out") {
  LiveView view(kUnicode);
  const Canvas low = view.draw(typical(), 80, 12, 0);
  for (const char* start : {"OVKA", "eye", "ac", "lost", "q quit"}) {
    CAPTURE(start);
    CHECK_FALSE(rowOf(low, kUnicode, start).empty());
  }
  const std::string narrow = whole(view.draw(typical(), 40, 24, 0), kUnicode);
  CHECK(narrow.find("+2 more") != std::string::npos);
  CHECK(narrow.find("B  channel 2") != std::string::npos);
  CHECK(narrow.find("D  channel 3") == std::string::npos);
}

TEST_CASE("bars are proportional, to an eighth of a column") {
  const struct {
    double share;
    const char* unicode;
    const char* ascii;
  } table[] = {
      {0, "", ""},
      {0.0001, "▏", "#"},  // more than nothing is seen
      {0.5, "████", "####"},
      {0.5 + 3.0 / 64, "████▍", "####"},
      {1, "████████", "########"},
      {7, "████████", "########"},
      {-1, "", ""},
      {std::nan(""), "", ""},
      {1 - 1.0 / 64, "███████▉", "########"},
  };
  for (const auto& row : table) {
    CAPTURE(row.share);
    for (const Look& look : {kUnicode, kAscii}) {
      Canvas canvas(20, 1);
      canvas.bar(0, 0, 8, row.share, look, Style::Bar);
      CHECK(canvas.rowText(0, look) == (look.unicode ? row.unicode : row.ascii));
    }
  }
}

TEST_CASE("shares replace values, inactive channels give their room away") {
  LiveView view(kAscii);
  LiveSnapshot snapshot = typical();
  snapshot.channels[2].active = snapshot.channels[3].active = false;
  const std::string values = rowOf(view.draw(snapshot, 80, 24, 0), kAscii, "alpha");
  CHECK(std::count(values.begin(), values.end(), '#') == 2 * 24);
  CHECK(values.find("100.0") != std::string::npos);
  CHECK(view.press(LiveKey::Shares));
  const Canvas shares = view.draw(snapshot, 80, 24, 0);
  CHECK(rowOf(shares, kAscii, "alpha").find("31.75") != std::string::npos);
  CHECK(rowOf(shares, kAscii, "scale").find("50 % of the total") != std::string::npos);
}

TEST_CASE("the scale rises at once, falls slowly and does not flutter") {
  AutoScale scale;
  scale.update(0, 0);
  CHECK(scale.top() == 1);
  scale.update(40, 0);
  CHECK(scale.top() == 50);
  scale.update(60, 0.1);
  CHECK(scale.top() == 100);
  scale.update(10, 0.2);
  CHECK(scale.top() == 100);
  for (int i = 0; i < 100; ++i) scale.update(i % 2 == 0 ? 49 : 51, 10 + 0.1 * i);
  CHECK(scale.top() == 100);  // around a step it stays above
  for (int i = 0; i < 1000; ++i) scale.update(8, 20 + 0.1 * i);
  CHECK(scale.top() == 10);
  scale.update(std::nan(""), 200);
  scale.update(std::numeric_limits<double>::infinity(), 200);
  CHECK(std::isfinite(scale.top()));
}

TEST_CASE("a frame clears behind its lines, resets its colours and never scrolls") {
  LiveView view(kUnicode);
  const Canvas canvas = view.draw(typical(), 80, 24, 0);
  const std::string frame = canvas.frame(kUnicode);
  CHECK(frame.rfind("\x1b[H", 0) == 0);
  CHECK(std::count(frame.begin(), frame.end(), '\n') == 23);
  CHECK(frame.find("\x1b[2J") == std::string::npos);
  CHECK(frame.find("\x1b[0;36m") != std::string::npos);
  CHECK(canvas.frame(Look{.unicode = true, .colour = false}).find("36m") == std::string::npos);
  std::size_t at = 0;
  while (at < frame.size()) {  // every line ends in plain style
    const std::size_t end = std::min(frame.find("\r\n", at), frame.size());
    const std::string line = frame.substr(at, end - at);
    const std::size_t last = line.rfind("\x1b[0");
    if (last != std::string::npos) CHECK(line.compare(last, 4, "\x1b[0m") == 0);
    at = end + 2;
  }
}
