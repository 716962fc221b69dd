#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "FileLocks.h"
#include "Files.h"
#include "JournalFormat.h"

namespace ovka {

/// One file of a journal while it is written. append() on one thread at a time, sync() on another;
/// the rest while neither runs.
class JournalPart {
 public:
  /// Makes the file, which must not exist (EEXIST), and locks it. nullptr and `*error` on failure;
  /// no file is left behind then.
  [[nodiscard]] static std::unique_ptr<JournalPart> create(Files& files, FileLocks& locks,
                                                           const std::string& path, int* error);

  /// Appends bytes as one write. 0 or an errno; after a failure nothing more is written.
  [[nodiscard]] int append(journalformat::View bytes);
  /// Makes what was appended survive a power cut. 0 or an errno. May block for long.
  [[nodiscard]] int sync();
  /// Whether anything was appended since the last sync.
  [[nodiscard]] bool syncDue() const { return bytes_ != syncedBytes_; }
  /// ENOENT, ENOTDIR or ESTALE when the file is no more under its name with everything in it.
  [[nodiscard]] int check();

  [[nodiscard]] const std::string& path() const { return path_; }
  [[nodiscard]] bool locked() const { return lock_ != nullptr; }
  [[nodiscard]] std::uint64_t bytes() const { return bytes_; }

 private:
  JournalPart(Files& files, std::string path) : files_(files), path_(std::move(path)) {}

  Files& files_;
  std::string path_;
  std::unique_ptr<FileWriter> file_;
  // The same file once more, so that syncing never holds up the writing.
  std::unique_ptr<FileWriter> syncer_;
  std::unique_ptr<FileLocks::Lock> lock_;
  bool nameSynced_ = false;
  std::uint64_t syncedBytes_ = 0;
  std::atomic<std::uint64_t> bytes_{0};
};

/// The folder of a path, "." without one.
[[nodiscard]] std::string folderOfPath(const std::string& path);

}  // namespace ovka
