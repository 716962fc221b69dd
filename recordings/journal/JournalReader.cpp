#include "JournalReader.h"

#include <algorithm>
#include <cstring>
#include <span>

namespace ovka {
namespace {

using namespace journalformat;

constexpr std::size_t kBuffer = 2 * (std::size_t{kLongestPayload} + kHeadBytes);

}  // namespace

JournalReader::JournalReader(FileReader& file) : file_(file) {
  buffer_.resize(static_cast<std::size_t>(std::min<std::uint64_t>(kBuffer, file.size() + 1)));
}

/// Makes at least `bytes` lie ahead, as far as the file has them.
bool JournalReader::fill(std::size_t bytes) {
  while (filled_ - at_ < bytes && !atEnd_) {
    if (buffer_.size() - at_ < bytes) {
      std::memmove(buffer_.data(), buffer_.data() + at_, filled_ - at_);
      filled_ -= at_;
      at_ = 0;
    }
    std::size_t got = 0;
    const std::span<std::uint8_t> room = std::span(buffer_).subspan(filled_);
    if (room.empty()) break;
    error_ = file_.readAt(offset_, std::as_writable_bytes(room), &got);
    atEnd_ = error_ != 0 || got == 0;
    offset_ += got;
    filled_ += got;
  }
  return filled_ - at_ >= bytes;
}

void JournalReader::skip(std::size_t bytes) {
  at_ += bytes;
  skipped_ += bytes;
}

/// Leaves out what lies before the next marker, at least one byte.
void JournalReader::skipToMarker() {
  skip(1);
  while (fill(kMarker.size())) {
    const View bytes = ahead();
    const auto found = std::search(bytes.begin(), bytes.end(), kMarker.begin(), kMarker.end());
    if (found != bytes.end()) {
      skip(static_cast<std::size_t>(found - bytes.begin()));
      return;
    }
    // The last bytes may be the beginning of a marker.
    skip(bytes.size() - (kMarker.size() - 1));
  }
}

bool JournalReader::begin() {
  begun_ = true;
  if (!fill(kMagic.size())) return false;
  if (std::equal(kMagic.begin(), kMagic.end(), ahead().begin())) at_ += kMagic.size();
  return true;
}

bool JournalReader::isWhole(const ChunkHead& head) {
  if (head.version > kVersion) {
    newerVersion_ = head.version;
    return false;
  }
  // Blocks of an older file may follow a cut one; a session never counts back.
  if (session_ && (*session_ != head.session || head.sequence < nextSequence_)) return false;
  return sumOf(ahead().subspan(kHeadBytes, head.length)) == head.payloadSum;
}

bool JournalReader::next(JournalChunk& chunk) {
  if (!begun_ && !begin()) {
    tornBytes_ = filled_;
    return false;
  }
  at_ += delivered_;
  delivered_ = 0;
  while (fill(kHeadBytes)) {
    const std::optional<ChunkHead> head = headAt(ahead());
    const std::size_t length = kHeadBytes + (head ? head->length : 0);
    if (!head || !fill(length)) {
      skipToMarker();
      continue;
    }
    if (!isWhole(*head)) {
      // The head is sound, so its length is: nothing inside can be a chunk.
      skip(length);
      continue;
    }
    session_ = head->session;
    nextSequence_ = head->sequence + 1;
    if (skipped_ > 0) {
      ++damagedPlaces_;
      damagedBytes_ += skipped_;
      skipped_ = 0;
    }
    chunk.head = *head;
    chunk.payload = ahead().subspan(kHeadBytes, head->length);
    delivered_ = length;
    return true;
  }
  tornBytes_ = skipped_ + (filled_ - at_);
  at_ = filled_;
  skipped_ = 0;
  return false;
}

}  // namespace ovka
