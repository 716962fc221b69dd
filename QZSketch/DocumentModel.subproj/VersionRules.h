#pragma once

#include <cstdint>
#include <string_view>

namespace ovka {

/// Value of the key "OVKA5" that this program writes.
inline constexpr std::int32_t kDocumentVersion = 5332;
/// Program version text that this program writes: it decides how readers take the samples.
inline constexpr std::string_view kProgramVersionText = "5.3.5.1";

/// The version number of a program version text: "4.6.4" is 40604; one above 99999 is folded to
/// five digits, so "5.3.5.1" is 50351. Any thread.
[[nodiscard]] std::int64_t versionNumber(std::string_view text) noexcept;

/// How a document of a version is to be read.
struct VersionRules {
  bool multiApplicationMode = false;  ///< entry 76 of the information list is applied
  bool recordedByteOrder = false;     ///< entry 73 decides on the byte swap; else the user did
  bool dataBlocks = false;            ///< samples are blocks of bytes; else arrays of texts
  std::int32_t textFactor = 1;        ///< of the values of channels 1 to 4 in arrays of texts

  [[nodiscard]] static VersionRules of(std::int64_t version) noexcept;
};

}  // namespace ovka
