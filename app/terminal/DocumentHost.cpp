#include "DocumentHost.h"

#include <algorithm>
#include <cstdio>

#include "Failure.h"
#include "PresetFile.h"

namespace ovka::terminal {
namespace {

constexpr std::string_view kBackups = "/Users/Shared/OVKABackups";

std::string joined(std::string_view message, std::string_view detail) {
  std::string text(message);
  if (!detail.empty()) text += " " + std::string(detail);
  std::replace(text.begin(), text.end(), '\n', ' ');
  return text;
}

}  // namespace

void TerminalDialogs::say(const std::string& text) {
  if (said_.insert(text).second) std::fprintf(stderr, "ovka: %s\n", text.c_str());
}

void TerminalDialogs::alert(std::string_view message, std::string_view detail) {
  say(joined(message, detail));
}

bool TerminalDialogs::confirm(std::string_view message, std::string_view detail) {
  say(joined(message, detail) + " - CANCEL, since nobody can be asked here");
  return false;
}

std::string OtherBackupFolder::resolve(std::string_view path) const {
  if (path.starts_with(kBackups)) return backups_ + std::string(path.substr(kBackups.size()));
  return folders_.resolve(path);
}

void rememberPort(DocumentDesk& desk) {
  if (!desk.rememberPort())
    throw Failure(ExitCode::Output,
                  "the port preset " + std::string(kDefaultPresetName) + " could not be written");
}

std::string lineOf(const DocumentError& error) {
  return joined(error.detail.empty() ? error.reason : error.detail, {});
}

}  // namespace ovka::terminal
