#pragma once

#include <QString>

class QLabel;

namespace ovka::desktop {

/// A label of what is read only when looked for; its text can be copied.
[[nodiscard]] QLabel* quietLabel(const QString& text = {});

}  // namespace ovka::desktop
