#include <doctest/doctest.h>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include "PseudoTerminal.h"
#include "SimulatorServer.h"
#include "TemporaryFolder.h"

using namespace ovka;

namespace {

constexpr std::int64_t kMillisecond = 1'000'000;

/// A line whose host does what the test says.
class FakeChannel final : public ByteChannel {
 public:
  std::string path() const override { return here ? "/fake" : ""; }
  bool hostPresent() override { return here && host; }
  std::size_t read(std::span<std::uint8_t> bytes) override {
    const std::size_t count = std::min(bytes.size(), fromHost.size());
    std::copy_n(fromHost.begin(), count, bytes.begin());
    fromHost.erase(0, count);
    return count;
  }
  std::size_t write(std::span<const std::uint8_t> bytes) override {
    const std::size_t count = std::min(bytes.size(), room);
    toHost.append(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count));
    room -= count;
    return count;
  }
  void discardUnread() override { toHost.clear(); }
  void hangUp() override { here = false; }
  int comeBack() override {
    here = error == 0;
    return error;
  }

  bool here = true;
  bool host = false;
  int error = 0;
  std::size_t room = 1U << 20U;
  std::string fromHost;
  std::string toHost;
};

VirtualAmplifier sequence() {
  SimulatorOptions options;
  options.signal = SignalKind::Sequence;
  options.model = 0;
  std::string error;
  return VirtualAmplifier(options, makeSignal(options, error));
}

/// A host's end of a pseudo-terminal.
struct Host {
  explicit Host(const std::string& path)
      : descriptor(::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {}
  ~Host() { ::close(descriptor); }
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;
  /// What arrives until `size` bytes are there or nothing comes for a second.
  [[nodiscard]] std::string read(std::size_t size) const {
    std::string got;
    char piece[4096];
    pollfd ready{descriptor, POLLIN, 0};
    while (got.size() < size && ::poll(&ready, 1, 1000) == 1) {
      const ssize_t count = ::read(descriptor, piece, sizeof piece);
      if (count <= 0) break;
      got.append(piece, static_cast<std::size_t>(count));
    }
    return got;
  }
  int descriptor;
};

bool noPseudoTerminals() {
  if (::access("/dev/ptmx", R_OK | W_OK) == 0) return false;
  MESSAGE("skipped: no /dev/ptmx");
  return true;
}

}  // namespace

TEST_CASE("the server greets a host, takes its commands and counts what it does not read") {
  auto amplifier = sequence();
  FakeChannel channel;
  SimulatorServer server(amplifier, channel, {});
  std::vector<std::string> events;
  server.onEvent([&events](const std::string& text) { events.push_back(text); });
  channel.fromHost = "SR 999\r";  // without a host: stale
  server.serveOnce(0);
  CHECK(channel.toHost.empty());
  channel.host = true;
  for (int i = 1; i <= 20; ++i) server.serveOnce(i * kMillisecond);
  CHECK(channel.toHost == "Amplifier 0\r");
  channel.fromHost = "SR 240\r";
  server.serveOnce(21 * kMillisecond);
  CHECK(amplifier.samplesPerSecond() == 240);
  channel.toHost.clear();
  channel.room = 160;
  server.serveOnce(1021 * kMillisecond);
  CHECK(channel.toHost.size() == 160);
  CHECK(amplifier.faults().overrunBytes == 240 * 16 - 160);
  channel.host = false;
  server.serveOnce(1022 * kMillisecond);
  CHECK(events == std::vector<std::string>{"host opened the line", "host closed the line"});
}

TEST_CASE("hang-ups come and go by the clock, and a line that cannot return is tried again") {
  auto amplifier = sequence();
  FakeChannel channel;
  FaultChoice faults;
  faults.hangUpEvery = 10;
  faults.hangUpSeconds = 2;
  SimulatorServer server(amplifier, channel, faults);
  channel.host = true;
  bool was = true;
  std::vector<int> changes;
  for (int tenth = 0; tenth < 250; ++tenth) {
    channel.error = tenth < 125 ? EIO : 0;
    server.serveOnce(tenth * 100 * kMillisecond);
    if (channel.here != was) changes.push_back(tenth);
    was = channel.here;
  }
  CHECK(changes == std::vector<int>{100, 130, 230});
  CHECK(amplifier.faults().hangUps == 2);
}

TEST_CASE("a pseudo-terminal carries every byte value both ways and sees hosts come and go") {
  if (noPseudoTerminals()) return;
  PseudoTerminal line;
  REQUIRE(line.open() == "");
  CHECK_FALSE(line.hostPresent());
  std::vector<std::uint8_t> all(256);
  for (std::size_t i = 0; i < all.size(); ++i) all[i] = static_cast<std::uint8_t>(i);
  {
    const Host host(line.path());
    CHECK(line.hostPresent());
    CHECK(line.write(all) == 256);
    CHECK(host.read(256) == std::string(all.begin(), all.end()));
    CHECK(::write(host.descriptor, all.data(), all.size()) == 256);
    std::vector<std::uint8_t> got(512);
    std::size_t count = 0;  // the kernel hands them over in its own time
    for (int i = 0; i < 1000 && count < 256; ++i, ::usleep(1000))
      count += line.read(std::span(got).subspan(count));
    CHECK(count == 256);
    got.resize(256);
    CHECK(got == all);
    // A host that does not read must not stop the writer.
    const std::vector<std::uint8_t> flood(1U << 20U, 'x');
    const std::size_t taken = line.write(flood);
    CHECK(taken > 1000);
    CHECK(taken < flood.size());
  }
  CHECK_FALSE(line.hostPresent());
  line.discardUnread();
  const Host next(line.path());
  CHECK(line.hostPresent());
  CHECK(line.write(all) == 256);
  CHECK(next.read(256) == std::string(all.begin(), all.end()));
}

TEST_CASE("the link replaces only a stale link and follows a hang-up") {
  if (noPseudoTerminals()) return;
  const testing::TemporaryFolder temporary;
  const std::filesystem::path folder = temporary.path();
  const std::filesystem::path link = folder / "amplifier";
  const auto refused = [&link] { return PseudoTerminal().open(link); };

  std::filesystem::create_directory(link);
  CHECK(refused().find("there is something else of that name") != std::string::npos);
  std::filesystem::remove(link);
  std::filesystem::create_symlink("/dev/null", link);
  CHECK(refused().find("it points to /dev/null, which exists") != std::string::npos);
  CHECK(std::filesystem::read_symlink(link) == "/dev/null");
  std::filesystem::remove(link);
  CHECK(PseudoTerminal().open(folder / "no" / "where").find("cannot make the link") == 0);

  std::filesystem::create_symlink(folder / "gone", link);
  {
    PseudoTerminal line;
    REQUIRE(line.open(link) == "");
    CHECK(line.path() == link);
    CHECK(std::filesystem::read_symlink(link) == line.slavePath());
    const Host host(link);
    line.hangUp();
    pollfd state{host.descriptor, POLLIN, 0};
    CHECK(::poll(&state, 1, 1000) == 1);
    CHECK((state.revents & POLLHUP) != 0);
    CHECK(line.path().empty());
    CHECK_FALSE(std::filesystem::exists(std::filesystem::symlink_status(link)));
    REQUIRE(line.comeBack() == 0);
    CHECK(std::filesystem::read_symlink(link) == line.slavePath());
    CHECK(Host(link).descriptor >= 0);
  }
  CHECK_FALSE(std::filesystem::exists(std::filesystem::symlink_status(link)));
}
