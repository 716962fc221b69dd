#include <cerrno>
#include <cstdlib>
#include <doctest/doctest.h>
#include <filesystem>
#include <string>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

#include "LinuxFiles.h"

using namespace ovka;
namespace fs = std::filesystem;

namespace {

/// A folder of this test's own, gone afterwards.
class Folder {
 public:
  Folder() {
    std::string name = (fs::temp_directory_path() / "ovka_files_XXXXXX").string();
    REQUIRE(::mkdtemp(name.data()) != nullptr);
    path = name;
  }
  ~Folder() {
    if (mounted) ::umount(path.c_str());
    fs::permissions(path, fs::perms::owner_all);
    fs::remove_all(path);
  }
  /// A disk of 1 MiB; false without the right to mount one.
  bool makeSmallDisk() {
    mounted = ::mount("tmpfs", path.c_str(), "tmpfs", 0, "size=1m") == 0;
    return mounted;
  }
  std::string path;
  bool mounted = false;
};

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

}  // namespace

TEST_CASE("the ways of writing a file") {
  const Folder folder;
  LinuxFiles files;
  const std::string path = folder.path + "/a";
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
    CHECK(files.list(folder.path, &error).size() == 2);
  }
  CHECK(files.list(folder.path, &error) == std::vector<std::string>{"a"});
  fs::create_symlink("a", folder.path + "/link");
  CHECK(put(files, folder.path + "/link", WriteMode::Atomic, "five") == 0);
  CHECK(fs::is_symlink(folder.path + "/link"));
  CHECK(get(files, path) == "five");

  CHECK(get(files, folder.path) == "errno " + std::to_string(EISDIR));
  CHECK(put(files, folder.path, WriteMode::Atomic, "x") == EISDIR);
  CHECK(put(files, folder.path + "/gone/a", WriteMode::Atomic, "x") == ENOENT);
  CHECK(files.makeFolder(folder.path + "/x/y/z") == 0);
  CHECK(files.makeFolder(folder.path + "/x/y/z") == 0);
  CHECK(files.makeFolder(path + "/z") == ENOTDIR);
  CHECK(files.remove(path) == 0);
  CHECK(files.remove(path) == ENOENT);
}

TEST_CASE("a file being read stays what it was when another takes its name") {
  const Folder folder;
  LinuxFiles files;
  const std::string path = folder.path + "/a";
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
  Folder folder;
  if (!folder.makeSmallDisk()) {
    MESSAGE("skipped: no right to mount a small disk");
    return;
  }
  LinuxFiles files;
  const std::string path = folder.path + "/a";
  REQUIRE(put(files, path, WriteMode::Atomic, "old") == 0);
  std::uint64_t room = 0;
  CHECK(files.freeBytes(folder.path, &room) == 0);
  CHECK(room < (1U << 20U));
  CHECK(put(files, path, WriteMode::Atomic, std::string(2U << 20U, 'x')) == ENOSPC);
  CHECK(get(files, path) == "old");
  int error = 0;
  CHECK(files.list(folder.path, &error) == std::vector<std::string>{"a"});
}

TEST_CASE("the folders of the system on this machine") {
  const Folder folder;
  ::setenv("OVKA_HOME", folder.path.c_str(), 1);
  const LinuxFolders own;
  CHECK(own.resolve("/Users/Shared/OVKABackups/CH0DATA.ovka") ==
        folder.path + "/Shared/OVKABackups/CH0DATA.ovka");
  CHECK(own.resolve("~/Library/Preferences/x.plist") == folder.path + "/Preferences/x.plist");
  CHECK(own.resolve("/tmp/other") == "/tmp/other");
  ::unsetenv("OVKA_HOME");
}
