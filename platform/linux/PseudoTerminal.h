#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "ByteChannel.h"

namespace ovka {

/// A pseudo-terminal pair seen from its master end: the host opens the slave's path as a serial
/// line. The slave starts raw, so every byte value passes both ways. Used by one thread.
class PseudoTerminal final : public ByteChannel {
 public:
  PseudoTerminal() = default;
  ~PseudoTerminal() override;
  PseudoTerminal(const PseudoTerminal&) = delete;
  PseudoTerminal& operator=(const PseudoTerminal&) = delete;

  /// Makes the pair and, when `link` is not empty, a symbolic link to the slave. A link that points
  /// nowhere is replaced; anything else of that name is refused. Empty when done, else one line
  /// that says what failed and why. The link is removed again by the destructor.
  [[nodiscard]] std::string open(const std::string& link = {});

  /// The link where there is one, else the slave's own path.
  [[nodiscard]] std::string path() const override;
  /// The slave's own path ("/dev/pts/4"); empty while hung up.
  [[nodiscard]] const std::string& slavePath() const noexcept { return slave_; }
  [[nodiscard]] bool hostPresent() override;
  [[nodiscard]] std::size_t read(std::span<std::uint8_t> bytes) override;
  [[nodiscard]] std::size_t write(std::span<const std::uint8_t> bytes) override;
  /// Also readies the slave for the next host: raw, and not claimed by the one before.
  void discardUnread() override;
  /// Closes the master and takes the link away, as an unplugged device's name goes.
  void hangUp() override;
  /// Makes a new pair, most likely under another slave path, and the link again.
  [[nodiscard]] int comeBack() override;

 private:
  [[nodiscard]] int makePair();
  [[nodiscard]] int makeLink();
  void removeLink();
  void closeMaster();

  int master_ = -1;
  std::string slave_;
  std::string link_;
  std::string linkTarget_;  ///< what our link says, to take away only our own
};

}  // namespace ovka
