#pragma once

#include <QDialog>

namespace ovka::desktop {

/// One page that a newcomer reads in two minutes, with every shortcut.
class HelpWindow final : public QDialog {
 public:
  explicit HelpWindow(QWidget* parent = nullptr);
};

}  // namespace ovka::desktop
