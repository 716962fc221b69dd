#include <chrono>
#include <doctest/doctest.h>
#include <functional>
#include <thread>
#include <vector>

#include "CapturedPrint.h"
#include "LiveSession.h"
#include "RecordingTransport.h"

using namespace ovka;

namespace {

/// Waits for something that other threads bring about, as long as a loaded machine may need.
bool comes(const std::function<bool()>& there) {
  const auto patience = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (!there() && std::chrono::steady_clock::now() < patience)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  return there();
}

}  // namespace

TEST_CASE("in the performance profile messages follow data, and their age is measured") {
  const testing::CapturedPrint quiet;
  testing::RecordingTransport transport;
  transport.addDestination("A");
  const MidiMachine midi{{&transport}, nullptr, nullptr, {}, {}};
  LiveChoice choice;
  choice.demo = true;
  choice.midi = &midi;
  // Controllers of band values, as often as possible.
  choice.assignments = {"FixedFramingX=1", "PerformanceProfileX=1", "MIDIoutONEX[0]=1",
                        "ONInputEX[0]=1",  "SendMIDItimingEX[0]=0", "NoteOffOnEX[0]=0",
                        "ControlEX[0]=1"};
  LiveSession session;
  const LiveSession::Opened opened = session.open(choice);
  REQUIRE_MESSAGE(opened.explanation.empty(), opened.explanation);
  LatencyMeter& ages = session.engine().midi().notes().sampleAges();
  CHECK(comes([&] { return ages.count() > 200; }));
  CHECK(ages.median() > 0);
  CHECK(ages.max() >= ages.percentile(0.99));
  CHECK(comes([&] { return transport.sent().size() > 200; }));
  // Once there is something to analyse, the messages of a band differ from those before.
  CHECK(comes([&] {
    const std::vector<testing::SentMidi> sent = transport.sent();
    for (std::size_t i = 8; i < sent.size(); ++i) {
      if (sent[i].bytes != sent[i - 8].bytes) return true;
    }
    return false;
  }));

  REQUIRE(session.engine().assign("setPauseX=1") == "");
  CHECK(session.close() == "");
  CHECK(transport.sounding().empty());
}
