#pragma once

#include <cerrno>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Files.h"
#include "Folders.h"
#include "PropertyListReader.h"
#include "Shell.h"

namespace ovka::fuzzing {

/// An application that does nothing.
struct NoShell : RecordingControl, AnnotationTrack {
  void PauseMovie() override {}
  void StopRecord2VideoandBrainwave() override {}
  void StartRecord2VideoandBrainwave() override {}
  void AutoSaveWhenRecEnd() override {}
  std::int64_t getLengthofTime() override { return 0; }
  void gotoStartWhenLoopmodeAndEnd() override {}
  void autoReONport(std::int32_t /*on*/) override {}
};

struct NoFolders final : Folders {
  std::string resolve(std::string_view path) const override { return std::string(path); }
};

/// A disk with one file, whatever name is asked for, that cannot be written to.
struct OneFile final : Files {
  std::string_view bytes;    ///< the caller keeps them
  std::string listed = "a";  ///< the file's name
  bool there = true;

  std::unique_ptr<FileReader> read(const std::string& /*path*/, int* error) override {
    *error = there ? 0 : ENOENT;
    return there ? std::make_unique<MemoryFile>(bytes) : nullptr;
  }
  std::unique_ptr<FileWriter> write(const std::string& /*path*/, WriteMode /*mode*/,
                                    int* error) override {
    *error = EROFS;
    return nullptr;
  }
  int makeFolder(const std::string& /*path*/) override { return EROFS; }
  int remove(const std::string& /*path*/) override { return EROFS; }
  std::vector<std::string> list(const std::string& /*folder*/, int* error) override {
    *error = 0;
    return {listed};
  }
  int freeBytes(const std::string& /*folder*/, std::uint64_t* /*bytes*/) override { return EROFS; }
};

}  // namespace ovka::fuzzing
