#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string>
#include <system_error>
#include <unistd.h>

#include "BufferVariables.h"
#include "Chain.h"
#include "Commands.h"
#include "Console.h"
#include "DocumentHost.h"
#include "Failure.h"
#include "FileKinds.h"
#include "Numbers.h"
#include "RecordingRescue.h"
#include "RecordingRoom.h"

namespace ovka::terminal {
namespace {

using std::chrono::nanoseconds;

constexpr nanoseconds kLook = std::chrono::milliseconds(200);

std::string bytesText(std::uint64_t bytes) {
  const auto value = static_cast<double>(bytes);
  if (value < 1e6) return readableNumber(value / 1e3, 5) + " kB";
  if (value < 1e9) return readableNumber(value / 1e6, 5) + " MB";
  return readableNumber(value / 1e9, 5) + " GB";
}

/// The state of a recording: rewritten in place on a terminal, else a line every `interval`.
class Progress {
 public:
  Progress(DocumentDesk& desk, nanoseconds interval) : desk_(desk), interval_(interval) {}

  void show(nanoseconds elapsed) {
    if (!terminal_ && elapsed < next_) return;
    next_ = elapsed + interval_;
    std::fprintf(stderr, terminal_ ? "\r%s\033[K" : "%s\n", line(elapsed).c_str());
    std::fflush(stderr);
    shown_ = true;
  }
  void end() const {
    if (terminal_ && shown_) std::fputc('\n', stderr);
  }

 private:
  std::string line(nanoseconds elapsed) const {
    const JournalStatus status = desk_.journal().status();
    std::string text = clockText(std::chrono::duration<double>(elapsed).count()) + "  " +
                       std::to_string(buffer::ploop - buffer::ploopStart) + " points, journal " +
                       bytesText(status.bytes);
    if (status.freeBytes) text += ", " + bytesText(*status.freeBytes) + " free";
    if (status.minutesLeft)
      text += " (" + std::to_string(*status.minutesLeft / 60) + " h " +
              std::to_string(*status.minutesLeft % 60) + " min)";
    if (status.error != 0)
      text += ", in memory only: " + std::generic_category().message(status.error);
    if (status.spaceLow) text += ", THE DISK IS NEARLY FULL";
    return text;
  }

  DocumentDesk& desk_;
  nanoseconds interval_;
  nanoseconds next_{0};
  bool terminal_ = isatty(STDERR_FILENO) == 1;
  bool shown_ = false;
};

/// Runs until the time is over, the person asks for the end or there is no more room.
void recordUntilEnd(LiveChain& chain, nanoseconds end, Progress& progress,
                    const StopSignals& stop) {
  std::string told;
  while (!stop.stopped() && chain.elapsed() < end) {
    chain.runTo(std::min(end, chain.elapsed() + kLook), stop);
    progress.show(chain.elapsed());
    std::string problem;
    const bool room = makeRoom(chain.engine(), &problem);
    if (!problem.empty() && problem != told) std::fprintf(stderr, "ovka: %s\n", problem.c_str());
    told = problem;
    if (room) continue;
    progress.end();
    std::fprintf(stderr, "ovka: the recording is full and ends here\n");
    return;
  }
  progress.end();
}

}  // namespace

void runRecord(const Arguments& arguments) {
  StopSignals stop;
  Console console(arguments.given("verbose") ? Console::Show::All : Console::Show::Important);
  const std::string file = arguments.positional(0);
  if (kindOfName(file) != FileKind::Document) {
    throw Failure(ExitCode::Usage, "'" + file + "' has the ending of another kind of file; 'ovka " +
                                       "record' writes documents (.ovkanote), 'ovka convert' " +
                                       "makes others of them");
  }
  DocumentHost host;
  checkWritable(host.files, file, arguments.given("force"));
  const DocumentMachine documents = host.recorder();
  LiveChoice choice = liveChoiceOf(arguments);
  choice.documents = &documents;
  LiveChain chain(choice);
  console.started();
  DocumentDesk& desk = *chain.engine().documents();
  if (arguments.given("remember")) rememberPort(desk);
  desk.panel().SevDevConfig4();  // a recording keeps every channel, whatever the configuration
  Progress progress(
      desk,
      nanoseconds(static_cast<std::int64_t>(arguments.number("interval").value_or(10) * 1e9)));
  const nanoseconds end(static_cast<std::int64_t>(arguments.number("seconds").value_or(1e9) * 1e9));
  recordUntilEnd(chain, end, progress, stop);
  static_cast<void>(desk.journal().flush());
  chain.finish();
  const JournalStatus last = desk.journal().status();
  if (last.wrapped) desk.straightenRecording();
  RecordingRescue(desk, host, stop).save(file, last.whole && buffer::ploop > 0);
  std::fprintf(stderr, "%s: %lld points, %s\n", file.c_str(),
               static_cast<long long>(buffer::ploop - buffer::ploopStart),
               clockText(static_cast<double>(buffer::ploop - buffer::ploopStart) /
                         static_cast<double>(buffer::SampleSpeed.get()))
                   .c_str());
}

}  // namespace ovka::terminal
