#include "LinuxFileLocks.h"

#include <cerrno>
#include <fcntl.h>
#include <fstream>
#include <sys/file.h>
#include <unistd.h>

namespace ovka {
namespace {

class Held final : public FileLocks::Lock {
 public:
  explicit Held(int fd) : fd_(fd) {}
  ~Held() override { ::close(fd_); }
  Held(const Held&) = delete;
  Held& operator=(const Held&) = delete;

 private:
  int fd_;
};

/// "NUMBER START BOOT" of a process; empty when there is none. A number is given again after a
/// while, but never with the same start (clock ticks since the boot).
std::string markOf(const std::string& number) {
  std::ifstream statFile("/proc/" + number + "/stat");
  std::string stat;
  std::getline(statFile, stat);
  // The program's name is in parentheses and may hold anything; the start is the 20th word behind.
  std::size_t at = stat.rfind(')');
  if (at == std::string::npos) return {};
  for (int word = 0; word < 20 && at != std::string::npos; ++word) at = stat.find(' ', at + 1);
  if (at == std::string::npos) return {};
  std::ifstream bootFile("/proc/sys/kernel/random/boot_id");
  std::string boot;
  std::getline(bootFile, boot);
  return number + " " + stat.substr(at + 1, stat.find(' ', at + 1) - at - 1) + " " + boot;
}

}  // namespace

std::unique_ptr<FileLocks::Lock> LinuxFileLocks::lock(const std::string& path, int* error) {
  *error = 0;
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (fd < 0) {
    *error = errno;
    return nullptr;
  }
  if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
    *error = errno;
    ::close(fd);
    return nullptr;
  }
  return std::make_unique<Held>(fd);
}

std::string LinuxFileLocks::processMark() const {
  return markOf(std::to_string(::getpid()));
}

bool LinuxFileLocks::isRunning(const std::string& processMark) const {
  const std::string number = processMark.substr(0, processMark.find(' '));
  if (number.empty() || number.find_first_not_of("0123456789") != std::string::npos) return false;
  return markOf(number) == processMark;
}

}  // namespace ovka
