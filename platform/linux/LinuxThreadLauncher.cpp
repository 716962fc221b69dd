#include "LinuxThreadLauncher.h"

#include <algorithm>
#include <string>
#include <system_error>
#include <utility>

#include "Print.h"
#include "QuietThread.h"
#include "TickGrid.h"
#include "UrgentThread.h"

namespace ovka {
namespace {

using std::chrono::nanoseconds;
using std::chrono::steady_clock;

steady_clock::time_point at(std::int64_t count) {
  return steady_clock::time_point(nanoseconds(count));
}
std::int64_t now() {
  return nanoseconds(steady_clock::now().time_since_epoch()).count();
}

}  // namespace

LinuxThreadLauncher::~LinuxThreadLauncher() {
  stopAll();
}

bool LinuxThreadLauncher::stopping() {
  const std::scoped_lock guard(lock_);
  return stopping_;
}

bool LinuxThreadLauncher::sleepUntil(steady_clock::time_point due) {
  std::unique_lock guard(lock_);
  return !wake_.wait_until(guard, due, [this] { return stopping_; });
}

void LinuxThreadLauncher::joinEnded() {
  for (auto worker = workers_.begin(); worker != workers_.end();) {
    if (worker->ended->load()) {
      worker->thread.join();
      worker = workers_.erase(worker);
    } else {
      ++worker;
    }
  }
}

void LinuxThreadLauncher::start(std::string_view name, std::function<void()> body) {
  const std::scoped_lock guard(lock_);
  if (stopping_) return;
  joinEnded();
  auto ended = std::make_shared<std::atomic<bool>>(false);
  const bool urgent = std::ranges::find(urgent_, name) != urgent_.end();
  try {
    std::thread thread =
        startQuietThread(std::string(name).c_str(), [body = std::move(body), ended, urgent] {
          if (urgent) static_cast<void>(beUrgentThread());
          body();
          ended->store(true);
        });
    workers_.push_back({std::move(thread), std::move(ended)});
  } catch (const std::system_error& error) {
    PrintError(error.code().value(), "Error starting thread %.*s - ", static_cast<int>(name.size()),
               name.data());
  }
}

void LinuxThreadLauncher::restWhile(std::vector<std::string_view> names,
                                    std::function<bool()> resting) {
  resters_ = std::move(names);
  resting_ = std::move(resting);
}

void LinuxThreadLauncher::repeat(std::string_view name, nanoseconds interval,
                                 std::function<void()> tick) {
  const bool rests = std::ranges::find(resters_, name) != resters_.end();
  start(name, [this, interval, tick = std::move(tick), rests] {
    std::int64_t due = now() + interval.count();
    while (sleepUntil(at(due))) {
      tick();
      due = nextOnGrid(due, interval.count(), now(), rests && resting_());
    }
  });
}

void LinuxThreadLauncher::loop(std::string_view name, std::function<nanoseconds()> step) {
  static constexpr nanoseconds kLongestSleep =
      std::chrono::hours(24 * 365);  // later would overflow
  start(name, [this, step = std::move(step)] {
    if (stopping()) return;
    nanoseconds sleep{0};
    do {
      sleep = std::clamp(step(), nanoseconds(0), kLongestSleep);
    } while (sleepUntil(at(now() + sleep.count())));
  });
}

void LinuxThreadLauncher::once(std::string_view name, std::function<void()> body) {
  start(name, std::move(body));
}

void LinuxThreadLauncher::stopAll() {
  std::list<Worker> workers;
  {
    const std::scoped_lock guard(lock_);
    stopping_ = true;
    workers.swap(workers_);
  }
  wake_.notify_all();
  for (Worker& worker : workers) worker.thread.join();
}

}  // namespace ovka
