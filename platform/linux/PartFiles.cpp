#include "PartFiles.h"

#include <cerrno>
#include <charconv>
#include <csignal>
#include <dirent.h>
#include <fcntl.h>
#include <mutex>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

namespace ovka {
namespace {

constexpr std::string_view kEnding = ".part";
/// Bytes of NAME that fit beside what is added; file systems take 255.
constexpr std::size_t kLongestName = 200;
/// Names that leftovers of processes with this one's number may have taken.
constexpr int kMostAttempts = 1000;

/// The process that a name "PREFIX" "PID-N.part" tells of; 0: it is no such name.
[[nodiscard]] pid_t processOf(std::string_view name, std::string_view prefix) {
  if (!name.starts_with(prefix) || !name.ends_with(kEnding)) return 0;
  if (name.size() <= prefix.size() + kEnding.size()) return 0;
  name = name.substr(prefix.size(), name.size() - prefix.size() - kEnding.size());
  const char* const end = name.data() + name.size();
  pid_t process = 0;
  unsigned number = 0;
  const auto first = std::from_chars(name.data(), end, process);
  if (first.ec != std::errc() || first.ptr == end || *first.ptr != '-' || process <= 0) return 0;
  const auto second = std::from_chars(first.ptr + 1, end, number);
  return second.ec == std::errc() && second.ptr == end ? process : 0;
}

/// Nobody writes a file that can be locked. A writer of another machine or container has a number
/// that means nothing here, but its lock counts.
[[nodiscard]] bool isGone(pid_t process) {
  return process == ::getpid() || (::kill(process, 0) != 0 && errno == ESRCH);
}

void removeIfUnlocked(const std::string& path) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOFOLLOW);
  if (fd < 0) return;
  struct stat facts {};
  if (::fstat(fd, &facts) == 0 && S_ISREG(facts.st_mode) && ::flock(fd, LOCK_EX | LOCK_NB) == 0) {
    static_cast<void>(::unlink(path.c_str()));
  }
  ::close(fd);
}

void removeLeftovers(const std::string& folder, std::string_view prefix) {
  DIR* const open = ::opendir(folder.c_str());
  if (open == nullptr) return;
  while (const dirent* entry = ::readdir(open)) {
    const pid_t process = processOf(entry->d_name, prefix);
    if (process != 0 && isGone(process)) removeIfUnlocked(folder + "/" + entry->d_name);
  }
  ::closedir(open);
}

/// False: somebody who removes leftovers came between the making and the locking.
[[nodiscard]] bool lockNew(int fd) {
  if (::flock(fd, LOCK_EX | LOCK_NB) != 0) return errno != EWOULDBLOCK;
  struct stat facts {};
  return ::fstat(fd, &facts) != 0 || facts.st_nlink > 0;
}

}  // namespace

int createPartFile(const std::string& target, std::string* part, int* error) {
  // Held until the new file is locked: its own process tells a leftover by the lock alone.
  static std::mutex making;
  static unsigned counter = 0;
  const std::scoped_lock guard(making);
  const std::size_t slash = target.rfind('/');
  const std::string folder = slash == std::string::npos ? "." : target.substr(0, slash);
  const std::string prefix = "." + target.substr(slash + 1).substr(0, kLongestName) + ".";
  removeLeftovers(folder.empty() ? "/" : folder, prefix);
  for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
    *part = folder + "/" + prefix + std::to_string(::getpid()) + "-" + std::to_string(++counter) +
            std::string(kEnding);
    const int fd = ::open(part->c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (fd < 0 && errno != EEXIST) break;
    if (fd < 0) continue;
    if (lockNew(fd)) return fd;
    ::close(fd);
  }
  *error = errno;
  return -1;
}

}  // namespace ovka
