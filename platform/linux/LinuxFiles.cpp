#include "LinuxFiles.h"

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>
#include <utility>

#include "PartFiles.h"

namespace ovka {
namespace {

/// One write call never passes more than this: the kernel's own limit is just below 2 GiB.
constexpr std::size_t kLargestCall = 1U << 30U;
/// An atomic file goes to the disk in steps of this many bytes.
constexpr std::uint64_t kHandOnBytes = 8U << 20U;

class Descriptor {
 public:
  explicit Descriptor(int fd) : fd_(fd) {}
  ~Descriptor() { close(); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  [[nodiscard]] int get() const { return fd_; }
  int close() {
    if (fd_ < 0) return 0;
    return ::close(std::exchange(fd_, -1)) == 0 ? 0 : errno;
  }

 private:
  int fd_;
};

class Reader final : public FileReader {
 public:
  Reader(int fd, std::uint64_t size) : fd_(fd), size_(size) {}
  [[nodiscard]] std::uint64_t size() const override { return size_; }

  [[nodiscard]] int readAt(std::uint64_t offset, std::span<std::byte> out,
                           std::size_t* got) override {
    *got = 0;
    while (*got < out.size()) {
      const ssize_t n =
          ::pread(fd_.get(), out.data() + *got, std::min(out.size() - *got, kLargestCall),
                  static_cast<off_t>(offset + *got));
      if (n < 0 && errno == EINTR) continue;
      if (n < 0) return errno;
      if (n == 0) break;
      *got += static_cast<std::size_t>(n);
    }
    return 0;
  }

 private:
  Descriptor fd_;
  std::uint64_t size_;
};

std::string folderOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

/// A rename survives a power cut only once its folder is on disk too.
int syncNames(const std::string& folder) {
  const Descriptor fd(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (fd.get() < 0) return errno;
  // Some file systems cannot sync a folder; they have nothing to sync then.
  return ::fsync(fd.get()) == 0 || errno == EINVAL ? 0 : errno;
}

class Writer final : public FileWriter {
 public:
  /// `part` is empty when the file is written under its own name.
  Writer(int fd, std::string target, std::string part)
      : fd_(fd),
        lock_(part.empty() ? -1 : ::fcntl(fd, F_DUPFD_CLOEXEC, 0)),
        target_(std::move(target)),
        part_(std::move(part)) {}
  ~Writer() override {
    if (!part_.empty()) ::unlink(part_.c_str());
  }
  Writer(const Writer&) = delete;
  Writer& operator=(const Writer&) = delete;

  [[nodiscard]] int write(std::span<const std::byte> bytes) override {
    while (!bytes.empty()) {
      const ssize_t n = ::write(fd_.get(), bytes.data(), std::min(bytes.size(), kLargestCall));
      if (n < 0 && errno == EINTR) continue;
      if (n < 0) return errno;
      bytes = bytes.subspan(static_cast<std::size_t>(n));
      written_ += static_cast<std::uint64_t>(n);
    }
    if (!part_.empty() && written_ - handedOn_ >= kHandOnBytes) handOn();
    return 0;
  }

  [[nodiscard]] int sync() override { return ::fdatasync(fd_.get()) == 0 ? 0 : errno; }

  [[nodiscard]] int commit() override {
    if (part_.empty()) return fd_.close();
    if (::fsync(fd_.get()) != 0) return errno;
    if (const int error = fd_.close()) return error;
    if (::rename(part_.c_str(), target_.c_str()) != 0) return errno;
    part_.clear();
    return syncNames(folderOf(target_));
  }

 private:
  /// Sets the disk to work on what was written, so that the sync at the end has little left to do.
  void handOn() {
    static_cast<void>(::sync_file_range(fd_.get(), static_cast<off_t>(handedOn_),
                                        static_cast<off_t>(written_ - handedOn_),
                                        SYNC_FILE_RANGE_WRITE));
    handedOn_ = written_;
  }

  Descriptor fd_;
  Descriptor lock_;  ///< keeps the part locked until it has its name
  std::string target_;
  std::string part_;
  std::uint64_t written_ = 0;
  std::uint64_t handedOn_ = 0;
};

/// Where the name really points: a link's target, or the path itself when there is nothing yet.
std::string followed(const std::string& path) {
  char* real = ::realpath(path.c_str(), nullptr);
  if (real == nullptr) return path;
  std::string result(real);
  std::free(real);
  return result;
}

std::unique_ptr<FileWriter> writeAtomic(const std::string& path, int* error) {
  const std::string target = followed(path);
  struct stat old {};
  const bool replaces = ::stat(target.c_str(), &old) == 0;
  if (replaces && S_ISDIR(old.st_mode)) {
    *error = EISDIR;
    return nullptr;
  }
  std::string part;
  const int fd = createPartFile(target, &part, error);
  if (fd < 0) return nullptr;
  if (replaces) static_cast<void>(::fchmod(fd, old.st_mode & 07777U));
  return std::make_unique<Writer>(fd, target, std::move(part));
}

}  // namespace

std::unique_ptr<FileReader> LinuxFiles::read(const std::string& path, int* error) {
  *error = 0;
  // Without O_NONBLOCK a pipe of that name would wait for a writer for ever.
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  struct stat facts {};
  if (fd < 0 || ::fstat(fd, &facts) != 0) {
    *error = errno;
  } else if (S_ISDIR(facts.st_mode)) {
    *error = EISDIR;
  } else if (!S_ISREG(facts.st_mode)) {
    *error = EINVAL;
  }
  if (*error != 0) {
    if (fd >= 0) ::close(fd);
    return nullptr;
  }
  static_cast<void>(::posix_fadvise(fd, 0, 0, POSIX_FADV_SEQUENTIAL));
  return std::make_unique<Reader>(fd, static_cast<std::uint64_t>(facts.st_size));
}

std::unique_ptr<FileWriter> LinuxFiles::write(const std::string& path, WriteMode mode, int* error) {
  *error = 0;
  if (mode == WriteMode::Atomic) return writeAtomic(path, error);
  int flags = O_WRONLY | O_CREAT | O_CLOEXEC;
  if (mode == WriteMode::InPlace) flags |= O_TRUNC;
  if (mode == WriteMode::Append) flags |= O_APPEND;
  if (mode == WriteMode::NewOnly) flags |= O_EXCL;
  const int fd = ::open(path.c_str(), flags, 0666);
  if (fd < 0) {
    *error = errno;
    return nullptr;
  }
  return std::make_unique<Writer>(fd, path, std::string());
}

int LinuxFiles::makeFolder(const std::string& path) {
  for (std::size_t end = path.find('/', 1);; end = path.find('/', end + 1)) {
    const std::string part = path.substr(0, end);
    if (::mkdir(part.c_str(), 0777) != 0 && errno != EEXIST) {
      const int error = errno;
      struct stat facts {};
      // A folder above may be there without the right to make one beside it.
      if (::stat(part.c_str(), &facts) != 0 || !S_ISDIR(facts.st_mode)) return error;
    }
    if (end == std::string::npos) break;
  }
  struct stat facts {};
  if (::stat(path.c_str(), &facts) != 0) return errno;
  return S_ISDIR(facts.st_mode) ? 0 : ENOTDIR;
}

int LinuxFiles::remove(const std::string& path) {
  return ::unlink(path.c_str()) == 0 ? 0 : errno;
}

std::vector<std::string> LinuxFiles::list(const std::string& folder, int* error) {
  *error = 0;
  std::vector<std::string> names;
  DIR* open = ::opendir(folder.c_str());
  if (open == nullptr) {
    *error = errno;
    return names;
  }
  while (const dirent* entry = ::readdir(open)) {
    const std::string name = entry->d_name;
    if (name != "." && name != "..") names.push_back(name);
  }
  ::closedir(open);
  std::sort(names.begin(), names.end());
  return names;
}

int LinuxFiles::syncFolder(const std::string& folder) {
  return syncNames(folder);
}

int LinuxFiles::freeBytes(const std::string& folder, std::uint64_t* bytes) {
  struct statvfs facts {};
  if (::statvfs(folder.c_str(), &facts) != 0) return errno;
  *bytes = std::uint64_t{facts.f_bavail} * facts.f_frsize;
  return 0;
}

}  // namespace ovka
