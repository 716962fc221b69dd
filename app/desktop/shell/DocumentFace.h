#pragma once

#include <QObject>
#include <QString>
#include <QStringList>
#include <functional>
#include <memory>

#include "Workbench.h"

class QMessageBox;
class QProgressDialog;
class QTimer;
class QWidget;

namespace ovka::desktop {

/// Documents as the user handles them: new, open, save, save as, recent ones, and the question that
/// keeps an unsaved recording from getting lost. Nothing here makes the windows wait. The GUI
/// thread.
class DocumentFace final : public QObject {
  Q_OBJECT

 public:
  /// `window` is the parent of its dialogs.
  DocumentFace(Workbench& bench, QWidget* window);

  void newDocument();
  void openWithDialog();
  void open(const QString& path);
  /// Saves where the document lies; asks for a place first when it has none. `then` follows only
  /// when it was saved.
  void save(const std::function<void()>& then = {});
  void saveAs(const std::function<void()>& then = {});
  void saveTo(const QString& path, const std::function<void()>& then = {});
  /// Runs `then` at once when nothing would be lost, else asks: save, discard or cancel. `what`
  /// completes "Save the recording before ... ?".
  void guard(const QString& what, const std::function<void()>& then);
  /// Brings a journaled recording back.
  void recover(const JournalSession& session);

  [[nodiscard]] const QString& path() const { return path_; }
  /// The name for the title of the window.
  [[nodiscard]] QString name() const;
  [[nodiscard]] QStringList recent() const;
  void clearRecent();
  /// The front document may have become another one (actions, automatic saves).
  void refresh();

 Q_SIGNALS:
  void changed();
  void message(const QString& text, const QString& detail, bool problem);

 private:
  struct Job;
  void run(const std::shared_ptr<Job>& job, const QString& label, bool cancellable);
  void finish(const std::shared_ptr<Job>& job);
  [[nodiscard]] bool openingTakesSamples() const;
  [[nodiscard]] bool keepFirst(const std::function<void()>& then);
  void showProgress();
  void setPath(const QString& path);

  Workbench& bench_;
  QWidget* window_;
  QString path_;
  QProgressDialog* progress_ = nullptr;
  QTimer* progressTimer_;
  QString progressLabel_;
  bool refreshing_ = false;
};

}  // namespace ovka::desktop
