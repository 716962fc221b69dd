#pragma once

#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "Child.h"
#include "MidiSystems.h"
#include "PlayedMessages.h"

namespace ovka::testing {

/// A JACK server of the test's own, without a sound card.
class JackServer {
 public:
  /// `waits`: it waits for its clients in each cycle; else a loaded machine loses whole cycles.
  explicit JackServer(bool waits)
      : waits_(waits), name_("ovka-test-" + std::to_string(::getpid())) {
    ::setenv("JACK_DEFAULT_SERVER", name_.c_str(), 1);
  }
  /// False when the machine has none.
  bool start() {
    if (::access("/usr/bin/jackd", X_OK) != 0) return false;
    const std::string mode = waits_ ? "-S " : "";
    server_ = std::make_unique<Child>(std::vector<std::string>{
        "sh", "-c",
        "exec setpriv --pdeathsig TERM /usr/bin/jackd --no-realtime " + mode + "-n " + name_ +
            " -d dummy -r 48000 -p 256 >/dev/null 2>&1"});
    Child waiting({"sh", "-c", "exec jack_wait -s " + name_ + " -w -t 20 2>/dev/null"});
    return waiting.rest().find("not available") == std::string::npos;
  }
  void end(int signal) {
    if (server_) server_->end(signal);
    server_.reset();
  }
  void signal(int number) const { server_->signal(number); }
  ~JackServer() {
    end(SIGTERM);
    // A server that did not end in order keeps its place in a list of eight for ever.
    std::ifstream list("/dev/shm/jack-shm-registry", std::ios::binary);
    const std::string places((std::istreambuf_iterator<char>(list)), {});
    if (places.find(name_) != std::string::npos && start()) end(SIGTERM);
    // What clients of a killed server leave behind.
    std::error_code failed;
    for (const auto& file : std::filesystem::directory_iterator("/dev/shm", failed)) {
      const bool ours = file.path().filename().string().find(name_) != std::string::npos;
      if (ours) std::filesystem::remove(file.path(), failed);
    }
  }
  JackServer(const JackServer&) = delete;
  JackServer& operator=(const JackServer&) = delete;

 private:
  bool waits_;
  std::string name_;
  std::unique_ptr<Child> server_;
};

/// A MIDI system to test on; `missing` says why not.
struct Ground {
  std::string system;
  std::string separator;  ///< between client and port
  std::string missing;
  std::unique_ptr<JackServer> server;

  [[nodiscard]] std::string endpoint(const std::string& client, const std::string& port) const {
    return client + separator + port;
  }
};

inline Ground alsaGround() {
  Ground ground{"ALSA sequencer", ": ", "", nullptr};
  const auto systems = openMidiTransports("none");
  if (!systems[0].available) ground.missing = systems[0].trouble.reason;
  return ground;
}

inline Ground jackGround(bool waits = false) {
  Ground ground{"JACK", ":", "", std::make_unique<JackServer>(waits)};
  if (makeMidiTransport("JACK") == nullptr) {
    ground.missing = "built without JACK";
  } else if (!ground.server->start()) {
    ground.missing = "no jackd on this machine (package jackd2)";
  }
  return ground;
}

/// Keeps what arrives at the two endpoints of a transport.
class Heard {
 public:
  struct Message {
    std::uint64_t timeStamp = 0;
    MidiBytes bytes;
  };

  [[nodiscard]] MidiReaders readers() {
    return {[](const std::uint8_t* list, void* self, void*) {
              static_cast<Heard*>(self)->take(list, 0);
            },
            [](const std::uint8_t* list, void* self, void*) {
              static_cast<Heard*>(self)->take(list, 1);
            },
            this};
  }
  [[nodiscard]] std::vector<Message> inPort() const { return all(0); }
  [[nodiscard]] std::vector<Message> virtualDestination() const { return all(1); }
  [[nodiscard]] std::vector<MidiBytes> bytes(int endpoint) const {
    std::vector<MidiBytes> only;
    for (const Message& message : all(endpoint)) only.push_back(message.bytes);
    return only;
  }
  [[nodiscard]] std::size_t count(int endpoint) const {
    const std::scoped_lock guard(lock_);
    return heard_[endpoint].size();
  }

 private:
  template <typename T>
  static T next(const std::uint8_t*& from) {
    T value;
    std::memcpy(&value, from, sizeof value);
    from += sizeof value;
    return value;
  }
  void take(const std::uint8_t* list, int endpoint) {
    const std::scoped_lock guard(lock_);
    for (auto packets = next<std::uint32_t>(list); packets > 0; --packets) {
      const auto stamp = next<std::uint64_t>(list);
      const auto length = next<std::uint16_t>(list);
      heard_[endpoint].push_back({stamp, {list, list + length}});
      list += length;
    }
  }
  [[nodiscard]] std::vector<Message> all(int endpoint) const {
    const std::scoped_lock guard(lock_);
    return heard_[endpoint];
  }

  mutable std::mutex lock_;
  std::vector<Message> heard_[2];
};

/// A listening program in this process.
struct Listener {
  Heard heard;
  std::string client = "ovka-listener-" + std::to_string(::getpid());
  std::unique_ptr<MidiTransport> transport;

  explicit Listener(const Ground& ground) : transport(makeMidiTransport(ground.system)) {
    MidiNames names;
    names.client = client;
    const int opened = transport->open(names, heard.readers());
    REQUIRE_MESSAGE(opened == 0, transport->explanation());
  }
  ~Listener() { transport->close(); }
};

inline std::uint64_t idOf(const std::vector<MidiEndpoint>& endpoints, const std::string& name) {
  for (const auto& endpoint : endpoints) {
    if (endpoint.name == name) return endpoint.id;
  }
  return 0;
}

}  // namespace ovka::testing
