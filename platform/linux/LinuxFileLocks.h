#pragma once

#include "FileLocks.h"

namespace ovka {

/// Advisory locks (flock) and process names made of number, start time and the machine's boot.
class LinuxFileLocks final : public FileLocks {
 public:
  [[nodiscard]] std::unique_ptr<Lock> lock(const std::string& path, int* error) override;
  [[nodiscard]] std::string processMark() const override;
  [[nodiscard]] bool isRunning(const std::string& processMark) const override;
};

}  // namespace ovka
