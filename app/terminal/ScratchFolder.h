#pragma once

#include <string>

namespace ovka::terminal {

/// A folder ".ovka-PID-XXXXXX" beside a file that is to be written, gone with this object: work on
/// files leaves the user's own backups alone. Making one removes those beside it that killed
/// processes left: locked by nobody, of a process that is gone. Where locks do not work, nothing is
/// removed. Flat: it holds files only.
class ScratchFolder {
 public:
  /// Throws Failure (ExitCode::Output).
  explicit ScratchFolder(const std::string& beside);
  ~ScratchFolder();
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  std::string path_;
  int lock_ = -1;
};

}  // namespace ovka::terminal
