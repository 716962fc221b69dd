#include "WholeFile.h"

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace ovka {
namespace {

namespace fs = std::filesystem;

std::string reason(int error) {
  return error == 0 ? "it does not take any more" : std::generic_category().message(error);
}

}  // namespace

WholeFile::~WholeFile() {
  if (!file_.is_open()) return;
  file_.close();
  removePart();
}

void WholeFile::removePart() const {
  std::error_code ignored;
  if (part_ != target_) fs::remove(part_, ignored);
}

std::string WholeFile::failure(const std::string& why) const {
  return "cannot write " + path_ + ": " + why;
}

std::string WholeFile::open(const std::string& path) {
  path_ = path;
  std::error_code ignored;
  // What a link points to gets the contents; the link stays.
  target_ = fs::is_symlink(path, ignored) ? fs::canonical(path, ignored).string() : path;
  if (target_.empty()) target_ = path;
  const fs::path whole(target_);
  if (!whole.has_filename() || fs::is_directory(whole, ignored))
    return failure(reason(EISDIR) + "; name a file");
  // A pipe or a device is written to as it is: a rename would replace it.
  const bool plain = !fs::exists(whole, ignored) || fs::is_regular_file(whole, ignored);
  part_ = plain ? (whole.parent_path() / ("." + whole.filename().string() + ".part")).string()
                : target_;
  errno = 0;
  file_.open(part_, std::ios::binary | std::ios::trunc);
  return file_.is_open() ? std::string() : failure(reason(errno));
}

std::string WholeFile::commit() {
  errno = 0;
  const bool written = file_.good() && file_.flush().good();
  const int error = errno;
  file_.close();
  std::error_code problem;
  if (written && !file_.fail()) {
    if (part_ != target_) fs::rename(part_, target_, problem);
    if (!problem) return {};
  }
  removePart();
  return failure(problem ? problem.message() : reason(error));
}

}  // namespace ovka
