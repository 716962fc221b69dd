#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>
#include <string>

namespace ovka {

/// Where a capture goes.
class ByteSink {
 public:
  virtual ~ByteSink() = default;
  /// Takes all bytes; 0 or an errno.
  [[nodiscard]] virtual int write(std::span<const std::uint8_t> bytes) = 0;
  /// Hands everything so far to the system; 0 or an errno.
  [[nodiscard]] virtual int flush() = 0;
  /// What messages call it.
  [[nodiscard]] virtual std::string name() const = 0;
};

/// Where a capture comes from.
class ByteSource {
 public:
  virtual ~ByteSource() = default;
  /// Fills the span from its front and returns how far; less than its size only at the end or after
  /// an error.
  [[nodiscard]] virtual std::size_t read(std::span<std::uint8_t> bytes) = 0;
  /// 0, or the errno that ended the reading.
  [[nodiscard]] virtual int error() const = 0;
};

/// A file as a sink. Refuses to overwrite unless told to.
class FileSink final : public ByteSink {
 public:
  /// 0 or an errno (EEXIST: there is one of that name).
  [[nodiscard]] int open(const std::string& path, bool overwrite = false);
  [[nodiscard]] int write(std::span<const std::uint8_t> bytes) override;
  [[nodiscard]] int flush() override;
  [[nodiscard]] std::string name() const override { return path_; }
  /// 0 or the errno of what could not be written at the last.
  [[nodiscard]] int close();

 private:
  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  std::unique_ptr<std::FILE, Closer> file_;
  std::string path_;
};

/// A file as a source.
class FileSource final : public ByteSource {
 public:
  /// 0 or an errno.
  [[nodiscard]] int open(const std::string& path);
  [[nodiscard]] std::size_t read(std::span<std::uint8_t> bytes) override;
  [[nodiscard]] int error() const override { return error_; }

 private:
  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  std::unique_ptr<std::FILE, Closer> file_;
  int error_ = 0;
};

}  // namespace ovka
