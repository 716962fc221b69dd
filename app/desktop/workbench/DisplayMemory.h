#pragma once

#include <QStringList>
#include <vector>

namespace ovka::desktop {

/// The choices of the views (channels, gains, colours, what is open), as documents hold them. A new
/// engine puts every variable back, so they are kept over a change of the source and from one run
/// to the next. The GUI thread, but for bringDisplay(): any.
using DisplayMemory = std::vector<QStringList>;

[[nodiscard]] DisplayMemory keepDisplay();
/// Nothing changes for an empty one.
void bringDisplay(const DisplayMemory& memory);

/// Those of the last run; empty when there was none.
[[nodiscard]] DisplayMemory storedDisplay();
void storeDisplay();

}  // namespace ovka::desktop
