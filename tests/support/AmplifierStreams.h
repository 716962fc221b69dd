#pragma once

#include <cstdint>
#include <random>
#include <string_view>
#include <vector>

namespace ovka::testing {

/// Seeded byte streams as amplifiers send them, independent of the decoder.
class AmplifierStream {
 public:
  AmplifierStream(std::uint32_t model, std::uint32_t config, bool oldBluetooth, unsigned seed)
      : binary_(model >= 4 && config == 3 && !oldBluetooth),
        solid_(model >= 4 && config == 2),
        length_(oldBluetooth ? 20 : 16),
        random_(seed) {}

  [[nodiscard]] std::size_t frameLength() const { return length_; }

  [[nodiscard]] std::vector<std::uint8_t> frame() {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::vector<std::uint8_t> bytes(length_);
    for (std::size_t i = 0; i < length_; ++i) {
      bytes[i] = binary_ ? static_cast<std::uint8_t>(below(256))
                         : static_cast<std::uint8_t>(kDigits[below(16)]);
      if (!binary_ && !solid_ && i % 4 == 3) bytes[i] = ' ';
      if (i + 1 == length_) bytes[i] = 13;
    }
    return bytes;
  }
  [[nodiscard]] std::size_t below(std::size_t limit) { return random_() % limit; }

 private:
  bool binary_;
  bool solid_;  ///< no separators: they carry a channel
  std::size_t length_;
  std::mt19937 random_;
};

}  // namespace ovka::testing
