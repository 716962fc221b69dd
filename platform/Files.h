#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace ovka {

// Files as the recording documents need them. Errors are errno values, 0 is success; a path is the
// machine's own. Any thread, but each open file is written by one thread at a time.

/// A file open for reading at any place. It stays the file it was when another takes its name.
class FileReader {
 public:
  virtual ~FileReader() = default;
  /// Length in bytes when it was opened.
  [[nodiscard]] virtual std::uint64_t size() const = 0;
  /// Reads up to out.size() bytes from `offset`; `*got` less than that means the end of the file.
  /// Any number of threads at once.
  [[nodiscard]] virtual int readAt(std::uint64_t offset, std::span<std::byte> out,
                                   std::size_t* got) = 0;
};

/// A file being written. Destroyed without commit(): an Atomic file vanishes and what bore its name
/// stays; the others keep what was written.
class FileWriter {
 public:
  virtual ~FileWriter() = default;
  /// Writes all of it or fails. After a failure only destruction is allowed.
  [[nodiscard]] virtual int write(std::span<const std::byte> bytes) = 0;
  /// Makes what was written survive a power cut. May block for long.
  [[nodiscard]] virtual int sync() = 0;
  /// Atomic: syncs, takes the name in one step, syncs the folder. Others: closes. Once.
  [[nodiscard]] virtual int commit() = 0;
};

enum class WriteMode : std::uint8_t {
  Atomic,   ///< written beside, takes the name on commit
  InPlace,  ///< the old contents go first
  Append,   ///< after the old contents
  NewOnly,  ///< EEXIST when the name is taken
};

class Files {
 public:
  virtual ~Files() = default;
  /// nullptr and `*error` when it cannot be opened; a folder gives EISDIR.
  [[nodiscard]] virtual std::unique_ptr<FileReader> read(const std::string& path, int* error) = 0;
  [[nodiscard]] virtual std::unique_ptr<FileWriter> write(const std::string& path, WriteMode mode,
                                                          int* error) = 0;
  /// Makes a folder and those above it; one that is there already is no error.
  [[nodiscard]] virtual int makeFolder(const std::string& path) = 0;
  [[nodiscard]] virtual int remove(const std::string& path) = 0;
  /// Names in a folder, sorted; empty and `*error` when it cannot be read.
  [[nodiscard]] virtual std::vector<std::string> list(const std::string& folder, int* error) = 0;
  /// Makes new and removed names of a folder survive a power cut. May block for long.
  [[nodiscard]] virtual int syncFolder(const std::string& folder) {
    static_cast<void>(folder);
    return 0;
  }
  /// Bytes that may still be written to the disk of a folder.
  [[nodiscard]] virtual int freeBytes(const std::string& folder, std::uint64_t* bytes) = 0;
};

}  // namespace ovka
