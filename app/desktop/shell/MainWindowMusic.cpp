#include <QAction>

#include "Banner.h"
#include "MainWindow.h"
#include "MusicWindow.h"
#include "TransportRow.h"

// Music in the main window: the button, the light, what is said about them.

namespace ovka::desktop {

void MainWindow::connectMusic() {
  connect(&bench_, &Workbench::engineChanged, this, [this] {
    Engine* engine = bench_.engine();
    if (engine == nullptr || !engine->midi().on())
      transport_->setMidiCounter({});
    else
      transport_->setMidiCounter([engine] { return engine->midi().notes().sendTimes().count(); });
  });
  connect(transport_, &TransportRow::musicPressed, this, &MainWindow::toggleMusic);
  connect(&music_, &MusicFace::message, this,
          [this](const QString& text, const QString& detail, bool problem) {
            banner_->show({problem ? Banner::Level::Problem : Banner::Level::Note,
                           text,
                           detail,
                           {},
                           QStringLiteral("music")});
          });
  connect(&music_, &MusicFace::ownSetupsOff, this, [this] {
    banner_->show(
        {Banner::Level::Care,
         QStringLiteral("Your MIDI set-ups are all off."),
         QStringLiteral("Switch one on under Music, or take the set-ups that come with "
                        "the program in their place."),
         {{QStringLiteral("Show mine"), [this] { musicWindow_->showPage(MusicPage::Bands); }},
          {QStringLiteral("Take those"), [this] { music_.playShipped(); }}},
         QStringLiteral("music")});
  });
}

void MainWindow::toggleMusic() {
  banner_->withdraw(QStringLiteral("music"));
  if (music_.playing())
    music_.stop();
  else
    music_.play();
  refreshMusic();
}

void MainWindow::refreshMusic() {
  QString words = music_.state();
  const QString missing = music_.missing();
  if (!missing.isEmpty() && missing != words) words += QLatin1Char('\n') + missing;
  transport_->setMusic(music_.playing(), music_.able(), words);
  playMusic_->setChecked(music_.playing());
}

}  // namespace ovka::desktop
