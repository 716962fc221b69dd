#include "LineGuard.h"

#include <utility>

#include "AmplifierVariables.h"
#include "BufferVariables.h"
#include "Print.h"

namespace ovka {

namespace {

bool acquiring() {
  return buffer::setPauseX == 0 && buffer::setRecModeX != 0;
}

}  // namespace

using LineState = AmplifierPorts::LineState;

void LineGuard::tick() {
  watchLines();
  // A save pauses, too, and what comes meanwhile belongs to the recording: only what is at rest for
  // two ticks is.
  const bool atRest = !acquiring() && amplifier::setNoPortAccess == 0;
  if (std::exchange(atRest_, atRest) && atRest) ports_.passOver();
  for (std::int32_t port = 1; port <= AmplifierPorts::kInputs; ++port) reopen(port);
}

void LineGuard::watchLines() {
  const std::int64_t now = clock_.nanoseconds();
  for (std::int32_t port = 1; port <= AmplifierPorts::kInputs; ++port) {
    if (GapMeter* gap = ports_.gaps(port)) acquiring() ? gap->missing(now) : gap->idle(now);
    if (ports_.hungUp(port)) lose(port, now);
  }
}

void LineGuard::lose(std::int32_t port, std::int64_t now) {
  const std::string path = ports_.linePath(port);
  if (!ports_.dropLine(port)) return;
  losses_.lineHangups.add(1);
  if (GapMeter* gap = ports_.gaps(port)) gap->lost(now);
  watches_[static_cast<std::size_t>(port - 1)] = {true, now, now};
  Print("Line %d (%s) hung up; what is recorded is kept, waiting for the line to come back.\n",
        port, path.c_str());
}

void LineGuard::reopen(std::int32_t port) {
  Watch& watch = watches_[static_cast<std::size_t>(port - 1)];
  const LineState state = ports_.lineState(port);
  if (state == LineState::Closed) watch.lost = false;
  if (state != LineState::Lost) return;
  const std::int64_t now = clock_.nanoseconds();
  if (!watch.lost) watch = {true, now, now};  // it broke while it was being opened
  if (now < watch.nextTry) return;
  // A greeting may take seconds: the other lines are watched meanwhile.
  const bool back = ports_.reopenLine(port, [this] { watchLines(); });
  const std::int64_t then = clock_.nanoseconds();
  watch.nextTry = then + kRetry.count();
  if (!back) return;
  watch.lost = false;
  Print("Line %d (%s) is back after %.1f s.\n", port, ports_.linePath(port).c_str(),
        static_cast<double>(then - watch.lostAt) / 1e9);
}

}  // namespace ovka
