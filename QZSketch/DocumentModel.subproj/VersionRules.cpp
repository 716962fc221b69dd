#include "VersionRules.h"

#include "srtToLong.h"

namespace ovka {

std::int64_t versionNumber(std::string_view text) noexcept {
  const std::int64_t number = srtToLong(text);
  if (number <= 99999) return number;
  const std::int64_t a = number / 100;
  const std::int64_t b = a / 100;
  return b * 100 + (a - b * 100) * 10 + number % 10;
}

VersionRules VersionRules::of(std::int64_t version) noexcept {
  VersionRules rules;
  rules.multiApplicationMode = version > 40607;
  rules.recordedByteOrder = version > 40604;
  // The programs between these two went back to arrays of texts for a while.
  const bool textsAgain = version > 50313 && version < 50324;
  rules.dataBlocks = version > 40309 && !textsAgain;
  rules.textFactor = version < 40101 ? 4 : 1;
  return rules;
}

}  // namespace ovka
