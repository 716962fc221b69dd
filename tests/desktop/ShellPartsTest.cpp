#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <doctest/doctest.h>
#include <numbers>
#include <thread>
#include <vector>

#include "DesktopDialogs.h"
#include "PictureDelay.h"
#include "SignalQuality.h"

using namespace ovka::desktop;

namespace {

/// Two seconds: mains hum, an alpha rhythm, and a little noise of a fixed seed (microvolts).
std::vector<double> signal(double speed, double humFrequency, double hum, double alpha,
                           double clip) {
  std::vector<double> samples(static_cast<std::size_t>(2 * speed));
  unsigned seed = 1;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const double t = static_cast<double>(i) / speed;
    seed = seed * 1664525U + 1013904223U;
    const double noise = alpha == 0 && hum == 0 ? 0 : static_cast<double>(seed >> 24U) / 256;
    samples[i] = hum * std::sin(2 * std::numbers::pi * humFrequency * t) +
                 alpha * std::sin(2 * std::numbers::pi * 10 * t) + noise;
    samples[i] = std::clamp(samples[i], -clip, clip);
  }
  return samples;
}

}  // namespace

TEST_CASE("what an electrode delivers") {
  struct Row {
    const char* what;
    double speed, humFrequency, hum, alpha, clip, limit;
    SignalState state;
  };
  for (const Row& row : {
           Row{"a rhythm", 256, 50, 0, 30, 1e9, 64000, SignalState::Good},
           Row{"a rhythm above weaker hum", 256, 50, 20, 30, 1e9, 64000, SignalState::Good},
           Row{"hum of 50 Hz", 256, 50, 60, 20, 1e9, 64000, SignalState::Hum},
           Row{"hum of 60 Hz", 1024, 60, 60, 20, 1e9, 64000, SignalState::Hum},
           Row{"no 60 Hz at 120 samples a second", 120, 50, 60, 20, 1e9, 64000, SignalState::Hum},
           Row{"nothing", 256, 50, 0, 0, 1e9, 64000, SignalState::Flat},
           Row{"at the known limit", 256, 50, 0, 900, 500, 500, SignalState::Railed},
           Row{"flat tops", 256, 50, 0, 900, 300, 0, SignalState::Railed},
           Row{"a clean sine has no flat tops", 1920, 50, 0, 900, 1e9, 0, SignalState::Good},
       }) {
    CAPTURE(row.what);
    const auto samples = signal(row.speed, row.humFrequency, row.hum, row.alpha, row.clip);
    const SignalQuality quality = judgeSignal(samples, row.speed, row.limit);
    CHECK(quality.state == row.state);
    if (row.state == SignalState::Hum) CHECK(quality.humFrequency == row.humFrequency);
  }
  const std::array<double, 3> few{1, 2, 3};
  CHECK(judgeSignal(few, 120, 0).state == SignalState::Unknown);
}

TEST_CASE("how old the picture is counts what is new, and forgets") {
  PictureDelay delay;
  constexpr std::int64_t kMs = 1'000'000;
  CHECK_FALSE(delay.figures(0).known);
  for (int i = 1; i <= 9; ++i) {
    delay.take(i * 100 * kMs, i * 100 * kMs - i * 10 * kMs);
    delay.take(i * 100 * kMs + 16 * kMs, i * 100 * kMs - i * 10 * kMs);  // the same samples again
  }
  CHECK(delay.figures(1000 * kMs).median == doctest::Approx(50));
  CHECK(delay.figures(1000 * kMs).worst == doctest::Approx(90));
  CHECK_FALSE(delay.figures(20'000 * kMs).known);
}

TEST_CASE("questions wait for their answer, and get CANCEL when nobody is there any more") {
  DesktopDialogs dialogs;
  CHECK_FALSE(dialogs.confirm("from the windows", ""));
  for (const bool answer : {true, false}) {
    bool got = !answer;
    std::thread asker([&] {
      dialogs.alert("first", "");
      got = dialogs.confirm("second", "detail");
    });
    std::vector<DesktopDialogs::Request> requests;
    while (requests.size() < 2) {
      if (auto request = dialogs.next()) requests.push_back(*request);
      std::this_thread::yield();
    }
    CHECK(requests[0].number == 0);
    CHECK(requests[1].detail == "detail");
    dialogs.answer(requests[1].number, answer);
    asker.join();
    CHECK(got == answer);
  }
  bool got = true;
  std::thread asker([&] { got = dialogs.confirm("nobody", ""); });
  dialogs.shutDown();
  asker.join();
  CHECK_FALSE(got);
}

TEST_CASE("without a display the program says so and names the terminal view") {
  for (const char* display : {"", "DISPLAY=:9871 "}) {
    const std::string command = "env -u DISPLAY -u WAYLAND_DISPLAY -u QT_QPA_PLATFORM " +
                                std::string(display) + OVKA_DESKTOP_PROGRAM + " 2>&1";
    std::FILE* pipe = popen(command.c_str(), "r");
    REQUIRE(pipe != nullptr);
    std::string said;
    std::array<char, 256> piece{};
    while (std::fgets(piece.data(), piece.size(), pipe) != nullptr) said += piece.data();
    const int status = pclose(pipe);
    CHECK(WIFEXITED(status));
    CHECK(WEXITSTATUS(status) == 1);
    CHECK(said.find("ovka live") != std::string::npos);
  }
}
