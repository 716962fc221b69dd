#pragma once

#include <string_view>

namespace ovka {

/// Alerts and questions to the user. The main thread, but for beep(), which any thread may call.
class Dialogs {
 public:
  virtual ~Dialogs() = default;
  /// Shows a message and waits until it is dismissed.
  virtual void alert(std::string_view message, std::string_view detail) = 0;
  /// Asks; true for "OK", false for "CANCEL". Without a user to ask: false.
  [[nodiscard]] virtual bool confirm(std::string_view message, std::string_view detail) = 0;
  /// The system beep.
  virtual void beep() = 0;
};

}  // namespace ovka
