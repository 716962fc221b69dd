#pragma once

#include "Files.h"
#include "Folders.h"
#include "HostFacts.h"

namespace ovka {

/// Files through the system calls. An atomic file is written as ".NAME.PID-N.part" beside its
/// target, synced and renamed over it; it takes over the target's permissions, and a symbolic link
/// at the end of the path is followed, so that the link stays a link.
class LinuxFiles final : public Files {
 public:
  [[nodiscard]] std::unique_ptr<FileReader> read(const std::string& path, int* error) override;
  [[nodiscard]] std::unique_ptr<FileWriter> write(const std::string& path, WriteMode mode,
                                                  int* error) override;
  [[nodiscard]] int makeFolder(const std::string& path) override;
  [[nodiscard]] int remove(const std::string& path) override;
  [[nodiscard]] std::vector<std::string> list(const std::string& folder, int* error) override;
  [[nodiscard]] int syncFolder(const std::string& folder) override;
  [[nodiscard]] int freeBytes(const std::string& folder, std::uint64_t* bytes) override;
};

/// "/Users/Shared/..." and "~/Library/Preferences/...": the folder of that name when it is there
/// and writable, else the user's data folder ($XDG_DATA_HOME/OVKA/Shared) and configuration folder
/// ($XDG_CONFIG_HOME/OVKA). OVKA_HOME in the environment overrides both (OVKA_HOME/Shared,
/// OVKA_HOME/Preferences). The environment is read once, by the constructor.
class LinuxFolders final : public Folders {
 public:
  LinuxFolders();
  [[nodiscard]] std::string resolve(std::string_view path) const override;

 private:
  std::string shared_;
  std::string preferences_;
};

class LinuxHostFacts final : public HostFacts {
 public:
  [[nodiscard]] std::string machineName() const override;
  [[nodiscard]] LocalTime localTime(std::int64_t wallNanoseconds) const override;
};

}  // namespace ovka
