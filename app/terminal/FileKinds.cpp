#include "FileKinds.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <string_view>
#include <system_error>
#include <vector>

#include "CaptureFormat.h"
#include "Failure.h"
#include "JournalFormat.h"

namespace ovka::terminal {
namespace {

std::string endingOf(const std::string& path) {
  const std::size_t dot = path.rfind('.');
  const std::size_t slash = path.rfind('/');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return {};
  std::string ending = path.substr(dot + 1);
  std::transform(ending.begin(), ending.end(), ending.begin(),
                 [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
  return ending;
}

bool isBackupName(const std::string& path) {
  const std::string name = path.substr(path.rfind('/') + 1);
  return name.size() == 12 && name.starts_with("CH") && name.ends_with("DATA.ovka") &&
         name[2] >= '0' && name[2] <= '4';
}

template <typename Magic>
bool begins(std::string_view text, const Magic& magic) {
  return text.size() >= magic.size() &&
         std::equal(magic.begin(), magic.end(), text.begin(), [](std::uint8_t byte, char letter) {
           return byte == static_cast<std::uint8_t>(letter);
         });
}

/// Whether a property list may begin here: a bracket behind white space and comments.
bool mayBeList(std::string_view text) {
  const std::size_t at = text.find_first_not_of(" \t\r\n");
  return at != std::string_view::npos && (text[at] == '{' || text.substr(at).starts_with("/*") ||
                                          text.substr(at).starts_with("//"));
}

}  // namespace

FileKind kindOfFile(Files& files, const std::string& path) {
  int error = 0;
  const auto file = files.read(path, &error);
  if (file == nullptr) {
    if (error == EISDIR) return FileKind::Backups;
    throw Failure(ExitCode::BadInput,
                  "cannot read " + path + ": " + std::generic_category().message(error));
  }
  if (isBackupName(path)) return FileKind::Backups;
  std::vector<std::byte> bytes(512);
  std::size_t got = 0;
  error = file->readAt(0, bytes, &got);
  if (error != 0) {
    throw Failure(ExitCode::BadInput,
                  "cannot read " + path + ": " + std::generic_category().message(error));
  }
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), got);
  if (begins(text, captureformat::kMagic)) return FileKind::Capture;
  if (begins(text, journalformat::kMagic) || begins(text, journalformat::kMarker))
    return FileKind::Journal;
  const std::string ending = endingOf(path);
  if (ending == "csv") return FileKind::Csv;
  if (ending == "txt") return FileKind::OldText;
  if (ending == "dat" || ending == "data") return FileKind::OldRaw;
  return mayBeList(text) ? FileKind::Document : FileKind::Unknown;
}

FileKind kindOfName(const std::string& path) {
  const std::string ending = endingOf(path);
  if (isBackupName(path)) return FileKind::Backups;
  if (ending == "csv") return FileKind::Csv;
  if (ending == "cap" || ending == "ovcap") return FileKind::Capture;
  if (ending == "pdf") return FileKind::Pdf;
  if (ending == "tif" || ending == "tiff") return FileKind::Tiff;
  if (ending == "dat" || ending == "data") return FileKind::OldRaw;
  if (ending == "txt") return FileKind::OldText;
  if (ending == "ovkajournal") return FileKind::Journal;
  return FileKind::Document;
}

std::string backupFolderOf(const std::string& path) {
  if (!isBackupName(path)) return path;
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : path.substr(0, slash);
}

void checkWritable(Files& files, const std::string& path, bool overwrite) {
  int error = 0;
  const bool there = files.read(path, &error) != nullptr;
  std::string reason;
  if (there && !overwrite) {
    reason = "there is a file of that name; choose another or add --force";
  } else if (files.write(path, WriteMode::Atomic, &error) == nullptr) {
    reason = std::generic_category().message(error);
  }
  if (!reason.empty()) throw Failure(ExitCode::Output, "cannot write " + path + ": " + reason);
}

}  // namespace ovka::terminal
