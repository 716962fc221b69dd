#include <algorithm>
#include <cstdint>

#include "BufferVariables.h"
#include "DocumentDesk.h"
#include "Engine.h"
#include "RingOrder.h"

namespace ovka {

void DocumentDesk::playFrom(std::int64_t point) {
  engine_.annotations().pause();
  buffer::setRecModeX = kPlayback;
  engine_.annotations().seek(point);
  engine_.annotations().play();
  buffer::setPauseX = 0;
}

bool DocumentDesk::playLoop(std::int64_t first, std::int64_t end) {
  const std::int64_t last = std::min<std::int64_t>(
      static_cast<std::int64_t>(buffer::maxploop.get()), std::max<std::int64_t>(end, 0));
  if (first < 0 || last <= first) {
    engine_.annotations().loop(0, 0);
    return false;
  }
  engine_.annotations().loop(first, last);
  return true;
}

/// Points of the loop come one at a time: from the first, the range is open until its end is set.
void DocumentDesk::addPlaybackActions(ActionRegistry& to) {
  to.add("setPlayLoopFrom:", "playback repeats from this point on, once its end is set",
         [this](std::int32_t sender) { loopFrom_ = std::max(sender, 0); });
  to.add("setPlayLoopTo:", "playback goes back to the loop's first point here; 0 ends the loop",
         [this](std::int32_t sender) {
           if (playLoop(loopFrom_, sender) || sender <= 0) return;
           documents_.dialogs.alert("There is no loop to play.",
                                    "Its end must lie behind its first point, " +
                                        std::to_string(loopFrom_.get()) +
                                        ", and that in the recording.");
         });
}

void DocumentDesk::straightenRecording() {
  const std::scoped_lock guard(lock_);
  const std::int64_t first = buffer::ploopStart;
  const std::int64_t oldest = buffer::ploop;
  const auto end = static_cast<std::int64_t>(buffer::maxploop.get());
  if (oldest < first || oldest >= end) return;
  straightenRing(engine_.store(), first, oldest, end);
  for (const TimedText& text : engine_.annotations().list()) {
    if (oldest == first || text.point < first || text.point >= end) continue;
    const std::int64_t shift = text.point < oldest ? end - oldest : first - oldest;
    static_cast<void>(engine_.annotations().move(text.id, text.point + shift));
  }
  buffer::ploop = end;
  engine_.annotations().seek(end);
}

}  // namespace ovka
