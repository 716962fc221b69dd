#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace ovka::testing {

/// The line rules once more, a byte at a time and as plainly as can be: which 16-byte lines are
/// samples, and what is lost on the way.
struct PlainLineRules {
  using Bytes = std::vector<std::uint8_t>;
  Bytes line;
  std::vector<Bytes> samples;
  long long tooLong = 0;
  long long wrongLength = 0;

  void takeBlock(const Bytes& block) {
    for (std::size_t i = 0; i < block.size(); ++i) {
      line.push_back(block[i]);
      if (line.size() == 17) {
        line.clear();
        ++tooLong;
      } else if (block[i] == '\r' && i > 14) {
        endLine();
      }
    }
  }

 private:
  void endLine() {
    const bool speedEcho = line.size() < 9 && line[0] == 's' && line[1] == 'r';
    if (line.size() == 16) samples.push_back(line);
    if (line.size() != 16 && !speedEcho) ++wrongLength;
    line.clear();
  }
};

}  // namespace ovka::testing
