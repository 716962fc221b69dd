#pragma once

#include <QObject>
#include <QString>
#include <functional>
#include <vector>

class QWidget;

namespace ovka::desktop {

class MainWindow;

/// Pictures for the manual and the help: the window on dark and light ground, every view, every
/// page of every set-up window, the help; one after the other, as PNG files into a folder. The GUI
/// thread.
class PictureSeries final : public QObject {
  Q_OBJECT

 public:
  /// Begins when there is something to see.
  PictureSeries(MainWindow& window, const QString& folder);

 Q_SIGNALS:
  /// All are there; not when one could not be written.
  void finished(bool all);

 private:
  struct Step {
    QString name;
    std::function<QWidget*()> prepare;  ///< what is to be seen
  };
  void addWindows();
  void addViews();
  void addPages();
  void addHelp();
  void prepareNext();
  void take(QWidget* shown);

  MainWindow& window_;
  QString folder_;
  std::vector<Step> steps_;
  std::size_t next_ = 0;
  bool all_ = true;
};

}  // namespace ovka::desktop
