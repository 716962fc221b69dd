#include "RecordingRescue.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <poll.h>
#include <system_error>
#include <unistd.h>

#include "BufferVariables.h"
#include "Failure.h"

namespace ovka::terminal {
namespace {

constexpr std::chrono::seconds kRetry{5};
/// A sample takes eight digits, and the rest of a document some more.
constexpr std::uint64_t kBytesAPoint = 8 * buffer::kChannels;
constexpr std::uint64_t kBytesBeside = 100'000;

[[nodiscard]] std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

}  // namespace

bool RecordingRescue::trySave(const std::string& path) {
  DocumentError error;
  host_.progress.begin("saving " + path);
  const bool done = desk_.save(path, &error);
  host_.progress.end();
  if (!done) reason_ = lineOf(error);
  return done;
}

/// Hours of writing for nothing are spared where the disk says so.
bool RecordingRescue::hasRoom(const std::string& folder) {
  const auto points =
      static_cast<std::uint64_t>(std::max<std::int64_t>(buffer::ploop - buffer::ploopStart, 0));
  std::uint64_t room = 0;
  const int error = host_.files.freeBytes(folder, &room);
  if (error == 0 && room >= points * kBytesAPoint + kBytesBeside) return true;
  reason_ = std::generic_category().message(error == 0 ? ENOSPC : error);
  return false;
}

std::string RecordingRescue::freeName(const std::string& folder, const std::string& name) {
  const std::size_t dot = std::min(name.rfind('.'), name.size());
  const std::string stem = name.substr(0, dot);
  const std::string ending = dot == name.size() ? std::string(kDocumentEnding) : name.substr(dot);
  for (int number = 1;; ++number) {
    std::string path =
        folder + "/" + stem + (number == 1 ? "" : "-" + std::to_string(number)) + ending;
    int error = 0;
    if (host_.files.read(path, &error) == nullptr && error == ENOENT) return path;
    if (error != 0 && error != EISDIR) return path;
  }
}

std::string RecordingRescue::saveIn(const Place& place, const std::string& name) {
  std::string folder = place.folder;
  if (folder.empty() || !hasRoom(folder)) return {};
  if (place.own) {
    folder += "/ovka-XXXXXX";
    if (mkdtemp(folder.data()) == nullptr) return {};
  }
  std::string path = freeName(folder, name);
  if (trySave(path)) return path;
  if (place.own) rmdir(folder.c_str());
  return {};
}

std::string RecordingRescue::saveElsewhere(const std::string& file) {
  std::string documents = host_.folders.resolve(kDocumentFolder);
  documents.resize(documents.find_last_not_of('/') + 1);
  static_cast<void>(host_.files.makeFolder(documents));
  const std::string temporary = environment("TMPDIR");
  const std::array<Place, 4> places{{{documents},
                                     {environment("HOME")},
                                     {"/var/tmp", true},
                                     {temporary.empty() ? "/tmp" : temporary, true}}};
  const std::string name = file.substr(file.rfind('/') + 1);
  for (const Place& place : places) {
    if (std::string path = saveIn(place, name); !path.empty()) return path;
  }
  return {};
}

/// False when the person gives the recording up. What is typed may come at any time, without it
/// `name` stays empty after a while.
bool RecordingRescue::waitForName(std::string* name) {
  const int input = asks_ ? STDIN_FILENO : -1;
  bool typed = false;
  if (stop_.stopped()) {
    // The interruption that ended the recording is over; another one ends the program by itself.
    pollfd polled{input, POLLIN, 0};
    typed = ::poll(&polled, 1, std::chrono::milliseconds(kRetry).count()) > 0;
  } else {
    typed = stop_.wait(kRetry, input);
    if (stop_.stopped()) return false;
  }
  name->clear();
  if (!typed) return true;
  std::array<char, 4096> line{};
  const ssize_t got = ::read(STDIN_FILENO, line.data(), line.size());
  asks_ = got > 0;  // a terminal that went away would answer for ever
  if (asks_) name->assign(line.data(), static_cast<std::size_t>(got));
  name->resize(name->find_last_not_of("\r\n \t") + 1);
  return true;
}

std::string RecordingRescue::keepTrying(const std::string& file) {
  asks_ = isatty(STDIN_FILENO) == 1;
  std::fprintf(
      stderr,
      "ovka: the recording is in memory only: no disk takes it (%s). Make room: ovka tries "
      "again every 5 seconds.%s Interrupt it to give the recording up.\n",
      reason_.c_str(), asks_ ? " Or type another file name and press Enter." : "");
  for (std::string name; waitForName(&name);) {
    int error = 0;
    if (!name.empty() && host_.files.read(name, &error) != nullptr) {
      std::fprintf(stderr, "ovka: there is a file %s; choose another name\n", name.c_str());
      continue;
    }
    if (!name.empty() && trySave(name)) return name;
    if (!name.empty())
      std::fprintf(stderr, "ovka: cannot write %s: %s\n", name.c_str(), reason_.c_str());
    const std::size_t slash = file.rfind('/');
    const std::string folder = slash == std::string::npos ? "." : file.substr(0, slash + 1);
    if (hasRoom(folder) && trySave(file)) return file;
    if (std::string path = saveElsewhere(file); !path.empty()) return path;
  }
  return {};
}

void RecordingRescue::save(const std::string& file, bool journaled) {
  if (trySave(file)) return;
  const std::string problem = "cannot write " + file + ": " + reason_ + "; ";
  std::string path = saveElsewhere(file);
  if (path.empty() && journaled) {
    throw Failure(ExitCode::Output,
                  problem + "the recording is kept in its journal, 'ovka recover FILE' saves it");
  }
  if (path.empty()) {
    std::fprintf(stderr, "ovka: %s\n", problem.substr(0, problem.size() - 2).c_str());
    path = keepTrying(file);
    if (path == file) return;
  }
  if (path.empty()) {
    throw Failure(ExitCode::Output,
                  problem + "the recording was given up; the backups and journals in " +
                      host_.folders.resolve(kJournalFolder) + " hold what the disk took of it");
  }
  throw Failure(ExitCode::Output, problem + "the recording is saved as " + path);
}

}  // namespace ovka::terminal
