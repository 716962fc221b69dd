#include <charconv>
#include <cmath>
#include <cstring>
#include <doctest/doctest.h>
#include <limits>
#include <random>

#include "Json.h"
#include "NoticeLog.h"
#include "Numbers.h"
#include "Utf8.h"

using namespace ovka::terminal;

TEST_CASE("JSON: brackets, commas and escapes") {
  std::string out;
  JsonWriter json(out);
  json.beginObject().key("a").integer(-1).key("b").beginArray().endArray();
  json.key("c").beginArray().number(1).number(0.1).text("x").beginObject().endObject().endArray();
  json.key("d").boolean(true).key("e").null().endObject();
  CHECK(out == R"({"a":-1,"b":[],"c":[1,0.1,"x",{}],"d":true,"e":null})");

  const struct {
    std::string text;
    const char* json;
  } table[] = {
      {"\"\\/", R"("\"\\/")"},
      {"\n\t\r\x01\x7f", R"("\n\t\r\u0001\u007f")"},
      {"\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80", "\"\xC3\xA9 \xE2\x82\xAC \xF0\x9F\x98\x80\""},
      {"a\xFFz", "\"a\xEF\xBF\xBDz\""},                              // no such byte
      {"\xC0\xAF", "\"\xEF\xBF\xBD\xEF\xBF\xBD\""},                  // overlong
      {"\xE2\x82", "\"\xEF\xBF\xBD\xEF\xBF\xBD\""},                  // cut off
      {"\xED\xA0\x80", "\"\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD\""},  // surrogate
      {std::string("\0", 1), R"("\u0000")"},
  };
  for (const auto& row : table) {
    std::string text;
    JsonWriter(text).text(row.text);
    CHECK(text == row.json);
  }
}

TEST_CASE("JSON: numbers read back exactly, and what JSON lacks is null") {
  std::mt19937_64 random(7);
  for (int i = 0; i < 20000; ++i) {
    const std::uint64_t bits = random();
    double value = 0;
    static_assert(sizeof value == sizeof bits);
    std::memcpy(&value, &bits, sizeof value);
    std::string text;
    JsonWriter(text).number(value);
    if (!std::isfinite(value)) {
      CHECK(text == "null");
      continue;
    }
    double back = 0;
    std::from_chars(text.data(), text.data() + text.size(), back);
    REQUIRE(back == value);
  }
  std::string text;
  JsonWriter(text)
      .beginArray()
      .number(-0.0)
      .number(std::numeric_limits<double>::infinity())
      .endArray();
  CHECK(text == "[-0.0,null]");
}

TEST_CASE("numbers and times for a person") {
  CHECK(readableNumber(0, 6) == "0.000");
  CHECK(readableNumber(49.876, 6) == "49.88");
  CHECK(readableNumber(1234.5, 6) == "1234.5");
  CHECK(readableNumber(123456.7, 6) == "123457");
  CHECK(readableNumber(1234567.0, 6) == "1e+06");
  CHECK(readableNumber(std::nan(""), 6) == "-");
  for (const double value : {-1e300, -12345.678, -0.001, 1e-300, 99999.95, 999999.9, 1e300}) {
    CAPTURE(value);
    CHECK(readableNumber(value, 6).size() <= 6);
  }
  CHECK(clockText(3723.9) == "01:02:03");
  CHECK(clockText(400000) == "111:06:40");
  CHECK(clockText(-1) == "00:00:00");
  CHECK(clockText(std::nan("")) == "00:00:00");
}

TEST_CASE("the notice log keeps whole lines, newest last") {
  NoticeLog log;
  log.take("one\ntw");
  CHECK(log.last(5) == std::vector<std::string>{"one"});
  log.take("o\n\n\r\tthree\x1b[2J\n");
  CHECK(log.last(5) == std::vector<std::string>{"one", "two", "  three [2J"});
  CHECK(log.last(1) == std::vector<std::string>{"  three [2J"});
  log.take(std::string(5000, 'x') + "\n");
  CHECK(log.last(1)[0].size() == 159);
  for (int i = 0; i < 1000; ++i) log.take(std::to_string(i) + "\n");
  const auto lines = log.last(1000);
  CHECK(lines.size() == 63);
  CHECK(lines.front() == "937");
  CHECK(lines.back() == "999");
}
