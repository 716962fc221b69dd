#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "EngineGroups.h"
#include "SettingsRegistry.h"

namespace ovka {

/// The settings registry as presets and documents reach it.
class SettingsByName final : public NamedSettings {
 public:
  explicit SettingsByName(const SettingsRegistry& registry) : registry_(registry) {}

  [[nodiscard]] std::optional<double> value(std::string_view name) const override {
    const std::optional<Setting> setting = registry_.value(name);
    if (!setting) return std::nullopt;
    return setting->get();
  }

  [[nodiscard]] std::string assign(std::string_view name, double value) override {
    const std::optional<Setting> setting = registry_.value(name);
    if (!setting) return "there is no setting of this name";
    // Codes of letters only; anything else is no text that a setting could have.
    if (setting->kind == Setting::Kind::Character && (value < '!' || value > '~')) {
      return "it takes " + SettingsRegistry::range(*setting);
    }
    return registry_.assign(std::string(name) + "=" + SettingsRegistry::format(*setting, value));
  }

 private:
  const SettingsRegistry& registry_;
};

}  // namespace ovka
