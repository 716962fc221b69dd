#include "QuietLabel.h"

#include <QLabel>

namespace ovka::desktop {

QLabel* quietLabel(const QString& text) {
  auto* label = new QLabel(text);
  label->setProperty("quiet", true);
  label->setWordWrap(true);
  label->setTextInteractionFlags(Qt::TextSelectableByMouse);
  return label;
}

}  // namespace ovka::desktop
