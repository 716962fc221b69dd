#include <atomic>
#include <doctest/doctest.h>
#include <string>
#include <thread>

#include "NotificationCenter.h"

using ovka::NotificationCenter;

TEST_CASE("a notification reaches the observers of its name in the order of registration") {
  NotificationCenter center;
  std::string heard;
  const int a = 0;
  const int b = 0;
  center.addObserver(&a, "save", [&] { heard += 'a'; });
  center.addObserver(&b, "save", [&] { heard += 'b'; });
  center.addObserver(&a, "load", [&] { heard += 'L'; });
  center.post("save");
  CHECK(heard == "ab");

  center.addObserver(&a, "save", [&] { heard += 'A'; });  // replaces, keeps the place
  center.post("save");
  CHECK(heard == "abAb");

  center.removeObserver(&a);
  center.post("load");
  center.post("save");
  center.post("unknown");
  CHECK(heard == "abAbb");
}

TEST_CASE("a handler may post, add and remove observers") {
  NotificationCenter center;
  std::string heard;
  const int once = 0;
  const int late = 0;
  center.addObserver(&once, "outer", [&] {
    heard += '1';
    center.removeObserver(&once);
    center.addObserver(&late, "inner", [&] { heard += '2'; });
    center.post("inner");
  });
  center.post("outer");
  center.post("outer");
  CHECK(heard == "12");
}

TEST_CASE("posting and registering on several threads") {
  NotificationCenter center;
  const int steady = 0;
  std::atomic<int> heard{0};
  center.addObserver(&steady, "tick", [&] { ++heard; });
  std::thread registrar([&] {
    const int other = 0;
    for (int i = 0; i < 500; ++i) {
      center.addObserver(&other, "tick", [] {});
      center.removeObserver(&other);
    }
  });
  for (int i = 0; i < 500; ++i) center.post("tick");
  registrar.join();
  CHECK(heard == 500);
}
