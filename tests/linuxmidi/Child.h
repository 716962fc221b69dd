#pragma once

#include <array>
#include <chrono>
#include <doctest/doctest.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace ovka::testing {

/// Waits for what another thread or process brings about; bounded, so a failure ends the test.
template <typename Condition>
bool comesTrue(Condition condition, std::chrono::milliseconds within = std::chrono::seconds(20)) {
  const auto end = std::chrono::steady_clock::now() + within;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
  }
  return true;
}

/// A program with its standard input and output in our hands; killed at the end.
class Child {
 public:
  explicit Child(const std::vector<std::string>& command) {
    std::array<int, 2> in{};
    std::array<int, 2> out{};
    REQUIRE(::pipe2(in.data(), O_CLOEXEC) == 0);
    REQUIRE(::pipe2(out.data(), O_CLOEXEC) == 0);
    posix_spawn_file_actions_t files;
    ::posix_spawn_file_actions_init(&files);
    ::posix_spawn_file_actions_adddup2(&files, in[0], 0);
    ::posix_spawn_file_actions_adddup2(&files, out[1], 1);
    std::vector<char*> words;
    for (const auto& word : command) words.push_back(const_cast<char*>(word.c_str()));
    words.push_back(nullptr);
    const int failed = ::posix_spawnp(&process_, words[0], &files, nullptr, words.data(), environ);
    ::posix_spawn_file_actions_destroy(&files);
    ::close(in[0]);
    ::close(out[1]);
    in_ = in[1];
    out_ = out[0];
    REQUIRE_MESSAGE(failed == 0, "cannot run ", command[0]);
  }
  ~Child() {
    end(SIGKILL);
    ::close(in_);
    ::close(out_);
  }
  Child(const Child&) = delete;
  Child& operator=(const Child&) = delete;

  void say(const std::string& line) const {
    const std::string text = line + "\n";
    REQUIRE(::write(in_, text.data(), text.size()) == static_cast<ssize_t>(text.size()));
  }
  /// The next line; empty at the end of the output or after half a minute.
  std::string line() {
    for (;;) {
      if (const auto at = text_.find('\n'); at != std::string::npos) {
        const std::string found = text_.substr(0, at);
        text_.erase(0, at + 1);
        return found;
      }
      constexpr int kPatience = 30'000;
      pollfd ready{out_, POLLIN, 0};
      std::array<char, 4096> bytes{};
      if (::poll(&ready, 1, kPatience) != 1) return "";
      const ssize_t count = ::read(out_, bytes.data(), bytes.size());
      if (count <= 0) return "";
      text_.append(bytes.data(), static_cast<std::size_t>(count));
    }
  }
  std::string ask(const std::string& command) {
    say(command);
    return line();
  }
  /// All that it writes until it ends.
  std::string rest() {
    std::string all;
    for (std::string next = line(); !next.empty(); next = line()) all += next + "\n";
    return all;
  }
  void signal(int number) const {
    if (process_ > 0) ::kill(process_, number);
  }
  void end(int number) {
    signal(number);
    if (process_ > 0) ::waitpid(process_, nullptr, 0);
    process_ = -1;
  }

 private:
  pid_t process_ = -1;
  int in_ = -1;
  int out_ = -1;
  std::string text_;
};

}  // namespace ovka::testing
