#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

#include "MappingNumbers.h"
#include "SharedBlock.h"

namespace ovka {

/// Reading and writing one variable of the set-ups, live or in its edit copy; `row` is 0, or the
/// band 0 to 7 of a family of eight. Whole numbers are truncated.
struct SetupAccess {
  using Get = double (*)(std::size_t row, std::size_t setup);
  using Set = void (*)(std::size_t row, std::size_t setup, double value);
  Get live = nullptr;
  Set setLive = nullptr;
  Get edit = nullptr;
  Set setEdit = nullptr;
  std::size_t rows = 0;
  bool real = false;
};

/// A row of a mapping's table of variables.
struct SetupField {
  /// Committed: the window edits the copy. AtOnce: the copy is never committed, since others write
  /// the variable too; a change in the window takes effect at once.
  enum class Copy : std::uint8_t { Committed, AtOnce };

  std::string_view name;  ///< "LowF%X": the % stands for the band, 1 to 8
  SetupAccess access{};
  std::array<float, 8> initial{};
  double minimum = 0;
  double maximum = 0;
  std::size_t entry = 0;  ///< index of its first row in a set-up's part of a document; 0: none
  std::string_view meaning{};
  Copy copy = Copy::Committed;

  /// The name of one row ("LowF3X").
  [[nodiscard]] std::string nameOf(std::size_t row) const;
  /// Writes both copies.
  void set(std::size_t row, std::size_t setup, double value) const {
    access.setEdit(row, setup, value);
    access.setLive(row, setup, value);
  }
};

/// One value of the set-ups.
struct SetupPlace {
  const SetupField* field = nullptr;
  std::size_t row = 0;
  std::size_t setup = 0;
};

/// The row of a name without its index ("LowF3X").
[[nodiscard]] std::optional<SetupPlace> findField(std::span<const SetupField> fields,
                                                  std::string_view name);
/// The value of a name ("LowF3X[12]"); else `problem` says in one line what is wrong.
[[nodiscard]] std::optional<SetupPlace> findPlace(std::span<const SetupField> fields,
                                                  std::string_view name, std::string& problem);

namespace setupfield {

template <typename Block>
decltype(auto) rowOf(Block& block, std::size_t row) {
  if constexpr (requires { block[0][0]; }) {
    return (block[row]);
  } else {
    return (block);
  }
}

template <auto& Block>
double get(std::size_t row, std::size_t setup) {
  return static_cast<double>(rowOf(Block, row).get(setup));
}

template <auto& Block>
void set(std::size_t row, std::size_t setup, double value) {
  auto& block = rowOf(Block, row);
  using T = decltype(block.get(setup));
  if constexpr (std::is_same_v<T, float>) {
    block.set(setup, mapping::single(value));
  } else if constexpr (std::is_same_v<T, double>) {
    block.set(setup, value);
  } else {
    block.set(setup, mapping::truncated(value));
  }
}

/// The access to a variable and its edit copy.
template <auto& Live, auto& Edit>
inline constexpr SetupAccess kAccess = [] {
  using Block = std::remove_reference_t<decltype(Live)>;
  SetupAccess access{get<Live>, set<Live>, get<Edit>, set<Edit>};
  if constexpr (requires(Block & block) { block[0][0]; }) {
    access.rows = std::tuple_size_v<Block>;
    access.real = !std::is_integral_v<decltype(Live[0].get(0))>;
  } else {
    access.rows = 1;
    access.real = !std::is_integral_v<decltype(Live.get(0))>;
  }
  return access;
}();

}  // namespace setupfield
}  // namespace ovka
