#pragma once

#include "../document/DocumentFixture.h"
#include "PropertyListReader.h"
#include "SetPreSet.h"

namespace ovka::testing {

/// The application as presets see it. Tasks for the main thread wait while `away` is set.
class FakePresetShell final : public PresetShell {
 public:
  CallLog log;
  PortPreset chosen;
  std::string field;
  bool away = false;
  std::vector<std::function<void()>> waiting;

  void onMainThread(std::function<void()> task) override {
    if (!away) return task();
    waiting.push_back(std::move(task));
  }
  void runWaiting() {
    for (const auto& task : std::exchange(waiting, {})) task();
  }
  std::string outputPathField() override { return field; }
  PortPreset chosenPorts() override { return chosen; }
  void switchPortOn(const PortPreset& ports) override {
    log.record("on " + ports.path + "|" + ports.menuName + "|" + ports.serialOutPath);
  }
  void switchPortOff() override { log.record("off"); }
};

/// The panel in a session without an engine: groups keep their texts.
struct PresetBench {
  Session s;
  FakePresetShell shell;
  SetPreSet panel{s.services, shell};

  [[nodiscard]] static std::string path(std::string_view name = kDefaultPresetName) {
    return std::string(kPresetFolder) + std::string(name);
  }
  /// Empty, or the error's detail.
  [[nodiscard]] std::string load(std::string_view text) {
    s.files.contents[path("test")] = std::string(text);
    DocumentError error;
    if (panel.openPreset("test", &error)) return {};
    return error.detail.empty() ? "no detail" : error.detail;
  }
  [[nodiscard]] PropertyList saved() {
    PropertyList list;
    PropertyListError error;
    if (!panel.savePreset("saved")) return "not written";
    if (!readPropertyList(s.files.contents[path("saved")], &list, &error)) return error.describe();
    return list;
  }
  /// Everything that a preset could change here, as text.
  [[nodiscard]] std::string state() {
    std::string all;
    for (std::size_t i = 0; i < kInformationEntries; ++i)
      all += s.information.getOVKA4Data(i) + "|";
    for (std::size_t i = 0; i < kSettingsGroups.size(); ++i) {
      for (const std::string& text : s.groups.at(i).texts()) all += text + "|";
    }
    for (const PresetSwitch& row : kPresetSwitches) {
      all += s.switches.open.on(row.which) ? "1" : "0";
      all += s.switches.save.on(row.which) ? "1" : "0";
    }
    return all;
  }
};

}  // namespace ovka::testing
