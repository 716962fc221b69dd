#include "TerminalScreen.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <sys/ioctl.h>
#include <termios.h>
#include <unistd.h>

namespace ovka::terminal {
namespace {

// Alternate screen, hidden cursor, no wrapping at the right edge; and back.
constexpr std::string_view kEnter = "\x1b[?1049h\x1b[?25l\x1b[?7l\x1b[2J";
constexpr std::string_view kLeave = "\x1b[0m\x1b[?7h\x1b[?25h\x1b[?1049l";

constexpr std::array<int, 6> kFaults{SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGQUIT};

termios saved{};
std::atomic<bool> entered{false};
std::array<struct sigaction, kFaults.size()> faultsBefore{};
struct sigaction stopBefore {};
struct sigaction sizeBefore {};

/// write() until all is out; safe inside a signal handler. False when the terminal is gone.
bool writeAll(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(STDOUT_FILENO, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    text.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

void enter() {
  termios raw = saved;
  // Signals by key stay on (Ctrl-C, Ctrl-Z); output processing too, for other programs' lines.
  raw.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
  raw.c_cc[VMIN] = 0;
  raw.c_cc[VTIME] = 0;
  tcsetattr(STDIN_FILENO, TCSADRAIN, &raw);
  writeAll(kEnter);
  entered = true;
}

void leave() {
  if (!entered.exchange(false)) return;
  writeAll(kLeave);
  tcsetattr(STDIN_FILENO, TCSANOW, &saved);
}

void onFault(int number) {
  leave();
  for (std::size_t i = 0; i < kFaults.size(); ++i) {
    if (kFaults[i] == number) sigaction(number, &faultsBefore[i], nullptr);
  }
  raise(number);
}

void onStop(int) {
  const int error = errno;
  leave();
  raise(SIGSTOP);  // this thread, so that nothing below runs before the stop
  enter();         // after SIGCONT
  errno = error;
}

/// Only there to interrupt the wait for a key.
void onResize(int) {}

void handle(int number, void (*handler)(int), struct sigaction* keep) {
  struct sigaction action {};
  action.sa_handler = handler;
  sigaction(number, &action, keep);
}

}  // namespace

bool TerminalScreen::usable() {
  const char* term = std::getenv("TERM");
  return isatty(STDIN_FILENO) == 1 && isatty(STDOUT_FILENO) == 1 && term != nullptr &&
         *term != '\0' && std::strcmp(term, "dumb") != 0;
}

TerminalScreen::TerminalScreen(StopSignals& stop) : stop_(stop) {
  tcgetattr(STDIN_FILENO, &saved);
  for (std::size_t i = 0; i < kFaults.size(); ++i) handle(kFaults[i], onFault, &faultsBefore[i]);
  handle(SIGTSTP, onStop, &stopBefore);
  handle(SIGWINCH, onResize, &sizeBefore);
  static const int atEnd = std::atexit(leave);
  static_cast<void>(atEnd);
  stop_.beforeSuddenEnd(leave);
  enter();
}

TerminalScreen::~TerminalScreen() {
  leave();
  stop_.beforeSuddenEnd(nullptr);
  for (std::size_t i = 0; i < kFaults.size(); ++i) sigaction(kFaults[i], &faultsBefore[i], nullptr);
  sigaction(SIGTSTP, &stopBefore, nullptr);
  sigaction(SIGWINCH, &sizeBefore, nullptr);
}

TerminalScreen::Size TerminalScreen::size() const {
  winsize window{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &window) != 0 || window.ws_col == 0 || window.ws_row == 0)
    return {};
  return {window.ws_col, window.ws_row};
}

bool TerminalScreen::draw(std::string_view frame) {
  return writeAll(frame);
}

/// The first key of what was typed, 0 when only swallowed sequences are left.
int TerminalScreen::takeTyped() {
  while (!typed_.empty()) {
    std::size_t length = 1;
    const bool sequence =
        typed_.size() > 1 && typed_[0] == '\x1b' && (typed_[1] == '[' || typed_[1] == 'O');
    if (sequence) {
      // Parameters, then one final byte from '@' on.
      length = 2;
      while (length < typed_.size() && typed_[length] < '@') ++length;
      length = std::min(length + 1, typed_.size());
    }
    const char first = typed_[0];
    typed_.erase(0, length);
    if (!sequence) return static_cast<unsigned char>(first);
  }
  return 0;
}

int TerminalScreen::key(std::chrono::nanoseconds atMost) {
  if (const int waiting = takeTyped(); waiting != 0) return waiting;
  if (!stop_.wait(atMost, STDIN_FILENO)) return 0;
  std::array<char, 64> bytes{};
  const ssize_t count = read(STDIN_FILENO, bytes.data(), bytes.size());
  if (count > 0) {
    typed_.assign(bytes.data(), static_cast<std::size_t>(count));
    return takeTyped();
  }
  if (count < 0 && (errno == EINTR || errno == EAGAIN)) return 0;
  return -1;
}

}  // namespace ovka::terminal
