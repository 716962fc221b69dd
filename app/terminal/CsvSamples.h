#pragma once

#include <cstdint>
#include <string>

#include "Engine.h"
#include "Files.h"

namespace ovka::terminal {

/// Writes the recording as 'ovka decode' prints it: point,ch0,ch1,ch2,ch3,ch4 and the stored
/// integers. Throws Failure (ExitCode::Output); the old file stays then.
void writeCsv(Engine& engine, Files& files, const std::string& path);

/// Loads such a file: the points of its first column in rising order, missing ones as the buffer is
/// when it is empty; columns may be missing from the right. The current point ends behind the last.
/// Throws Failure (ExitCode::BadInput) with file, line and what is wrong.
void readCsv(Engine& engine, Files& files, const std::string& path);

}  // namespace ovka::terminal
