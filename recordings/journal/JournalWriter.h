#pragma once

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Clock.h"
#include "FileLocks.h"
#include "Files.h"
#include "Folders.h"
#include "FreeSpaceWatch.h"
#include "HostFacts.h"
#include "JournalCursor.h"
#include "JournalFormat.h"
#include "JournalPart.h"
#include "JournalRing.h"
#include "SampleStore.h"
#include "ThreadLauncher.h"

namespace ovka {

/// Where journals lie, beside the backup files; a name of the system, for Folders::resolve.
inline constexpr std::string_view kJournalFolder = "/Users/Shared/OVKABackups";
inline constexpr std::string_view kJournalEnding = ".ovkajournal";

/// What journals work on; all of it outlives them.
struct JournalServices {
  SampleStore& store;
  Files& files;
  FileLocks& locks;
  const Folders& folders;
  const HostFacts& host;
  const Clock& clock;
};

struct JournalStatus {
  std::string path;           ///< the file being written; empty while there is none
  std::uint64_t bytes = 0;    ///< of all parts of the session
  std::uint64_t frames = 0;   ///< points written
  std::uint64_t waiting = 0;  ///< points that are in memory only
  int error = 0;              ///< errno while the journal cannot be written
  std::optional<std::uint64_t> freeBytes;
  std::optional<std::int64_t> minutesLeft;  ///< at the present data rate
  bool spaceLow = false;
  bool wrapped = false;  ///< looping passed the end: the oldest points lie behind `ploop`
  bool whole = true;     ///< everything acquired is in files; holds for the last session too
};

/// Journals what is acquired: a thread of its own reads new points out of the store by position and
/// appends them to a file, another one syncs it. The acquisition thread knows nothing of it. A
/// session begins with the first frame and gets files of its own names, which are removed once a
/// document holds the recording. When the disk fails, one line is printed and recording goes on in
/// memory; the journal tries again every 5 seconds with a new file (part) of the session, and what
/// was missed follows. In loop mode the session is cut into parts, and those whose points were all
/// written over are removed: a journal takes about as much room as the loop. Unless a method says
/// otherwise any thread but the acquisition thread; a call may wait for a write.
class JournalWriter {
 public:
  static constexpr std::chrono::milliseconds kWriteInterval{200};
  static constexpr std::chrono::milliseconds kSyncInterval{400};
  static constexpr std::chrono::seconds kRetryInterval{5};

  /// `settings`: empty, or gives lines NAME=VALUE to be kept with each session (at most 64 KiB);
  /// `annotations`: empty, or gives the whole annotation track as changes of the kind Set. Both are
  /// called on the journal's thread.
  explicit JournalWriter(const JournalServices& services,
                         std::function<std::string()> settings = {},
                         std::function<std::vector<journalformat::Annotation>()> annotations = {});
  JournalWriter(const JournalWriter&) = delete;
  JournalWriter& operator=(const JournalWriter&) = delete;

  /// Starts the threads "journal" and "journalSync"; what is stored from now on is journaled while
  /// recording (`setRecModeX` 1). What is only acquired (2) is not, unless it continues a recording
  /// that is journaled. This object outlives the launcher's threads. Once.
  void start(ThreadLauncher& threads);
  /// After the launcher's threads ended: writes and syncs what is left and ends the session in
  /// order. Its files stay until a document is saved, unless one holds everything already.
  void stop();

  /// Another recording begins, or the buffer is about to be replaced by a document: ends the
  /// session as stop() does; the next frame begins a new one. Before the buffer changes.
  void newRecording();
  /// What was only acquired becomes a recording: journals the points before `end`, which stand in
  /// the order of time. Nothing happens while a session is journaled anyway.
  void takeBuffer(std::int64_t end);
  /// Every channel was cleared: call it after recCleare.
  void noteCleared();
  /// Points that were journaled were changed by hand (cleanData, an edit): journals them again.
  void noteRewritten(std::int64_t first, std::int64_t end);
  /// A change of the annotation track; waits for nothing.
  void annotate(journalformat::Annotation change);

  /// A document at `path` is safely on disk and holds all five channels of the points before `end`
  /// (`ploop` while it was written); after looping wrapped, the recording ends where the buffer
  /// does. Removes the files of the recording if nothing came after it
  /// and the session is over, at the end of the session if nothing comes any more, and those of
  /// adopted sessions. Nothing is removed while no file of that name can be read. 0 or an errno.
  int documentSaved(const std::string& path, std::int64_t end);
  /// Takes over the files of a recovered session: they count as in use from now on and go once a
  /// document with at least `end` points is saved.
  void adopt(const std::vector<std::string>& parts, std::int64_t end);
  /// The user does not want the recording: ends the session and removes its files.
  void discard();

  /// Writes and syncs everything up to now. 0 or the errno that is in the way.
  int flush();
  /// Waits for nothing.
  [[nodiscard]] JournalStatus status() const;

  /// One look, as the threads do it; for tests and for programs without threads.
  void writeNow();
  void syncNow();

 private:
  struct Piece {
    PointRange range;
    bool moves = true;  ///< false: Backfill
  };
  /// A part that is complete but not yet on the disk.
  struct Closing {
    std::shared_ptr<JournalPart> part;  ///< nullptr: none
    std::vector<PointRange> unsynced;
    std::size_t number = 0;  ///< in the ring
  };
  /// A session's files that wait for their document.
  struct Kept {
    std::vector<std::string> parts;
    std::vector<std::unique_ptr<FileLocks::Lock>> locks;
    std::int64_t end = 0;
  };

  // JournalWriter.cpp; all with lock_ held.
  void look();
  void take(const JournalCursor::Found& found);
  void work(std::uint64_t budget);
  void keepNewestFirst();
  void updateStatus();
  void syncParts(std::int64_t now);  ///< with syncing_ held alone
  /// Behind the last point that a document must hold.
  [[nodiscard]] std::int64_t heldEnd() const { return wrapped_ ? highest_ : position_; }
  [[nodiscard]] JournalPositions positions() const;
  // JournalWriterSession.cpp; all with lock_ held.
  void beginSession(std::int64_t first);
  void endSession(bool waitsForDocument);
  void forgetSession();
  void keep(const std::vector<std::string>& parts, std::int64_t end);
  void removeParts(const std::vector<std::string>& parts);
  [[nodiscard]] bool openPart();
  [[nodiscard]] std::shared_ptr<JournalPart> createPart(int* error);
  void partFailed(int error);
  void startOver(int error);
  // JournalWriterRing.cpp; all with lock_ held.
  void cutPart();
  void noteSynced(const std::vector<PointRange>& ranges, std::size_t part);
  void dropParts();
  void removeDropped();
  // JournalWriterChunks.cpp; all with lock_ held. False: the part failed.
  template <typename Payload>
  [[nodiscard]] bool append(journalformat::ChunkKind kind, const Payload& payload);
  [[nodiscard]] bool appendSession();
  [[nodiscard]] bool appendState();
  [[nodiscard]] bool appendMarks();
  [[nodiscard]] bool appendAnnotations();
  [[nodiscard]] bool appendPieces(std::deque<Piece>& pieces, std::uint64_t* budget);
  [[nodiscard]] bool appendFrames(const PointRange& range, bool moves);

  JournalServices at_;
  std::function<std::string()> settings_;
  std::function<std::vector<journalformat::Annotation>()> allAnnotations_;

  mutable std::mutex lock_;  ///< the session and its files
  JournalCursor cursor_;
  bool acquired_ = false;  ///< at the last look
  std::shared_ptr<JournalPart> part_;
  std::shared_ptr<JournalPart> failedPart_;  ///< keeps its lock until another part is open
  int appendError_ = 0;
  std::uint64_t session_ = 0;  ///< 0: none
  std::string sessionName_;
  std::int64_t startWall_ = 0;
  std::vector<std::string> parts_;
  std::uint16_t partNumber_ = 0;
  std::uint64_t sequence_ = 0;
  std::uint64_t frames_ = 0;
  std::uint64_t closedBytes_ = 0;  ///< of the parts before this one
  std::int64_t lowest_ = 0;        ///< points that the session holds lie in lowest_ ... highest_
  std::int64_t highest_ = 0;
  std::int64_t position_ = 0;             ///< behind the newest point found
  bool wrapped_ = false;                  ///< of this session, or of the last one
  bool stopped_ = false;                  ///< nothing that comes is journaled any more
  bool endedWhole_ = true;                ///< the last session is in files to its end
  std::optional<std::int64_t> savedEnd_;  ///< a document holds everything found so far
  std::deque<Piece> pending_;             ///< found and not written, in order
  std::deque<Piece> backfill_;            ///< to be written again or late
  std::vector<PointRange> late_;          ///< found at the last look, still being completed
  std::vector<PointRange> unsynced_;      ///< written since the last sync
  JournalRing ring_;                      ///< what each of parts_ holds
  Closing closing_;
  std::size_t dropDue_ = 0;    ///< oldest parts that go with the next sync
  std::size_t rewritten_ = 0;  ///< 1 + number of the part whose points were written again; 0: none
  std::int64_t cutAt_ = 0;     ///< when a part is tried to be cut again (clock)
  std::vector<journalformat::Mark> marks_;
  std::optional<journalformat::State> lastState_;
  std::int64_t repeatAt_ = 0;  ///< when session and state are written again (clock)
  std::int64_t retryAt_ = 0;   ///< when a failed part is tried again (clock)
  int error_ = 0;              ///< why there is no part; 0: nothing is wrong
  std::vector<Kept> kept_;
  journalformat::Bytes payload_;
  journalformat::Bytes chunk_;
  journalformat::Frames block_;

  std::mutex syncing_;  ///< one sync at a time; taken before lock_
  FreeSpaceWatch space_;
  std::int64_t checkAt_ = 0;  ///< when the file is looked for again (clock)
  std::int64_t spaceAt_ = 0;  ///< when the room on the disk is asked for again (clock)

  mutable std::mutex queueLock_;  ///< what follows; held for moments only
  std::vector<journalformat::Annotation> annotations_;
  bool wantAllAnnotations_ = true;
  JournalStatus status_;
};

}  // namespace ovka
