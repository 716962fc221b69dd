#pragma once

#include <span>
#include <string_view>

namespace ovka {

/// The set-up window as a mapping sees it. Controls are named by the selectors of their actions
/// ("changeLowFSlider3:"). Called on the thread that acts, the one of the tick among them: a view
/// only notes what it is told; it must not wait and must not call the mapping back.
class SetupView {
 public:
  virtual ~SetupView() = default;
  /// A control of the shown set-up has this value now: a number, a menu index or a switch.
  virtual void show(std::string_view control, double value) = 0;
  /// The choices of a pop-up.
  virtual void fill(std::string_view control, std::span<const std::string_view> choices) = 0;
};

/// No window.
class NoSetupView final : public SetupView {
 public:
  void show(std::string_view /*control*/, double /*value*/) override {}
  void fill(std::string_view /*control*/, std::span<const std::string_view> /*choices*/) override {}
};

}  // namespace ovka
