#include <doctest/doctest.h>
#include <thread>

#include "DecoderBench.h"

using namespace ovka;
using testing::Bytes;
using testing::bytesOf;
using testing::DecoderBench;
namespace amp = amplifier;

namespace {

const Bytes kLine = bytesOf("800 800 800 800\r");
using Values = std::array<std::int32_t, 5>;

}  // namespace

TEST_CASE("four reads make a batch, read by read silence in between") {
  DecoderBench bench;
  const std::array<std::int64_t, 9> stored{0, 0, 0, 4, 4, 4, 4, 8, 8};
  for (const std::int64_t frames : stored) {
    bench.decoder.stageRead(1, {});  // an empty read does not count
    bench.decoder.stageRead(1, kLine);
    CHECK(bench.decoder.framesStored() == frames);
  }
  CHECK(bench.at(0) == Values{49, 3072, 3072, 0, 0});
  Bytes log(64);
  CHECK(bench.decoder.copyLog(log) == 64);
  CHECK(Bytes(log.begin(), log.begin() + 16) == kLine);

  amp::setNoPortAccess = 1;
  for (int n = 0; n < 8; ++n) bench.decoder.stageRead(1, kLine);
  bench.decoder.decodePacket(kLine);
  bench.decoder.decodeRead(1, kLine);
  bench.decoder.printNumberSTR(kLine);
  CHECK(bench.decoder.framesStored() == 8);
}

TEST_CASE("a full staging buffer is handed on and does not silence the input") {
  DecoderBench bench;
  Bytes most;
  while (most.size() + 16 <= StreamDecoder::kReadBytes)
    most.insert(most.end(), kLine.begin(), kLine.end());
  bench.decoder.stageRead(1, most);
  bench.decoder.stageRead(1, most);
  const auto lost = static_cast<long long>(2 * most.size() - StreamDecoder::kBufferBytes);
  CHECK(bench.losses.stagingBytes.get() == lost);
  CHECK(bench.decoder.framesStored() ==
        static_cast<std::int64_t>(StreamDecoder::kBufferBytes / 16));
  const std::int64_t before = bench.decoder.framesStored();
  for (int n = 0; n < 4; ++n) bench.decoder.stageRead(1, kLine);
  CHECK(bench.decoder.framesStored() == before + 4);
  CHECK(bench.losses.stagingBytes.get() == lost);

  bench.center.removeObserver(&bench);  // nobody decodes: the batch is lost, and counted
  for (int n = 0; n < 4; ++n) bench.decoder.stageRead(1, kLine);
  CHECK(bench.losses.stagingBytes.get() == lost + 64);
}

TEST_CASE("ways in: direct, packet, string-in, and the model without a port") {
  DecoderBench bench;
  bench.decoder.decodeRead(0, kLine);
  bench.decoder.decodePacket(kLine);
  CHECK(bench.decoder.framesStored() == 2);
  bench.decoder.decodePacket(Bytes(1024, 13));
  CHECK(bench.losses.droppedPackets.get() == 1);
  bench.decoder.decodePacket(Bytes(1023, '0'));
  CHECK(bench.losses.longLines.get() == 60);
  bench.decoder.resetInput();
  for (int n = 1; n <= 16; ++n) {
    bench.decoder.setStringIn(kLine);
    bench.decoder.getFromModemNewQCstringIN(-1, 1);
    bench.decoder.getFromModemNewQCstringIN(-1, 1);  // taken once
    CHECK(bench.decoder.framesStored() == 2 + n / 8 * 8);
    CHECK(bench.shell.log.count("doSomethingSlow 1") == n / 8);
  }
  buffer::SelectDevice = 4;
  for (int n = 0; n < 4; ++n) bench.decoder.stageRead(1, kLine);
  CHECK(bench.decoder.framesStored() == 18);
  CHECK(bench.losses.stagingBytes.get() == 0);
}

TEST_CASE("the old head set decodes the first record twice and never the last") {
  const std::string records = "000 000 000 000 000\r001 000 000 000 000\r002 000 000 000 000\r";
  struct Row {
    std::size_t bytes;
    std::vector<std::int32_t> stored;  // channel 0
    long long ignored;
  };
  const std::vector<Row> rows{{19, {}, 1},     {20, {0}, 0},    {21, {}, 2},       {39, {}, 2},
                              {40, {0, 0}, 1}, {59, {0, 0}, 2}, {60, {0, 0, 1}, 1}};
  for (const Row& row : rows) {
    CAPTURE(row.bytes);
    DecoderBench bench;
    amp::oldBluetooth = 1;
    bench.decoder.printNumberSTR(bytesOf(records.substr(0, row.bytes)));
    REQUIRE(buffer::ploop == static_cast<std::int64_t>(row.stored.size()));
    for (std::size_t n = 0; n < row.stored.size(); ++n) {
      CHECK(bench.at(static_cast<std::int64_t>(n))[0] == row.stored[n]);
    }
    CHECK(bench.losses.ignoredRecords.get() == row.ignored);
  }
}

TEST_CASE("model 1: four ports of one byte a sample, aligned on the first") {
  DecoderBench bench(1, 3, 10);
  amp::GainOr = 1.5;
  const Bytes bytes{0x01, 0x80, 0xFF};
  buffer::ploop = 3;
  for (const std::int32_t port : {1, 2, 3, 4, 0, 5}) bench.decoder.stageRead(port, bytes);
  CHECK(buffer::ploop == 6);
  CHECK(bench.at(3) == Values{49, 0, 0, 0, 0});
  CHECK(bench.at(4) == Values{49, -760, -760, 0, -760});  // 4 * trunc(1.5 * -127)
  CHECK(bench.at(5) == Values{49, 760, 760, 0, 760});
  buffer::DeviceConfig = 2;
  bench.decoder.stageRead(3, bytes);
  CHECK(bench.at(5) == Values{49, 760, 760, 760, 760});

  buffer::setLoopModeX = 1;  // over the end: the ports stay together
  buffer::ploopStart = 1;
  buffer::ploop = 8;
  const Bytes four{0x01, 0x01, 0x80, 0xFF};
  bench.decoder.stageRead(1, four);
  bench.decoder.stageRead(2, four);
  CHECK(buffer::ploop == 3);
  CHECK(bench.at(1)[1] == -760);
  CHECK(bench.at(1)[2] == -760);
  CHECK(bench.at(2)[2] == 760);
  CHECK(bench.printed == "loopCount=00000000\n");

  buffer::setPauseX = 1;
  bench.decoder.stageRead(1, bytes);
  bench.decoder.stageRead(2, bytes);
  CHECK(buffer::ploop == 3);
  CHECK(bench.at(3)[1] == 760);
  CHECK(bench.at(3)[2] == 760);
  CHECK(bench.at(4)[2] == -760);

  bench.decoder.stageRead(1, Bytes(StreamDecoder::kBufferBytes));
  CHECK(bench.losses.stagingBytes.get() == static_cast<long long>(StreamDecoder::kBufferBytes));
}

TEST_CASE("port, Bluetooth and a message thread may meet in the decoder") {
  DecoderBench bench(0, 1, 1000);
  buffer::setLoopModeX = 1;
  std::vector<std::thread> sources;
  sources.emplace_back([&] {
    for (int n = 0; n < 2000; ++n) bench.decoder.stageRead(1, kLine);
  });
  sources.emplace_back([&] {
    for (int n = 0; n < 2000; ++n) bench.decoder.decodePacket(kLine);
  });
  sources.emplace_back([&] {
    for (int n = 0; n < 2000; ++n) bench.decoder.needUpdateDataBuffer();
  });
  for (std::thread& source : sources) source.join();
  CHECK(bench.decoder.framesStored() == 4000);
}
