#include <utility>

#include "SetPreSet.h"

namespace ovka {

/// Empty when there is no port preset; a damaged one is alerted.
PortPreset SetPreSet::rememberedPorts() {
  if (!presetExists(at_.files, at_.folders, defaultPath())) return {};
  DocumentError error;
  PropertyList checked;
  PortPreset ports;
  if (readPresetFile(at_.files, at_.folders, defaultPath(), &checked, &error) &&
      OVKA4DrawDocument(at_).openDataForPortPreference(defaultPath(), &ports, &error)) {
    return ports;
  }
  report(error);
  return {};
}

void SetPreSet::switchPortOn(PortPreset chosen, const PortPreset& remembered) {
  if (chosen.path.empty()) {
    chosen.path = remembered.path;
    chosen.menuName = remembered.menuName;
  }
  if (chosen.serialOutPath.empty()) {
    chosen.serialOutPath = remembered.serialOutPath;
    chosen.serialOutMenuName = remembered.serialOutMenuName;
  }
  static_cast<void>(takePortSetup());
  shell_.switchPortOn(chosen);
}

void SetPreSet::setPortONAction(std::int32_t sender) {
  if (sender == 0) {
    shell_.switchPortOff();
    return;
  }
  // Reading the port preset brings back the device settings that belong to the remembered port; for
  // a port that the user has just chosen the settings in force are the right ones.
  PortPreset chosen = shell_.chosenPorts();
  const PortPreset remembered = chosen.path.empty() ? rememberedPorts() : PortPreset{};
  switchPortOn(std::move(chosen), remembered);
}

void SetPreSet::setPortONandLoadPrefAction() {
  PortPreset chosen = shell_.chosenPorts();
  PortPreset remembered;
  if (chosen.path.empty()) {
    remembered = rememberedPorts();
  } else if (at_.dialogs.confirm("Do you like Save Connection to PreSet ?",
                                 "Can not undo for this process.")) {
    chosen.automaticOn = true;
    static_cast<void>(OVKA4DrawDocument(at_).saveDataForPortPreference(defaultPath(), chosen));
  }
  DocumentError error;
  const bool loaded = openPreset(kPortOnPresetName, &error);
  switchPortOn(std::move(chosen), remembered);
  // Last, so that no open alert keeps the port waiting.
  if (!loaded) report(error);
}

bool SetPreSet::switchPortOnAtStart() {
  const PortPreset remembered = rememberedPorts();
  if (!remembered.automaticOn || remembered.path.empty()) return false;
  switchPortOn({}, remembered);
  return true;
}

bool SetPreSet::takePortSetup() {
  const bool asked = portSetup_ != 0;
  portSetup_ = 0;
  return asked;
}

void SetPreSet::setUpPortIfAsked() {
  if (takePortSetup()) setPortONAction(1);
}

}  // namespace ovka
