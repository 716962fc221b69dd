#pragma once

#include <QString>
#include <span>
#include <string_view>

#include "DisplayVariables.h"

namespace ovka::desktop {

/// A value that a menu offers for a field of a view's choice.
struct OfferedValue {
  double value;
  const char* text;
};

/// A field of a view's choice as menus and controls offer it. A row with one value is a switch.
struct ChoiceRow {
  std::string_view field;  ///< its name in display::kViewFields
  const char* title;
  const char* hint;  ///< one sentence, for tool tips
  std::span<const OfferedValue> values;
};

/// In the order of menus. Channels and modes are not among them: views make those themselves.
[[nodiscard]] std::span<const ChoiceRow> choiceRows();
[[nodiscard]] const ChoiceRow* choiceRow(std::string_view field);
/// The field of a choice by its name; every name of a row exists.
[[nodiscard]] const display::ViewField& viewField(std::string_view name);
/// The offered value that a number is next to.
[[nodiscard]] int nearestOffer(const ChoiceRow& row, double value);

}  // namespace ovka::desktop
