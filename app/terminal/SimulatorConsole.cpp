#include "SimulatorConsole.h"

#include <array>
#include <cstdio>
#include <poll.h>
#include <sstream>
#include <unistd.h>

namespace ovka::terminal {
namespace {

constexpr std::size_t kLongestLine = 200;

bool readable() {
  if (isatty(STDIN_FILENO) != 0 && tcgetpgrp(STDIN_FILENO) != getpgrp()) return false;
  pollfd input{STDIN_FILENO, POLLIN, 0};
  return ::poll(&input, 1, 0) > 0 && (input.revents & (POLLIN | POLLHUP)) != 0;
}

}  // namespace

void SimulatorConsole::poll(std::int64_t now) {
  while (open_ && readable()) {
    std::array<char, 256> bytes{};
    const ssize_t count = ::read(STDIN_FILENO, bytes.data(), bytes.size());
    if (count <= 0) {
      open_ = false;
      return;
    }
    pending_.append(bytes.data(), static_cast<std::size_t>(count));
    for (std::size_t end = pending_.find('\n'); end != std::string::npos;
         end = pending_.find('\n')) {
      const std::string problem = command(std::string_view(pending_).substr(0, end), now);
      if (!problem.empty()) std::fprintf(stderr, "%s\n", problem.c_str());
      pending_.erase(0, end + 1);
    }
    if (pending_.size() > kLongestLine) pending_.clear();
  }
}

std::string SimulatorConsole::command(std::string_view line, std::int64_t now) {
  std::istringstream words{std::string(line)};
  std::string name;
  std::string value;
  words >> name >> value;
  if (name.empty()) return {};
  if (name == "ack" && value.size() == 1 && value[0] >= 'a' && value[0] <= 'z') {
    amplifier_.acknowledge(value[0]);
  } else if (name == "eyes" && (value == "open" || value == "closed")) {
    amplifier_.setEyesClosed(value == "closed");
  } else if (name == "overflow" && !value.empty() && value.size() <= 10 &&
             value.find_first_not_of("0123456789") == std::string::npos) {
    amplifier_.reportOverflow(std::stoull(value));
  } else if (name == "hang-up" && value.size() <= 4 &&
             value.find_first_not_of("0123456789") == std::string::npos) {
    const std::int64_t seconds = value.empty() ? 2 : std::stoll(value);
    server_.hangUp(now, seconds * 1'000'000'000);
  } else {
    return "'" + std::string(line) +
           "' is no command: ack LETTER, eyes open|closed, overflow N, hang-up [SECONDS]";
  }
  return {};
}

}  // namespace ovka::terminal
