#include "TypeTextHere.h"

#include <algorithm>
#include <tuple>
#include <utility>

#include "AppVariables.h"
#include "BufferVariables.h"
#include "srtToLong.h"

namespace ovka {
namespace {

[[nodiscard]] std::int64_t bounded(std::int64_t point) {
  return std::clamp<std::int64_t>(point, 0, static_cast<std::int64_t>(buffer::MAXbuffer));
}

/// One line of at most kLongestText bytes, cut where a character begins.
[[nodiscard]] std::string clean(std::string_view text) {
  std::size_t length = std::min(text.size(), TypeTextHere::kLongestText);
  const auto continues = [&](std::size_t at) {
    return (static_cast<unsigned char>(text[at]) & 0xC0U) == 0x80U;
  };
  if (length < text.size()) {
    while (length > 0 && continues(length)) --length;
  }
  std::string result(text.substr(0, length));
  for (char& letter : result) {
    const auto code = static_cast<unsigned char>(letter);
    if (code < 0x20 || code == 0x7F) letter = ' ';
  }
  return result;
}

[[nodiscard]] bool before(const TimedText& a, const TimedText& b) {
  return std::tie(a.point, a.id) < std::tie(b.point, b.id);
}

}  // namespace

std::int64_t TypeTextHere::present() const {
  if (!playing_) return point_;
  constexpr std::int64_t kSecond = 1'000'000'000;
  const std::int64_t elapsed = clock_.nanoseconds() - startedAt_;
  const auto speed = static_cast<std::int64_t>(buffer::SampleSpeed.get());
  // Whole seconds apart from the rest: a day at any speed stays far from overflow.
  const std::int64_t point =
      point_ + elapsed / kSecond * speed + elapsed % kSecond * speed / kSecond;
  // Who was set behind the loop plays on there.
  if (loopEnd_ <= loopFirst_ || point_ >= loopEnd_ || point < loopEnd_) return point;
  return loopFirst_ + (point - loopEnd_) % (loopEnd_ - loopFirst_);
}

void TypeTextHere::play() {
  const std::scoped_lock guard(lock_);
  if (playing_) return;
  startedAt_ = clock_.nanoseconds();
  playing_ = true;
}

void TypeTextHere::pause() {
  const std::scoped_lock guard(lock_);
  point_ = present();
  playing_ = false;
}

void TypeTextHere::seek(std::int64_t point) {
  const std::scoped_lock guard(lock_);
  point_ = point < 0 ? 0 : point;
  startedAt_ = clock_.nanoseconds();
}

void TypeTextHere::loop(std::int64_t first, std::int64_t end) {
  const std::scoped_lock guard(lock_);
  // Playback goes on from where it is, whatever the old range made of it.
  point_ = present();
  startedAt_ = clock_.nanoseconds();
  loopFirst_ = bounded(first);
  loopEnd_ = bounded(end);
}

bool TypeTextHere::playing() {
  const std::scoped_lock guard(lock_);
  return playing_;
}

std::int64_t TypeTextHere::getLengthofTime() {
  const std::scoped_lock guard(lock_);
  return present();
}

void TypeTextHere::gotoStartWhenLoopmodeAndEnd() {
  seek(buffer::ploopStart);
}

void TypeTextHere::autoReONport(std::int32_t on) {
  app::autoReONportX = on;
}

std::optional<std::uint64_t> TypeTextHere::add(std::string_view text) {
  return addAt(buffer::setRecModeX != 0 ? buffer::ploop.get() : getLengthofTime(), text);
}

std::optional<std::uint64_t> TypeTextHere::addAt(std::int64_t point, std::string_view text) {
  const std::scoped_lock oneAtATime(changing_);
  return insert(point, text);
}

std::optional<std::uint64_t> TypeTextHere::insert(std::int64_t point, std::string_view text) {
  if (text.empty()) return std::nullopt;
  TimedText added{0, bounded(point), clean(text)};
  {
    const std::scoped_lock guard(textsLock_);
    if (texts_.size() >= kMostTexts) return std::nullopt;
    added.id = ++lastId_;
    texts_.insert(std::upper_bound(texts_.begin(), texts_.end(), added, before), added);
    ++revision_;
  }
  tell(Change::Set, added);
  return added.id;
}

std::vector<TimedText>::iterator TypeTextHere::find(std::uint64_t id) {
  return std::find_if(texts_.begin(), texts_.end(),
                      [id](const TimedText& text) { return text.id == id; });
}

bool TypeTextHere::edit(std::uint64_t id, std::string_view text) {
  if (text.empty()) return false;
  const std::scoped_lock oneAtATime(changing_);
  TimedText changed;
  {
    const std::scoped_lock guard(textsLock_);
    const auto found = find(id);
    if (found == texts_.end()) return false;
    found->text = clean(text);
    changed = *found;
    ++revision_;
  }
  tell(Change::Set, changed);
  return true;
}

bool TypeTextHere::move(std::uint64_t id, std::int64_t point) {
  const std::scoped_lock oneAtATime(changing_);
  TimedText changed;
  {
    const std::scoped_lock guard(textsLock_);
    const auto found = find(id);
    if (found == texts_.end()) return false;
    changed = *found;
    changed.point = bounded(point);
    texts_.erase(found);
    texts_.insert(std::upper_bound(texts_.begin(), texts_.end(), changed, before), changed);
    ++revision_;
  }
  tell(Change::Set, changed);
  return true;
}

bool TypeTextHere::remove(std::uint64_t id) {
  const std::scoped_lock oneAtATime(changing_);
  TimedText removed;
  {
    const std::scoped_lock guard(textsLock_);
    const auto found = find(id);
    if (found == texts_.end()) return false;
    removed = *found;
    texts_.erase(found);
    ++revision_;
  }
  tell(Change::Removed, removed);
  return true;
}

void TypeTextHere::removeAll() {
  const std::scoped_lock oneAtATime(changing_);
  {
    const std::scoped_lock guard(textsLock_);
    texts_.clear();
    ++revision_;
  }
  tell(Change::RemovedAll, {});
}

void TypeTextHere::tell(Change change, const TimedText& text) {
  if (listener_) listener_(change, text);
}

std::vector<TimedText> TypeTextHere::list() const {
  const std::scoped_lock guard(textsLock_);
  return texts_;
}

std::vector<TimedText> TypeTextHere::between(std::int64_t first, std::int64_t end) const {
  const auto isEarlier = [](const TimedText& text, std::int64_t point) {
    return text.point < point;
  };
  if (end <= first) return {};
  const std::scoped_lock guard(textsLock_);
  const auto from = std::lower_bound(texts_.begin(), texts_.end(), first, isEarlier);
  return {from, std::lower_bound(from, texts_.end(), end, isEarlier)};
}

std::uint64_t TypeTextHere::revision() const {
  const std::scoped_lock guard(textsLock_);
  return revision_;
}

std::vector<std::string> TypeTextHere::texts() const {
  const std::scoped_lock guard(textsLock_);
  std::vector<std::string> result;
  result.reserve(2 * texts_.size() + 1);
  result.push_back(std::to_string(2 * texts_.size() + 1));
  for (const TimedText& text : texts_) {
    result.push_back(std::to_string(text.point));
    result.push_back(text.text);
  }
  return result;
}

bool TypeTextHere::put(const std::vector<std::string>& texts) {
  constexpr std::string_view kDigits = "0123456789";
  removeAll();
  const std::scoped_lock oneAtATime(changing_);
  bool whole = texts.size() % 2 == 1 && texts.front() == std::to_string(texts.size());
  for (std::size_t i = 1; i + 1 < texts.size(); i += 2) {
    const std::string& point = texts[i];
    const bool isNumber = !point.empty() && point.find_first_not_of(kDigits) == std::string::npos;
    whole = isNumber && insert(srtToLong(point), texts[i + 1]).has_value() && whole;
  }
  return whole;
}

}  // namespace ovka
