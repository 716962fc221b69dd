#include <cerrno>
#include <doctest/doctest.h>
#include <string>
#include <thread>
#include <vector>

#include "CapturedPrint.h"
#include "Print.h"

TEST_CASE(
    "console lines are formatted, cut at 1023 bytes, and error lines end with text and number") {
  ovka::testing::CapturedPrint captured;
  ovka::Print("%d of %s", 3, "x");
  CHECK(captured.take() == "3 of x");
  ovka::Print("%s", std::string(5000, 'y').c_str());
  CHECK(captured.take() == std::string(1023, 'y'));
  ovka::PrintError(ENOENT, "Error opening serial port %s - ", "/dev/x");
  CHECK(captured.take() == "Error opening serial port /dev/x - No such file or directory(2).\n");
}

TEST_CASE("lines of several threads do not mix") {
  ovka::testing::CapturedPrint captured;
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([] {
      for (int i = 0; i < 100; ++i) ovka::Print("%s\n", "one whole line");
    });
  }
  for (std::thread& thread : threads) thread.join();
  std::string expected;
  for (int i = 0; i < 400; ++i) expected += "one whole line\n";
  CHECK(captured.take() == expected);
}
