#include "NoticeLog.h"

#include <algorithm>

namespace ovka::terminal {

void NoticeLog::take(std::string_view text) {
  const std::lock_guard guard(lock_);
  for (const char character : text) {
    Line& line = lines_[written_ % lines_.size()];
    if (character == '\n') {
      if (line.length > 0) ++written_;
      lines_[written_ % lines_.size()].length = 0;
    } else if (line.length < line.bytes.size()) {
      const bool control = static_cast<unsigned char>(character) < 0x20 || character == 0x7F;
      line.bytes[line.length++] = control ? ' ' : character;
    }
  }
}

std::vector<std::string> NoticeLog::last(std::size_t count) const {
  const std::lock_guard guard(lock_);
  const std::size_t kept = std::min({count, written_, lines_.size() - 1});
  std::vector<std::string> result;
  for (std::size_t i = written_ - kept; i < written_; ++i) {
    const Line& line = lines_[i % lines_.size()];
    result.emplace_back(line.bytes.data(), line.length);
  }
  return result;
}

}  // namespace ovka::terminal
