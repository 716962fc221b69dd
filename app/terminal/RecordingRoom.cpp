#include "RecordingRoom.h"

#include <algorithm>
#include <cstdint>

#include "BufferVariables.h"

namespace ovka::terminal {

bool makeRoom(Engine& engine, std::string* problem) {
  problem->clear();
  const std::uint64_t capacity = buffer::maxploop;
  const auto point = static_cast<std::uint64_t>(std::max<std::int64_t>(buffer::ploop, 0));
  const std::uint64_t speed = buffer::SampleSpeed;
  if (buffer::setLoopModeX == 1 || point + 300 * speed < capacity) return true;
  if (capacity < buffer::MAXbuffer) {
    const std::uint64_t wanted = std::min(capacity + 3600 * speed, buffer::MAXbuffer);
    static_cast<void>(engine.assign("maxploop=" + std::to_string(wanted)));
    if (buffer::maxploop > capacity) return true;
    *problem = "there is no memory for more than " + std::to_string(capacity) + " points";
  }
  return point + 1 < capacity;
}

}  // namespace ovka::terminal
