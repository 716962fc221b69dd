#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Files.h"

namespace ovka {

class DigitScout;

/// Receives a property list as it is read. An event that returns false ends the reading with
/// refusal() as the error's text. Texts and bytes are valid during the call only.
class PropertyListEvents {
 public:
  virtual ~PropertyListEvents() = default;
  virtual bool beginDictionary() = 0;
  virtual bool key(std::string_view text) = 0;
  virtual bool endDictionary() = 0;
  virtual bool beginArray() = 0;
  virtual bool endArray() = 0;
  virtual bool string(std::string_view text) = 0;
  /// A data item starts; `*wanted` set to false: its bytes are only checked and counted.
  virtual bool beginData(bool* wanted) = 0;
  /// The bytes of a long run start at an address that suits any number.
  virtual bool data(std::span<const std::uint8_t> bytes) = 0;
  /// `length`: all bytes of the item.
  virtual bool endData(std::uint64_t length) = 0;
  [[nodiscard]] virtual std::string refusal() const { return "this is not expected here"; }
};

struct PropertyListError {
  std::string text;
  std::uint64_t line = 1;    ///< from 1
  std::uint64_t column = 1;  ///< from 1, in bytes
  int code = 0;              ///< errno when reading failed

  /// "line 3, column 14: text".
  [[nodiscard]] std::string describe() const;
};

struct PropertyListLimits {
  std::size_t depth = 128;               ///< containers within containers
  std::size_t stringBytes = 16U << 20U;  ///< of one text or key
};

/// Reads the plain-text (old-style ASCII) form of a property list and passes it on event by event,
/// in a fixed small memory whatever the length.
///
/// Taken: white space anywhere between tokens and between the digits of data; // and /* */
/// comments; texts in double or single quotes with the escapes \a \b \f \n \r \t \v, \OOO (octal,
/// the form's own 8-bit code above 127), \Uxxxx and \uxxxx (UTF-16, pairs of surrogates joined);
/// bare texts of anything that is no delimiter; a missing separator after the last item; "key;" for
/// "key = key;"; key-value pairs without braces at the top; bytes above 127 as UTF-8; and typed
/// values ("<*I5>", as texts). One parser reads once; any thread.
class PropertyListParser {
 public:
  /// Both outlive the parser.
  PropertyListParser(FileReader& source, PropertyListEvents& events,
                     const PropertyListLimits& limits = {});

  /// Reads the one value that the source holds. False: error() says why.
  [[nodiscard]] bool parse();
  /// Reads the one value that starts at a byte offset and stops behind it.
  [[nodiscard]] bool parseValueAt(std::uint64_t offset);
  /// Reads the rest of a data item from between two of its digits on.
  [[nodiscard]] bool parseDataFrom(std::uint64_t offset);

  /// Takes the lengths of data that nobody wants from a scout, which outlives the parser. Before
  /// parsing.
  void follow(DigitScout& scout) { scout_ = &scout; }
  /// Where the scout's first run was met inside a data item.
  struct Meeting {
    std::uint64_t value = 0;   ///< byte offset of the item
    std::uint64_t offset = 0;  ///< of the run
    std::uint64_t digits = 0;  ///< of the item before it; 0: none was met
  };
  [[nodiscard]] const Meeting& meeting() const { return meeting_; }
  /// Digits of the data item that is being read, or was read last.
  [[nodiscard]] std::uint64_t dataDigits() const { return digits_; }

  /// Byte offset of what comes next; during a begin event, of the value's first byte after "{" or
  /// the like; meaningful for parseValueAt() only through valueOffset().
  [[nodiscard]] std::uint64_t valueOffset() const { return valueOffset_; }
  [[nodiscard]] const PropertyListError& error() const { return error_; }
  /// Called with the byte offset after every block read.
  std::function<void(std::uint64_t)> onProgress;

 private:
  static constexpr int kEnd = -1;

  [[nodiscard]] bool refill();
  [[nodiscard]] int peek();
  int next();
  [[nodiscard]] bool fail(std::string text);
  [[nodiscard]] bool failRead(int code);
  [[nodiscard]] bool refused();
  [[nodiscard]] bool skipSpace();
  [[nodiscard]] bool skipComment();
  [[nodiscard]] bool topLevel();
  [[nodiscard]] bool value(std::size_t depth);
  [[nodiscard]] bool dictionary(std::size_t depth);
  [[nodiscard]] bool pairs(int end, std::size_t depth);
  [[nodiscard]] bool pairRest(int end, std::size_t depth);
  [[nodiscard]] bool array(std::size_t depth);
  [[nodiscard]] bool data();
  [[nodiscard]] bool dataRest(bool wanted);
  [[nodiscard]] bool dataRun(bool wanted, int* pending);
  bool takeScouted(int* pending);
  [[nodiscard]] bool typedValue();
  [[nodiscard]] bool token();
  [[nodiscard]] bool quoted(int quote);
  [[nodiscard]] bool escape();
  [[nodiscard]] bool unicodeEscape();
  void appendUtf16(unsigned unit);
  void flushSurrogate();
  void appendCodePoint(unsigned codePoint);
  [[nodiscard]] std::uint64_t offset() const { return blockOffset_ + at_; }

  FileReader& source_;
  PropertyListEvents& events_;
  PropertyListLimits limits_;
  std::vector<char> block_;
  std::vector<std::int32_t> decoded_;  ///< as numbers: samples are taken right from here
  std::size_t at_ = 0;
  std::size_t filled_ = 0;
  std::uint64_t blockOffset_ = 0;
  std::uint64_t valueOffset_ = 0;
  std::uint64_t line_ = 1;
  std::uint64_t lineOffset_ = 0;  ///< of the present line's first byte
  bool ended_ = false;
  bool readFailed_ = false;
  std::string text_;        ///< the token being read
  unsigned surrogate_ = 0;  ///< a high one that waits for its partner
  PropertyListError error_;
  std::uint64_t digits_ = 0;  ///< of the data item
  DigitScout* scout_ = nullptr;
  Meeting meeting_;
};

}  // namespace ovka
