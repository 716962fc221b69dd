#include <cerrno>
#include <chrono>
#include <cstdio>
#include <iostream>
#include <sstream>
#include <string>
#include <thread>
#include <unistd.h>

#include "MidiGuardProcess.h"
#include "MidiSystems.h"
#include "PlayedMessages.h"

// midi_player SYSTEM DESTINATION: does what its standard input says, a command a line, and answers
// each with a line.

namespace {

using namespace std::chrono_literals;

struct Player {
  ovka::MidiGuardProcess guard;
  std::unique_ptr<ovka::MidiTransport> transport;
  std::string destinationName;
  std::uint64_t destination = 0;

  bool find() {
    for (int i = 0; i < 500; ++i, std::this_thread::sleep_for(10ms)) {
      for (const auto& endpoint : transport->destinations()) {
        if (endpoint.name == destinationName) destination = endpoint.id;
      }
      if (destination != 0) return true;
    }
    return false;
  }
  int send(const ovka::testing::MidiBytes& bytes) const {
    int result = EAGAIN;
    for (int i = 0; result == EAGAIN && i < 5000; ++i) {
      result = transport->send(destination, 0, bytes);
      if (result == EAGAIN) std::this_thread::sleep_for(1ms);
    }
    return result;
  }
  int kinds(bool publish) const {
    int failures = 0;
    for (const auto& bytes : ovka::testing::everyKindOfMessage()) {
      failures += (publish ? transport->received(0, bytes) : send(bytes)) != 0 ? 1 : 0;
    }
    return failures;
  }
  int burst(std::size_t count) const {
    int failures = 0;
    for (std::size_t i = 0; i < count; ++i) {
      failures += send(ovka::testing::burstMessage(i)) != 0 ? 1 : 0;
    }
    return failures;
  }
  int hold() {
    auto& notes = guard.notes();
    notes.name(0, "a system that is not there", "nobody", 1);
    notes.mark(0, 3, 3);
    notes.name(5, transport->name(), destinationName, destination);
    int failures = 0;
    for (const auto& [channel, note] : ovka::testing::heldNotes()) {
      notes.mark(5, channel, note);
      failures += send({static_cast<std::uint8_t>(0x90U | channel), static_cast<std::uint8_t>(note),
                        100}) != 0
                      ? 1
                      : 0;
    }
    return failures;
  }
};

}  // namespace

int main(int count, char** arguments) {
  if (count < 3) return 2;
  Player player;
  const int guarded = player.guard.start();
  player.transport = ovka::makeMidiTransport(arguments[1]);
  player.destinationName = arguments[2];
  ovka::MidiNames names;
  if (count > 3) names.client = arguments[3];
  if (guarded != 0 || !player.transport || player.transport->open(names, {}) != 0) {
    std::cout << "failed " << guarded << '\n';
    return 1;
  }
  std::cout << "ready " << player.guard.process() << std::endl;
  for (std::string line; std::getline(std::cin, line);) {
    std::istringstream words(line);
    std::string command;
    std::size_t number = 0;
    words >> command >> number;
    int result = 0;
    if (command == "find") result = player.find() ? 0 : ENOENT;
    if (command == "kinds") result = player.kinds(false);
    if (command == "publish") result = player.kinds(true);
    if (command == "burst") result = player.burst(number);
    if (command == "hold") result = player.hold();
    std::cout << result << std::endl;
    if (command == "quit") break;
  }
  player.transport->close();
  return 0;
}
