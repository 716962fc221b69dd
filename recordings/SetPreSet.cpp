#include "SetPreSet.h"

#include <algorithm>
#include <utility>

#include "BufferVariables.h"
#include "MaximumTime.h"
#include "NumberTexts.h"
#include "srtToLong.h"

namespace ovka {
namespace {

/// Indexes of the information list.
constexpr std::size_t kPortSetup = 75;
constexpr std::size_t kMultiApplication = 76;

/// Longest file name of the file systems in use (bytes).
constexpr std::size_t kLongestName = 255;

[[nodiscard]] bool canBeFileName(std::string_view name) {
  if (name.size() > kLongestName || name == "." || name == "..") return false;
  return std::none_of(name.begin(), name.end(), [](char each) {
    return each == '/' || static_cast<unsigned char>(each) < 32 || each == 127;
  });
}

}  // namespace

SetPreSet::SetPreSet(DocumentServices& services, PresetShell& shell, EngineGroups* groups)
    : at_(services), shell_(shell), groups_(groups), switches_(services.switches) {
  switches_.startUp(false);
  bindInformation();
  listen();
}

SetPreSet::~SetPreSet() {
  at_.notifications.removeObserver(this);
}

void SetPreSet::listen() {
  const auto observe = [this](std::string_view name, void (SetPreSet::*method)(), bool onMain) {
    at_.notifications.addObserver(this, name, [this, method, onMain] {
      if (onMain) {
        shell_.onMainThread([this, method] { (this->*method)(); });
      } else {
        (this->*method)();
      }
    });
  };
  // Files and questions belong to the main thread; the backup thread posts the third of them.
  observe("loadPreference", &SetPreSet::loadPreference, true);
  observe("savePreference", &SetPreSet::savePreference, true);
  observe("savePreSetPreference", &SetPreSet::savePreSetPreference, true);
  observe("SevDevConfig1", &SetPreSet::SevDevConfig1, false);
  observe("SevDevConfig2", &SetPreSet::SevDevConfig2, false);
  observe("SevDevConfig3", &SetPreSet::SevDevConfig3, false);
  observe("SevDevConfig4", &SetPreSet::SevDevConfig4, false);
}

/// The two entries whose switches have other names than they.
void SetPreSet::bindInformation() {
  at_.information.bind(
      kPortSetup,
      [this] {
        return integerText(switches_.on(SwitchSide::Save, DocumentSwitch::AutoPortSetupWhenOpen));
      },
      [this](const std::string& text) {
        const bool asked = srtToLong(text) != 0;
        switches_.set(SwitchSide::Save, DocumentSwitch::AutoPortSetupWhenOpen, asked);
        if (asked) portSetup_ = 1;
      });
  at_.information.bind(
      kMultiApplication,
      [this] {
        const bool kept = switches_.on(SwitchSide::Save, DocumentSwitch::MultiApModeWhenOpen);
        return integerText(kept ? multiApplicationMode_.get() : 0);
      },
      [this](const std::string& text) { multiApplicationMode_ = srtToLong(text) != 0 ? 1 : 0; });
}

void SetPreSet::SevDevConfig(std::int32_t channels) {
  switches_.setChannels(SwitchSide::Open, channels);
  switches_.setChannels(SwitchSide::Save, channels);
}

bool SetPreSet::setOutputPath(std::string_view name) {
  if (!canBeFileName(name)) return false;
  outputPath_ = name.empty() ? kDefaultPresetName : name;
  return true;
}

void SetPreSet::outputPathChanged() {
  const std::string name = shell_.outputPathField();
  if (setOutputPath(name)) return;
  at_.dialogs.alert("A preset cannot have this name.",
                    "It is the name of a file in the folder of presets: at most 255 bytes, without "
                    "\"/\" and control characters. \"" +
                        outputPath_ + "\" stays.");
}

void SetPreSet::report(const DocumentError& error) {
  at_.dialogs.alert(error.description, error.reason + "\n" + error.detail);
}

void SetPreSet::selectOpen() {
  if (!at_.dialogs.confirm("Are you sure to load a preference file for current setup ?", {})) {
    return;
  }
  DocumentError error;
  if (!openPreset(outputPath_, &error)) {
    report(error);
    return;
  }
  setUpPortIfAsked();
}

void SetPreSet::selectSave() {
  if (!at_.dialogs.confirm("Are you sure to save a preference file as current setup ?", {})) {
    return;
  }
  static_cast<void>(savePreset(outputPath_));
}

bool SetPreSet::openPreset(std::string_view nameOrPath, DocumentError* error) {
  const std::string path = presetPath(nameOrPath);
  notes_.clear();
  if (groups_ != nullptr) static_cast<void>(groups_->takeProblems());  // of documents opened before
  PropertyList checked;
  if (!readPresetFile(at_.files, at_.folders, path, &checked, error)) return false;
  const std::int32_t maximumTime = buffer::MaxTimeActionX;
  OVKA4DrawDocument document(at_);
  if (!document.openDataForAllPreference(path, error)) return false;
  if (std::string note = takeMaximumTime(at_.store, maximumTime); !note.empty())
    notes_.push_back(std::move(note));
  if (groups_ == nullptr) return true;
  for (std::string& problem : groups_->takeProblems()) notes_.push_back(std::move(problem));
  return true;
}

bool SetPreSet::savePreset(std::string_view nameOrPath) {
  return OVKA4DrawDocument(at_).saveDataForAllPreference(presetPath(nameOrPath));
}

bool SetPreSet::loadAtStart(bool settings, DocumentError* error) {
  notes_.clear();
  *error = {};
  if (!presetExists(at_.files, at_.folders, defaultPath())) return true;
  if (settings) return openPreset(kDefaultPresetName, error);
  PropertyList preset;
  if (!readPresetFile(at_.files, at_.folders, defaultPath(), &preset, error)) return false;
  std::vector<std::string> texts;
  if (textsOf(preset.find("OVKA4data"), &texts) && texts.size() > kPortSetup) {
    switches_.set(SwitchSide::Save, DocumentSwitch::AutoPortSetupWhenOpen,
                  srtToLong(texts[kPortSetup]) != 0);
  }
  return true;
}

}  // namespace ovka
