#pragma once

#include <cstdint>

#include "Shared.h"

/// Choices of the application that the acquisition threads ask for.
namespace ovka::app {

// name, default: meaning (unit); writer.
/// Index of the publish rate: 0 (1 a second) to 6 (100 a second); the user.
inline constinit Shared<std::int32_t> setDistributeTimingX{5};
/// Index of the serial-output rate: 0 (every 4 s) to 10 (every 0.01 s); the user.
inline constinit Shared<std::int32_t> SerialOutTimingPX{2};
/// 1: an automatic data save waits for its dialog to be confirmed; the save.
inline constinit Shared<std::int32_t> SetStartAutoSaveProcessX{0};
/// 1: an automatic movie save waits for its dialog to be confirmed; the save.
inline constinit Shared<std::int32_t> SetStartAutoSaveMovieX{0};
/// 1: the port is to be reopened by itself; reading errors while a port is opened.
inline constinit Shared<std::int32_t> autoReONportX{0};

/// Puts every variable back to its default.
void resetVariables();

}  // namespace ovka::app
