#pragma once

#include <array>
#include <doctest/doctest.h>
#include <fcntl.h>
#include <filesystem>
#include <poll.h>
#include <stdlib.h>
#include <string>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

namespace ovka::testing {

/// The far end of a serial line: the master of a real pseudo-terminal, whose slave starts as a
/// Linux line does: cooked and echoing.
class FarEnd {
 public:
  FarEnd() : master_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
    REQUIRE(master_ >= 0);
    REQUIRE(grantpt(master_) == 0);
    REQUIRE(unlockpt(master_) == 0);
    std::array<char, 64> name{};
    REQUIRE(ptsname_r(master_, name.data(), name.size()) == 0);
    path_ = name.data();
  }
  ~FarEnd() { hangUp(); }
  FarEnd(const FarEnd&) = delete;
  FarEnd& operator=(const FarEnd&) = delete;

  [[nodiscard]] const std::string& path() const { return path_; }

  void send(const std::string& bytes) const {
    REQUIRE(::write(master_, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
  }
  /// What arrives until `count` bytes are there or half a second passes without one.
  [[nodiscard]] std::string receive(std::size_t count) const {
    std::string all;
    std::array<char, 4096> chunk{};
    struct pollfd entry {
      master_, POLLIN, 0
    };
    while (all.size() < count && ::poll(&entry, 1, 500) > 0) {
      const ssize_t got = ::read(master_, chunk.data(), chunk.size());
      if (got <= 0) break;
      all.append(chunk.data(), static_cast<std::size_t>(got));
    }
    return all;
  }
  /// The slave's attributes as another program sees them.
  [[nodiscard]] struct termios attributes() const {
    struct termios line {};
    REQUIRE(tcgetattr(master_, &line) == 0);
    return line;
  }
  void hangUp() {
    if (master_ >= 0) ::close(master_);
    master_ = -1;
  }

 private:
  int master_;
  std::string path_;
};

}  // namespace ovka::testing
