#include "PictureSeries.h"

#include <QDialog>
#include <QDockWidget>
#include <QListWidget>
#include <QPixmap>
#include <QTimer>
#include <cstdio>

#include "HelpWindow.h"
#include "MainWindow.h"
#include "ViewDocks.h"

namespace ovka::desktop {
namespace {

constexpr int kFill = 22'000;   // ms until the histories hold enough
constexpr int kSettle = 1'200;  // ms from an arrangement to its picture
constexpr QSize kWindow(1440, 900);
constexpr QSize kView(960, 540);

/// "2D spectrum" as part of a file's name.
QString fileText(const QString& title) {
  QString text;
  for (const QChar letter : title.toLower()) {
    if (letter.isLetterOrNumber())
      text += letter;
    else if (!text.isEmpty() && !text.endsWith(QLatin1Char('-')))
      text += QLatin1Char('-');
  }
  while (text.endsWith(QLatin1Char('-'))) text.chop(1);
  return text;
}

}  // namespace

PictureSeries::PictureSeries(MainWindow& window, const QString& folder)
    : QObject(&window), window_(window), folder_(folder) {
  addWindows();
  addViews();
  addPages();
  addHelp();
  window_.resize(kWindow);
  window_.views().view(ViewKind::Waterfall).setSeconds(kFill / 1000.0);
  QTimer::singleShot(kFill, this, &PictureSeries::prepareNext);
}

void PictureSeries::addWindows() {
  for (const auto& [name, theme] : {std::pair{"window-light", 2}, std::pair{"window-dark", 1}}) {
    steps_.push_back({QLatin1String(name), [this, theme = theme]() -> QWidget* {
                        display::themeX = theme;
                        Q_EMIT window_.bench().changed(QStringLiteral("themeX"));
                        window_.resize(kWindow);
                        window_.views().arrangeDefault();
                        return &window_;
                      }});
  }
}

void PictureSeries::addViews() {
  for (std::size_t i = 0; i < display::kViewKinds; ++i) {
    const auto kind = static_cast<ViewKind>(i);
    steps_.push_back(
        {QStringLiteral("view-") + fileText(viewTitle(kind)), [this, kind]() -> QWidget* {
           ViewDocks& views = window_.views();
           views.arrangeDefault();
           views.dock(kind).show();
           views.dock(kind).setFloating(true);
           views.dock(kind).resize(kView);
           return &views.view(kind);
         }});
  }
}

/// Every page of every window that has pages.
void PictureSeries::addPages() {
  for (QDialog* dialog : window_.findChildren<QDialog*>(QString(), Qt::FindDirectChildrenOnly)) {
    auto* pages = dialog->findChild<QListWidget*>(QStringLiteral("pages"));
    for (int row = 0; pages != nullptr && row < pages->count(); ++row) {
      steps_.push_back(
          {fileText(dialog->windowTitle()) + QLatin1Char('-') + fileText(pages->item(row)->text()),
           [dialog, pages, row]() -> QWidget* {
             pages->setCurrentRow(row);
             dialog->show();
             return dialog;
           }});
    }
  }
}

void PictureSeries::addHelp() {
  steps_.push_back({QStringLiteral("help"), [this]() -> QWidget* {
                      window_.views().arrangeDefault();
                      auto* help = new HelpWindow(&window_);
                      help->show();
                      return help;
                    }});
}

void PictureSeries::prepareNext() {
  if (next_ >= steps_.size()) {
    Q_EMIT finished(all_);
    return;
  }
  for (QDialog* dialog : window_.findChildren<QDialog*>(QString(), Qt::FindDirectChildrenOnly))
    dialog->hide();
  QWidget* shown = steps_[next_].prepare();
  QTimer::singleShot(kSettle, shown, [this, shown] { take(shown); });
}

void PictureSeries::take(QWidget* shown) {
  const QString path = folder_ + QLatin1Char('/') + steps_[next_++].name + QStringLiteral(".png");
  if (!shown->grab().save(path)) {
    std::fprintf(stderr, "ovka-desktop: cannot write %s\n", qUtf8Printable(path));
    all_ = false;
  }
  prepareNext();
}

}  // namespace ovka::desktop
