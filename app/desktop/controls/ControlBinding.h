#pragma once

#include <QString>
#include <functional>
#include <string>
#include <string_view>

#include "Workbench.h"

namespace ovka::desktop {

/// A variable as a control shows and sets it, whether it belongs to the engine's registry or to the
/// views. The GUI thread; setting goes through the desk thread.
struct ControlBinding {
  std::function<double()> get;              ///< empty: there is no such variable
  std::function<void(const QString&)> set;  ///< a value as text
  double minimum = 0;
  double maximum = 0;
  bool real = false;
  bool character = false;  ///< values are letters

  [[nodiscard]] explicit operator bool() const { return static_cast<bool>(get); }
  /// The present value as the text that `set` takes.
  [[nodiscard]] QString text() const;
};

[[nodiscard]] ControlBinding bindControl(Workbench& bench, std::string_view name);

}  // namespace ovka::desktop
