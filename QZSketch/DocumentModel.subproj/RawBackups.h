#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>

#include "Dialogs.h"
#include "DocumentSwitches.h"
#include "Files.h"
#include "Folders.h"
#include "SampleStore.h"
#include "Shell.h"

namespace ovka {

/// Samples of one channel as they stand in a backup file or in a document's block.
struct SampleRange {
  std::int32_t channel = 0;
  std::int64_t start = 0;  ///< first point
  std::int64_t end = 0;    ///< behind the last point

  [[nodiscard]] std::uint64_t points() const {
    return end > start ? static_cast<std::uint64_t>(end - start) : 0;
  }
  /// Bytes of the block: channel 1 takes 8 a point once the start is above 0, and readers know it.
  [[nodiscard]] std::uint64_t bytes() const { return points() * (doubled() ? 8 : 4); }
  [[nodiscard]] bool doubled() const { return channel == 1 && start > 0; }
};

/// Passes the block of a range on in pieces: the samples, then zeros for the second half of a
/// doubled block. False once `take` returned false.
using TakeBytes = std::function<bool(std::span<const std::uint8_t>)>;
bool forEachBlockPiece(const SampleStore& store, const SampleRange& range, const TakeBytes& take);

/// The automatic backup files, one a channel: raw samples in the byte order of the machine, no
/// header. Any thread; one call at a time works on the files.
class RawBackups final : public DataBackups {
 public:
  RawBackups(SampleStore& store, Files& files, const Folders& folders, Dialogs& dialogs,
             const DocumentSwitches& switches);

  /// saveDataBackup: writes channel 0, and channels 1 to 4 with their save switch, from point 0 to
  /// the current one, each atomically. A failure beeps and goes on.
  void saveDataBackup() override;

  /// openCheckBackupFile: makes the backup folder when the file of channel 0 is missing or empty.
  /// Restores nothing. Once, after the launch.
  void openCheckBackupFile();

  /// openDataFromBackup: loads the files into the buffer from index 0, whose start position becomes
  /// 0: channel 0 always, the others when their open switch is on or when brain data only is not
  /// set; a missing file leaves its channel. The current point ends behind the longest. `maximum`:
  /// the most points to take. False when no file could be read or memory is refused.
  bool openDataFromBackup(std::uint64_t maximum);

  /// Writes the block of a range to the channel's file, atomically; beeps when that fails. 0 or an
  /// errno.
  int writeBlock(const SampleRange& range);
  /// Opens a channel's file; nullptr when it cannot be read.
  [[nodiscard]] std::unique_ptr<FileReader> openBlock(std::int32_t channel);
  /// The machine's path of a channel's file.
  [[nodiscard]] std::string path(std::int32_t channel) const;

 private:
  int writeBlockLocked(const SampleRange& range);
  bool loadChannel(std::int32_t channel, std::uint64_t maximum, std::uint64_t* loaded);

  SampleStore& store_;
  Files& files_;
  const Folders& folders_;
  Dialogs& dialogs_;
  const DocumentSwitches& switches_;
  std::mutex lock_;
};

/// The copies that every loading makes: with channel configuration 0 or 1 channel 1 goes to channel
/// 3, with 1 also channel 2 to channel 4. `loaded`: whether channels 1 and 2 were.
void copyLoadedChannels(SampleStore& store, std::int64_t start, std::uint64_t points, bool loaded1,
                        bool loaded2);

}  // namespace ovka
