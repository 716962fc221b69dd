#pragma once

#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "InformationList.h"
#include "SettingsGroup.h"
#include "SettingsGroups.h"

namespace ovka {

/// The process-wide settings by their names, as presets and documents read and write them. The main
/// thread.
class NamedSettings {
 public:
  virtual ~NamedSettings() = default;
  /// None: there is no such setting.
  [[nodiscard]] virtual std::optional<double> value(std::string_view name) const = 0;
  /// Sets it with everything that depends on it. Empty when done, else one line that says what is
  /// wrong; nothing is changed then.
  [[nodiscard]] virtual std::string assign(std::string_view name, double value) = 0;
};

/// An entry of a group: which setting, and whether its text is "%f" instead of "%d".
struct EngineRow {
  std::string_view name;
  bool real = false;
};

/// The groups whose settings exist today, with their entries from index 1 on. Files depend on the
/// orders: an entry is never moved, removed or given another meaning; new ones go to the end.
struct EngineGroupOrder {
  std::string_view key;
  std::span<const EngineRow> rows;
};
[[nodiscard]] std::span<const EngineGroupOrder> engineGroupOrders();
/// The rows of a key; empty when it is none of these groups.
[[nodiscard]] std::span<const EngineRow> engineRows(std::string_view key);

/// A group of settings that are reached by name. What a file holds beyond the entries known here is
/// kept and written again. The main thread.
class EngineGroup final : public SettingsGroup {
 public:
  /// `problems` receives a line for every entry that could not be taken; it outlives the group.
  EngineGroup(const EngineGroupOrder& order, NamedSettings& settings,
              std::vector<std::string>& problems);

  [[nodiscard]] std::size_t count() const override { return order_.rows.size() + 1; }
  [[nodiscard]] std::string get(std::size_t part, std::size_t index) const override;
  void set(std::size_t part, std::size_t index, const std::string& text) override;
  [[nodiscard]] std::vector<std::string> texts() const override;
  void put(const std::vector<std::string>& texts) override;

 private:
  EngineGroupOrder order_;
  NamedSettings& settings_;
  std::vector<std::string>& problems_;
  std::string statedCount_;          ///< of a file with more entries than are known here
  std::vector<std::string> beyond_;  ///< those entries
};

/// All groups of the engine. The main thread.
class EngineGroups {
 public:
  explicit EngineGroups(NamedSettings& settings);
  /// Puts the groups in place of the kept texts, and gives the input device of the information list
  /// what follows from its choice. This outlives both.
  void use(SettingsGroups& groups, InformationList& information);
  /// What could not be taken of the files put since the last call, a line each.
  [[nodiscard]] std::vector<std::string> takeProblems() { return std::exchange(problems_, {}); }

 private:
  NamedSettings& settings_;
  std::vector<std::string> problems_;
  std::vector<std::unique_ptr<EngineGroup>> groups_;
};

}  // namespace ovka
