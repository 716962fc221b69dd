#include <array>
#include <atomic>
#include <chrono>
#include <cstring>
#include <doctest/doctest.h>
#include <future>
#include <pthread.h>
#include <sched.h>
#include <signal.h>
#include <string>
#include <thread>
#include <vector>

#include "LinuxClock.h"
#include "LinuxRunLoop.h"
#include "LinuxThreadLauncher.h"
#include "TickGrid.h"
#include "UrgentThread.h"

using namespace std::chrono_literals;
using std::chrono::nanoseconds;
using std::chrono::steady_clock;

// A loaded machine delays anything; counts are asserted within bounds that only a fault leaves.

TEST_CASE(
    "timers keep their grid, drop the ticks missed in a slow one, and start an interval late") {
  ovka::LinuxThreadLauncher launcher;
  const ovka::LinuxClock clock;
  const std::int64_t first = clock.nanoseconds();
  const auto start = steady_clock::now();
  std::vector<steady_clock::time_point> ticks;  // read after stopAll
  launcher.repeat("grid", 20ms, [&] {
    ticks.push_back(steady_clock::now());
    if (ticks.size() == 3) std::this_thread::sleep_for(110ms);
  });
  std::this_thread::sleep_for(400ms);
  launcher.stopAll();
  const auto gridPoints = static_cast<std::size_t>((steady_clock::now() - start) / 20ms);
  CHECK(clock.nanoseconds() - first >= 400'000'000);
  REQUIRE(ticks.size() >= 4);
  CHECK(ticks[0] - start >= 20ms);
  CHECK(ticks.size() <= gridPoints - 5);  // five of them passed in the slow tick
  CHECK(ticks[3] - ticks[2] >= 110ms);
  // Never early: the k-th tick comes at its grid point or later, whatever delayed the others.
  for (std::size_t k = 0; k < ticks.size(); ++k) {
    CHECK(ticks[k] - start >= static_cast<int>(k + 1) * 20ms);
  }
}

TEST_CASE("what may rest ticks seldom, on its grid, and goes on where it is woken") {
  std::atomic<bool> paused{true};
  std::atomic<int> rested{0};
  std::atomic<int> steady{0};
  std::atomic<int> looped{0};
  ovka::LinuxThreadLauncher launcher;
  launcher.restWhile({"rests"}, [&] { return paused.load(); });
  launcher.repeat("rests", 5ms, [&] { ++rested; });
  launcher.repeat("steady", 5ms, [&] { ++steady; });
  ovka::LinuxRunLoop loop;
  loop.restWhile([&] { return paused.load(); });
  loop.addTimer(5ms, [&] { ++looped; });
  const auto start = steady_clock::now();
  std::thread main([&] { loop.run(); });
  while (steady < 100) std::this_thread::sleep_for(1ms);
  const auto most = static_cast<int>((steady_clock::now() - start) / ovka::kRest) + 1;
  CHECK(rested <= most);
  CHECK(looped <= most);
  paused = false;
  while (rested < 100 || looped < 100) std::this_thread::sleep_for(1ms);
  loop.stop();
  main.join();
}

TEST_CASE("an urgent thread goes before usual ones, where this user may ask for that") {
  int refused = 0;
  std::thread([&refused] { refused = ovka::beUrgentThread(); }).join();
  std::atomic<int> urgent{-1};
  std::atomic<int> usual{-1};
  const auto policy = [] { return sched_getscheduler(0) & ~SCHED_RESET_ON_FORK; };
  {
    ovka::LinuxThreadLauncher launcher{"urgent"};
    launcher.once("urgent", [&] {
      urgent = policy();
      std::thread([&] { usual = policy(); }).join();
    });
    while (usual < 0) std::this_thread::sleep_for(1ms);
  }
  CHECK(usual == SCHED_OTHER);
  if (refused != 0) {
    MESSAGE("skipped: this user may not ask for it: ", std::strerror(refused));
    return;
  }
  CHECK(urgent == SCHED_RR);
}

TEST_CASE("stopAll wakes sleepers at once, and nothing starts afterwards") {
  ovka::LinuxThreadLauncher launcher;
  std::atomic<int> started{0};
  for (int i = 0; i < 13; ++i) {
    launcher.loop("sleeper", [&]() -> nanoseconds {
      ++started;
      return nanoseconds::max();
    });
    launcher.repeat("hourly", 1h, [&] { started = -1000; });
    launcher.once("gone", [] {});
  }
  while (started < 13) std::this_thread::sleep_for(1ms);
  const auto before = steady_clock::now();
  launcher.stopAll();
  CHECK(steady_clock::now() - before < 2s);
  launcher.once("late", [&] { started = -1; });
  launcher.stopAll();
  CHECK(started == 13);
}

TEST_CASE("threads carry their name and leave signals to the main thread") {
  ovka::LinuxThreadLauncher launcher;
  std::promise<std::string> name;
  std::promise<bool> blocked;
  launcher.once("runSecondarySerialThread:", [&] {
    std::array<char, 16> text{};
    ::pthread_getname_np(::pthread_self(), text.data(), text.size());
    sigset_t mask;
    ::pthread_sigmask(SIG_SETMASK, nullptr, &mask);
    name.set_value(text.data());
    blocked.set_value(::sigismember(&mask, SIGINT) == 1 && ::sigismember(&mask, SIGTERM) == 1 &&
                      ::sigismember(&mask, SIGSEGV) == 0);
  });
  CHECK(name.get_future().get() == "runSecondarySer");
  CHECK(blocked.get_future().get());
  sigset_t own;
  ::pthread_sigmask(SIG_SETMASK, nullptr, &own);
  CHECK(::sigismember(&own, SIGINT) == 0);
}

TEST_CASE("the run loop runs timers and sources on its thread and stops from a signal handler") {
  static ovka::LinuxRunLoop* running = nullptr;
  ovka::LinuxRunLoop loop;
  running = &loop;
  const auto main = std::this_thread::get_id();
  int ticks = 0;
  int performed = 0;
  int elsewhere = 0;
  ovka::RunLoop::Source source = 0;
  source = loop.addSource([&] {
    if (std::this_thread::get_id() != main) ++elsewhere;
    ++performed;
    if (performed == 3) loop.removeSource(source);  // on the loop's thread: does not wait
  });
  std::atomic<bool> removed{false};
  std::thread other([&] {
    for (int i = 0; i < 3; ++i) {
      loop.signal(source);
      std::this_thread::sleep_for(20ms);
    }
    loop.addTimer(5ms, [&] {  // added while the loop sleeps
      if (std::this_thread::get_id() != main) ++elsewhere;
      if (++ticks == 3) loop.signal(source);
      if (ticks == 6) ::raise(SIGUSR1);
    });
    removed = true;
  });
  struct sigaction action {};
  action.sa_handler = [](int) { running->stop(); };
  struct sigaction kept {};
  ::sigaction(SIGUSR1, &action, &kept);
  loop.run();
  ::sigaction(SIGUSR1, &kept, nullptr);
  other.join();
  CHECK(ticks == 6);
  CHECK(performed >= 1);
  CHECK(performed <= 3);
  CHECK(elsewhere == 0);
  loop.run();  // stopped for good
}

TEST_CASE("removing a source waits for the perform that runs") {
  ovka::LinuxRunLoop loop;
  std::thread main([&] { loop.run(); });
  for (int round = 0; round < 200; ++round) {
    auto alive = std::make_unique<std::atomic<int>>(0);
    std::promise<void> entered;
    const auto source = loop.addSource([&, own = alive.get()] {
      if (own->fetch_add(1) == 0) entered.set_value();
      std::this_thread::yield();
      own->fetch_add(1);  // the memory must still be there
    });
    loop.signal(source);
    entered.get_future().wait();
    loop.signal(source);
    loop.removeSource(source);
    alive.reset();
    loop.signal(source);
  }
  loop.stop();
  main.join();
}
