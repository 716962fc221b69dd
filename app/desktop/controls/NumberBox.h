#pragma once

#include <QDoubleSpinBox>

namespace ovka::desktop {

/// Figures without zeros that say nothing: "70", "0.5".
class NumberBox final : public QDoubleSpinBox {
 public:
  [[nodiscard]] QString textFromValue(double value) const override {
    return QString::number(value, 'g', 10);
  }
};

}  // namespace ovka::desktop
