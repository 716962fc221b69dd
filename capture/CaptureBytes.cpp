#include "CaptureBytes.h"

#include <cerrno>

namespace ovka {
namespace {

/// The errno of a failed call, or EIO where the library left none.
int failure() {
  return errno != 0 ? errno : EIO;
}

}  // namespace

int FileSink::open(const std::string& path, bool overwrite) {
  errno = 0;
  file_.reset(std::fopen(path.c_str(), overwrite ? "wb" : "wbx"));
  path_ = path;
  return file_ ? 0 : failure();
}

int FileSink::write(std::span<const std::uint8_t> bytes) {
  if (!file_) return EBADF;
  errno = 0;
  return std::fwrite(bytes.data(), 1, bytes.size(), file_.get()) == bytes.size() ? 0 : failure();
}

int FileSink::flush() {
  if (!file_) return EBADF;
  errno = 0;
  return std::fflush(file_.get()) == 0 ? 0 : failure();
}

int FileSink::close() {
  if (!file_) return 0;
  errno = 0;
  return std::fclose(file_.release()) == 0 ? 0 : failure();
}

int FileSource::open(const std::string& path) {
  errno = 0;
  file_.reset(std::fopen(path.c_str(), "rb"));
  error_ = 0;
  return file_ ? 0 : failure();
}

std::size_t FileSource::read(std::span<std::uint8_t> bytes) {
  if (!file_) {
    error_ = EBADF;
    return 0;
  }
  errno = 0;
  const std::size_t count = std::fread(bytes.data(), 1, bytes.size(), file_.get());
  if (count < bytes.size() && std::ferror(file_.get()) != 0) error_ = failure();
  return count;
}

}  // namespace ovka
