#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

namespace ovka {

/// The process's notification centre: fixed names, synchronous delivery on the posting thread.
/// Posting allocates nothing, so the road of a sample may post. Any thread may call anything; a
/// handler may add and remove observers, and an observer removed while a post is under way on
/// another thread may still be called once by that post.
class NotificationCenter {
 public:
  using Handler = std::function<void()>;

  /// Registers `handler` for `name` under `observer` (any address that stands for the receiver).
  /// Registering the same observer for the same name again replaces its handler.
  void addObserver(const void* observer, std::string_view name, Handler handler);

  /// Removes every registration of `observer`.
  void removeObserver(const void* observer);

  /// Calls the handlers registered for `name`, oldest registration first.
  void post(std::string_view name) const;

 private:
  struct Registration {
    const void* observer;
    std::string name;
    Handler handler;
  };
  using Registrations = std::vector<Registration>;

  [[nodiscard]] std::shared_ptr<const Registrations> current() const;

  mutable std::mutex lock_;
  std::shared_ptr<const Registrations> registrations_ = std::make_shared<Registrations>();
};

}  // namespace ovka
