#include "srtToLong.h"

namespace ovka {

std::int64_t srtToLong(std::string_view text) noexcept {
  constexpr int kPlaces = 18;
  std::int64_t result = 0;
  std::int64_t place = 1;
  int taken = 0;
  for (auto at = text.rbegin(); at != text.rend() && taken < kPlaces; ++at, ++taken, place *= 10) {
    if (*at >= '1' && *at <= '9') result += (*at - '0') * place;
  }
  return text.find('-') == std::string_view::npos ? result : -result;
}

}  // namespace ovka
