#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "BufferVariables.h"
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

/// What such a file holds.
struct CsvFacts {
  std::uint64_t rows = 0;
  std::int64_t first = 0;  ///< point
  std::int64_t last = 0;
  std::size_t channels = 0;  ///< columns behind the point
  std::array<std::int64_t, buffer::kChannels> lowest{};
  std::array<std::int64_t, buffer::kChannels> highest{};
};
/// Reads the file through. Throws Failure as readCsv does.
[[nodiscard]] CsvFacts factsOfCsv(Files& files, const std::string& path);

}  // namespace ovka::terminal
