#include <atomic>
#include <chrono>
#include <doctest/doctest.h>
#include <string>
#include <thread>
#include <vector>

#include "BufferVariables.h"
#include "CapturedPrint.h"
#include "FFTVariables.h"
#include "LiveSession.h"

using namespace ovka;

// Meant for the thread sanitizer: the full chain at its highest rate while lengths, windows,
// filters and the capacity change, and other threads read and ask.
TEST_CASE("settings and the capacity change while everything runs at the full rate") {
  const testing::CapturedPrint quiet;
  LiveChoice choice;
  choice.demo = true;
  choice.assignments = {"SampleSpeed=1920", "setLoopModeX=1", "MaxTimeActionX=0"};
  LiveSession session;
  const LiveSession::Opened opened = session.open(choice);
  REQUIRE_MESSAGE(opened.explanation.empty(), opened.explanation);
  Engine& engine = session.engine();

  std::atomic<bool> done{false};
  std::thread asking([&] {
    double sum = 0;
    while (!done) {
      for (std::int32_t source = 0; source < 4; ++source) {
        sum += static_cast<double>(engine.fft().peakFFTband(source, 7.0F, 12.0F, source % 2));
        sum += engine.store().getIntFromBuffer(source + 1, buffer::ploop - 1);
      }
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    CHECK(sum == sum);
  });
  const std::vector<std::string> changes{
      "fftp=4096",          "windSape=b",       "LOGpowerONed=1",
      "MaxTimeActionX=2",   "fftp=256",         "calculationSelectX=1",
      "AverageTime=64",     "ACcutONed=1",      "FixedFramingX=1",
      "MaxTimeActionX=1",   "LOGpowerONed=0",   "FFTcalculationSelectX=0",
      "LeftRightReverse=1", "fftp=65536",       "setPauseX=1",
      "setPauseX=0",        "MaxTimeActionX=4", "fftp=128",
      "SelectLSFset=6",     "hardwareGainCH1=1"};
  for (int round = 0; round < 4; ++round) {
    for (const std::string& change : changes) {
      CHECK(engine.assign(change) == "");
      std::this_thread::sleep_for(std::chrono::milliseconds(40));
    }
  }
  const std::int64_t before = engine.decoder().framesStored();
  const auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (engine.decoder().framesStored() == before && std::chrono::steady_clock::now() < patience) {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  }
  CHECK(engine.decoder().framesStored() > before);
  done = true;
  asking.join();
  CHECK(session.close() == "");
}
