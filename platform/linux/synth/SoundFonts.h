#pragma once

#include <span>
#include <string>

namespace ovka {

/// Where sound fonts are looked for, the preferred first.
[[nodiscard]] std::span<const char* const> soundFontPaths();

struct SoundFont {
  std::string path;         ///< empty: none
  std::string explanation;  ///< one line when there is none: what was looked for, what to do
};

/// The sound font to play: `wanted`, or with an empty `wanted` the first of soundFontPaths() that
/// can be read. A wanted one that cannot be read is not replaced by another.
[[nodiscard]] SoundFont findSoundFont(const std::string& wanted);

}  // namespace ovka
