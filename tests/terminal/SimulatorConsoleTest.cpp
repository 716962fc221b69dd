#include <doctest/doctest.h>
#include <memory>
#include <string>
#include <vector>

#include "ByteChannel.h"
#include "SimulatorConsole.h"

using namespace ovka;

namespace {

/// A line whose host is always there.
class OpenChannel final : public ByteChannel {
 public:
  [[nodiscard]] std::string path() const override { return "line"; }
  [[nodiscard]] bool hostPresent() override { return true; }
  [[nodiscard]] std::size_t read(std::span<std::uint8_t> /*bytes*/) override { return 0; }
  [[nodiscard]] std::size_t write(std::span<const std::uint8_t> bytes) override {
    sent.append(bytes.begin(), bytes.end());
    return bytes.size();
  }
  void discardUnread() override {}
  void hangUp() override { ++hangUps; }
  [[nodiscard]] int comeBack() override { return 0; }

  std::string sent;
  int hangUps = 0;
};

}  // namespace

TEST_CASE("lines typed to the virtual amplifier") {
  SimulatorOptions options;
  options.model = 0;
  std::string error;
  VirtualAmplifier amplifier(options, makeSignal(options, error));
  OpenChannel channel;
  SimulatorServer server(amplifier, channel, options.faults);
  terminal::SimulatorConsole console(amplifier, server);
  constexpr std::int64_t kSecond = 1'000'000'000;
  server.serveOnce(0);
  server.serveOnce(kSecond);

  CHECK(console.command("ack y", kSecond) == "");
  CHECK(console.command("overflow 12345", kSecond) == "");
  CHECK(console.command("eyes closed", kSecond) == "");
  CHECK(console.command("", kSecond) == "");
  server.serveOnce(kSecond + kSecond / 2);
  CHECK(channel.sent.find("\ryyyy\r") != std::string::npos);
  CHECK(channel.sent.find("\rov 12345\r") != std::string::npos);
  for (const char* bad : {"ack", "ack Y", "ack ab", "overflow", "overflow -1", "eyes shut",
                          "hang-up x", "overflow 99999999999", "dance"}) {
    CAPTURE(bad);
    CHECK(console.command(bad, kSecond).find("is no command") != std::string::npos);
  }
  CHECK(channel.hangUps == 0);
  CHECK(console.command("hang-up 1", 2 * kSecond) == "");
  CHECK(channel.hangUps == 1);
}
