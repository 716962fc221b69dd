#pragma once

#include <cstdint>
#include <string>

#include "Files.h"

namespace ovka::terminal {

/// What a file of the system holds.
enum class FileKind : std::uint8_t {
  Document,  ///< a Brain Note, reference data or preset: a property list
  Capture,
  Journal,
  Backups,  ///< a folder of CH0DATA.ovka to CH4DATA.ovka, or one of them
  OldRaw,   ///< .dat, .data: two channels of bytes behind a header
  OldText,  ///< .txt: numbers
  Csv,
  Pdf,
  Tiff,
  Unknown,
};

/// The kind of a file to read, by its first bytes, then by its name. Throws Failure
/// (ExitCode::BadInput) when there is nothing to read.
[[nodiscard]] FileKind kindOfFile(Files& files, const std::string& path);
/// The kind of a file to write, by its name; Document when the name says nothing else.
[[nodiscard]] FileKind kindOfName(const std::string& path);

/// The folder of a backup: the path itself, or that of the file.
[[nodiscard]] std::string backupFolderOf(const std::string& path);

/// Throws Failure (ExitCode::Output) when a file cannot be written, or is there and `overwrite` is
/// not set; leaves nothing behind.
void checkWritable(Files& files, const std::string& path, bool overwrite);

}  // namespace ovka::terminal
