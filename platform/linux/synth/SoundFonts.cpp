#include "SoundFonts.h"

#include <array>
#include <cerrno>
#include <cstdint>
#include <fstream>
#include <string_view>
#include <system_error>

namespace ovka {
namespace {

// The small one first: it loads at once, and renderings sound the same on every machine that has
// it. fluid-soundfont-gs is not among them: it holds variations only and is silent by itself.
constexpr std::array<const char*, 7> kPaths{
    "/usr/share/sounds/sf2/TimGM6mb.sf2",      "/usr/share/sounds/sf2/FluidR3_GM.sf2",
    "/usr/share/sounds/sf2/default-GM.sf2",    "/usr/share/sounds/sf3/default-GM.sf3",
    "/usr/share/soundfonts/FluidR3_GM.sf2",    "/usr/share/soundfonts/default.sf2",
    "/usr/local/share/sounds/sf2/default.sf2",
};

/// Empty, or why a file cannot be a sound font: unreadable, of another kind, cut off.
std::string fault(const std::string& path) {
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  std::array<char, 12> head{};
  if (!file.read(head.data(), head.size()) && errno != 0)
    return "cannot read the sound font " + path + ": " + std::generic_category().message(errno);
  const std::string_view start(head.data(), head.size());
  const bool riff = start.substr(0, 4) == "RIFF";
  if (!riff || (start.substr(8) != "sfbk" && start.substr(8) != "DLS "))
    return path + " is no sound font; choose an .sf2, .sf3 or .dls file";
  std::uint64_t length = 8;
  for (std::size_t i = 0; i < 4; ++i)
    length += std::uint64_t{static_cast<std::uint8_t>(head[4 + i])} << (8 * i);
  file.seekg(0, std::ios::end);
  if (static_cast<std::uint64_t>(file.tellg()) < length)
    return "the sound font " + path + " is cut off; install it anew or choose another";
  return {};
}

}  // namespace

std::span<const char* const> soundFontPaths() {
  return kPaths;
}

SoundFont findSoundFont(const std::string& wanted) {
  if (!wanted.empty()) {
    const std::string problem = fault(wanted);
    return {problem.empty() ? wanted : std::string(), problem};
  }
  for (const char* path : kPaths) {
    if (fault(path).empty()) return {path, {}};
  }
  return {{},
          "no sound font found for the synthesizer (looked for " + std::string(kPaths[0]) +
              " and others): install the package timgm6mb-soundfont, or choose a file"};
}

}  // namespace ovka
