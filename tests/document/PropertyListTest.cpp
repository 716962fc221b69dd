#include <array>
#include <cstdio>
#include <doctest/doctest.h>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "HexCoding.h"
#include "PropertyListReader.h"
#include "PropertyListWriter.h"

using namespace ovka;
using Array = PropertyList::Array;
using Bytes = PropertyList::Bytes;
using Dictionary = PropertyList::Dictionary;

namespace {

struct Row {
  std::string text;
  const char* expected;
};

std::string textOf(const PropertyList& list) {
  std::string text;
  MemoryWriter to(text);
  PropertyListWriter writer(to);
  writer.value(list);
  CHECK(writer.finish() == 0);
  return text;
}

/// The tree as text, or "error: ...".
std::string readBack(std::string_view text) {
  PropertyList list;
  PropertyListError error;
  if (!readPropertyList(text, &list, &error)) return "error: " + error.describe();
  std::string flat;
  for (const char c : textOf(list)) {
    if (c != '\n' && c != ' ') flat += c;
  }
  return flat;
}

/// A file that gives its bytes in small pieces, so that every token is torn somewhere.
class TornFile final : public FileReader {
 public:
  TornFile(std::string bytes, std::size_t piece) : bytes_(std::move(bytes)), piece_(piece) {}
  std::uint64_t size() const override { return bytes_.size(); }
  int readAt(std::uint64_t offset, std::span<std::byte> out, std::size_t* got) override {
    MemoryFile file(bytes_);
    return file.readAt(offset, out.first(std::min(out.size(), piece_)), got);
  }

 private:
  std::string bytes_;
  std::size_t piece_;
};

PropertyList awkwardList() {
  std::string every;
  for (int c = 1; c < 128; ++c) every += static_cast<char>(c);
  return Dictionary{
      {"plain", "5332"},
      {"quotes", "say \"it\" \\ 'so'"},
      {"every", every},
      {"caf\u00e9 \u65e5\u672c", "\U0001F9E0 \u00e4 \uFFFD"},
      {"", ""},
      {"bytes", Bytes{0, 1, 0x7F, 0x80, 0xFF}},
      {"none", Bytes{}},
      {"nested", Array{Array{}, Dictionary{}, Array{"a", Dictionary{{"b", Array{"c"}}}}}},
      {"space key", "tab\there\nline\r"},
  };
}

std::string commandOutput(const std::string& command) {
  std::string output;
  FILE* pipe = ::popen((command + " 2>&1").c_str(), "r");
  if (pipe == nullptr) return output;
  std::array<char, 4096> block{};
  for (std::size_t n = 0; (n = std::fread(block.data(), 1, block.size(), pipe)) > 0;) {
    output.append(block.data(), n);
  }
  return ::pclose(pipe) == 0 ? output : "failed: " + output;
}

}  // namespace

TEST_CASE("every form that the text allows is read") {
  const Row rows[] = {
      {"{a=b;}", "{a=b;}"},
      {"{ a = b }", "{a=b;}"},
      {"{a;}", "{a=a;}"},
      {"a = 1; \"b\" = (2);", "{a=1;b=(2);}"},
      {"// top\n{ /* in * side */ a /**/ = // x\r\n b; }\n// end", "{a=b;}"},
      {"(1,2,)", "(1,2)"},
      {" ( 'x' , \"y\" ) ", "(x,y)"},
      {"\xEF\xBB\xBF(a)", "(a)"},
      {"(a/b, c.d, -1.5, $x_y:z)", "(\"a/b\",\"c.d\",\"-1.5\",\"$x_y:z\")"},
      {"<00 fF\n7 f>", "<00ff7f>"},
      {"(<>, <*I42>, <*R1.5>)", "(<>,42,\"1.5\")"},
      {R"(("\101\60\7\"\\\n"))", R"(("A0\U0007\"\\\n"))"},
      {R"(("\344\217"))", R"(("\U00ee\U00cf"))"},  // 0xE4 and 0x8F of the form's own code
      {R"(("\U00e4\u65E5\UD83E\UDDE0\UD83Ex\UDDE0\U9"))",
       R"(("\U00e4\U65e5\Ud83e\Udde0\UfffdX\Ufffd\t"))"},
      {"(\"a\nb\")", "(\"a\\nb\")"},
  };
  for (const Row& row : rows) {
    CAPTURE(row.text);
    std::string expected = row.expected;
    if (const auto at = expected.find('X'); at != std::string::npos) expected[at] = 'x';
    CHECK(readBack(row.text) == expected);
  }
}

TEST_CASE("what is no property list gives an error with its place") {
  const Row rows[] = {
      {"", "line 1, column 1: the file is empty"},
      {"{a=b", "line 1, column 5: \";\" is missing after a value; found the end of the file"},
      {"{a=b c;}", "line 1, column 6: \";\" is missing after a value; found 'c'"},
      {"{\n  a b;}", "line 2, column 5: a key needs \"=\" and a value; found 'b'"},
      {"{a=;}", "line 1, column 4: a value is expected; found ';'"},
      {"(1 2)", "line 1, column 4: \",\" or \")\" is missing; found '2'"},
      {"(,)", "line 1, column 2: a value is expected; found ','"},
      {"{a=<0g>;}",
       "line 1, column 6: data holds hexadecimal digits and ends with \">\"; found 'g'"},
      {"<012>", "line 1, column 5: data has an odd number of digits"},
      {"(\"abc", "line 1, column 6: the text that begins in line 1 has no end: '\"' is missing"},
      {"/* x", "line 1, column 5: the comment of line 1 has no end: \"*/\" is missing"},
      {"{} x", "line 1, column 4: nothing may follow the list, but 'x' does"},
      {"(\"\\Ux\")", "line 1, column 5: \\U needs one to four hexadecimal digits"},
      {"(\"\\777\")", "line 1, column 7: an octal escape goes to \\377 at most"},
      {std::string("(\0)", 3), "line 1, column 2: a value is expected; found the byte 0x00"},
      {std::string(200, '('), "line 1, column 129: more than 128 lists lie within each other"},
  };
  for (const Row& row : rows) {
    CAPTURE(row.text);
    CHECK(readBack(row.text) == std::string("error: ") + row.expected);
  }
}

TEST_CASE("a hostile text cannot take more memory than the bound") {
  std::string many = "(";
  for (int i = 0; i < 1000; ++i) many += "(),";
  many += ")";
  MemoryFile file(many);
  PropertyListBuilder builder(20000);
  PropertyListParser parser(file, builder);
  CHECK_FALSE(parser.parse());
  CHECK(parser.error().text == "the list holds more values than fit in memory");

  const std::string text = "(\"" + std::string(200, 'x') + "\")";
  MemoryFile longText(text);
  PropertyListBuilder other;
  PropertyListParser second(longText, other, {.depth = 8, .stringBytes = 100});
  CHECK_FALSE(second.parse());
  CHECK(second.error().describe() == "line 1, column 104: a text is too long");
}

TEST_CASE("a tree written and read again is the same tree, however the file is torn") {
  const PropertyList list = awkwardList();
  const std::string text = textOf(list);
  CHECK(std::all_of(text.begin(), text.end(), [](char c) { return c > 0; }));
  for (const std::size_t piece : {1U, 2U, 3U, 7U, 33U, 100000U}) {
    CAPTURE(piece);
    TornFile file(text, piece);
    PropertyList back;
    PropertyListError error;
    REQUIRE_MESSAGE(readPropertyList(file, &back, &error), error.describe());
    CHECK(back == list);
  }
  CHECK(textOf(list) == text);
}

TEST_CASE("bytes that are no UTF-8 are kept as the characters of their numbers") {
  CHECK(textOf(Array{"\xFF"
                     "a\xC3"}) == "(\n    \"\\U00ffa\\U00c3\"\n)\n");
  CHECK(textOf(Array{"\xED\xA0\x80"}) == "(\n    \"\\U00ed\\U00a0\\U0080\"\n)\n");
}

TEST_CASE("hexadecimal runs of every length and alignment") {
  std::mt19937 random(7);
  std::vector<std::uint8_t> bytes(300);
  for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
  for (std::size_t length = 0; length < bytes.size(); ++length) {
    std::vector<char> digits(2 * length);
    hexEncode(std::span(bytes).first(length), digits.data());
    std::string text(digits.begin(), digits.end());
    if (length % 3 == 1) {
      for (char& c : text) c = static_cast<char>(c >= 'a' ? c - 32 : c);
    }
    if (length % 3 == 2) {
      for (std::size_t at = 8 * (text.size() / 8); at > 0; at -= 8) text.insert(at, " ");
    }
    std::vector<std::uint8_t> back(length + 16, 0xEE);
    const HexRun run = hexDecode(text, back.data());
    CAPTURE(length);
    REQUIRE(run.consumed == text.size());
    REQUIRE(run.bytes == length);
    REQUIRE(hexDecode(text, nullptr).bytes == length);
    REQUIRE(std::equal(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(length),
                       back.begin()));
  }
  // Every character that is no digit ends the run, wherever it stands in a step of 64.
  for (std::size_t c = 0; c < 256; ++c) {
    if (hexDigit(static_cast<char>(c)) >= 0 || c == ' ') continue;
    std::string text(192, '7');
    text[c % 128] = static_cast<char>(c);
    REQUIRE(hexDecode(text, nullptr).bytes == c % 128 / 2);
  }
}

TEST_CASE("independent tools read what is written, and what they write is read") {
  if (!commandOutput("command -v plparse && command -v pldes").starts_with('/')) {
    MESSAGE("skipped: plparse and pldes are not installed");
    return;
  }
  // Their own reader drops the control characters of "every"; the rest is compared value for value.
  Dictionary entries = *awkwardList().dictionary();
  entries.erase(entries.begin() + 2);
  const PropertyList list = entries;
  const std::string path =
      (std::filesystem::temp_directory_path() / "ovka_property_list_test.plist").string();
  std::ofstream(path, std::ios::binary) << textOf(list);
  CHECK(commandOutput("plparse " + path).find("a dictionary") != std::string::npos);
  const std::string theirs = commandOutput("pldes " + path);
  PropertyList back;
  PropertyListError error;
  REQUIRE_MESSAGE(readPropertyList(theirs, &back, &error), error.describe() << theirs);
  REQUIRE(back.dictionary() != nullptr);
  CHECK(back.dictionary()->size() == entries.size());
  for (const PropertyList::Entry& entry : entries) {
    CAPTURE(entry.key);
    REQUIRE(back.find(entry.key) != nullptr);
    CHECK(*back.find(entry.key) == entry.value);
  }
  std::filesystem::remove(path);
}
