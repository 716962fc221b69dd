#include <chrono>
#include <doctest/doctest.h>
#include <thread>

#include "BufferVariables.h"
#include "CapturedPrint.h"
#include "LiveSession.h"

using namespace ovka;
using namespace std::chrono_literals;

TEST_CASE("what comes while paused or playing is not recorded afterwards, and nothing is lost") {
  const testing::CapturedPrint quiet;
  LiveChoice choice;
  choice.demo = true;
  choice.assignments = {"SampleSpeed=240", "FixedFramingX=1"};
  LiveSession session;
  const LiveSession::Opened opened = session.open(choice);
  REQUIRE_MESSAGE(opened.explanation.empty(), opened.explanation);
  StreamDecoder& decoder = session.engine().decoder();
  const auto comes = [&decoder](std::int64_t frames) {
    const auto patience = std::chrono::steady_clock::now() + 60s;
    const std::int64_t wanted = decoder.framesStored() + frames;
    while (decoder.framesStored() < wanted && std::chrono::steady_clock::now() < patience)
      std::this_thread::sleep_for(1ms);
    return decoder.framesStored() >= wanted;
  };
  struct Away {
    const char* text;
    Shared<std::int32_t>& flag;
    std::int32_t away;
  };
  for (const Away& each :
       {Away{"paused", buffer::setPauseX, 1}, Away{"playing", buffer::setRecModeX, 0}}) {
    CAPTURE(each.text);
    REQUIRE(comes(100));
    const std::int32_t present = each.flag;
    each.flag = each.away;
    std::this_thread::sleep_for(1500ms);
    const std::int64_t before = decoder.framesStored();
    each.flag = present;
    const auto start = std::chrono::steady_clock::now();
    REQUIRE(comes(300));
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - start;
    const auto most = static_cast<std::int64_t>((took.count() + 0.75) * 240);
    CHECK(decoder.framesStored() - before < most);
  }
  for (const LossCause& cause : kLossCauses) {
    CAPTURE(cause.text);
    CHECK((session.engine().losses().*cause.count).get() == 0);
  }
}
