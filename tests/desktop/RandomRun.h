#pragma once

#include <QDialog>
#include <QTimer>
#include <array>
#include <random>

#include "LossCounters.h"
#include "ShellFixture.h"
#include "ViewDocks.h"

namespace ovka::testing {

using namespace ovka::desktop;

/// Somebody who presses everything in any order. Give it to nobody with a recording.
class RandomRun {
 public:
  explicit RandomRun(unsigned seed);

  /// Presses at random for some seconds.
  void press(double seconds);
  /// An amplifier, an empty recording and windows as at the start. False: it did not come to rest.
  [[nodiscard]] bool putInOrder();
  [[nodiscard]] const std::string& lost() const { return lost_; }
  [[nodiscard]] long presses() const { return presses_; }

 private:
  int upTo(int count) { return std::uniform_int_distribution<int>(0, count - 1)(random_); }
  bool oneIn(int count) { return upTo(count) == 0; }
  ViewKind anyView() { return static_cast<ViewKind>(upTo(display::kViewKinds)); }
  template <typename T>
  T* anyOf(const QList<T*>& all) {
    return all.isEmpty() ? nullptr : all[upTo(static_cast<int>(all.size()))];
  }
  ViewDocks& views() { return shell_.window.views(); }

  void arrangeViews();
  void fullScreen();
  void resizeSomething();
  void dragView();
  void handleView();
  void setUp();
  QList<QDialog*> setUps();
  void pressControl();
  void chooseFromMenu();
  void pressRow();
  void changeSource();
  void handleDocument();
  void goSomewhere();

  void tidy();
  void answer(QMessageBox& box);
  void countLosses(const char* after);

  // The files that it works with stay a handful.
  QString document() {
    return QString::fromStdString(shell_.folder.at(std::to_string(upTo(3)) + ".ovkanote"));
  }

  std::mt19937 random_;
  ShellFixture shell_{SourceChoice::Kind::Demo};
  QTimer housekeeper_;
  std::array<std::int64_t, 6> agreed_{};  ///< what the amplifier and the chain agreed on
  std::string lost_;
  long presses_ = 0;
};

}  // namespace ovka::testing
