#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <jack/jack.h>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "EndpointTable.h"
#include "JackRoad.h"
#include "MidiTransport.h"
#include "Wake.h"

namespace ovka {

/// What outlives a client: read by any thread at any time.
struct JackStatus {
  std::atomic<bool> connected{false};
  std::atomic<std::uint64_t> changes{0};
  Counter dropped;
};

/// Keeps the client of a JACK server: makes it, gives every chosen destination its port, notices
/// the server's death and looks for it again. All calls of the library but those of the real-time
/// thread are made on this one thread, because a server that hangs keeps them waiting without end.
class JackKeeper {
 public:
  JackKeeper(MidiNames names, MidiReaders readers, std::shared_ptr<JackStatus> status);

  /// The thread: until stop() and the last message's way.
  void run();
  /// The thread that calls the readers, until stop().
  void read();
  void stop();
  /// Waits for the first attempt: 0, ENOENT without a server, ETIMEDOUT when it does not answer.
  [[nodiscard]] int waitOpened(std::chrono::seconds longest);
  /// Waits until run() is through; false when the server keeps it waiting.
  [[nodiscard]] bool waitEnded(std::chrono::seconds longest);
  /// Hears this source from now on, also when it comes back. ENOENT: it is not there.
  [[nodiscard]] int want(std::uint64_t source);
  /// Looks at the endpoints, and connects the destinations' ports anew, should somebody have taken
  /// them apart. Any thread.
  void lookAgain();
  [[nodiscard]] std::vector<MidiDevice> devices() const;

  const std::shared_ptr<JackStatus> status;
  JackRoad road{status->dropped};
  EndpointTable destinations;
  EndpointTable sources;
  Wake wake;

 private:
  using Peers = std::map<std::string, std::set<std::string>>;  // short name of a port of ours
  struct Own {
    std::string name;
    bool output = false;
    jack_port_t* port = nullptr;
  };

  [[nodiscard]] int connect();
  void disconnect();
  void setCallbacks();
  static void tell(void* keeper, std::atomic<bool> JackKeeper::*what);
  [[nodiscard]] jack_port_t* makePort(const std::string& name, bool output);
  void makeOwnPorts();
  void enumerate();
  [[nodiscard]] std::vector<std::string> foreignPorts(unsigned long flags) const;
  void readDevices();
  void serveSlots(bool again);
  [[nodiscard]] JackRoad::State serveSlot(std::size_t index, const std::string& destination);
  void restorePeers();
  void rememberPeers();
  [[nodiscard]] bool join(jack_port_t* own, bool output, const std::string& peer) const;
  [[nodiscard]] std::string clientName() const;
  [[nodiscard]] std::string portName(const std::string& wanted) const;
  [[nodiscard]] bool connectedTo(jack_port_t* own, const std::string& peer) const;
  void step();
  void farewell();
  void tellOpened(int result);

  const MidiNames names_;
  const MidiReaders readers_;
  jack_client_t* client_ = nullptr;
  std::vector<Own> own_;
  Peers peers_;      ///< who is connected to the in port and the virtual endpoints
  Peers toRestore_;  ///< who was, before the server went
  /// The server tells of a port that goes before it goes, and of one that comes before it runs.
  static constexpr std::chrono::milliseconds kPortsSettle{150};
  static constexpr auto kNever = std::chrono::steady_clock::time_point::max();
  std::chrono::steady_clock::time_point lookAt_ = kNever;
  std::chrono::steady_clock::time_point rememberAt_ = kNever;
  bool opening_ = false;  ///< connections are on their way
  std::array<std::chrono::steady_clock::time_point, JackRoad::kSlots> openingSince_{};

  std::atomic<bool> stop_{false};
  std::atomic<bool> serverGone_{false};
  std::atomic<bool> endpointsChanged_{false};
  std::atomic<bool> connectionsChanged_{false};
  std::atomic<bool> again_{false};

  mutable std::mutex lock_;  // guards what follows
  std::condition_variable told_;
  int openResult_ = -1;
  bool ended_ = false;
  std::set<std::string> wanted_;
  std::vector<MidiDevice> devices_;
};

}  // namespace ovka
