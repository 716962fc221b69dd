#include "PropertyListParser.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include "DigitScout.h"
#include "HexCoding.h"

namespace ovka {
namespace {

/// Fits the second-level cache together with what is decoded from it.
constexpr std::size_t kBlockBytes = 256U << 10U;

[[nodiscard]] bool isSpace(int c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

[[nodiscard]] std::string shown(int c) {
  static constexpr char kHex[] = "0123456789abcdef";
  if (c < 0) return "the end of the file";
  if (c > ' ' && c < 127) return std::string("'") + static_cast<char>(c) + "'";
  const auto byte = static_cast<unsigned>(c);
  return std::string("the byte 0x") + kHex[byte >> 4U & 15U] + kHex[byte & 15U];
}

}  // namespace

std::string PropertyListError::describe() const {
  return "line " + std::to_string(line) + ", column " + std::to_string(column) + ": " + text;
}

PropertyListParser::PropertyListParser(FileReader& source, PropertyListEvents& events,
                                       const PropertyListLimits& limits)
    : source_(source),
      events_(events),
      limits_(limits),
      block_(static_cast<std::size_t>(std::min<std::uint64_t>(kBlockBytes, source.size() + 1))) {}

// --- bytes
// -----------------------------------------------------------------------------------------

bool PropertyListParser::refill() {
  if (ended_) return false;
  blockOffset_ += filled_;
  at_ = 0;
  filled_ = 0;
  std::size_t got = 0;
  const int code = source_.readAt(
      blockOffset_, std::as_writable_bytes(std::span<char>(block_.data(), block_.size())), &got);
  filled_ = got;
  ended_ = code != 0 || got == 0;
  if (code != 0) {
    readFailed_ = true;
    error_.code = code;
  }
  if (onProgress) onProgress(blockOffset_ + got);
  return !ended_;
}

int PropertyListParser::peek() {
  if (at_ == filled_ && !refill()) return kEnd;
  return static_cast<unsigned char>(block_[at_]);
}

int PropertyListParser::next() {
  const int c = peek();
  if (c == kEnd) return c;
  ++at_;
  if (c == '\n') {
    ++line_;
    lineOffset_ = offset();
  }
  return c;
}

bool PropertyListParser::fail(std::string text) {
  error_.line = line_;
  error_.column = offset() - lineOffset_ + 1;
  // A file that cannot be read on ends early: the reason is the reading.
  error_.text = readFailed_ ? "reading failed: " + std::generic_category().message(error_.code)
                            : std::move(text);
  return false;
}

bool PropertyListParser::refused() {
  return fail(events_.refusal());
}

bool PropertyListParser::skipSpace() {
  while (true) {
    const int c = peek();
    if (isSpace(c)) {
      next();
    } else if (c == '/') {
      // A bare text may begin with "/" as well: only the second character tells.
      if (at_ + 1 == filled_) {
        std::size_t got = 0;
        char second = 0;
        if (source_.readAt(offset() + 1, std::as_writable_bytes(std::span(&second, 1)), &got) !=
                0 ||
            got == 0 || (second != '/' && second != '*')) {
          return true;
        }
      } else if (block_[at_ + 1] != '/' && block_[at_ + 1] != '*') {
        return true;
      }
      if (!skipComment()) return false;
    } else {
      return true;
    }
  }
}

bool PropertyListParser::skipComment() {
  const std::uint64_t line = line_;
  next();
  if (next() == '/') {
    for (int c = peek(); c != kEnd && c != '\n' && c != '\r'; c = peek()) next();
    return true;
  }
  for (int before = 0;;) {
    const int c = next();
    if (c == kEnd) {
      return fail("the comment of line " + std::to_string(line) + " has no end: \"*/\" is missing");
    }
    if (before == '*' && c == '/') return true;
    before = c;
  }
}

// --- structure
// -------------------------------------------------------------------------------------

bool PropertyListParser::parse() {
  if (peek() == 0xEF) {
    for (const int mark : {0xEF, 0xBB, 0xBF}) {
      if (peek() != mark) return fail("the text is neither ASCII nor UTF-8");
      next();
    }
  }
  if (!skipSpace() || !topLevel() || !skipSpace()) return false;
  if (peek() != kEnd) return fail("nothing may follow the list, but " + shown(peek()) + " does");
  return !readFailed_ || fail({});
}

bool PropertyListParser::parseValueAt(std::uint64_t offset) {
  blockOffset_ = offset;
  lineOffset_ = offset;
  return value(0);
}

bool PropertyListParser::topLevel() {
  const int c = peek();
  if (c == kEnd) return fail("the file is empty");
  if (c == '{' || c == '(' || c == '<') return value(0);
  // Pairs without braces look like a text until the "=" comes.
  if (!token()) return false;
  std::string first = text_;
  if (!skipSpace()) return false;
  if (peek() != '=' && peek() != ';') return events_.string(first) || refused();
  text_ = std::move(first);
  if (!events_.beginDictionary()) return refused();
  return pairRest(kEnd, 1) && pairs(kEnd, 1);
}

bool PropertyListParser::value(std::size_t depth) {
  const int c = peek();
  valueOffset_ = offset();
  if ((c == '{' || c == '(') && depth >= limits_.depth) {
    return fail("more than " + std::to_string(limits_.depth) + " lists lie within each other");
  }
  if (c == '{') return dictionary(depth + 1);
  if (c == '(') return array(depth + 1);
  if (c == '<') return data();
  return token() && (events_.string(text_) || refused());
}

bool PropertyListParser::dictionary(std::size_t depth) {
  next();
  if (!events_.beginDictionary()) return refused();
  return pairs('}', depth);
}

/// The pairs up to and including `end`.
bool PropertyListParser::pairs(int end, std::size_t depth) {
  while (true) {
    if (!skipSpace()) return false;
    if (peek() == end) {
      next();
      return events_.endDictionary() || refused();
    }
    if (!token()) return false;
    if (!pairRest(end, depth)) return false;
  }
}

/// What follows a key: "= value;" or ";" alone.
bool PropertyListParser::pairRest(int end, std::size_t depth) {
  if (!events_.key(text_)) return refused();
  if (!skipSpace()) return false;
  if (peek() == ';') {
    next();
    return events_.string(text_) || refused();
  }
  if (peek() != '=') return fail("a key needs \"=\" and a value; found " + shown(peek()));
  next();
  if (!skipSpace() || !value(depth) || !skipSpace()) return false;
  if (peek() == ';') {
    next();
    return true;
  }
  if (peek() != end) return fail("\";\" is missing after a value; found " + shown(peek()));
  return true;
}

bool PropertyListParser::array(std::size_t depth) {
  next();
  if (!events_.beginArray()) return refused();
  while (true) {
    if (!skipSpace()) return false;
    if (peek() == ')') break;
    if (!value(depth) || !skipSpace()) return false;
    if (peek() == ')') break;
    if (peek() != ',') return fail("\",\" or \")\" is missing; found " + shown(peek()));
    next();
  }
  next();
  return events_.endArray() || refused();
}

// --- data
// ------------------------------------------------------------------------------------------

bool PropertyListParser::data() {
  next();
  if (peek() == '*') return typedValue();
  bool wanted = true;
  if (!events_.beginData(&wanted)) return refused();
  return dataRest(wanted);
}

bool PropertyListParser::parseDataFrom(std::uint64_t offset) {
  blockOffset_ = offset;
  lineOffset_ = offset;
  return dataRest(true);
}

bool PropertyListParser::dataRest(bool wanted) {
  digits_ = 0;
  int pending = -1;
  while (true) {
    if (!wanted && scout_ != nullptr && takeScouted(&pending)) continue;
    const int c = peek();
    if (c == '>') break;
    if (isSpace(c)) {
      next();
      continue;
    }
    if (c == kEnd || hexDigit(static_cast<char>(c)) < 0) {
      return fail("data holds hexadecimal digits and ends with \">\"; found " + shown(c));
    }
    if (!dataRun(wanted, &pending)) return false;
  }
  if (pending >= 0) return fail("data has an odd number of digits");
  next();
  return events_.endData(digits_ / 2) || refused();
}

/// Steps over what the scout has looked at, when a run of its begins here.
bool PropertyListParser::takeScouted(int* pending) {
  if (offset() < scout_->begin()) return false;
  const DigitScout::Run* run = scout_->runAt(offset());
  if (run == nullptr) return false;
  if (run->begin == scout_->begin()) meeting_ = {valueOffset_, run->begin, digits_};
  digits_ += run->digits;
  *pending = digits_ % 2 == 0 ? -1 : 0;  // its value is not wanted
  line_ += run->lineEnds;
  if (run->lineEnds > 0) lineOffset_ = run->lastLine;
  blockOffset_ = run->end;
  at_ = filled_ = 0;
  return true;
}

/// One step through the digits: a long run of pairs, or a single digit where a pair is torn apart
/// by white space or by the end of the block.
bool PropertyListParser::dataRun(bool wanted, int* pending) {
  if (*pending < 0) {
    std::span<const char> rest(block_.data() + at_, filled_ - at_);
    if (scout_ != nullptr && offset() < scout_->begin()) {
      rest = rest.first(std::min<std::uint64_t>(rest.size(), scout_->begin() - offset()));
    }
    if (wanted && decoded_.empty()) decoded_.resize(block_.size() / 2 / sizeof(std::int32_t) + 1);
    auto* const to = wanted ? reinterpret_cast<std::uint8_t*>(decoded_.data()) : nullptr;
    const HexRun run = hexDecode(rest, to);
    if (run.consumed > 0) {
      at_ += run.consumed;
      digits_ += 2 * run.bytes;
      return !wanted || run.bytes == 0 || events_.data({to, run.bytes}) || refused();
    }
    *pending = hexDigit(static_cast<char>(next()));
  } else {
    const auto byte =
        static_cast<std::uint8_t>(*pending << 4 | hexDigit(static_cast<char>(next())));
    *pending = -1;
    if (wanted && !events_.data({&byte, 1})) return refused();
  }
  ++digits_;
  return true;
}

/// "<*I5>", "<*R1.5>", "<*BY>", "<*D...>": the text behind the letter.
bool PropertyListParser::typedValue() {
  next();
  next();
  text_.clear();
  while (peek() != '>') {
    if (peek() == kEnd || peek() == '\n') return fail("a typed value has no \">\"");
    if (text_.size() >= limits_.stringBytes) return fail("a typed value is too long");
    text_ += static_cast<char>(next());
  }
  next();
  return events_.string(text_) || refused();
}

// --- texts
// -----------------------------------------------------------------------------------------

bool PropertyListParser::token() {
  static constexpr std::string_view kDelimiters = "{}()<>;,=\"'";
  text_.clear();
  const int first = peek();
  if (first == '"' || first == '\'') return quoted(first);
  for (int c = first; c > ' ' && c != 127; c = peek()) {
    if (kDelimiters.find(static_cast<char>(c)) != std::string_view::npos) break;
    if (text_.size() >= limits_.stringBytes) return fail("a text is too long");
    text_ += static_cast<char>(c);
    ++at_;
  }
  return !text_.empty() || fail("a value is expected; found " + shown(first));
}

bool PropertyListParser::quoted(int quote) {
  const std::uint64_t line = line_;
  next();
  surrogate_ = 0;
  while (true) {
    const int c = next();
    if (c == kEnd) {
      return fail("the text that begins in line " + std::to_string(line) +
                  " has no end: " + shown(quote) + " is missing");
    }
    if (text_.size() >= limits_.stringBytes) return fail("a text is too long");
    if (c == '\\') {
      if (!escape()) return false;
      continue;
    }
    flushSurrogate();
    if (c == quote) return true;
    text_ += static_cast<char>(c);
  }
}

}  // namespace ovka
