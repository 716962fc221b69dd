#include "Presenter.h"

#include <algorithm>
#include <string>

#include "BufferVariables.h"
#include "LiveView.h"
#include "Output.h"
#include "TerminalScreen.h"

namespace ovka::terminal {
namespace {

using std::chrono::nanoseconds;

/// Pictures a second: ten are calm and still follow the eye.
constexpr nanoseconds kFrame = std::chrono::milliseconds(100);
/// Half a picture: how long a key may wait.
constexpr nanoseconds kKeyWait = std::chrono::milliseconds(50);
constexpr std::size_t kNotices = 60;

bool atEnd(const Chain& chain, const Presentation& how) {
  return how.length.count() > 0 && chain.elapsed() >= how.length;
}

nanoseconds bounded(nanoseconds target, const Presentation& how) {
  return how.length.count() > 0 ? std::min(target, how.length) : target;
}

void presentLines(Chain& chain, const Presentation& how, StopSignals& stop) {
  EngineReader reader(chain.engine(), chain.source());
  Output output;
  nanoseconds next = how.interval;
  bool more = true;
  while (more && !stop.stopped() && !atEnd(chain, how)) {
    more = chain.runTo(bounded(std::min(next, chain.elapsed() + kFrame), how), stop);
    const nanoseconds now = chain.elapsed();
    // Between lines the reader looks now and then, so that the rate rests on many sightings. The
    // end gets a line of its own.
    if (now < next && more && !atEnd(chain, how)) {
      reader.look(now.count());
      continue;
    }
    const LiveSnapshot snapshot = reader.snapshot(now.count());
    if (how.form == Presentation::Form::Json) {
      appendLiveJson(output.text(), snapshot);
    } else {
      appendLiveLine(output.text(), snapshot);
    }
    output.flush();
    next += how.interval;
    if (next <= now) next = now + how.interval;
  }
}

/// What a key does to the system; false for the end.
bool obey(LiveKey key, LiveView& view, Engine& engine) {
  if (view.press(key)) return true;
  if (key == LiveKey::Pause) buffer::setPauseX = buffer::setPauseX == 1 ? 0 : 1;
  if (key == LiveKey::Loop) buffer::setLoopModeX = buffer::setLoopModeX == 1 ? 0 : 1;
  if (key == LiveKey::ResetCounters) engine.losses().reset();
  if (key == LiveKey::Panic) engine.midi().panic();
  return key != LiveKey::Quit;
}

void presentScreen(Chain& chain, const Presentation& how, StopSignals& stop,
                   const Console& console) {
  EngineReader reader(chain.engine(), chain.source());
  LiveView view(Look::ofEnvironment());
  TerminalScreen screen(stop);
  bool more = true;
  while (more && !stop.stopped() && !atEnd(chain, how)) {
    LiveSnapshot snapshot = reader.snapshot(chain.elapsed().count());
    snapshot.notices = console.log().last(kNotices);
    const TerminalScreen::Size size = screen.size();
    const double now = std::chrono::duration<double>(chain.elapsed()).count();
    if (!screen.draw(view.draw(snapshot, size.width, size.height, now).frame(view.look()))) return;
    const nanoseconds start = chain.elapsed();
    while (more && !stop.stopped() && chain.elapsed() < start + kFrame) {
      more = chain.runTo(bounded(std::min(start + kFrame, chain.elapsed() + kKeyWait), how), stop);
      const int key = screen.key(nanoseconds::zero());
      if (key < 0) return;
      if (key > 0 && !obey(liveKeyOf(static_cast<char>(key)), view, chain.engine())) return;
      if (key > 0 || atEnd(chain, how)) break;  // shown at once
    }
  }
}

}  // namespace

void present(Chain& chain, const Presentation& how, StopSignals& stop, const Console& console) {
  if (how.form == Presentation::Form::Screen) {
    presentScreen(chain, how, stop, console);
  } else {
    presentLines(chain, how, stop);
  }
}

}  // namespace ovka::terminal
