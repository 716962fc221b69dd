#pragma once

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "FileLocks.h"
#include "Files.h"

namespace ovka::testing {

/// A disk in memory that tells what a power cut leaves, and whose calls fail when told to. A failed
/// write leaves half of its bytes behind, a failed sync loses what was not synced.
class FakeDisk final : public Files {
 public:
  struct File {
    std::string bytes;
    std::size_t synced = 0;
  };
  std::map<std::string, std::shared_ptr<File>> files;
  std::uint64_t room = 1'000'000'000'000;
  int calls = 0;
  int failFrom = 0;  ///< the first call that fails, counted from 1; 0: none
  int failures = 0;  ///< how many calls in a row fail
  int error = ENOSPC;

  std::unique_ptr<FileReader> read(const std::string& path, int* result) override {
    const auto found = files.find(path);
    *result = fails() ? error : found == files.end() ? ENOENT : 0;
    return *result != 0 ? nullptr : std::make_unique<Reader>(found->second->bytes);
  }
  std::unique_ptr<FileWriter> write(const std::string& path, WriteMode mode, int* result) override {
    const bool there = files.contains(path);
    *result = fails() ? error : mode == WriteMode::NewOnly && there ? EEXIST : 0;
    if (*result != 0) return nullptr;
    if (!there) files[path] = std::make_shared<File>();
    return std::make_unique<Writer>(*this, files[path]);
  }
  int makeFolder(const std::string& /*path*/) override { return fails() ? error : 0; }
  int remove(const std::string& path) override {
    if (fails()) return error;
    return files.erase(path) == 1 ? 0 : ENOENT;
  }
  std::vector<std::string> list(const std::string& folder, int* result) override {
    *result = fails() ? error : 0;
    std::vector<std::string> names;
    for (const auto& [path, file] : files) {
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
  [[nodiscard]] FakeDisk afterPowerCut(std::size_t extra) const {
    FakeDisk left;
    for (const auto& [path, file] : files) {
      left.files[path] = std::make_shared<File>();
      left.files[path]->bytes = file->bytes.substr(0, file->synced + extra);
    }
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
    Writer(FakeDisk& disk, std::shared_ptr<File> file) : disk_(disk), file_(std::move(file)) {}
    int write(std::span<const std::byte> bytes) override {
      const bool fails = disk_.fails();
      const std::size_t count = fails ? bytes.size() / 2 : bytes.size();
      if (!fails && count > disk_.room) return ENOSPC;
      file_->bytes.append(reinterpret_cast<const char*>(bytes.data()), count);
      disk_.room -= std::min<std::uint64_t>(disk_.room, count);
      return fails ? disk_.error : 0;
    }
    int sync() override {
      if (disk_.fails()) {
        std::fill(file_->bytes.begin() + static_cast<std::ptrdiff_t>(file_->synced),
                  file_->bytes.end(), '\0');
        return disk_.error;
      }
      file_->synced = file_->bytes.size();
      return 0;
    }
    int commit() override { return 0; }

   private:
    FakeDisk& disk_;
    std::shared_ptr<File> file_;
  };
};

/// Locks of one machine; `dead` processes hold none.
class FakeLocks final : public FileLocks {
 public:
  std::string mark = "1 1 boot";
  bool working = true;
  std::set<std::string> held;
  std::set<std::string> running{"1 1 boot"};

  std::unique_ptr<Lock> lock(const std::string& path, int* error) override {
    *error = !working ? ENOTSUP : held.contains(path) ? EWOULDBLOCK : 0;
    if (*error != 0) return nullptr;
    held.insert(path);
    return std::make_unique<Held>(*this, path);
  }
  std::string processMark() const override { return mark; }
  bool isRunning(const std::string& processMark) const override {
    return running.contains(processMark);
  }

 private:
  struct Held final : Lock {
    Held(FakeLocks& locks, std::string path) : locks_(locks), path_(std::move(path)) {}
    ~Held() override { locks_.held.erase(path_); }
    FakeLocks& locks_;
    std::string path_;
  };
};

}  // namespace ovka::testing
