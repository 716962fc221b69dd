#pragma once

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <string>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace ovka::testing {

/// An X server without a screen, for this program alone; OpenGL is drawn by the processor. It picks
/// a free display itself, so any number of them run side by side, and ends with the program.
class VirtualDisplay {
 public:
  VirtualDisplay(const char* screen = "1600x1200x24") {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return;
    child_ = fork();
    if (child_ == 0) serve(ends[1], screen);
    close(ends[1]);
    char letter = 0;
    while (read(ends[0], &letter, 1) == 1 && letter != '\n') number_ += letter;
    close(ends[0]);
    if (letter != '\n') number_.clear();
  }
  ~VirtualDisplay() {
    if (child_ <= 0) return;
    kill(child_, SIGTERM);
    waitpid(child_, nullptr, 0);
  }
  VirtualDisplay(const VirtualDisplay&) = delete;
  VirtualDisplay& operator=(const VirtualDisplay&) = delete;

  /// False where there is no Xvfb, or it does not start.
  [[nodiscard]] bool works() const { return !number_.empty(); }
  /// ":7"
  [[nodiscard]] std::string name() const { return ":" + number_; }
  /// Every window opened from now on appears there. Before the application is made.
  void use() const {
    setenv("DISPLAY", name().c_str(), 1);
    setenv("QT_QPA_PLATFORM", "xcb", 1);
    setenv("LIBGL_ALWAYS_SOFTWARE", "1", 1);
    unsetenv("WAYLAND_DISPLAY");
  }

 private:
  [[noreturn]] static void serve(int answer, const char* screen) {
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    const int nothing = open("/dev/null", O_RDWR);
    for (const int each : {0, 1, 2}) dup2(nothing, each);
    const int handed = dup(answer);  // without close-on-exec
    execlp("Xvfb", "Xvfb", "-displayfd", std::to_string(handed).c_str(), "-screen", "0", screen,
           "-nolisten", "tcp", static_cast<char*>(nullptr));
    _exit(1);
  }

  pid_t child_ = -1;
  std::string number_;
};

}  // namespace ovka::testing
