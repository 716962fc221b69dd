#include "JournalCatalogue.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <set>
#include <string_view>
#include <system_error>
#include <utility>

#include "JournalFold.h"
#include "JournalReader.h"
#include "MaximumTime.h"

namespace ovka {
namespace {

using namespace journalformat;

[[nodiscard]] bool isJournal(std::string_view name) {
  return name.size() > kJournalEnding.size() && name.ends_with(kJournalEnding);
}

/// The sampling mode of a speed; a speed that is in no list is the user's own.
void setSpeed(std::uint32_t speed) {
  const auto known = std::find(kSamplingModes.begin(), kSamplingModes.end(), speed);
  if (known == kSamplingModes.end()) {
    buffer::SampleSpeedX = speed;
    buffer::samplingModeX = kCustomSamplingMode;
  } else {
    buffer::samplingModeX = static_cast<std::int32_t>(known - kSamplingModes.begin());
  }
  buffer::SampleSpeed = speed;
}

}  // namespace

bool JournalCatalogue::isRunning(const std::string& path, const Session* writer) {
  int error = 0;
  const bool free = locks_.lock(path, &error) != nullptr;
  if (error == EWOULDBLOCK) return true;
  // Where locks tell nothing the writer's own name must do.
  const bool locksTell = free && writer != nullptr && writer->locked;
  return !locksTell && writer != nullptr && locks_.isRunning(writer->processMark);
}

std::optional<JournalCatalogue::Head> JournalCatalogue::headOf(const std::string& path) {
  int error = 0;
  const std::unique_ptr<FileReader> file = files_.read(path, &error);
  if (file == nullptr) return std::nullopt;
  JournalReader reader(*file);
  JournalChunk chunk;
  if (!reader.next(chunk)) return std::nullopt;
  Session writer;
  const bool named = chunk.head.kind == ChunkKind::Session && decode(chunk.payload, writer);
  return Head{chunk.head.session, chunk.head.part, isRunning(path, named ? &writer : nullptr)};
}

std::vector<std::string> JournalCatalogue::inOrder(const Parts::mapped_type& parts) {
  std::vector<std::string> paths;
  for (const auto& [part, same] : parts) paths.insert(paths.end(), same.begin(), same.end());
  return paths;
}

JournalSession JournalCatalogue::readParts(std::uint64_t id, std::vector<std::string> parts,
                                           SampleStore* store, int* error) {
  JournalSession session;
  session.id = id;
  session.parts = std::move(parts);
  Session writer;
  JournalFold fold(session, writer, store);
  for (const std::string& path : session.parts) {
    const std::unique_ptr<FileReader> file = files_.read(path, error);
    if (file == nullptr) continue;
    JournalReader reader(*file);
    JournalChunk chunk;
    session.endedInOrder = false;
    while (reader.next(chunk)) {
      if (chunk.head.session == id) fold.take(chunk);
    }
    session.bytes += file->size();
    session.damagedPlaces += reader.damagedPlaces();
    if (reader.error() != 0) *error = reader.error();
  }
  session.capacity =
      std::max(session.capacity, static_cast<std::uint64_t>(std::max(session.end, session.ploop)));
  return session;
}

std::vector<JournalSession> JournalCatalogue::sessions(int* error) {
  const std::string folder = folders_.resolve(kJournalFolder);
  std::vector<JournalSession> found;
  const std::vector<std::string> names = files_.list(folder, error);
  if (*error == ENOENT) *error = 0;
  Parts all;
  std::set<std::uint64_t> running;
  for (const std::string& name : names) {
    if (!isJournal(name)) continue;
    const std::string path = folder + "/" + name;
    const std::optional<Head> head = headOf(path);
    if (!head) continue;
    all[head->session][head->part].push_back(path);
    if (head->running) running.insert(head->session);
  }
  for (const auto& [id, parts] : all) {
    if (running.contains(id)) continue;
    int ignored = 0;  // what can be read counts
    JournalSession session = readParts(id, inOrder(parts), nullptr, &ignored);
    if (session.end > session.first) found.push_back(std::move(session));
  }
  std::stable_sort(
      found.begin(), found.end(),
      [](const JournalSession& a, const JournalSession& b) { return a.startWall < b.startWall; });
  return found;
}

std::optional<JournalSession> JournalCatalogue::read(const std::vector<std::string>& paths) {
  Parts all;
  for (const std::string& path : paths) {
    if (const std::optional<Head> head = headOf(path)) {
      all[head->session][head->part].push_back(path);
    }
  }
  if (all.empty()) return std::nullopt;
  int ignored = 0;
  return readParts(all.begin()->first, inOrder(all.begin()->second), nullptr, &ignored);
}

std::string JournalCatalogue::recover(const JournalSession& session, SampleStore& store) {
  if (session.end <= session.first || session.SampleSpeed == 0) {
    return "the journal holds no samples";
  }
  for (const std::string& path : session.parts) {
    int error = 0;
    if (files_.read(path, &error) == nullptr) {
      return "the journal " + path + " cannot be read: " + std::generic_category().message(error);
    }
  }
  buffer::setPauseX = 1;
  if (!store.initMalloc(session.capacity)) {
    return "there is not enough memory for the " + std::to_string(session.capacity) +
           " points of this recording; close other programs and recover it again";
  }
  buffer::setRecModeX = 0;
  store.recCleare();
  buffer::SelectDevice = session.SelectDevice;
  buffer::DeviceConfig = session.DeviceConfig;
  buffer::setLoopModeX = session.looping ? 1 : 0;
  setSpeed(session.SampleSpeed);
  int error = 0;
  const JournalSession read = readParts(session.id, session.parts, &store, &error);
  buffer::ploopStart =
      std::min(session.ploopStart, static_cast<std::int64_t>(buffer::maxploop.get()));
  buffer::ploop = read.ploop;
  if (error != 0) {
    return "reading the journal " + session.parts.front() +
           " failed: " + std::generic_category().message(error) +
           "; what was read is in the buffer";
  }
  return {};
}

int JournalCatalogue::remove(const JournalSession& session) {
  int result = 0;
  for (const std::string& path : session.parts) {
    if (const int error = files_.remove(path); error != 0 && error != ENOENT) result = error;
  }
  return result;
}

std::string describe(const JournalSession& session) {
  const auto clock = [&session](std::int64_t points) {
    const std::int64_t seconds = session.SampleSpeed == 0 ? 0 : points / session.SampleSpeed;
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%02lld:%02lld:%02lld",
                  static_cast<long long>(seconds / 3600), static_cast<long long>(seconds / 60 % 60),
                  static_cast<long long>(seconds % 60));
    return std::string(text.data());
  };
  std::array<char, 64> size{};
  std::snprintf(size.data(), size.size(), "%.1f MB", static_cast<double>(session.bytes) / 1e6);
  std::string text = clock(session.end - session.first) + ", " +
                     std::to_string(session.SampleSpeed) + " samples a second, " + size.data();
  if (session.missingPoints > 0) {
    text += "; " + std::to_string(session.missingPoints) + " points are missing";
  }
  if (session.damagedPlaces > 0) {
    text += "; damaged at " + std::to_string(session.damagedPlaces) +
            (session.damagedPlaces == 1 ? " place" : " places");
  }
  if (!session.savedPath.empty()) {
    text += "; saved up to " + clock(session.savedEnd - session.first) + " in " + session.savedPath;
  }
  return text;
}

}  // namespace ovka
