#include "LiveSnapshot.h"

namespace ovka::terminal {

std::string lossHint(const std::vector<LossCount>& losses, bool fixedFraming) {
  if (fixedFraming) return {};
  for (const LossCount& loss : losses) {
    if (loss.count > 0 && (loss.name == "wrongLengthLines" || loss.name == "longLines"))
      return "blocks end inside lines; --set FixedFramingX=1 keeps all";
  }
  return {};
}

}  // namespace ovka::terminal
