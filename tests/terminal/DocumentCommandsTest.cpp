#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <doctest/doctest.h>
#include <fcntl.h>
#include <filesystem>
#include <string>
#include <thread>
#include <unistd.h>
#include <utility>
#include <vector>

#include "Commands.h"
#include "TemporaryFolder.h"

using namespace ovka;
using namespace ovka::terminal;

namespace {

/// The program in a home of its own, its outputs in files.
struct Home {
  testing::TemporaryFolder folder;
  Home() { setenv("OVKA_HOME", folder.at("home").c_str(), 1); }
  ~Home() { unsetenv("OVKA_HOME"); }
  Home(const Home&) = delete;
  Home& operator=(const Home&) = delete;

  std::string out;  ///< of the last run
  std::string err;

  int run(const std::vector<std::string>& words) {
    int code = 0;
    {
      const Redirected first(1, folder.at("out"));
      const Redirected second(2, folder.at("err"));
      code = runProgram(words);
    }
    out = testing::contentsOf(folder.at("out"));
    err = testing::contentsOf(folder.at("err"));
    return code;
  }
  [[nodiscard]] std::string at(const std::string& name) const { return folder.at(name); }

 private:
  class Redirected {
   public:
    Redirected(int descriptor, const std::string& path)
        : descriptor_(descriptor), before_(dup(descriptor)) {
      std::fflush(nullptr);
      const int file = open(path.c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0600);
      dup2(file, descriptor);
      close(file);
    }
    ~Redirected() {
      std::fflush(nullptr);
      dup2(before_, descriptor_);
      close(before_);
    }
    Redirected(const Redirected&) = delete;
    Redirected& operator=(const Redirected&) = delete;

   private:
    int descriptor_;
    int before_;
  };
};

std::string rowsOf(int points) {
  std::string text = "point,ch0,ch1,ch2,ch3,ch4\n";
  for (int i = 0; i < points; ++i) {
    text += std::to_string(i);
    for (int c = 0; c < 5; ++c) text += "," + std::to_string((i * 37 + c * 1001) % 4001 - 2000);
    text += "\n";
  }
  return text;
}

void write(const std::string& path, const std::string& text) {
  std::ofstream(path, std::ios::binary) << text;
}

bool holds(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

const std::vector<std::string> kFive{"--config", "3", "--model", "6", "--speed", "256"};

std::vector<std::string> words(std::vector<std::string> first,
                               const std::vector<std::string>& more) {
  first.insert(first.end(), more.begin(), more.end());
  return first;
}

}  // namespace

TEST_CASE("recorded, told of, played: one document from end to end") {
  Home home;
  const std::string file = home.at("a.ovkanote");
  REQUIRE(home.run({"record", file, "--demo", "--speed", "512", "--seconds", "1.5", "--interval",
                    "0.5", "--set", "fftp=128"}) == 0);
  CHECK(holds(home.err, "journal "));
  CHECK(holds(home.err, " free"));
  CHECK(home.run({"record", file, "--demo", "--seconds", "1"}) == 5);  // never over another one
  CHECK(holds(home.err, "--force"));

  REQUIRE(home.run({"recover"}) == 0);
  CHECK(home.out == "No recording waits to be recovered.\n");
  REQUIRE(home.run({"info", file, "--json"}) == 0);
  CHECK(holds(home.out, "\"SampleSpeed\":\"512\""));
  REQUIRE(home.run({"convert", file, home.at("a.csv")}) == 0);
  const std::string rows = testing::contentsOf(home.at("a.csv"));
  CHECK(std::count(rows.begin(), rows.end(), '\n') > 400);

  REQUIRE(home.run({"play", file, "--fast", "--json", "--interval", "0.25"}) == 0);
  const std::size_t second = home.out.find('\n') + 1;
  const std::size_t third = home.out.find('\n', second) + 1;
  const auto bands = [&](std::size_t from) {
    return home.out.substr(home.out.find("\"channels\"", from), 200);
  };
  CHECK(bands(second) != bands(third));
  // The last line stands behind the last row.
  const std::size_t last = home.out.rfind("{\"point\":");
  CHECK(home.out.substr(last + 9, home.out.find(',', last) - last - 9) ==
        std::to_string(std::count(rows.begin(), rows.end(), '\n') - 1));
  CHECK(home.run({"play", file, "--fast", "--from", "1000"}) == 2);
}

TEST_CASE("a recording whose folder vanishes is kept in its journal and recovered") {
  Home home;
  const std::string place = home.at("gone");
  std::filesystem::create_directory(place);
  std::thread vandal([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(700));
    std::filesystem::remove_all(place);
  });
  const int code = home.run({"record", place + "/a.ovkanote", "--demo", "--seconds", "1.5"});
  vandal.join();
  CHECK(code == 5);
  CHECK(holds(home.err, "ovka recover"));
  REQUIRE(home.run({"recover"}) == 0);
  CHECK(home.out.starts_with("1  20"));
  const std::string file = home.at("back.ovkanote");
  CHECK(home.run({"recover", file, "--number", "2"}) == 2);
  REQUIRE(home.run({"recover", file}) == 0);
  REQUIRE(home.run({"convert", file, home.at("back.csv")}) == 0);
  const std::string rows = testing::contentsOf(home.at("back.csv"));
  CHECK(std::count(rows.begin(), rows.end(), '\n') > 100);
  REQUIRE(home.run({"recover"}) == 0);
  CHECK(home.out == "No recording waits to be recovered.\n");
}

TEST_CASE("conversions keep every sample") {
  Home home;
  const std::string rows = rowsOf(1000);
  write(home.at("a.csv"), rows);
  REQUIRE(home.run(words({"convert", home.at("a.csv"), home.at("a.ovkanote")}, kFive)) == 0);
  REQUIRE(home.run({"convert", home.at("a.ovkanote"), home.at("b.csv")}) == 0);
  CHECK(testing::contentsOf(home.at("b.csv")) == rows);
  REQUIRE(home.run({"convert", home.at("a.ovkanote"), home.at("b.ovkanote")}) == 0);
  const bool same =
      testing::contentsOf(home.at("b.ovkanote")) == testing::contentsOf(home.at("a.ovkanote"));
  CHECK(same);

  // Backups: the raw samples of channel 0 alone.
  std::filesystem::create_directory(home.at("backups"));
  write(home.at("backups/CH0DATA.ovka"), std::string("\1\0\0\0\2\0\0\0", 8));
  REQUIRE(home.run(words({"convert", home.at("backups"), home.at("c.csv")}, kFive)) == 0);
  CHECK(testing::contentsOf(home.at("c.csv")) ==
        "point,ch0,ch1,ch2,ch3,ch4\n0,1,0,0,0,0\n1,2,0,0,0,0\n");
  CHECK(std::filesystem::file_size(home.at("backups/CH0DATA.ovka")) == 8);

  // An older program's text form: channel 1 stands one point later.
  write(home.at("old.txt"), "5.0 6.0\n7.9 8.0\n");
  REQUIRE(home.run(words({"convert", home.at("old.txt"), home.at("d.csv")}, kFive)) == 0);
  CHECK(holds(testing::contentsOf(home.at("d.csv")), "\n1,49,5,8,0,0\n"));

  // A capture gives what decoding it prints.
  REQUIRE(home.run({"capture", home.at("e.cap"), "--demo", "--seconds", "1"}) == 0);
  REQUIRE(home.run({"convert", home.at("e.cap"), home.at("e.ovkanote")}) == 0);
  REQUIRE(home.run({"convert", home.at("e.ovkanote"), home.at("e.csv")}) == 0);
  REQUIRE(home.run({"decode", home.at("e.cap")}) == 0);
  CHECK(testing::contentsOf(home.at("e.csv")) == home.out);

  // Nothing of it touched the user's own backups, and no scratch folder is left.
  CHECK_FALSE(std::filesystem::exists(home.at("home/Shared/OVKABackups/CH0DATA.ovka")));
  for (const auto& entry : std::filesystem::directory_iterator(home.folder.path()))
    CHECK_FALSE(entry.path().filename().string().starts_with(".ovka"));
}

TEST_CASE("what cannot be converted says why") {
  Home home;
  write(home.at("a.csv"), rowsOf(10));
  write(home.at("bad.csv"), "point,ch0\n0,1\n0,2\n");
  write(home.at("wide.csv"), "point,ch0\n0,99999999999\n");
  write(home.at("bad.ovkanote"), "{\n  OVKA4data = (\n");
  write(home.at("noise"),
        "\x7F"
        "ELF");
  struct Row {
    const char* in;
    const char* out;
    int code;
    const char* says;
  };
  for (const Row& row : std::vector<Row>{
           {"a.csv", "x.cap", 2, "a capture keeps the bytes of a line"},
           {"a.csv", "CH0DATA.ovka", 2, "backups"},
           {"a.csv", "x.dat", 2, "never written"},
           {"a.csv", "a.csv", 5, "--force"},
           {"a.csv", "no/x.ovkanote", 5, "No such file"},
           {"missing", "x.ovkanote", 3, "No such file"},
           {"bad.csv", "x.ovkanote", 3, "bad.csv, line 3: the points must rise"},
           {"wide.csv", "x.ovkanote", 3, "line 2: '99999999999'"},
           {"bad.ovkanote", "x.csv", 3, "line "},
           {"noise", "x.ovkanote", 3, "no file of this system"},
           {"home", "x.ovkanote", 3, "holds no backups"},
       }) {
    CAPTURE(row.in);
    CAPTURE(row.out);
    std::filesystem::create_directories(home.at("home"));
    CHECK(home.run({"convert", home.at(row.in), home.at(row.out)}) == row.code);
    CHECK_MESSAGE(holds(home.err, row.says), home.err);
    if (row.code != 5) CHECK_FALSE(std::filesystem::exists(home.at(row.out)));
  }
}

TEST_CASE("presets are saved, shown, changed and made the default") {
  Home home;
  REQUIRE(home.run({"preset", "save", "a.plist", "--model", "6", "--set", "fftp=2048"}) == 0);
  REQUIRE(home.run({"preset", "save", "a.plist", "--set", "setACNumber=4"}) == 0);
  REQUIRE(home.run({"preset", "load", "a.plist"}) == 0);
  REQUIRE(home.run({"preset", "show"}) == 0);
  CHECK(holds(home.out, "SelectDevice = 6\n"));
  CHECK(holds(home.out, "FFTpointX = 4\n"));
  CHECK(holds(home.out, "setACNumber = 4\n"));
  CHECK(home.run({"preset", "show", "b.plist"}) == 3);
  CHECK(home.run({"preset", "burn"}) == 2);
  write(home.at("c.plist"), "{ OVKA4data = x; }");
  CHECK(home.run({"preset", "load", home.at("c.plist")}) == 3);
}
