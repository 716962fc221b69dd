#include "ScratchFolder.h"

#include <cerrno>
#include <charconv>
#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <system_error>
#include <unistd.h>

#include "Failure.h"
#include "LinuxFiles.h"

namespace ovka::terminal {
namespace {

constexpr std::string_view kPrefix = ".ovka-";
constexpr std::string_view kRandom = "-XXXXXX";

/// The process that a name ".ovka-PID-XXXXXX" tells of; 0: it is no such name.
pid_t processOf(std::string_view name) {
  if (!name.starts_with(kPrefix) || name.size() <= kPrefix.size() + kRandom.size()) return 0;
  name = name.substr(kPrefix.size());
  const char* const end = name.data() + name.size() - kRandom.size();
  pid_t process = 0;
  const auto read = std::from_chars(name.data(), end, process);
  return read.ec == std::errc() && read.ptr == end && *end == '-' ? process : 0;
}

void removeWhole(LinuxFiles& files, const std::string& folder) {
  int error = 0;
  for (const std::string& name : files.list(folder, &error))
    static_cast<void>(files.remove(folder + "/" + name));
  static_cast<void>(rmdir(folder.c_str()));
}

/// A folder that is not a link, locked for this process; -1 when another one holds it.
int lockFolder(const std::string& folder) {
  const int fd = open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC);
  if (fd >= 0 && flock(fd, LOCK_EX | LOCK_NB) != 0) {
    close(fd);
    return -1;
  }
  return fd;
}

void removeLeftovers(const std::string& folder) {
  LinuxFiles files;
  int error = 0;
  for (const std::string& name : files.list(folder, &error)) {
    const pid_t process = processOf(name);
    if (process <= 0 || process == getpid() || kill(process, 0) == 0 || errno != ESRCH) continue;
    const std::string left = folder + "/" + name;
    const int lock = lockFolder(left);
    if (lock < 0) continue;
    removeWhole(files, left);
    close(lock);
  }
}

}  // namespace

ScratchFolder::ScratchFolder(const std::string& beside) {
  const std::size_t slash = beside.rfind('/');
  const std::string folder = slash == std::string::npos ? "." : beside.substr(0, slash);
  removeLeftovers(folder);
  path_ = folder + "/" + std::string(kPrefix) + std::to_string(getpid()) + std::string(kRandom);
  if (mkdtemp(path_.data()) == nullptr) {
    throw Failure(ExitCode::Output, "cannot make a folder beside " + beside + ": " +
                                        std::generic_category().message(errno));
  }
  lock_ = lockFolder(path_);
}

ScratchFolder::~ScratchFolder() {
  LinuxFiles files;
  removeWhole(files, path_);
  if (lock_ >= 0) close(lock_);
}

}  // namespace ovka::terminal
