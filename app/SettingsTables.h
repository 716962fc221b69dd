#pragma once

namespace ovka {

class SettingsRegistry;

// The process-wide variables of each room as rows of the registry; their values at the call become
// the defaults. What a change entails beyond the variable itself is added by the engine.
void addBufferSettings(SettingsRegistry& registry);
void addAmplifierSettings(SettingsRegistry& registry);
void addAmplifierStatus(SettingsRegistry& registry);
void addFFTSettings(SettingsRegistry& registry);
void addThreadSettings(SettingsRegistry& registry);
void addDisplaySettings(SettingsRegistry& registry);

}  // namespace ovka
