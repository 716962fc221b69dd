#pragma once

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Files.h"

namespace ovka::testing {

/// A disk in memory: full, read-only or failing when told to. It knows what a power cut leaves. A
/// failed write leaves half of its bytes behind, a failed sync loses what was not synced.
class FakeDisk final : public Files {
 public:
  std::map<std::string, std::string> contents;  ///< by path
  std::map<std::string, std::size_t> synced;    ///< bytes that survive a power cut
  std::vector<std::string> folders;             ///< that were made
  std::uint64_t room = 1'000'000'000'000;       ///< bytes until ENOSPC
  int refuseWrites = 0;       ///< errno of every opening for writing, of paths that match
  std::string refusePattern;  ///< part of the path; empty: all
  int failCommit = 0;
  int calls = 0;
  int failFrom = 0;  ///< the first call that fails, counted from 1; 0: none
  int failures = 0;  ///< how many calls in a row fail
  int error = ENOSPC;

  std::unique_ptr<FileReader> read(const std::string& path, int* result) override {
    const auto found = contents.find(path);
    *result = fails() ? error : found == contents.end() ? ENOENT : 0;
    return *result != 0 ? nullptr : std::make_unique<Reader>(found->second);
  }
  std::unique_ptr<FileWriter> write(const std::string& path, WriteMode mode, int* result) override {
    *result = fails()                                                 ? error
              : mode == WriteMode::NewOnly && contents.contains(path) ? EEXIST
              : path.find(refusePattern) == std::string::npos         ? 0
                                                                      : refuseWrites;
    if (*result != 0) return nullptr;
    if (mode == WriteMode::InPlace) contents[path].clear();
    if (mode != WriteMode::Atomic) contents[path];
    return std::make_unique<Writer>(*this, path, mode == WriteMode::Atomic);
  }
  int makeFolder(const std::string& path) override {
    folders.push_back(path);
    return fails() ? error : 0;
  }
  int remove(const std::string& path) override {
    if (fails()) return error;
    synced.erase(path);
    return contents.erase(path) == 1 ? 0 : ENOENT;
  }
  std::vector<std::string> list(const std::string& folder, int* result) override {
    *result = fails() ? error : 0;
    std::vector<std::string> names;
    for (const auto& [path, bytes] : contents) {
      if (path.starts_with(folder + "/")) names.push_back(path.substr(folder.size() + 1));
    }
    return names;
  }
  int syncFolder(const std::string& /*folder*/) override { return fails() ? error : 0; }
  int freeBytes(const std::string& /*folder*/, std::uint64_t* bytes) override {
    *bytes = room;
    return fails() ? error : 0;
  }

  /// What is on the disk after the power went: what was synced, and `extra` bytes more.
  [[nodiscard]] FakeDisk afterPowerCut(std::size_t extra) {
    FakeDisk left;
    for (const auto& [path, bytes] : contents)
      left.contents[path] = bytes.substr(0, synced[path] + extra);
    return left;
  }

 private:
  [[nodiscard]] bool fails() {
    ++calls;
    return failFrom > 0 && calls >= failFrom && calls < failFrom + failures;
  }

  class Reader final : public FileReader {
   public:
    explicit Reader(std::string bytes) : bytes_(std::move(bytes)) {}
    std::uint64_t size() const override { return bytes_.size(); }
    int readAt(std::uint64_t offset, std::span<std::byte> out, std::size_t* got) override {
      *got =
          offset >= bytes_.size() ? 0 : std::min<std::size_t>(out.size(), bytes_.size() - offset);
      if (*got > 0) std::memcpy(out.data(), bytes_.data() + offset, *got);
      return 0;
    }

   private:
    std::string bytes_;
  };
  class Writer final : public FileWriter {
   public:
    Writer(FakeDisk& disk, std::string path, bool atomic)
        : disk_(disk), path_(std::move(path)), atomic_(atomic) {}
    int write(std::span<const std::byte> bytes) override {
      const bool fails = disk_.fails();
      const std::size_t count = fails ? bytes.size() / 2 : bytes.size();
      if (!fails && count > disk_.room) return ENOSPC;
      target().append(reinterpret_cast<const char*>(bytes.data()), count);
      disk_.room -= std::min<std::uint64_t>(disk_.room, count);
      return fails ? disk_.error : 0;
    }
    int sync() override {
      std::size_t& safe = disk_.synced[path_];
      if (disk_.fails()) {
        std::fill(target().begin() + static_cast<std::ptrdiff_t>(safe), target().end(), '\0');
        return disk_.error;
      }
      safe = target().size();
      return 0;
    }
    int commit() override {
      if (disk_.failCommit != 0) return disk_.failCommit;
      if (atomic_) disk_.contents[path_] = std::move(pending_);
      return 0;
    }

   private:
    std::string& target() { return atomic_ ? pending_ : disk_.contents[path_]; }

    FakeDisk& disk_;
    std::string path_;
    bool atomic_;
    std::string pending_;
  };
};

}  // namespace ovka::testing
