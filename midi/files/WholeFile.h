#pragma once

#include <fstream>
#include <ostream>
#include <string>

namespace ovka {

/// A file written beside its name, which it takes only when all of it was written: what bore the
/// name before stays until then, and stays if anything fails. Pipes and devices are written to as
/// they are. One thread.
class WholeFile {
 public:
  WholeFile() = default;
  /// Removes what was not committed.
  ~WholeFile();
  WholeFile(const WholeFile&) = delete;
  WholeFile& operator=(const WholeFile&) = delete;

  /// Empty when open, else one line: "cannot write PATH: No such file or directory".
  [[nodiscard]] std::string open(const std::string& path);
  [[nodiscard]] bool isOpen() const { return file_.is_open(); }
  /// Binary, can seek.
  [[nodiscard]] std::ostream& stream() { return file_; }
  /// Whether all that was written so far was taken.
  [[nodiscard]] bool good() const { return file_.good(); }
  /// Flushes, closes, takes the name. Empty when done, else one line.
  [[nodiscard]] std::string commit();
  [[nodiscard]] const std::string& path() const { return path_; }

 private:
  [[nodiscard]] std::string failure(const std::string& why) const;
  void removePart() const;

  std::string path_;
  std::string target_;  // of the path, when it is a link
  std::string part_;
  std::ofstream file_;
};

}  // namespace ovka
