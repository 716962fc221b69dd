#pragma once

#include <vector>

#include "Options.h"

namespace ovka::terminal {

/// The commands that work on documents, presets and journals.
[[nodiscard]] std::vector<CommandForm> documentForms();

// Groups and options that several commands have.
[[nodiscard]] OptionGroup chainGroup();
[[nodiscard]] OptionGroup amplifierGroup();
[[nodiscard]] OptionGroup sourceGroup();           ///< --port, --demo
[[nodiscard]] std::vector<Option> startOptions();  ///< --preset, --remember
[[nodiscard]] std::vector<OptionGroup> withDemoGroups(std::vector<OptionGroup> groups);

}  // namespace ovka::terminal
