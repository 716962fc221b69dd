#include "DeskThread.h"

#include <utility>

namespace ovka::desktop {

DeskThread::DeskThread(const DocumentMachine& documents, const MidiMachine* midi)
    : documents_(documents), midi_(midi), thread_([this] { run(); }) {}

DeskThread::~DeskThread() {
  {
    const std::scoped_lock guard(lock_);
    quit_ = true;
  }
  changed_.notify_all();
  thread_.join();
}

void DeskThread::post(Task work, Task done) {
  {
    const std::scoped_lock guard(lock_);
    waiting_.push_back({std::move(work), std::move(done)});
  }
  changed_.notify_all();
}

void DeskThread::deliver() {
  std::deque<Task> finished;
  {
    const std::scoped_lock guard(lock_);
    finished.swap(finished_);
  }
  for (const Task& done : finished) {
    if (done) done();
  }
}

bool DeskThread::busy() const {
  const std::scoped_lock guard(lock_);
  return working_ || !waiting_.empty() || !finished_.empty();
}

void DeskThread::run() {
  std::unique_lock guard(lock_);
  while (true) {
    if (!waiting_.empty()) {
      Job job = std::move(waiting_.front());
      waiting_.pop_front();
      working_ = true;
      guard.unlock();
      job.work();
      job.work = {};
      guard.lock();
      working_ = false;
      finished_.push_back(std::move(job.done));
      continue;
    }
    if (quit_) break;
    changed_.wait(guard, [this] { return quit_ || !waiting_.empty(); });
  }
  guard.unlock();
  close(true);
}

std::string DeskThread::open(const SourceChoice& choice, bool keepJournal) {
  close(keepJournal);
  session_ = std::make_unique<Session>(choice, documents_, midi_);
  std::string problem = session_->open();
  if (problem.empty()) return {};
  session_.reset();
  SourceChoice none;
  none.settings = choice.settings;
  none.onEngine = choice.onEngine;
  for (const bool settings : {true, false}) {
    if (!settings) none.settings.clear();
    session_ = std::make_unique<Session>(none, documents_, midi_);
    if (session_->open().empty()) return problem;
    session_.reset();
  }
  return problem;
}

void DeskThread::close(bool keepJournal) {
  if (!session_) return;
  session_->close(keepJournal);
  session_.reset();
}

}  // namespace ovka::desktop
