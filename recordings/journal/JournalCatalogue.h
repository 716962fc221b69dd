#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "JournalFormat.h"
#include "JournalWriter.h"
#include "SampleStore.h"

namespace ovka {

/// A recording that journal files hold: what a person needs to decide, and what recovery needs.
struct JournalSession {
  std::uint64_t id = 0;
  std::vector<std::string> parts;  ///< paths, in the order of their writing
  std::uint64_t bytes = 0;         ///< of all parts
  std::int64_t startWall = 0;      ///< nanoseconds since 1970-01-01 UTC; 0: unknown
  std::int64_t first = 0;          ///< points lie in first ... end - 1
  std::int64_t end = 0;
  std::int64_t ploop = 0;  ///< where the recording stood
  std::int64_t ploopStart = 0;
  std::uint64_t capacity = 0;
  std::uint32_t SampleSpeed = 0;
  std::uint32_t SelectDevice = 0;
  std::uint32_t DeviceConfig = 0;
  bool looping = false;
  bool wrapped = false;       ///< looping passed the end: the oldest points lie behind `ploop`
  bool endedInOrder = false;  ///< the program ended well, but no document was saved
  std::string savedPath;      ///< a document that holds the points before savedEnd; or empty
  std::int64_t savedEnd = 0;
  std::uint64_t chunks = 0;
  std::uint64_t missingPoints = 0;  ///< journaled, but damaged
  std::uint64_t damagedPlaces = 0;
  std::string settings;  ///< lines NAME=VALUE of the writer
  std::map<std::uint64_t, journalformat::Annotation> annotations;  ///< by number

  /// Length of the recording in seconds.
  [[nodiscard]] double seconds() const {
    return SampleSpeed == 0 ? 0.0 : static_cast<double>(end - first) / SampleSpeed;
  }
};

/// Finds recordings whose document was never saved, and brings them back. One thread at a time.
class JournalCatalogue {
 public:
  JournalCatalogue(Files& files, FileLocks& locks, const Folders& folders)
      : files_(files), locks_(locks), folders_(folders) {}

  /// Recordings that no running program writes, oldest first; those without a point are left out.
  /// Reads every journal once. A folder that is not there holds none; any other failure is in
  /// `*error` (errno).
  [[nodiscard]] std::vector<JournalSession> sessions(int* error);
  /// The one that given files hold, running or not; nothing when none of them is a journal.
  [[nodiscard]] std::optional<JournalSession> read(const std::vector<std::string>& paths);

  /// Loads a recording: clears the store, sets capacity, positions, SampleSpeed (with its sampling
  /// mode), SelectDevice and DeviceConfig, and leaves the system playing back and paused. The main
  /// thread, with the ports' access blocked. Empty when done, else one line for a person; nothing
  /// is changed then unless a file failed under the reading.
  [[nodiscard]] std::string recover(const JournalSession& session, SampleStore& store);

  /// Removes the files of a recording that the user does not want. 0 or an errno.
  int remove(const JournalSession& session);

 private:
  struct Head {
    std::uint64_t session = 0;
    std::uint16_t part = 0;
    bool running = false;
  };
  /// Session and part of a file, from its first whole chunk; nothing when it is no journal.
  [[nodiscard]] std::optional<Head> headOf(const std::string& path);
  [[nodiscard]] bool isRunning(const std::string& path, const journalformat::Session* writer);
  /// Reads the parts in order. `store`: nullptr, or takes the samples.
  [[nodiscard]] JournalSession readParts(std::uint64_t id, std::vector<std::string> parts,
                                         SampleStore* store, int* error);
  /// Paths by session and part.
  using Parts = std::map<std::uint64_t, std::map<std::uint16_t, std::vector<std::string>>>;
  [[nodiscard]] static std::vector<std::string> inOrder(const Parts::mapped_type& parts);

  Files& files_;
  FileLocks& locks_;
  const Folders& folders_;
};

/// What a list shows of a recording: "2024-05-01 ..." is the caller's; this is length, size and
/// damage: "00:12:30, 120 samples a second, 1.8 MB; 240 points are missing".
[[nodiscard]] std::string describe(const JournalSession& session);

}  // namespace ovka
