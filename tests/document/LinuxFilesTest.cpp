#include <algorithm>
#include <cerrno>
#include <doctest/doctest.h>
#include <fcntl.h>
#include <filesystem>
#include <fstream>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

#include "LinuxFiles.h"
#include "OwnMounts.h"
#include "TemporaryFolder.h"

using namespace ovka;
namespace fs = std::filesystem;

namespace {

int put(LinuxFiles& files, const std::string& path, WriteMode mode, const std::string& text) {
  int error = 0;
  const auto file = files.write(path, mode, &error);
  if (file == nullptr) return error;
  if (const int failed = file->write(std::as_bytes(std::span(text)))) return failed;
  return file->commit();
}

std::string get(LinuxFiles& files, const std::string& path) {
  int error = 0;
  const auto file = files.read(path, &error);
  if (file == nullptr) return "errno " + std::to_string(error);
  std::string text(file->size() + 10, '?');
  std::size_t got = 0;
  CHECK(file->readAt(0, std::as_writable_bytes(std::span(text)), &got) == 0);
  return text.substr(0, got);
}

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

TEST_CASE("the ways of writing a file") {
  const testing::TemporaryFolder folder;
  LinuxFiles files;
  const std::string path = folder.at("a");
  CHECK(put(files, path, WriteMode::Atomic, "one") == 0);
  ::chmod(path.c_str(), 0640);
  CHECK(put(files, path, WriteMode::Atomic, "two") == 0);
  CHECK(get(files, path) == "two");
  CHECK((fs::status(path).permissions() == fs::perms(0640)));
  CHECK(put(files, path, WriteMode::Append, " three") == 0);
  CHECK(get(files, path) == "two three");
  CHECK(put(files, path, WriteMode::NewOnly, "x") == EEXIST);
  CHECK(put(files, path, WriteMode::InPlace, "four") == 0);
  CHECK(get(files, path) == "four");

  int error = 0;
  {
    const auto abandoned = files.write(path, WriteMode::Atomic, &error);
    const std::string text = "never";
    CHECK(abandoned->write(std::as_bytes(std::span(text))) == 0);
    CHECK(files.list(folder.path(), &error).size() == 2);
  }
  CHECK(files.list(folder.path(), &error) == std::vector<std::string>{"a"});
  fs::create_symlink("a", folder.at("link"));
  CHECK(put(files, folder.at("link"), WriteMode::Atomic, "five") == 0);
  CHECK(fs::is_symlink(folder.at("link")));
  CHECK(get(files, path) == "five");

  CHECK(get(files, folder.path()) == "errno " + std::to_string(EISDIR));
  CHECK(put(files, folder.path(), WriteMode::Atomic, "x") == EISDIR);
  CHECK(put(files, folder.at("gone/a"), WriteMode::Atomic, "x") == ENOENT);
  CHECK(files.makeFolder(folder.at("x/y/z")) == 0);
  CHECK(files.makeFolder(folder.at("x/y/z")) == 0);
  CHECK(files.makeFolder(path + "/z") == ENOTDIR);
  CHECK(files.remove(path) == 0);
  CHECK(files.remove(path) == ENOENT);
}

TEST_CASE("a file being read stays what it was when another takes its name") {
  const testing::TemporaryFolder folder;
  LinuxFiles files;
  const std::string path = folder.at("a");
  REQUIRE(put(files, path, WriteMode::Atomic, "old") == 0);
  int error = 0;
  const auto reader = files.read(path, &error);
  REQUIRE(put(files, path, WriteMode::Atomic, "newer") == 0);
  std::string text(3, '?');
  std::size_t got = 0;
  CHECK(reader->readAt(0, std::as_writable_bytes(std::span(text)), &got) == 0);
  CHECK(text == "old");
}

TEST_CASE("a full disk fails with its reason and keeps the old file") {
  const testing::TemporaryFolder folder;
  const int failed = testing::inOwnMounts([&folder] {
    if (!testing::mountSmallDisk(folder.path(), "1m")) return 1;
    LinuxFiles files;
    const std::string path = folder.at("a");
    const bool before = put(files, path, WriteMode::Atomic, "old") == 0;
    std::uint64_t room = 0;
    const bool known = files.freeBytes(folder.path(), &room) == 0 && room < (1U << 20U);
    const std::string much(2U << 20U, 'x');
    const bool refused = put(files, path, WriteMode::Atomic, much) == ENOSPC;
    int error = 0;
    const bool kept = get(files, path) == "old" &&
                      files.list(folder.path(), &error) == std::vector<std::string>{"a"};
    return before && known && refused && kept ? 0 : 2;
  });
  if (failed == -1) {
    MESSAGE("skipped: no right to mount a small disk");
    return;
  }
  CHECK(failed == 0);
}

TEST_CASE("the folders of the system on this machine") {
  const testing::TemporaryFolder folder;
  ::setenv("OVKA_HOME", folder.path().c_str(), 1);
  const LinuxFolders own;
  CHECK(own.resolve("/Users/Shared/OVKABackups/CH0DATA.ovka") ==
        folder.at("Shared/OVKABackups/CH0DATA.ovka"));
  CHECK(own.resolve("~/Library/Preferences/x.plist") == folder.at("Preferences/x.plist"));
  CHECK(own.resolve("/tmp/other") == "/tmp/other");
  ::unsetenv("OVKA_HOME");
}

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
