#pragma once

#include <cstdio>
#include <fcntl.h>
#include <functional>
#include <iostream>
#include <sched.h>
#include <string>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ovka::testing {

/// Runs `body` in a child process that sees mounts of its own, gone with it; its result is the
/// child's. -1: this machine does not permit that, `body` did not run. -2: the child died.
inline int inOwnMounts(const std::function<int()>& body) {
  constexpr int kNotPermitted = 77;
  const uid_t user = ::geteuid();
  std::cout.flush();
  std::fflush(nullptr);  // or the child writes it again
  const pid_t child = ::fork();
  if (child == 0) {
    // Without the right to mount, the right over a user namespace of one's own does.
    bool may = ::unshare(CLONE_NEWNS) == 0;
    if (!may && ::unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0) {
      const int map = ::open("/proc/self/uid_map", O_WRONLY);
      const std::string line = "0 " + std::to_string(user) + " 1";
      may = ::write(map, line.data(), line.size()) > 0;
      ::close(map);
    }
    may = may && ::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
    ::_exit(may ? body() : kNotPermitted);
  }
  int status = 0;
  if (child < 0 || ::waitpid(child, &status, 0) != child || !WIFEXITED(status)) return -2;
  return WEXITSTATUS(status) == kNotPermitted ? -1 : WEXITSTATUS(status);
}

/// An empty disk of a size ("64k") over a folder.
inline bool mountSmallDisk(const std::string& folder, const std::string& size) {
  return ::mount("tmpfs", folder.c_str(), "tmpfs", 0, ("mode=0777,size=" + size).c_str()) == 0;
}
/// The same disk in another size, its files as they are.
inline bool resizeDisk(const std::string& folder, const std::string& size) {
  return ::mount("none", folder.c_str(), nullptr, MS_REMOUNT, ("size=" + size).c_str()) == 0;
}

}  // namespace ovka::testing
