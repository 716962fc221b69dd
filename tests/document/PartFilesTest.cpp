#include <algorithm>
#include <cstdlib>
#include <doctest/doctest.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <string>
#include <sys/file.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "LinuxFiles.h"
#include "TemporaryFolder.h"

using namespace ovka;

namespace {

/// The number of a process that is gone.
std::string goneProcess() {
  const pid_t child = ::fork();
  REQUIRE(child >= 0);
  if (child == 0) ::_exit(0);
  int status = 0;
  REQUIRE(::waitpid(child, &status, 0) == child);
  return std::to_string(child);
}

}  // namespace

TEST_CASE("unfinished files of killed processes go, those of others stay") {
  const testing::TemporaryFolder folder;
  const std::string gone = goneProcess();
  const std::string own = std::to_string(::getpid());
  const std::vector<std::string> stay{
      ".a.1-1.part",                  // that process runs
      ".b." + gone + "-1.part",       // of another file
      ".a." + gone + "-.part",        // these are no such names
      ".a.x" + gone + "-1.part",      //
      ".a." + gone + "-1.part2",      //
      ".a.b." + gone + "-1.part",     //
      "a." + gone + "-1.part",        //
      ".a." + gone + "-9.part",       // locked: its writer sees other process numbers
      ".a." + own + "-1000000.part",  // locked by this process
  };
  const std::vector<std::string> go{".a." + gone + "-1.part", ".a." + gone + "-77.part",
                                    ".a." + own + "-2000000.part"};
  for (const auto* names : {&stay, &go}) {
    for (const std::string& name : *names) std::ofstream(folder.at(name)) << "half";
  }
  std::vector<int> held;
  for (const std::string& name : {stay[7], stay[8]}) {
    held.push_back(::open(folder.at(name).c_str(), O_RDONLY | O_CLOEXEC));
    REQUIRE(::flock(held.back(), LOCK_EX) == 0);
  }
  LinuxFiles files;
  int error = 0;
  {
    const auto first = files.write(folder.at("a"), WriteMode::Atomic, &error);
    // A second writer of the same file leaves the first one's alone.
    const auto second = files.write(folder.at("a"), WriteMode::Atomic, &error);
    REQUIRE(second != nullptr);
    CHECK(first->commit() == 0);
    CHECK(second->commit() == 0);
  }
  for (const int fd : held) ::close(fd);
  std::vector<std::string> left = stay;
  left.emplace_back("a");
  std::sort(left.begin(), left.end());
  CHECK(files.list(folder.path(), &error) == left);
}
