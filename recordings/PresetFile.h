#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "DocumentTypes.h"
#include "Files.h"
#include "Folders.h"
#include "PropertyList.h"

namespace ovka {

/// The folder of presets, as the system names it.
inline constexpr std::string_view kPresetFolder = "~/Library/Preferences/";
/// The default preset, which is also the port preset.
inline constexpr std::string_view kDefaultPresetName = "com.lumetrabox.OVKA.prefs.plist";
/// The preset that is loaded with the port.
inline constexpr std::string_view kPortOnPresetName = "com.lumetrabox.OVKA5.prefs.plist";

/// The path of a preset: a bare name lies in the folder of presets, anything with a "/" is a path.
[[nodiscard]] std::string presetPath(std::string_view name);

/// Reads a preset whole and checks that every key the system knows holds what it must, so that
/// nothing of a damaged file is applied. False: `*error` says what, where and what to do. Samples
/// of a document are left out. The main thread.
[[nodiscard]] bool readPresetFile(Files& files, const Folders& folders, const std::string& path,
                                  PropertyList* preset, DocumentError* error);

/// Whether there is a file of that name.
[[nodiscard]] bool presetExists(Files& files, const Folders& folders, const std::string& path);

/// An entry of a preset, for the person.
struct PresetEntry {
  std::string key;        ///< "OVKA4Device"
  std::size_t index = 0;  ///< in the key's array; 0 for a single text
  std::string name;       ///< "SelectDevice"; empty when nobody here knows the entry
  std::string text;
};
/// Everything in a preset but the counts, in the order of the file.
[[nodiscard]] std::vector<PresetEntry> describePreset(const PropertyList& preset);

}  // namespace ovka
