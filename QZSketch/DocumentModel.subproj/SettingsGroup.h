#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "NumberTexts.h"
#include "Shared.h"
#include "srtToLong.h"

namespace ovka {

/// A group of settings as documents and presets hold it: a flat array of texts in a fixed order,
/// part after part (a part is a MIDI set-up or a brain channel; most groups have one). Entry 0 of a
/// part is its number of entries, itself included. The main thread.
class SettingsGroup {
 public:
  virtual ~SettingsGroup() = default;
  /// Whether there is anything to save; the MIDI groups once their set-up was opened.
  [[nodiscard]] virtual bool available() const { return true; }
  [[nodiscard]] virtual std::size_t parts() const { return 1; }
  /// Entries of a part, entry 0 included.
  [[nodiscard]] virtual std::size_t count() const = 0;
  [[nodiscard]] virtual std::string get(std::size_t part, std::size_t index) const = 0;
  /// An entry of a document (index 0 is the file's own count). A value that makes no sense leaves
  /// the setting as it is.
  virtual void set(std::size_t part, std::size_t index, const std::string& text) = 0;
  /// Around the set() calls of one document, which come part by part.
  virtual void willPut() {}
  virtual void didPut() {}

  /// The whole group as an array.
  [[nodiscard]] virtual std::vector<std::string> texts() const;
  /// Applies a whole array: parts of the length that its entry 0 states, else of count(); one that
  /// is no multiple of either is the single part of an older program.
  virtual void put(const std::vector<std::string>& texts);
};

/// The group of a window that does not exist here: keeps the texts it was given, so that opening
/// and saving a document loses nothing.
class KeptGroup final : public SettingsGroup {
 public:
  /// `initially`: whether it is saved before a document brought it.
  explicit KeptGroup(bool initially = true);
  [[nodiscard]] bool available() const override { return available_; }
  [[nodiscard]] std::size_t count() const override { return texts_.size(); }
  [[nodiscard]] std::string get(std::size_t part, std::size_t index) const override;
  void set(std::size_t part, std::size_t index, const std::string& text) override;
  [[nodiscard]] std::vector<std::string> texts() const override { return texts_; }
  void put(const std::vector<std::string>& texts) override;

 private:
  bool available_;
  std::vector<std::string> texts_{"1"};
};

/// A group made of rows in a fixed order, each a variable of its owner.
class SettingsRows final : public SettingsGroup {
 public:
  struct Row {
    std::string name;  ///< for the person
    std::function<std::string()> get;
    std::function<void(const std::string&)> set;
  };

  /// A row of a shared variable: "%d" for whole numbers, "%f" for others. A text outside minimum to
  /// maximum changes nothing.
  template <typename T>
  void add(std::string_view name, Shared<T>& variable, double minimum, double maximum);
  void add(Row row) { rows_.push_back(std::move(row)); }
  /// Called after a document's values were put.
  void onPut(std::function<void()> done) { done_ = std::move(done); }
  [[nodiscard]] const std::vector<Row>& rows() const { return rows_; }

  [[nodiscard]] std::size_t count() const override { return rows_.size() + 1; }
  [[nodiscard]] std::string get(std::size_t part, std::size_t index) const override;
  void set(std::size_t part, std::size_t index, const std::string& text) override;
  void didPut() override;

 private:
  std::vector<Row> rows_;
  std::function<void()> done_;
};

template <typename T>
void SettingsRows::add(std::string_view name, Shared<T>& variable, double minimum, double maximum) {
  Row row{std::string(name), {}, {}};
  if constexpr (std::is_floating_point_v<T>) {
    row.get = [&variable] { return floatText(static_cast<double>(variable.get())); };
    row.set = [&variable, minimum, maximum](const std::string& text) {
      const std::optional<double> value = floatOf(text);
      if (value && *value >= minimum && *value <= maximum) variable = static_cast<T>(*value);
    };
  } else {
    row.get = [&variable] { return integerText(static_cast<std::int64_t>(variable.get())); };
    row.set = [&variable, minimum, maximum](const std::string& text) {
      const auto value = static_cast<double>(srtToLong(text));
      if (!text.empty() && value >= minimum && value <= maximum) {
        variable = static_cast<T>(srtToLong(text));
      }
    };
  }
  add(std::move(row));
}

}  // namespace ovka
