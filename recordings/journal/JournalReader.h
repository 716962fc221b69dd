#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "Files.h"
#include "JournalFormat.h"

namespace ovka {

/// A chunk as read; `payload` is valid until the next call of the reader.
struct JournalChunk {
  journalformat::ChunkHead head;
  journalformat::View payload;
};

/// Reads the chunks of one journal file from front to back, whatever the file ends at or is damaged
/// at: a damaged chunk is left out and the reading goes on at the next whole one. Takes time in
/// proportion to the file and about 2 MiB of memory. One thread at a time.
class JournalReader {
 public:
  explicit JournalReader(FileReader& file);

  /// The next whole chunk of the session that the file began with; false at the end of the file.
  [[nodiscard]] bool next(JournalChunk& chunk);

  /// Places at which something that is no whole chunk was left out, and how much. The end of the
  /// file counts apart: it is torn when the writer was killed.
  [[nodiscard]] std::uint64_t damagedPlaces() const { return damagedPlaces_; }
  [[nodiscard]] std::uint64_t damagedBytes() const { return damagedBytes_; }
  [[nodiscard]] std::uint64_t tornBytes() const { return tornBytes_; }
  /// Version of chunks that a newer program wrote; 0: none.
  [[nodiscard]] std::uint8_t newerVersion() const { return newerVersion_; }
  /// 0, or the errno that ended the reading.
  [[nodiscard]] int error() const { return error_; }

 private:
  [[nodiscard]] bool fill(std::size_t bytes);
  [[nodiscard]] bool begin();
  [[nodiscard]] journalformat::View ahead() const {
    return journalformat::View(buffer_).subspan(at_, filled_ - at_);
  }
  void skip(std::size_t bytes);
  void skipToMarker();
  [[nodiscard]] bool isWhole(const journalformat::ChunkHead& head);

  FileReader& file_;
  std::vector<std::uint8_t> buffer_;
  std::size_t at_ = 0;         ///< first byte not yet read, in the buffer
  std::size_t filled_ = 0;     ///< bytes in the buffer
  std::uint64_t offset_ = 0;   ///< of the next byte to fetch, in the file
  std::size_t delivered_ = 0;  ///< bytes of the chunk given out last
  bool begun_ = false;
  bool atEnd_ = false;
  std::optional<std::uint64_t> session_;
  std::uint64_t nextSequence_ = 0;
  std::uint64_t skipped_ = 0;  ///< bytes left out since the last whole chunk
  std::uint64_t damagedPlaces_ = 0;
  std::uint64_t damagedBytes_ = 0;
  std::uint64_t tornBytes_ = 0;
  std::uint8_t newerVersion_ = 0;
  int error_ = 0;
};

}  // namespace ovka
