#pragma once

#include <functional>
#include <string>

#include "OVKA4DrawDocument.h"

namespace ovka {

using PortPreset = OVKA4DrawDocument::PortPreset;

/// What presets ask of the application. The main thread, but for onMainThread().
class PresetShell {
 public:
  virtual ~PresetShell() = default;
  /// Runs a task on the main thread: at once when that is the caller, else soon, and the caller
  /// does not wait. Any thread; no task runs once the panel is gone.
  virtual void onMainThread(std::function<void()> task) = 0;
  /// The text in the panel's output path field.
  [[nodiscard]] virtual std::string outputPathField() = 0;
  /// The ports that the port settings show; an empty path: none is chosen. `automaticOn` is
  /// ignored.
  [[nodiscard]] virtual PortPreset chosenPorts() = 0;
  /// Chooses these ports in the port settings and opens the input port; tells the user what fails.
  virtual void switchPortOn(const PortPreset& ports) = 0;
  virtual void switchPortOff() = 0;
};

}  // namespace ovka
