#include <algorithm>
#include <chrono>
#include <cstdio>
#include <doctest/doctest.h>
#include <filesystem>
#include <malloc.h>
#include <unistd.h>
#include <vector>

#include "RandomRun.h"

#ifdef __SANITIZE_ADDRESS__
// Of the sanitizer's allocator interface, whose header gcc does not install.
extern "C" std::size_t __sanitizer_get_current_allocated_bytes();
#endif

// The window in the hands of somebody who presses everything in any order. The seed is printed and
// fixed, unless OVKA_SEED names another; OVKA_LONG_RUN_SECONDS=7200 goes on for two hours, and with
// OVKA_TEST_PLATFORM=xcb under xvfb-run OpenGL takes part. Events come in real time, so the same
// seed presses the same things but not at the same samples.

using ovka::testing::RandomRun;

namespace {

double numberOf(const char* variable, double otherwise) {
  const char* text = std::getenv(variable);
  return text != nullptr ? std::atof(text) : otherwise;
}

/// What the process occupies (MB); under the address sanitizer what is allocated, for its own
/// stores of freed memory and of call stacks grow for hours.
double occupied() {
#ifdef __SANITIZE_ADDRESS__
  return static_cast<double>(__sanitizer_get_current_allocated_bytes()) / 1e6;
#else
  malloc_trim(0);
  long pages = 0;
  if (std::FILE* file = std::fopen("/proc/self/statm", "r")) {
    if (std::fscanf(file, "%*d %ld", &pages) != 1) pages = 0;
    std::fclose(file);
  }
  return static_cast<double>(pages) * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1e6;
#endif
}

/// What the run has written, but for the settings.
void removeRecordings() {
  std::error_code ignored;
  for (const auto& entry :
       std::filesystem::recursive_directory_iterator(std::getenv("OVKA_HOME"), ignored)) {
    if (entry.is_regular_file(ignored) && entry.path().extension() != ".conf")
      std::filesystem::remove(entry.path(), ignored);
  }
}

}  // namespace

TEST_CASE("pressed at random, the window neither crashes nor grows nor loses a frame") {
  const auto seed = static_cast<unsigned>(numberOf("OVKA_SEED", 20251));
  const double seconds = numberOf("OVKA_LONG_RUN_SECONDS", 20);
  const double round = seconds > 120 ? 50 : seconds / 5;
  std::printf("random run: OVKA_SEED=%u, %.0f s\n", seed, seconds);
  std::fflush(stdout);
  // What this platform cannot do is no finding.
  qInstallMessageHandler([](QtMsgType, const QMessageLogContext&, const QString& text) {
    if (!text.contains(QLatin1String("plugin does not support")))
      std::fprintf(stderr, "%s\n", qUtf8Printable(text));
  });
  RandomRun run(seed);
  REQUIRE(run.putInOrder());
  std::vector<double> sizes;
  const auto start = std::chrono::steady_clock::now();
  const auto elapsed = [&start] {
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
  };
  while (elapsed() < seconds || sizes.size() < 4) {
    run.press(round);
    REQUIRE(run.putInOrder());
    sizes.push_back(occupied());
    std::printf("%6.0f s  %7ld presses  %6.1f MB\n", elapsed(), run.presses(), sizes.back());
    std::fflush(stdout);
    REQUIRE(run.lost() == "");
    removeRecordings();
  }
  // The same state after each round: fonts, caches and the allocator's own reserves fill in the
  // first quarter, of a short run not quite.
  const auto quarter = static_cast<std::ptrdiff_t>((sizes.size() + 3) / 4);
  const double warm = *std::max_element(sizes.begin(), sizes.begin() + quarter);
  const double end = *std::min_element(sizes.end() - quarter, sizes.end());
  CHECK(end - warm < (seconds > 600 ? 64 : 128));
}
