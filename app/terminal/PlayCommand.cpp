#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <string>

#include "BufferVariables.h"
#include "Chain.h"
#include "Commands.h"
#include "Console.h"
#include "Failure.h"
#include "FileEngine.h"
#include "FileKinds.h"
#include "Presenter.h"
#include "TerminalScreen.h"

namespace ovka::terminal {
namespace {

using std::chrono::nanoseconds;

constexpr nanoseconds kStep = std::chrono::milliseconds(10);

/// A document played from a point on.
class PlayChain final : public Chain {
 public:
  PlayChain(FileEngine& files, std::string path, std::int64_t from, bool fast, bool loops)
      : files_(files), path_(std::move(path)), fast_(fast), loops_(loops), end_(buffer::ploop) {
    buffer::ploop = from;
    files_.desk().playFrom(from);
    start_ = files_.time().nanoseconds();
  }

  [[nodiscard]] Engine& engine() override { return files_.engine(); }
  [[nodiscard]] nanoseconds elapsed() const override {
    return nanoseconds(files_.time().nanoseconds() - start_);
  }
  bool runTo(nanoseconds target, const StopSignals& stop) override {
    while (elapsed() < target) {
      if (stop.stopped()) return true;
      if (atEnd()) return false;
      files_.time().advance(std::min(kStep, target - elapsed()));
      if (fast_) continue;
      const nanoseconds ahead = elapsed() - (std::chrono::steady_clock::now() - begun_);
      if (ahead > nanoseconds::zero()) stop.wait(ahead);
    }
    return !atEnd();
  }
  void finish() override {}
  [[nodiscard]] std::string source() const override { return path_; }

 private:
  /// The buffer ends with the recording, where playing stands still.
  [[nodiscard]] bool atEnd() const {
    return !loops_ && buffer::ploop >= end_ && buffer::setLoopModeX == 0;
  }

  FileEngine& files_;
  std::string path_;
  bool fast_;
  bool loops_;
  std::int64_t end_;
  std::int64_t start_ = 0;
  std::chrono::steady_clock::time_point begun_ = std::chrono::steady_clock::now();
};

/// The point so many seconds behind the start.
std::int64_t pointAt(double seconds) {
  const auto speed = static_cast<double>(buffer::SampleSpeed.get());
  return buffer::ploopStart + static_cast<std::int64_t>(std::llround(seconds * speed));
}

std::int64_t startOf(const Arguments& arguments, const std::string& path) {
  const double from = arguments.number("from").value_or(arguments.number("loop-from").value_or(0));
  const std::int64_t point = pointAt(from);
  if (buffer::ploop <= buffer::ploopStart)
    throw Failure(ExitCode::BadInput, path + " holds no samples");
  if (point >= buffer::ploop)
    throw Failure(ExitCode::Usage, "the start lies behind the end of " + path);
  return point;
}

/// Whether the line asks for a range that is played over and over; it is set then.
bool setLoop(const Arguments& arguments, DocumentDesk& desk, std::int64_t start) {
  if (!arguments.given("loop-from") && !arguments.given("loop-to")) return false;
  const std::int64_t first = pointAt(arguments.number("loop-from").value_or(0));
  const std::int64_t end =
      arguments.given("loop-to")
          ? std::min(pointAt(*arguments.number("loop-to")), buffer::ploop.get())
          : buffer::ploop.get();
  if (end <= first || start >= end) {
    throw Failure(ExitCode::Usage,
                  "'--loop-to' must lie behind '--loop-from' and behind the start of playing");
  }
  if (arguments.given("fast") && !arguments.given("seconds"))
    throw Failure(ExitCode::Usage, "a loop as fast as it goes needs an end: '--seconds'");
  return desk.playLoop(first, end);
}

Presentation::Form formOf(const Arguments& arguments) {
  if (arguments.given("json")) return Presentation::Form::Json;
  const bool screen =
      !arguments.given("plain") && !arguments.given("fast") && TerminalScreen::usable();
  return screen ? Presentation::Form::Screen : Presentation::Form::Lines;
}

}  // namespace

void runPlay(const Arguments& arguments) {
  StopSignals stop;
  const Presentation::Form form = formOf(arguments);
  Console console(form == Presentation::Form::Screen ? Console::Show::Nothing
                  : arguments.given("verbose")       ? Console::Show::All
                                                     : Console::Show::Important);
  const std::string& path = arguments.positional(0);
  DocumentHost host;
  if (kindOfFile(host.files, path) != FileKind::Document) {
    throw Failure(ExitCode::BadInput, path + " is no document; 'ovka convert' makes one of " +
                                          "captures and other files");
  }
  const DocumentMachine machine = host.filesOnly(host.folders);
  FileEngine files(machine, {});
  host.progress.begin("opening " + path);
  openDocument(files.desk(), path);
  host.progress.end();
  buffer::setLoopModeX = 0;  // a document recorded as a loop still has an end
  assignAll(files.engine(), assignmentsOf(arguments));
  const std::int64_t start = startOf(arguments, path);
  const bool loops = setLoop(arguments, files.desk(), start);
  PlayChain chain(files, path, start, arguments.given("fast"), loops);
  console.started();
  Presentation how;
  how.form = form;
  const auto duration = [&](const char* name, double preset) {
    return nanoseconds(static_cast<std::int64_t>(arguments.number(name).value_or(preset) * 1e9));
  };
  how.interval = duration("interval", 1);
  how.length = duration("seconds", 0);
  present(chain, how, stop, console);
}

}  // namespace ovka::terminal
