#include "PresetFile.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <system_error>

#include "DocumentIndex.h"
#include "EngineGroups.h"
#include "InformationRows.h"
#include "SettingsGroups.h"

namespace ovka {
namespace {

constexpr std::string_view kInformationKey = "OVKA4data";
constexpr std::array<std::string_view, 6> kTextKeys{"OVKA5",
                                                    "OVKAautoPortON",
                                                    "OVKAautoPortONfullpassName",
                                                    "OVKAautoPortONmenuName",
                                                    "OVKAautoSerialPortONfullpassName",
                                                    "OVKAautoSerialPortONmenuName"};

[[nodiscard]] bool holdsTexts(const PropertyList& value) {
  const PropertyList::Array* array = value.array();
  return array != nullptr && !array->empty() &&
         std::all_of(array->begin(), array->end(),
                     [](const PropertyList& each) { return each.text() != nullptr; });
}

/// Empty, or what is wrong with a key that the system knows.
[[nodiscard]] std::string fault(const PropertyList& preset) {
  if (preset.find(kInformationKey) == nullptr) {
    return "there is no key \"OVKA4data\": this is no preset";
  }
  for (const PropertyList::Entry& entry : *preset.dictionary()) {
    const bool group = std::any_of(kSettingsGroups.begin(), kSettingsGroups.end(),
                                   [&](const auto& kind) { return kind.key == entry.key; });
    if ((group || entry.key == kInformationKey) && !holdsTexts(entry.value)) {
      return "the key \"" + entry.key + "\" must hold an array of texts";
    }
    const bool text = std::find(kTextKeys.begin(), kTextKeys.end(), entry.key) != kTextKeys.end();
    if (text && entry.value.text() == nullptr) {
      return "the key \"" + entry.key + "\" must hold a text";
    }
  }
  return {};
}

[[nodiscard]] std::string nameOf(std::string_view key, std::size_t index) {
  if (key == kInformationKey && index < kInformationRows.size()) {
    return std::string(kInformationRows[index].meaning);
  }
  const std::span<const EngineRow> rows = engineRows(key);
  return index >= 1 && index <= rows.size() ? std::string(rows[index - 1].name) : std::string();
}

}  // namespace

std::string presetPath(std::string_view name) {
  if (name.empty()) name = kDefaultPresetName;
  if (name.find('/') != std::string_view::npos) return std::string(name);
  return std::string(kPresetFolder) + std::string(name);
}

bool presetExists(Files& files, const Folders& folders, const std::string& path) {
  int code = 0;
  return files.read(folders.resolve(path), &code) != nullptr || code != ENOENT;
}

bool readPresetFile(Files& files, const Folders& folders, const std::string& path,
                    PropertyList* preset, DocumentError* error) {
  *error = {};
  const std::string place = "\"" + folders.resolve(path) + "\"";
  int code = 0;
  const auto file = files.read(folders.resolve(path), &code);
  if (file == nullptr) {
    error->detail = place + ": " + std::generic_category().message(code);
    if (code == ENOENT) error->detail += "; save a preset under this name first";
    return false;
  }
  DocumentIndex index;
  PropertyListError problem;
  if (!readDocumentIndex(*file, &index, &problem)) {
    error->detail = place + ", " + problem.describe();
    return false;
  }
  if (const std::string wrong = fault(index.list); !wrong.empty()) {
    error->detail = place + ": " + wrong + "; save the preset again";
    return false;
  }
  *preset = std::move(index.list);
  return true;
}

std::vector<PresetEntry> describePreset(const PropertyList& preset) {
  std::vector<PresetEntry> entries;
  if (preset.dictionary() == nullptr) return entries;
  for (const PropertyList::Entry& entry : *preset.dictionary()) {
    if (const std::string* text = entry.value.text()) {
      entries.push_back({entry.key, 0, {}, *text});
    }
    const PropertyList::Array* array = entry.value.array();
    for (std::size_t i = 1; array != nullptr && i < array->size(); ++i) {
      const std::string* text = (*array)[i].text();
      if (text != nullptr) entries.push_back({entry.key, i, nameOf(entry.key, i), *text});
    }
  }
  return entries;
}

}  // namespace ovka
