#pragma once

#include <cstdint>

#include "Shared.h"

/// Flags and counters of the acquisition threads.
namespace ovka::threads {

// name, default: meaning (unit); writer.
/// 1: the acquisition threads are still to be started; initializeThred.
inline constinit Shared<std::int32_t> firstTimeRun{1};
/// 1: the network receive thread is still to be started; initializeThredReadUDP.
inline constinit Shared<std::int32_t> firstTimeRunUDP{1};
/// Period of the data backups (minutes, 0 or less: off); the user.
inline constinit Shared<std::int32_t> timeMX{0};
/// Period of the preset saves (minutes, 0 or less: off); the user.
inline constinit Shared<std::int32_t> timeMXPreSet{0};
/// Minutes since the last data backup; the backup thread.
inline constinit Shared<std::int32_t> BackupTimer{0};
/// Minutes since the last preset save; the backup thread.
inline constinit Shared<std::int32_t> BackupTimerPreSet{0};
/// 1: the first preset save is still due; the backup thread.
inline constinit Shared<std::int32_t> firstTimePreSet{1};
/// 1: the first command-input port is open; the serial outputs.
inline constinit Shared<std::int32_t> openPort5{0};
/// 1: the second command-input port is open; the serial outputs.
inline constinit Shared<std::int32_t> openPort6{0};
/// 1: the third command-input port is open; the serial outputs.
inline constinit Shared<std::int32_t> openPort7{0};
/// UDP port of the network receiver, 1 to 65535 (0: none chosen); the user.
inline constinit Shared<std::int32_t> PortNumberX{0};

/// Puts every variable back to its default.
void resetVariables();

}  // namespace ovka::threads
