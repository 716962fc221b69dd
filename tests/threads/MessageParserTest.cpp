#include <doctest/doctest.h>

#include "InputStreamFixture.h"
#include "PacketLists.h"
#include "QZMessageParser.h"

using namespace ovka;
using ovka::testing::InputStreamFixture;
using ovka::testing::packetList;

namespace {

/// A message per data byte.
struct ByteParser final : QZMessageParser {
  using QZMessageParser::QZMessageParser;
  std::vector<MidiMessage> messagesForPacket(const MidiPacket& packet) override {
    std::vector<MidiMessage> messages;
    for (const std::uint8_t byte : packet.data) messages.push_back({packet.timeStamp, {byte}});
    return messages;
  }
};

struct Delegate final : QZMessageParserDelegate {
  void parser_didReadMessages(QZMessageParser& /*parser*/,
                              const std::vector<MidiMessage>* messages) override {
    ++lists;
    withMessages += messages != nullptr ? 1 : 0;
  }
  int lists = 0;
  int withMessages = 0;
};

}  // namespace

TEST_CASE("a packet list is taken apart, polls the ports once and tells the delegate") {
  InputStreamFixture f;
  ByteParser parser(f.ports);
  Delegate delegate;
  CHECK(parser.takePacketList(packetList({{1}})).size() == 1);  // no delegate
  parser.setDelegate(&delegate);
  f.log.clear();
  static_cast<void>(f.printed.take());

  const auto messages = parser.takePacketList(packetList({{1, 2}, {}, {3}}));
  REQUIRE(messages.size() == 3);
  CHECK(messages[1].bytes == std::vector<std::uint8_t>{2});
  CHECK(messages[1].timeStamp == 1000);
  CHECK(messages[2].timeStamp == 1002);
  CHECK(f.log.texts() == std::vector<std::string>{"getFromPortNew"});
  CHECK(delegate.lists == 1);
  CHECK(delegate.withMessages == 0);
  CHECK(f.printed.take() == "takePacketList");
}

TEST_CASE("a list cut anywhere gives its whole packets, one line, and no read behind its end") {
  InputStreamFixture f;
  ByteParser parser(f.ports);
  const std::vector<std::uint8_t> whole = packetList({{1, 2}, {3, 4, 5}});
  for (std::size_t length = 0; length <= whole.size(); ++length) {
    CAPTURE(length);
    // A copy of exactly this length, so that the address sanitizer sees its end.
    const std::vector<std::uint8_t> cut(whole.data(), whole.data() + length);
    static_cast<void>(f.printed.take());
    const std::size_t expected = length < 16 ? 0 : length < whole.size() ? 2 : 5;
    CHECK(parser.takePacketList(cut).size() == expected);
    CHECK((f.printed.take().find("Error takePacketList") == 0) == (length < whole.size()));
  }
  const std::vector<std::uint8_t> hostile(64, 0xFF);
  CHECK(parser.takePacketList(hostile).empty());
}
