#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "BufferVariables.h"
#include "Chain.h"
#include "Commands.h"
#include "Console.h"
#include "EngineReader.h"
#include "Failure.h"
#include "FixedOutputs.h"
#include "Output.h"
#include "StopSignals.h"

namespace ovka::terminal {
namespace {

using std::chrono::nanoseconds;

/// Prints every sample point once, in the order in which the frames came, while a replay goes on.
class SamplePrinter {
 public:
  SamplePrinter(SampleStore& store, bool read) : store_(store), read_(read) {
    appendDecodeHeader(output_.text());
  }

  void printNew() {
    const std::int64_t now = buffer::ploop;
    if (now < next_) {  // the loop began again
      print(static_cast<std::int64_t>(buffer::maxploop.get()));
      next_ = buffer::ploopStart;
    }
    print(now);
  }
  void finish() { output_.flush(); }

 private:
  void print(std::int64_t end) {
    for (; next_ < end; ++next_) {
      if (read_) {
        std::array<double, 5> values{};
        for (std::int32_t i = 0; i < 5; ++i)
          values[static_cast<std::size_t>(i)] = store_.getIntFromBuffer(i, next_);
        appendReadRow(output_.text(), next_, values);
      } else {
        std::array<std::int32_t, 5> values{};
        for (std::int32_t i = 0; i < 5; ++i)
          values[static_cast<std::size_t>(i)] = store_.storedValue(i, next_);
        appendDecodeRow(output_.text(), next_, values);
      }
      output_.flushWhenLarge();
    }
  }

  SampleStore& store_;
  bool read_;
  Output output_;
  std::int64_t next_ = 0;
};

Console::Show showOf(const Arguments& arguments) {
  return arguments.given("verbose") ? Console::Show::All : Console::Show::Important;
}

/// The recording stops at its capacity; whoever reads it out must know.
void warnWhenFull() {
  if (buffer::setLoopModeX == 1 ||
      buffer::ploop < static_cast<std::int64_t>(buffer::maxploop.get()))
    return;
  std::fprintf(stderr,
               "ovka: the recording was full at point %lld and stopped there; --set maxploop=N "
               "makes room\n",
               static_cast<long long>(buffer::ploop.get()));
}

}  // namespace

void runDecode(const Arguments& arguments) {
  StopSignals stop;
  Console console(showOf(arguments));
  ReplayChain chain(arguments.positional(0), assignmentsOf(arguments));
  console.started();
  SamplePrinter printer(chain.engine().store(), arguments.given("read"));
  bool more = true;
  while (more && !stop.stopped()) {
    more = chain.runTo(chain.elapsed() + std::chrono::milliseconds(100), stop);
    printer.printNew();
  }
  printer.finish();
  warnWhenFull();
  if (!stop.stopped()) chain.finish();
}

void runAnalyse(const Arguments& arguments) {
  StopSignals stop;
  Console console(showOf(arguments));
  ReplayChain chain(arguments.positional(0), assignmentsOf(arguments));
  console.started();
  while (!stop.stopped() && chain.runTo(chain.elapsed() + std::chrono::seconds(1), stop)) {
  }
  if (stop.stopped()) return;
  const std::int64_t recorded = buffer::ploop;
  Output output;
  EngineReader reader(chain.engine(), chain.source());
  for (const std::string& text : arguments.all("at")) {
    const std::int64_t point = readInteger(text).value_or(0);
    if (point > recorded && buffer::setLoopModeX == 0) {
      throw Failure(ExitCode::Usage, "'--at " + text + "' lies beyond the capture, which gives " +
                                         std::to_string(recorded) + " points");
    }
    PointAnalysis analysis;
    reader.analyse(point, arguments.given("coherence"), analysis);
    appendAnalysisJson(output.text(), analysis);
    output.flush();
  }
  warnWhenFull();
  chain.finish();
}

}  // namespace ovka::terminal
