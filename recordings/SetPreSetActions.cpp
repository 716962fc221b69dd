#include <array>
#include <string>

#include "SetPreSet.h"

namespace ovka {

void SetPreSet::addActions(const AddAction& add) {
  for (const PresetSwitch& row : kPresetSwitches) {
    for (const SwitchSide side : {SwitchSide::Open, SwitchSide::Save}) {
      const bool opening = side == SwitchSide::Open;
      add("select" + std::string(opening ? row.open : row.save),
          (opening ? "when opening: " : "when saving: ") + std::string(row.meaning),
          [this, side, which = row.which](std::int32_t sender) {
            switches_.set(side, which, sender != 0);
          });
    }
  }
  struct Command {
    std::string_view selector;
    std::string_view meaning;
    void (SetPreSet::*method)();
  };
  const std::array<Command, 12> commands{{
      {"loadPreference:", "loads the preset, after asking", &SetPreSet::loadPreference},
      {"selectOpen", "loads the preset, after asking", &SetPreSet::selectOpen},
      {"savePreference:", "saves the preset, after asking", &SetPreSet::savePreference},
      {"selectSave", "saves the preset, after asking", &SetPreSet::selectSave},
      {"savePreSetPreference:", "saves the front document", &SetPreSet::savePreSetPreference},
      {"selectSaveNOmessage", "saves the front document", &SetPreSet::selectSaveNOmessage},
      {"SevDevConfig1:", "opens and saves channel 1", &SetPreSet::SevDevConfig1},
      {"SevDevConfig2:", "opens and saves channels 1 and 2", &SetPreSet::SevDevConfig2},
      {"SevDevConfig3:", "opens and saves channels 1 to 3", &SetPreSet::SevDevConfig3},
      {"SevDevConfig4:", "opens and saves channels 1 to 4", &SetPreSet::SevDevConfig4},
      {"outputPathChanged:", "takes the preset's name from its field",
       &SetPreSet::outputPathChanged},
      {"setPortONandLoadPrefAction:", "loads the port's preset and switches the port on",
       &SetPreSet::setPortONandLoadPrefAction},
  }};
  for (const Command& command : commands) {
    add(command.selector, command.meaning,
        [this, method = command.method](std::int32_t /*sender*/) { (this->*method)(); });
  }
  add("setPortONAction:", "1: switches the input port on, 0: off",
      [this](std::int32_t sender) { setPortONAction(sender); });
}

}  // namespace ovka
