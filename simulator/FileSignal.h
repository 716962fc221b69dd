#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "Signal.h"

namespace ovka {

/// Numbers from a text file: a row a sample, one to five columns of microvolts for channels 1, 2,
/// 3, 4 and 0, separated by commas, semicolons, tabs or spaces; a first row of names is skipped, so
/// are empty rows and rows that begin with "#". Channels without a column are 0. Resampled linearly
/// from the file's speed to the amplifier's and repeated for ever.
class FileSignal final : public Signal {
 public:
  /// nullptr with a one-line `error` ("PATH, line 7, column 2: ...") when it cannot be used.
  [[nodiscard]] static std::unique_ptr<FileSignal> load(const FileChoice& choice,
                                                        std::string& error);
  /// The same from a text already read; `name` stands in messages.
  [[nodiscard]] static std::unique_ptr<FileSignal> parse(std::string_view text,
                                                         double samplesPerSecond,
                                                         const std::string& name,
                                                         std::string& error);

  void next(double samplesPerSecond, Microvolts& out) override;
  [[nodiscard]] std::size_t rows() const noexcept { return values_.size() / columns_; }
  [[nodiscard]] std::size_t columns() const noexcept { return columns_; }

 private:
  FileSignal() = default;

  double samplesPerSecond_ = 0.0;
  std::size_t columns_ = 1;
  std::vector<float> values_;  ///< row by row
  std::size_t row_ = 0;
  double part_ = 0.0;  ///< of the way from this row to the next
};

}  // namespace ovka
