#include "PseudoTerminal.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

namespace ovka {
namespace {

/// Opens the slave, makes it raw and empty, and closes it again: the settings stay with the pair,
/// and from now on the master reports whether a host has the slave open.
int makeFresh(const char* path) {
  const int slave = ::open(path, O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (slave < 0) return errno;
  termios attributes{};
  int error = ::tcgetattr(slave, &attributes) == 0 ? 0 : errno;
  if (error == 0) {
    ::cfmakeraw(&attributes);
    attributes.c_cflag |= CREAD | CLOCAL;
    if (::tcsetattr(slave, TCSANOW, &attributes) != 0) error = errno;
  }
  // What the last host left unread stays in the slave, and so does its claim of exclusive use.
  ::tcflush(slave, TCIFLUSH);
  ::ioctl(slave, TIOCNXCL);
  ::close(slave);
  return error;
}

std::string targetOf(const std::string& link) {
  std::array<char, 4096> target{};
  const ssize_t length = ::readlink(link.c_str(), target.data(), target.size());
  return length > 0 ? std::string(target.data(), static_cast<std::size_t>(length)) : std::string();
}

}  // namespace

PseudoTerminal::~PseudoTerminal() {
  removeLink();
  closeMaster();
}

std::string PseudoTerminal::open(const std::string& link) {
  if (master_ >= 0) return "the pseudo-terminal is open already";
  if (const int error = makePair(); error != 0) {
    return std::string("cannot make a pseudo-terminal: ") + std::strerror(error);
  }
  link_ = link;
  if (const int error = makeLink(); error != 0) {
    closeMaster();
    const std::string target = targetOf(link);
    link_.clear();
    if (error != EEXIST) return "cannot make the link " + link + ": " + std::strerror(error);
    if (target.empty()) {
      return "cannot make the link " + link + ": there is something else of that name";
    }
    return "cannot make the link " + link + ": it points to " + target +
           ", which exists; remove it if nothing uses it";
  }
  return {};
}

int PseudoTerminal::makePair() {
  master_ = ::posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (master_ < 0) return errno;
  std::array<char, 256> name{};
  int error = 0;
  if (::grantpt(master_) != 0 || ::unlockpt(master_) != 0) {
    error = errno;
  } else {
    error = ::ptsname_r(master_, name.data(), name.size());
  }
  if (error == 0) error = makeFresh(name.data());
  if (error != 0) {
    closeMaster();
    return error;
  }
  slave_ = name.data();
  return 0;
}

int PseudoTerminal::makeLink() {
  if (link_.empty()) return 0;
  struct stat found {};
  const bool stale = ::lstat(link_.c_str(), &found) == 0 && S_ISLNK(found.st_mode) &&
                     ::stat(link_.c_str(), &found) != 0 && errno == ENOENT;
  if (stale && ::unlink(link_.c_str()) != 0) return errno;
  if (::symlink(slave_.c_str(), link_.c_str()) != 0) return errno;
  linkTarget_ = slave_;
  return 0;
}

void PseudoTerminal::removeLink() {
  if (!linkTarget_.empty() && targetOf(link_) == linkTarget_) ::unlink(link_.c_str());
  linkTarget_.clear();
}

void PseudoTerminal::closeMaster() {
  if (master_ >= 0) ::close(master_);
  master_ = -1;
  slave_.clear();
}

std::string PseudoTerminal::path() const {
  if (master_ < 0) return {};
  return link_.empty() ? slave_ : link_;
}

bool PseudoTerminal::hostPresent() {
  if (master_ < 0) return false;
  pollfd state{master_, 0, 0};
  return ::poll(&state, 1, 0) >= 0 && (state.revents & (POLLHUP | POLLERR)) == 0;
}

std::size_t PseudoTerminal::read(std::span<std::uint8_t> bytes) {
  if (master_ < 0) return 0;
  const ssize_t count = ::read(master_, bytes.data(), bytes.size());
  return count > 0 ? static_cast<std::size_t>(count) : 0;
}

std::size_t PseudoTerminal::write(std::span<const std::uint8_t> bytes) {
  std::size_t taken = 0;
  while (master_ >= 0 && taken < bytes.size()) {
    const ssize_t count = ::write(master_, bytes.data() + taken, bytes.size() - taken);
    if (count <= 0) break;
    taken += static_cast<std::size_t>(count);
  }
  return taken;
}

void PseudoTerminal::discardUnread() {
  if (master_ < 0) return;
  ::tcflush(master_, TCOFLUSH);
  if (makeFresh(slave_.c_str()) != EBUSY) return;
  // A host that died while it claimed exclusive use has locked the slave for good: take another.
  hangUp();
  static_cast<void>(comeBack());
}

void PseudoTerminal::hangUp() {
  removeLink();
  closeMaster();
}

int PseudoTerminal::comeBack() {
  if (master_ >= 0) return 0;
  if (const int error = makePair(); error != 0) return error;
  const int error = makeLink();
  if (error != 0) closeMaster();
  return error;
}

}  // namespace ovka
