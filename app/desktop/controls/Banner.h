#pragma once

#include <QFrame>
#include <QString>
#include <deque>
#include <functional>
#include <vector>

class QHBoxLayout;
class QLabel;

namespace ovka::desktop {

/// One message of the system above the views: what, where, what to do, with the buttons that do it.
/// Messages wait in line; none covers what is played. The GUI thread.
class Banner final : public QFrame {
 public:
  enum class Level { Note, Care, Problem };
  struct Button {
    QString text;
    std::function<void()> press;
  };
  struct Message {
    Level level = Level::Note;
    QString text;
    QString detail;
    std::vector<Button> buttons;
    QString key;  ///< a later message of the same key takes the place of this one; empty: none does
  };

  explicit Banner(QWidget* parent = nullptr);

  void show(Message message);
  using QFrame::show;
  /// Takes the messages of a key away.
  void withdraw(const QString& key);
  /// What stands there; empty when nothing does.
  [[nodiscard]] QString text() const;
  [[nodiscard]] QString key() const { return line_.empty() ? QString() : line_.front().key; }

 private:
  void present();
  void next();

  std::deque<Message> line_;
  QLabel* text_;
  QLabel* detail_;
  QLabel* more_;
  QHBoxLayout* buttons_;
};

}  // namespace ovka::desktop
