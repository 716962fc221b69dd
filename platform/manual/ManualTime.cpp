#include "ManualTime.h"

#include <algorithm>
#include <utility>

#include "TickGrid.h"

namespace ovka {
namespace {

std::function<std::chrono::nanoseconds()> withoutSleep(std::function<void()> body) {
  return [run = std::move(body)] {
    run();
    return std::chrono::nanoseconds(0);
  };
}

}  // namespace

void ManualTime::advance(std::chrono::nanoseconds duration) {
  advanceTo(nanoseconds() + std::max(duration.count(), std::chrono::nanoseconds::rep{0}));
}

void ManualTime::advanceTo(std::int64_t nanoseconds) {
  while (const EntryPtr entry = takeDue(nanoseconds)) {
    const std::chrono::nanoseconds sleep = entry->body();
    const std::scoped_lock guard(lock_);
    reschedule(*entry, sleep);
  }
  if (nanoseconds > now_.load()) now_.store(nanoseconds);
}

std::optional<std::int64_t> ManualTime::nextDue() const {
  const std::scoped_lock guard(lock_);
  const EntryPtr entry = next();
  if (!entry) return std::nullopt;
  return std::max(entry->due, now_.load());
}

ManualTime::EntryPtr ManualTime::next() const {
  EntryPtr first;
  for (const EntryPtr& entry : entries_) {
    if (!entry->waiting || (runLoopBusy_ && ofRunLoop(*entry))) continue;
    if (!first || entry->due < first->due) first = entry;
  }
  return first;
}

// Takes the next body out of the queue when it is due by `until` (or already overdue) and moves the
// clock to its due time.
ManualTime::EntryPtr ManualTime::takeDue(std::int64_t until) {
  const std::scoped_lock guard(lock_);
  EntryPtr entry = next();
  if (!entry || entry->due > std::max(until, now_.load())) return nullptr;
  if (entry->due > now_.load()) now_.store(entry->due);
  entry->waiting = false;
  if (ofRunLoop(*entry)) runLoopBusy_ = true;
  if (entry->kind == Kind::Once) {
    entry->ended = true;
    std::erase(entries_, entry);
  }
  return entry;
}

void ManualTime::reschedule(Entry& entry, std::chrono::nanoseconds sleep) {
  if (ofRunLoop(entry)) runLoopBusy_ = false;
  if (entry.ended) return;
  if (entry.kind == Kind::Repeat || entry.kind == Kind::Timer) {
    entry.due = nextOnGrid(entry.due, entry.interval, now_.load());
    entry.waiting = true;
  } else if (entry.kind == Kind::Loop) {
    entry.due = now_.load() + std::max(sleep, kShortestSleep).count();
    entry.waiting = true;
  }
}

ManualTime::EntryPtr ManualTime::add(Kind kind, std::string_view name,
                                     std::chrono::nanoseconds interval,
                                     std::function<std::chrono::nanoseconds()> body) {
  auto entry = std::make_shared<Entry>();
  entry->kind = kind;
  entry->name = name;
  entry->interval = interval.count();
  entry->body = std::move(body);
  entry->waiting = kind != Kind::Source;
  const std::scoped_lock guard(lock_);
  entry->due = now_.load() + entry->interval;
  if (kind == Kind::Source) entry->source = ++lastSource_;
  if (!stopped_) entries_.push_back(entry);
  return entry;
}

void ManualTime::repeat(std::string_view name, std::chrono::nanoseconds interval,
                        std::function<void()> tick) {
  add(Kind::Repeat, name, interval, withoutSleep(std::move(tick)));
}

void ManualTime::loop(std::string_view name, std::function<std::chrono::nanoseconds()> step) {
  add(Kind::Loop, name, {}, std::move(step));
}

void ManualTime::once(std::string_view name, std::function<void()> body) {
  add(Kind::Once, name, {}, withoutSleep(std::move(body)));
}

void ManualTime::addTimer(std::chrono::nanoseconds interval, std::function<void()> tick) {
  add(Kind::Timer, {}, interval, withoutSleep(std::move(tick)));
}

ManualTime::Source ManualTime::addSource(std::function<void()> perform) {
  return add(Kind::Source, {}, {}, withoutSleep(std::move(perform)))->source;
}

void ManualTime::signal(Source source) {
  const std::scoped_lock guard(lock_);
  for (const EntryPtr& entry : entries_) {
    if (entry->kind != Kind::Source || entry->source != source || entry->waiting) continue;
    entry->due = now_.load();
    entry->waiting = true;
  }
}

void ManualTime::removeSource(Source source) {
  const std::scoped_lock guard(lock_);
  std::erase_if(entries_, [&](const EntryPtr& entry) {
    if (entry->kind != Kind::Source || entry->source != source) return false;
    entry->ended = true;
    return true;
  });
}

void ManualTime::stopAll() {
  const std::scoped_lock guard(lock_);
  stopped_ = true;
  for (const EntryPtr& entry : entries_) entry->ended = true;
  entries_.clear();
}

std::vector<std::string> ManualTime::threads() const {
  const std::scoped_lock guard(lock_);
  std::vector<std::string> names;
  for (const EntryPtr& entry : entries_) {
    if (!ofRunLoop(*entry)) names.push_back(entry->name);
  }
  return names;
}

}  // namespace ovka
