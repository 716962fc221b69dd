#include <cstdlib>
#include <ctime>
#include <sys/utsname.h>
#include <unistd.h>

#include "LinuxFiles.h"

namespace ovka {
namespace {

constexpr std::string_view kSharedPrefix = "/Users/Shared/";
constexpr std::string_view kPreferencesPrefix = "~/Library/Preferences/";

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

bool writable(const std::string& folder) {
  return ::access(folder.c_str(), W_OK | X_OK) == 0;
}

/// The folder of a base-directory variable; a relative value counts as unset, as its rules say.
std::string baseFolder(const char* variable, const std::string& home, const char* fallback) {
  const std::string value = environment(variable);
  return (value.starts_with('/') ? value : home + fallback) + "/OVKA";
}

}  // namespace

LinuxFolders::LinuxFolders() {
  const std::string own = environment("OVKA_HOME");
  if (!own.empty()) {
    shared_ = own + "/Shared";
    preferences_ = own + "/Preferences";
    return;
  }
  const std::string home = environment("HOME").empty() ? "/tmp" : environment("HOME");
  shared_ = "/Users/Shared";
  if (!writable(shared_)) shared_ = baseFolder("XDG_DATA_HOME", home, "/.local/share") + "/Shared";
  preferences_ = home + "/Library/Preferences";
  if (!writable(preferences_)) preferences_ = baseFolder("XDG_CONFIG_HOME", home, "/.config");
}

std::string LinuxFolders::resolve(std::string_view path) const {
  if (path.starts_with(kSharedPrefix)) {
    return shared_ + "/" + std::string(path.substr(kSharedPrefix.size()));
  }
  if (path.starts_with(kPreferencesPrefix)) {
    return preferences_ + "/" + std::string(path.substr(kPreferencesPrefix.size()));
  }
  return std::string(path);
}

std::string LinuxHostFacts::machineName() const {
  struct utsname facts {};
  return ::uname(&facts) == 0 ? std::string(facts.machine) : std::string("unknown");
}

LocalTime LinuxHostFacts::localTime(std::int64_t wallNanoseconds) const {
  const auto seconds = static_cast<std::time_t>(wallNanoseconds / 1000000000);
  std::tm parts{};
  if (::localtime_r(&seconds, &parts) == nullptr) return {};
  return {parts.tm_year + 1900, parts.tm_mon + 1, parts.tm_mday,
          parts.tm_hour,        parts.tm_min,     parts.tm_sec};
}

}  // namespace ovka
