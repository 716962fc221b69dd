#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "Session.h"

namespace ovka::desktop {

/// The thread that everything runs on which may take long or ask: sessions are opened and closed
/// here, documents and presets read and written, actions performed. So the windows never wait, and
/// whoever made an engine also works on its documents. It knows no window: what is to follow in the
/// windows is kept until they fetch it.
class DeskThread {
 public:
  /// Both outlive it; `midi`: nullptr: nothing is played.
  explicit DeskThread(const DocumentMachine& documents, const MidiMachine* midi = nullptr);
  /// Runs what waits, then closes the session; its journal stays.
  ~DeskThread();
  DeskThread(const DeskThread&) = delete;
  DeskThread& operator=(const DeskThread&) = delete;

  using Task = std::function<void()>;
  /// Runs `work` on this thread, tasks in their order; `done` is run by deliver() afterwards.
  void post(Task work, Task done = {});
  /// Runs what finished tasks left to do. The thread of the windows.
  void deliver();
  /// Whether a task runs or waits, or its `done` was not delivered.
  [[nodiscard]] bool busy() const;

  /// Within a task: closes the session, if there is one, and opens another. Empty when open, else
  /// one line; then a session without input is open in its place, or none if even that fails.
  [[nodiscard]] std::string open(const SourceChoice& choice, bool keepJournal);
  void close(bool keepJournal);
  /// Within a task: the session; nullptr: none.
  [[nodiscard]] Session* session() { return session_.get(); }

  /// Whether the caller is this thread.
  [[nodiscard]] bool isHere() const { return std::this_thread::get_id() == thread_.get_id(); }

 private:
  struct Job {
    Task work;
    Task done;
  };
  void run();

  const DocumentMachine& documents_;
  const MidiMachine* midi_;
  std::unique_ptr<Session> session_;
  mutable std::mutex lock_;
  std::condition_variable changed_;
  std::deque<Job> waiting_;
  std::deque<Task> finished_;
  bool working_ = false;
  bool quit_ = false;
  std::thread thread_;  // last: runs as soon as it is there
};

}  // namespace ovka::desktop
