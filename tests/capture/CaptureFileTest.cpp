#include <doctest/doctest.h>

#include "CaptureReader.h"
#include "CaptureWriter.h"
#include "Crc32.h"
#include "MemoryBytes.h"
#include "TemporaryFolder.h"

using namespace ovka;

namespace {

using Bytes = std::vector<std::uint8_t>;

Bytes smallCapture(std::vector<std::size_t>* ends = nullptr) {
  MemorySink sink;
  CaptureWriter writer(sink);
  const auto mark = [&](bool written) {
    REQUIRE(written);
    if (ends != nullptr) ends->push_back(sink.bytes.size());
  };
  mark(writer.begin(1700000000123456789, {{"SelectDevice", "6"}, {"path", "a=b c"}}));
  const std::string path = "/dev/pts/4";
  mark(writer.record({CaptureKind::Opened, 0, 0, 0, 5}, Bytes(path.begin(), path.end())));
  for (std::uint8_t i = 1; i <= 3; ++i)
    mark(writer.record({CaptureKind::Block, 0, i, 0, 1000 * i}, Bytes(i * 7U, i)));
  mark(writer.record({CaptureKind::Lost, 0, 0, 0, 4000}, countsPayload(2, 99)));
  mark(writer.record({CaptureKind::HungUp, 0, 7, 0, 5000}, hangUpPayload(EIO)));
  mark(writer.record({CaptureKind::Closed, 0, 0, 0, 4000}, {}));  // time is raised
  mark(writer.end(6000));
  return sink.bytes;
}

struct Result {
  bool begun = false;
  std::size_t records = 0;
  std::string error;
  bool ended = false;
};

Result readAll(const Bytes& bytes) {
  MemorySource source(bytes);
  CaptureReader reader(source);
  Result result;
  result.begun = reader.begin();
  CaptureRecord record;
  while (result.begun && reader.next(record)) ++result.records;
  CHECK_FALSE(reader.next(record));
  result.error = reader.error();
  result.ended = reader.ended();
  return result;
}

}  // namespace

TEST_CASE("the checksum is the usual CRC-32") {
  const std::string text = "123456789";
  const std::span all(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
  CHECK(crc32(all) == 0xCBF43926U);
  CHECK(crc32(all.subspan(4), crc32(all.first(4))) == 0xCBF43926U);
}

TEST_CASE("a capture keeps header, blocks, waits, times and events") {
  const Bytes bytes = smallCapture();
  MemorySource source(bytes);
  CaptureReader reader(source);
  REQUIRE(reader.begin());
  CHECK(reader.startWallNanoseconds() == 1700000000123456789);
  CHECK(reader.settings().size() == 2);
  CHECK(reader.setting("path") == "a=b c");
  CHECK(reader.setting("none").empty());
  CaptureRecord record;
  REQUIRE(reader.next(record));
  CHECK(std::string(record.payload.begin(), record.payload.end()) == "/dev/pts/4");
  for (std::uint8_t i = 1; i <= 3; ++i) {
    REQUIRE(reader.next(record));
    CHECK(record.head.waits == i);
    CHECK(record.head.nanoseconds == 1000 * i);
    CHECK(Bytes(record.payload.begin(), record.payload.end()) == Bytes(i * 7U, i));
  }
  REQUIRE(reader.next(record));
  CHECK(record.lostBlocks == 2);
  CHECK(record.lostBytes == 99);
  REQUIRE(reader.next(record));
  CHECK(record.hangUpReason == EIO);
  REQUIRE(reader.next(record));
  CHECK(record.head.nanoseconds == 5000);
  CHECK_FALSE(reader.next(record));
  CHECK(reader.ended());
  CHECK(reader.error().empty());
  CHECK(reader.blocks() == 3);
}

TEST_CASE("a capture cut off at any byte says so and gives every whole record") {
  std::vector<std::size_t> ends;
  const Bytes whole = smallCapture(&ends);
  for (std::size_t length = 0; length < whole.size(); ++length) {
    const Result result =
        readAll({whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(length)});
    std::size_t records = 0;
    for (std::size_t i = 1; i < ends.size(); ++i) records += ends[i] <= length ? 1 : 0;
    CAPTURE(length);
    CHECK(result.records == records);
    CHECK_FALSE(result.ended);
    const std::size_t blocks = std::clamp<std::size_t>(records, 1, 4) - 1;
    CHECK(result.error == (length < 8 ? "not a capture"
                                      : "cut off at byte " + std::to_string(length) + " after " +
                                            std::to_string(blocks) + " blocks"));
  }
}

TEST_CASE("damage at any byte is found where it is, and what stands before is given") {
  std::vector<std::size_t> ends;
  const Bytes whole = smallCapture(&ends);
  for (std::size_t at = 0; at < whole.size(); ++at) {
    for (const unsigned flip : {1U, 128U}) {
      Bytes bytes = whole;
      bytes[at] = static_cast<std::uint8_t>(bytes[at] ^ flip);
      const Result result = readAll(bytes);
      CAPTURE(at);
      CHECK_FALSE(result.ended);
      std::size_t record = 0;
      while (ends[record] <= at) ++record;
      CHECK(result.begun == (record > 0));
      CHECK(result.records == (record > 0 ? record - 1 : 0));
      if (at < 8) CHECK(result.error == "not a capture");
      const bool versionZero = at == 8 && flip == 1;
      if (at >= 8 && at < 12) CHECK((result.error.find("version ") == 0) == !versionZero);
      if (record > 0) CHECK(result.error == "damaged at byte " + std::to_string(ends[record - 1]));
    }
  }
  Bytes longer = whole;
  longer.push_back(0);
  CHECK(readAll(longer).error == "damaged at byte " + std::to_string(whole.size()));
}

TEST_CASE("a full disk ends the writing once and leaves a readable capture") {
  std::vector<std::size_t> ends;
  const Bytes whole = smallCapture(&ends);
  for (const std::size_t room : {std::size_t{10}, ends[0] + 3, ends[2], ends[3] + 21}) {
    MemorySink sink;
    sink.room = room;
    CaptureWriter writer(sink);
    const bool begun = writer.begin(0, {{"SelectDevice", "6"}, {"path", "a=b c"}});
    CHECK(begun == (room > ends[0]));
    bool more = begun;
    for (int i = 0; i < 20; ++i) more = writer.record({CaptureKind::Block}, Bytes(10)) && more;
    CHECK_FALSE(more);
    CHECK_FALSE(writer.end(1));
    CHECK(writer.failure() == ENOSPC);
    CHECK(sink.failures == 1);
    const Result result = readAll(sink.bytes);
    CHECK(result.records == writer.blocks());
    if (begun) CHECK(result.error.find("cut off at byte " + std::to_string(room)) == 0);
  }
}

TEST_CASE("headers and records that would not read back are refused") {
  using Settings = CaptureSettings;
  const Settings bad[] = {Settings{{"", "1"}}, Settings{{"a=b", "1"}}, Settings{{"a", "1\n2"}},
                          Settings{{"a\r", "1"}}, Settings{{"a", std::string(65536, 'x')}}};
  for (const CaptureSettings& settings : bad) {
    MemorySink sink;
    CaptureWriter writer(sink);
    CHECK_FALSE(writer.begin(0, settings));
    CHECK(writer.failure() == EINVAL);
    CHECK(sink.bytes.empty());
  }
  MemorySink sink;
  CaptureWriter writer(sink);
  CHECK_FALSE(writer.record({}, Bytes(1)));
  REQUIRE(writer.begin(0, {}));
  CHECK_FALSE(writer.record({}, Bytes((1U << 20U) + 1)));
  CHECK(writer.record({}, Bytes(1U << 20U)));
  CHECK(writer.end(0));
  CHECK(readAll(sink.bytes).records == 1);
}

TEST_CASE("files: none is overwritten unasked, failures carry their errno") {
  const testing::TemporaryFolder folder;
  const std::string path = folder.at("a.ovcap");
  {
    FileSink sink;
    REQUIRE(sink.open(path) == 0);
    CaptureWriter writer(sink);
    CHECK(writer.begin(1, {}));
    CHECK(writer.end(2));
    CHECK(sink.close() == 0);
  }
  CHECK(FileSink().open(path) == EEXIST);
  CHECK(FileSink().open("/nowhere/at/all") == ENOENT);
  FileSource source;
  REQUIRE(source.open(path) == 0);
  CaptureReader reader(source);
  CaptureRecord record;
  CHECK(reader.begin());
  CHECK_FALSE(reader.next(record));
  CHECK(reader.ended());
  std::filesystem::remove(path);
  CHECK(source.open(path) == ENOENT);
  if (source.open("/") == 0) {
    CaptureReader root(source);
    CHECK_FALSE(root.begin());
    CHECK(root.error().find("cannot be read: ") == 0);
  }
  FileSink full;
  if (full.open("/dev/full", true) == 0) {
    CaptureWriter writer(full);
    CHECK_FALSE(writer.begin(0, {}));
    CHECK(writer.failure() == ENOSPC);
  }
}
