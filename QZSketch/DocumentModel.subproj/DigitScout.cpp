#include "DigitScout.h"

#include <algorithm>
#include <cstring>
#include <span>
#include <string_view>
#include <system_error>

#include "HexCoding.h"

namespace ovka {
namespace {

/// A smaller file is read before a thread has begun.
constexpr std::uint64_t kSmallestFile = 4U << 20U;
constexpr std::size_t kBlockBytes = 256U << 10U;
/// Shorter runs are left to the parser.
constexpr std::uint64_t kShortestRun = 64U << 10U;

/// Goes on with a run at the front of `text`, which begins at `offset`; the characters taken.
std::size_t extend(DigitScout::Run* run, std::span<const char> text, std::uint64_t offset) {
  std::size_t at = 0;
  while (at < text.size()) {
    const HexRun digits = hexDecode(text.subspan(at), nullptr);
    run->digits += 2 * digits.bytes;
    at += digits.consumed;
    if (at == text.size()) break;
    const char c = text[at];
    if (c == '\n') {
      ++run->lineEnds;
      run->lastLine = offset + at + 1;
    } else if (hexDigit(c) >= 0) {
      ++run->digits;
    } else if (c != ' ' && (c < '\t' || c > '\r')) {
      break;
    }
    ++at;
  }
  return at;
}

}  // namespace

DigitScout::DigitScout(FileReader& file) : file_(file) {
  if (file.size() < kSmallestFile || std::thread::hardware_concurrency() < 2) return;
  // A line of digits begins with a whole sample in the files of this program, so that a channel
  // can be loaded from there on as well.
  std::vector<char> block(kBlockBytes);
  std::size_t got = 0;
  const std::uint64_t half = file.size() / 2;
  if (file.readAt(half, std::as_writable_bytes(std::span(block)), &got) != 0) return;
  const std::size_t line = std::string_view(block.data(), got).find('\n');
  const std::uint64_t begin = half + (line == std::string_view::npos ? 0 : line + 1);
  try {
    thread_ = std::thread([this, begin] {
      runs_.push_back({begin, begin, 0, 0, 0});
      scout();
    });
    begin_ = begin;
  } catch (const std::system_error&) {
    // No thread: the parser does it all.
  }
}

DigitScout::~DigitScout() {
  stop_ = true;
  if (thread_.joinable()) thread_.join();
}

void DigitScout::scout() {
  std::vector<char> block(kBlockBytes);
  bool inside = true;
  const auto endRun = [&] {
    inside = false;
    if (runs_.back().end - runs_.back().begin < kShortestRun) runs_.pop_back();
  };
  std::size_t got = 0;
  for (std::uint64_t offset = runs_.front().begin; !stop_; offset += got) {
    if (file_.readAt(offset, std::as_writable_bytes(std::span(block)), &got) != 0 || got == 0)
      break;
    for (std::size_t at = 0; at < got;) {
      if (!inside) {
        const void* found = std::memchr(block.data() + at, '<', got - at);
        if (found == nullptr) break;
        at = static_cast<std::size_t>(static_cast<const char*>(found) - block.data()) + 1;
        runs_.push_back({offset + at, offset + at, 0, 0, 0});
        inside = true;
        continue;
      }
      at += extend(&runs_.back(), std::span<const char>(block).subspan(at, got - at), offset + at);
      runs_.back().end = offset + at;
      if (at < got) endRun();
    }
  }
  if (inside) endRun();
}

const DigitScout::Run* DigitScout::runAt(std::uint64_t offset) {
  if (thread_.joinable()) thread_.join();
  const auto found =
      std::lower_bound(runs_.begin(), runs_.end(), offset,
                       [](const Run& run, std::uint64_t wanted) { return run.begin < wanted; });
  return found != runs_.end() && found->begin == offset ? &*found : nullptr;
}

}  // namespace ovka
