#include "MusicWindow.h"

#include <QHBoxLayout>
#include <QListWidget>
#include <QScrollArea>
#include <QStackedWidget>

#include "BandPage.h"
#include "PortsPage.h"
#include "ShownTimer.h"
#include "SinglePage.h"
#include "SynthPage.h"

namespace ovka::desktop {
namespace {

constexpr int kTick = 80;  // ms; values that move are read, not studied

QWidget* scrolled(QWidget* page) {
  auto* scroll = new QScrollArea;
  scroll->setWidgetResizable(true);
  scroll->setFrameShape(QFrame::NoFrame);
  scroll->setWidget(page);
  return scroll;
}

}  // namespace

MusicWindow::MusicWindow(Workbench& bench, MusicFace& music, QWidget* parent)
    : QDialog(parent),
      list_(new QListWidget),
      pages_(new QStackedWidget),
      bands_(new BandPage(bench)),
      singles_(new SinglePage(bench)),
      synth_(new SynthPage(bench, music)),
      ports_(new PortsPage(bench, music)) {
  setWindowTitle(QStringLiteral("Music"));
  setObjectName(QStringLiteral("musicWindow"));
  resize(1180, 760);
  list_->setObjectName(QStringLiteral("pages"));
  list_->setAccessibleName(QStringLiteral("Pages"));
  list_->setFixedWidth(200);
  for (const char* title : kMusicPages) list_->addItem(QString::fromUtf8(title));
  pages_->addWidget(bands_);
  pages_->addWidget(singles_);
  pages_->addWidget(scrolled(synth_));
  pages_->addWidget(scrolled(ports_));
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(0);
  row->addWidget(list_);
  row->addWidget(pages_, 1);
  connect(list_, &QListWidget::currentRowChanged, this, [this](int page) {
    pages_->setCurrentIndex(page);
    refresh();
  });
  for (SetupsPage* page : {static_cast<SetupsPage*>(bands_), static_cast<SetupsPage*>(singles_)})
    connect(page, &SetupsPage::controllersWanted, this, [this] { showPage(MusicPage::Ports); });
  new ShownTimer(this, kTick, [this] { refresh(); });
  list_->setCurrentRow(0);
}

void MusicWindow::showPage(MusicPage page) {
  list_->setCurrentRow(static_cast<int>(page));
  show();
  // What was laid out before it had its looks is laid out anew.
  list_->doItemsLayout();
  raise();
  activateWindow();
  refresh();
}

void MusicWindow::refresh() {
  switch (static_cast<MusicPage>(pages_->currentIndex())) {
    case MusicPage::Bands:
      return bands_->refresh();
    case MusicPage::Singles:
      return singles_->refresh();
    case MusicPage::Synthesizer:
      return synth_->refresh();
    case MusicPage::Ports:
      return ports_->refresh();
  }
}

}  // namespace ovka::desktop
