#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "EngineGroups.h"
#include "OVKA4DrawDocument.h"
#include "PresetFile.h"
#include "PresetShell.h"
#include "PresetSwitches.h"

namespace ovka {

/// The preset panel: the switches of opening and saving, and the preset files. The main thread
/// unless a method says otherwise; the notifications that it listens to may be posted on any
/// thread.
class SetPreSet {
 public:
  /// Everything on, the default preset's name, listening. Reads no file. All of it outlives the
  /// panel; `groups` may be nullptr.
  SetPreSet(DocumentServices& services, PresetShell& shell, EngineGroups* groups = nullptr);
  ~SetPreSet();
  SetPreSet(const SetPreSet&) = delete;
  SetPreSet& operator=(const SetPreSet&) = delete;

  /// +sharedSetPreSet: the panel of the application.
  [[nodiscard]] static SetPreSet& sharedSetPreSet();

  // --- switches
  // -----------------------------------------------------------------------------------
  [[nodiscard]] PresetSwitches& switches() { return switches_; }
  /// A setter by its name ("setDisplay:", "setDisplaySave:"). False: there is none. Any thread.
  bool set(std::string_view setter, bool state) { return switches_.set(setter, state); }
  /// SevDevConfig1: to SevDevConfig4: exactly channels 1 to n on, in both sets. Any thread.
  void SevDevConfig1() { SevDevConfig(1); }
  void SevDevConfig2() { SevDevConfig(2); }
  void SevDevConfig3() { SevDevConfig(3); }
  void SevDevConfig4() { SevDevConfig(4); }

  // --- the preset file
  // ----------------------------------------------------------------------------
  /// outputPath: the name of the preset file.
  [[nodiscard]] const std::string& outputPath() const { return outputPath_; }
  /// setOutputPath: a file name in the folder of presets; an empty one is the default name. False:
  /// a name that no file can have (a "/", control characters, too long); nothing changes then.
  bool setOutputPath(std::string_view name);
  /// outputPathChanged: takes the name from the panel's field; one that cannot be is alerted.
  void outputPathChanged();

  /// loadPreference: and selectOpen: asks, then loads the preset at the output path; what is wrong
  /// with it is alerted.
  void loadPreference() { selectOpen(); }
  void selectOpen();
  /// savePreference: and selectSave: asks, then writes the preset at the output path, not
  /// atomically; a failure is not reported.
  void savePreference() { selectSave(); }
  void selectSave();
  /// savePreSetPreference: and selectSaveNOmessage: saves the front document without asking.
  void savePreSetPreference() { selectSaveNOmessage(); }
  void selectSaveNOmessage() { at_.shell.saveFrontDocument(); }

  /// Loads a preset without asking: a name in the folder of presets or a path. False: `*error` says
  /// why and nothing in force was changed.
  [[nodiscard]] bool openPreset(std::string_view nameOrPath, DocumentError* error);
  /// Writes a preset without asking. False: it was not written whole.
  [[nodiscard]] bool savePreset(std::string_view nameOrPath);
  /// What the last loading left as it was, and why, a line each.
  [[nodiscard]] const std::vector<std::string>& notes() const { return notes_; }

  /// The default preset at the start of the program, without asking; none there is no error. With
  /// `settings` false only the stored switch of the port set-up comes back.
  [[nodiscard]] bool loadAtStart(bool settings, DocumentError* error);

  // --- the port
  // -----------------------------------------------------------------------------------
  /// setPortONAction: 1: reads the port preset and switches the port on; a port that is chosen
  /// already goes before the remembered one. 0: switches it off.
  void setPortONAction(std::int32_t sender);
  /// setPortONandLoadPrefAction: asks whether to remember the chosen port, loads the preset of the
  /// port, switches the port on.
  void setPortONandLoadPrefAction();
  /// Switches the port on if its preset asks for that; at the start of the program. True: it did.
  bool switchPortOnAtStart();
  /// Whether a file that was opened asked for the port to be set up; asking clears it.
  [[nodiscard]] bool takePortSetup();
  /// Switches the port on if an opened file asked for it; after every opening of a document.
  void setUpPortIfAsked();
  /// Multi-application mode, as the last opened file that could set it asked for. Any thread.
  [[nodiscard]] bool multiApplicationMode() const { return multiApplicationMode_ != 0; }

  /// Every action of the panel: selector, meaning and what it does with the control's value.
  using AddAction = std::function<void(std::string_view selector, std::string_view meaning,
                                       std::function<void(std::int32_t sender)> perform)>;
  void addActions(const AddAction& add);

 private:
  void listen();
  void bindInformation();
  void SevDevConfig(std::int32_t channels);
  void report(const DocumentError& error);
  [[nodiscard]] PortPreset rememberedPorts();
  void switchPortOn(PortPreset chosen, const PortPreset& remembered);
  [[nodiscard]] static std::string defaultPath() { return presetPath(kDefaultPresetName); }

  DocumentServices& at_;
  PresetShell& shell_;
  EngineGroups* groups_;
  PresetSwitches switches_;
  std::string outputPath_{kDefaultPresetName};
  std::vector<std::string> notes_;
  Shared<std::int32_t> multiApplicationMode_{0};
  Shared<std::int32_t> portSetup_{0};
};

}  // namespace ovka
