#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <doctest/doctest.h>
#include <filesystem>
#include <string>
#include <sys/wait.h>
#include <unistd.h>
#include <utility>
#include <vector>

#include "TerminalHome.h"

using namespace ovka;
using testing::holds;
using testing::Home;
using testing::write;

namespace {

std::string rowsOf(int points) {
  std::string text = "point,ch0,ch1,ch2,ch3,ch4\n";
  for (int i = 0; i < points; ++i) {
    text += std::to_string(i);
    for (int c = 0; c < 5; ++c) text += "," + std::to_string((i * 37 + c * 1001) % 4001 - 2000);
    text += "\n";
  }
  return text;
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

  // A range over and over: the point never leaves it.
  const std::vector<std::string> loop{"play", file,          "--fast", "--json",    "--interval",
                                      "0.05", "--loop-from", "0.25",   "--loop-to", "0.5"};
  REQUIRE(home.run(words(loop, {"--seconds", "2"})) == 0);
  int outside = 0;
  std::size_t at = 0;
  for (; (at = home.out.find("{\"point\":", at)) != std::string::npos; ++at) {
    const int point = std::atoi(home.out.c_str() + at + 9);
    outside += point < 128 || point >= 256 ? 1 : 0;
  }
  CHECK(outside == 0);
  CHECK(std::count(home.out.begin(), home.out.end(), '\n') >= 40);
  CHECK(home.run(loop) == 2);  // it would never end
  CHECK(home.run({"play", file, "--loop-from", "0.5", "--loop-to", "0.25"}) == 2);
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

TEST_CASE("a conversion clears what killed ones left beside it, not what others still use") {
  Home home;
  write(home.at("a.csv"), rowsOf(100));
  const pid_t gone = fork();
  REQUIRE(gone >= 0);
  if (gone == 0) _exit(0);
  waitpid(gone, nullptr, 0);
  const auto folder = [&](pid_t process, const char* random) {
    const std::string path = home.at(".ovka-" + std::to_string(process) + "-" + random);
    std::filesystem::create_directory(path);
    write(path + "/OVKA_Backup0.raw", "x");
    return path;
  };
  const std::string left = folder(gone, "abcdef");
  const std::string used = folder(getppid(), "abcdef");
  const std::string other = folder(gone, "much_longer");
  REQUIRE(home.run(words({"convert", home.at("a.csv"), home.at("a.ovkanote")}, kFive)) == 0);
  CHECK(!std::filesystem::exists(left));
  CHECK(std::filesystem::exists(used + "/OVKA_Backup0.raw"));
  CHECK(std::filesystem::exists(other));
  for (const auto& entry : std::filesystem::directory_iterator(home.at("")))
    CHECK(!holds(entry.path().filename().string(), ".ovka-" + std::to_string(getpid())));
}

TEST_CASE("a session starts with a preset and remembers its port") {
  Home home;
  REQUIRE(home.run({"preset", "save", "a.plist", "--model", "5", "--config", "2", "--speed", "240",
                    "--set", "fftp=512"}) == 0);
  const std::string file = home.at("a.ovkanote");
  REQUIRE(home.run({"record", file, "--demo", "--preset", "a.plist", "--speed", "480", "--seconds",
                    "0.5"}) == 0);
  REQUIRE(home.run({"info", file, "--json"}) == 0);
  CHECK(holds(home.out, "\"SampleSpeed\":\"480\""));  // the line goes before the preset
  CHECK(holds(home.out, "\"SelectDevice\":\"5\""));
  CHECK(holds(home.out, "\"DeviceConfig\":\"2\""));
  CHECK(home.run({"live", "--demo", "--preset", "b.plist"}) == 3);
  CHECK(home.run({"live", "--capture", "x", "--preset", "a.plist"}) == 2);
  CHECK(home.run({"live", "--demo", "--remember"}) == 2);
  CHECK(home.run({"live"}) == 2);
  CHECK(holds(home.err, "--remember"));

  const std::string link = home.at("amplifier");
  const pid_t amplifier = fork();
  REQUIRE(amplifier >= 0);
  if (amplifier == 0) {
    const std::vector<std::string> line{"simulate", "--model", "5", "--config",
                                        "2",        "--link",  link};
    _exit(ovka::terminal::runProgram(line));
  }
  for (int i = 0; i < 500 && !std::filesystem::exists(link); ++i) usleep(10'000);
  CHECK(home.run({"live", "--port", link, "--remember", "--model", "5", "--config", "2", "--json",
                  "--seconds", "0.3"}) == 0);
  REQUIRE(home.run({"record", home.at("b.ovkanote"), "--seconds", "0.7"}) == 0);
  REQUIRE(home.run({"info", home.at("b.ovkanote"), "--json"}) == 0);
  CHECK(holds(home.out, "\"SelectDevice\":\"5\""));
  kill(amplifier, SIGTERM);
  int status = 0;
  waitpid(amplifier, &status, 0);
  CHECK(home.run({"live", "--json"}) == 4);
  CHECK(holds(home.err, link));
}
