#pragma once

#include <memory>
#include <string>

namespace ovka {

/// Tells other processes which files are in use. Errors are errno values, 0 is success. Any thread.
class FileLocks {
 public:
  /// A lock that is held; it ends with this object or with the process, however that ends.
  class Lock {
   public:
    virtual ~Lock() = default;
  };

  virtual ~FileLocks() = default;
  /// Locks an existing file. nullptr and `*error`: EWOULDBLOCK when it is in use already; anything
  /// else means that this file system cannot tell.
  [[nodiscard]] virtual std::unique_ptr<Lock> lock(const std::string& path, int* error) = 0;
  /// Names this process among all that ever ran on this machine.
  [[nodiscard]] virtual std::string processMark() const = 0;
  /// Whether the process of such a name runs.
  [[nodiscard]] virtual bool isRunning(const std::string& processMark) const = 0;
};

}  // namespace ovka
