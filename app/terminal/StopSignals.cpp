#include "StopSignals.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include "Failure.h"

namespace ovka::terminal {
namespace {

constexpr std::array<int, 3> kSignals{SIGINT, SIGTERM, SIGHUP};

std::array<int, 2> wakePipe{-1, -1};
std::atomic<int> received{0};
std::atomic<void (*)()> lastWord{nullptr};
std::array<struct sigaction, kSignals.size()> before{};
struct sigaction pipeBefore {};
struct sigaction sizeBefore {};

void onSignal(int number) {
  const int error = errno;
  if (received.fetch_add(1) > 0) {
    if (const auto last = lastWord.load()) last();
    // Unblocked only when this handler returns, and then with the default action: the end.
    struct sigaction byDefault {};
    byDefault.sa_handler = SIG_DFL;
    sigaction(number, &byDefault, nullptr);
    raise(number);
  }
  const char byte = 1;
  [[maybe_unused]] const ssize_t written = write(wakePipe[1], &byte, 1);
  errno = error;
}

}  // namespace

StopSignals::StopSignals() {
  if (pipe2(wakePipe.data(), O_CLOEXEC | O_NONBLOCK) != 0)
    throw Failure(ExitCode::Failed, "no descriptors left for signals");
  received = 0;
  struct sigaction action {};
  action.sa_handler = onSignal;
  for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &action, &before[i]);
  struct sigaction ignore {};
  ignore.sa_handler = SIG_IGN;
  sigaction(SIGPIPE, &ignore, &pipeBefore);
  sigaction(SIGXFSZ, &ignore, &sizeBefore);
}

StopSignals::~StopSignals() {
  for (std::size_t i = 0; i < kSignals.size(); ++i) sigaction(kSignals[i], &before[i], nullptr);
  sigaction(SIGPIPE, &pipeBefore, nullptr);
  sigaction(SIGXFSZ, &sizeBefore, nullptr);
  for (int& descriptor : wakePipe) {
    close(descriptor);
    descriptor = -1;
  }
}

bool StopSignals::stopped() const noexcept {
  return received > 0;
}

void StopSignals::beforeSuddenEnd(void (*last)()) noexcept {
  lastWord = last;
}

bool StopSignals::wait(std::chrono::nanoseconds atMost, int other) const {
  std::array<pollfd, 2> polled{pollfd{wakePipe[0], POLLIN, 0}, pollfd{other, POLLIN, 0}};
  const std::int64_t nanoseconds = std::max<std::int64_t>(atMost.count(), 0);
  timespec limit{nanoseconds / 1'000'000'000, nanoseconds % 1'000'000'000};
  if (stopped()) return false;
  if (ppoll(polled.data(), polled.size(), &limit, nullptr) <= 0) return false;
  return polled[1].revents != 0;
}

}  // namespace ovka::terminal
