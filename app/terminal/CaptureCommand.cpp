#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <system_error>

#include "Chain.h"
#include "Commands.h"
#include "Console.h"
#include "Failure.h"
#include "Numbers.h"

namespace ovka::terminal {
namespace {

using std::chrono::nanoseconds;

/// How often the recording looks whether the disk still takes its bytes.
constexpr nanoseconds kLook = std::chrono::milliseconds(200);

void report(const LiveSession& session, const std::string& file, nanoseconds elapsed) {
  std::fprintf(stderr, "%s: %llu bytes in %s", file.c_str(),
               static_cast<unsigned long long>(session.captureBytes()),
               clockText(std::chrono::duration<double>(elapsed).count()).c_str());
  if (session.captureLostBlocks() > 0) {
    std::fprintf(stderr, ", %llu blocks lost because the disk was too slow",
                 static_cast<unsigned long long>(session.captureLostBlocks()));
  }
  std::fputc('\n', stderr);
}

}  // namespace

void runCapture(const Arguments& arguments) {
  StopSignals stop;
  Console console(arguments.given("verbose") ? Console::Show::All : Console::Show::Important);
  LiveChoice choice = liveChoiceOf(arguments);
  choice.capture = arguments.positional(0);
  choice.overwriteCapture = arguments.given("force");
  LiveChain chain(choice);
  console.started();
  const nanoseconds end(static_cast<std::int64_t>(arguments.number("seconds").value_or(1e9) * 1e9));
  while (!stop.stopped() && chain.elapsed() < end) {
    chain.runTo(std::min(end, chain.elapsed() + kLook), stop);
    if (const int error = chain.session().captureFailure(); error != 0) {
      chain.session().close();
      throw Failure(ExitCode::Output, "cannot write " + choice.capture + ": " +
                                          std::generic_category().message(error) +
                                          "; what is on disk can be read");
    }
  }
  const nanoseconds elapsed = chain.elapsed();
  chain.finish();
  report(chain.session(), choice.capture, elapsed);
}

}  // namespace ovka::terminal
