#include "DisplayVariables.h"

namespace ovka::display {

void resetVariables() {
  for (auto& gain : displayGainX) gain = 1.0F;
}

}  // namespace ovka::display
