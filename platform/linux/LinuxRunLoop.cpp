#include "LinuxRunLoop.h"

#include <algorithm>
#include <cerrno>
#include <ctime>
#include <poll.h>
#include <sys/eventfd.h>
#include <system_error>
#include <unistd.h>
#include <utility>

#include "TickGrid.h"

namespace ovka {
namespace {

static_assert(std::atomic<bool>::is_always_lock_free, "stop() is called from signal handlers");

std::int64_t now() {
  return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
}

}  // namespace

LinuxRunLoop::LinuxRunLoop() : wakeDescriptor_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  if (wakeDescriptor_ < 0) {
    throw std::system_error(errno, std::generic_category(), "the main run loop cannot be made");
  }
}

LinuxRunLoop::~LinuxRunLoop() {
  ::close(wakeDescriptor_);
}

void LinuxRunLoop::wake() noexcept {
  const int kept = errno;
  const std::uint64_t one = 1;
  // Fails only when the counter is full, and then the loop is awake anyway.
  [[maybe_unused]] const ssize_t written = ::write(wakeDescriptor_, &one, sizeof one);
  errno = kept;
}

void LinuxRunLoop::stop() noexcept {
  stopped_.store(true);
  wake();
}

void LinuxRunLoop::waitUntil(std::optional<std::int64_t> due) noexcept {
  constexpr std::int64_t kSecond = 1'000'000'000;
  timespec timeout{};
  if (due) {
    const std::int64_t left = std::max<std::int64_t>(*due - now(), 0);
    timeout.tv_sec = left / kSecond;
    timeout.tv_nsec = left % kSecond;
  }
  pollfd waited{.fd = wakeDescriptor_, .events = POLLIN, .revents = 0};
  if (::ppoll(&waited, 1, due ? &timeout : nullptr, nullptr) <= 0) return;
  std::uint64_t count = 0;
  [[maybe_unused]] const ssize_t taken = ::read(wakeDescriptor_, &count, sizeof count);
}

void LinuxRunLoop::run() {
  {
    const std::scoped_lock guard(lock_);
    thread_ = std::this_thread::get_id();
  }
  while (!stopped_.load()) {
    runTimers();
    runSources();
    if (!stopped_.load()) waitUntil(nextDue());
  }
  const std::scoped_lock guard(lock_);
  thread_ = {};
}

std::optional<std::int64_t> LinuxRunLoop::nextDue() {
  const std::scoped_lock guard(lock_);
  std::optional<std::int64_t> first;
  for (const auto& [id, source] : sources_) {
    if (source->signalled) return 0;
  }
  for (const auto& timer : timers_) {
    if (!first || timer->due < *first) first = timer->due;
  }
  return first;
}

// One tick of every timer that is due, the earliest first. A timer that falls due again meanwhile
// waits for the next round, so a slow tick cannot keep the others and the sources from their turn.
void LinuxRunLoop::runTimers() {
  std::vector<std::shared_ptr<Timer>> due;
  {
    const std::scoped_lock guard(lock_);
    const std::int64_t time = now();
    for (const auto& timer : timers_) {
      if (timer->due <= time) due.push_back(timer);
    }
  }
  std::stable_sort(due.begin(), due.end(),
                   [](const auto& a, const auto& b) { return a->due < b->due; });
  for (const auto& timer : due) {
    if (stopped_.load()) return;
    timer->tick();
    const bool rests = resting_ && resting_();
    const std::scoped_lock guard(lock_);
    timer->due = nextOnGrid(timer->due, timer->interval, now(), rests);
  }
}

void LinuxRunLoop::runSources() {
  std::vector<Source> signalled;
  {
    const std::scoped_lock guard(lock_);
    for (const auto& [id, source] : sources_) {
      if (source->signalled) signalled.push_back(id);
    }
  }
  for (const Source id : signalled) {
    if (stopped_.load()) return;
    std::shared_ptr<CustomSource> source;
    {
      const std::scoped_lock guard(lock_);
      const auto entry = sources_.find(id);
      if (entry == sources_.end()) continue;
      source = entry->second;
      source->signalled = false;
      performing_ = id;
    }
    source->perform();
    const std::scoped_lock guard(lock_);
    performing_ = 0;
    performed_.notify_all();
  }
}

void LinuxRunLoop::addTimer(std::chrono::nanoseconds interval, std::function<void()> tick) {
  {
    const std::scoped_lock guard(lock_);
    timers_.push_back(std::make_shared<Timer>(
        Timer{interval.count(), now() + interval.count(), std::move(tick)}));
  }
  wake();
}

RunLoop::Source LinuxRunLoop::addSource(std::function<void()> perform) {
  const std::scoped_lock guard(lock_);
  sources_.emplace(++lastSource_, std::make_shared<CustomSource>(CustomSource{std::move(perform)}));
  return lastSource_;
}

void LinuxRunLoop::signal(Source source) {
  {
    const std::scoped_lock guard(lock_);
    const auto entry = sources_.find(source);
    if (entry == sources_.end() || std::exchange(entry->second->signalled, true)) return;
  }
  wake();
}

void LinuxRunLoop::removeSource(Source source) {
  decltype(sources_)::node_type removed;  // goes after the lock, with whatever its perform holds
  std::unique_lock guard(lock_);
  removed = sources_.extract(source);
  if (std::this_thread::get_id() == thread_) return;
  performed_.wait(guard, [&] { return performing_ != source; });
}

}  // namespace ovka
