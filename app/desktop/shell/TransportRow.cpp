#include "TransportRow.h"

#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QResizeEvent>
#include <QStyle>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "BufferVariables.h"
#include "Look.h"

namespace ovka::desktop {
namespace {

QPushButton* makeButton(const char* name, const QString& text, const QString& tip) {
  auto* button = new QPushButton(text);
  button->setObjectName(QLatin1String(name));
  button->setToolTip(tip);
  button->setAccessibleName(text);
  button->setAccessibleDescription(tip);
  button->setIconSize({20, 20});
  button->setMinimumHeight(40);
  // A click leaves the focus where it is, so that the space bar goes on meaning Pause.
  button->setFocusPolicy(Qt::TabFocus);
  return button;
}

}  // namespace

QString stateText(RecordState state) {
  switch (state) {
    case RecordState::NoInput:
      return QStringLiteral("No input");
    case RecordState::Live:
      return QStringLiteral("Live, not recording");
    case RecordState::Recording:
      return QStringLiteral("Recording");
    case RecordState::Paused:
      return QStringLiteral("Paused");
    case RecordState::Review:
      return QStringLiteral("Stopped");
    case RecordState::Playing:
      return QStringLiteral("Playing");
  }
  return {};
}

TransportRow::TransportRow(Workbench& bench, QWidget* parent)
    : QWidget(parent),
      bench_(bench),
      sources_(new QComboBox),
      start_(new QPushButton(QStringLiteral("Start"))),
      state_(new QLabel),
      clock_(new QLabel),
      left_(new QLabel),
      light_(new QLabel(QStringLiteral("MIDI"))) {
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(16, 10, 16, 10);
  row->setSpacing(2 * look::kGrid);
  row->addWidget(makeSource());
  row->addStretch(1);
  row->addWidget(makeButtons());
  row->addWidget(makeClock());
  row->addStretch(1);
  light_->setAccessibleName(QStringLiteral("MIDI activity"));
  light_->setObjectName(QStringLiteral("midiLight"));
  music_ = makeButton("music", QStringLiteral("Music"),
                      QStringLiteral("Plays your brain waves, or ends that (Ctrl+M)."));
  music_->setCheckable(true);
  connect(music_, &QPushButton::clicked, this, &TransportRow::musicPressed);
  row->addWidget(music_);
  row->addWidget(light_);
  panic_ = makeButton("panic", QStringLiteral("Panic"),
                      QStringLiteral("Silences every sounding note at once (Ctrl+.)."));
  connect(panic_, &QPushButton::clicked, this, &TransportRow::panicPressed);
  row->addWidget(panic_);
  listSources();
  furnish(Room::Words);
  applyLook();
}

QWidget* TransportRow::makeButtons() {
  auto* part = new QWidget;
  auto* row = new QHBoxLayout(part);
  row->setContentsMargins(0, 0, 0, 0);
  row->setSpacing(look::kGrid);
  record_ = makeButton("record", QStringLiteral("Record"),
                       QStringLiteral("Begins a new recording, or ends the running one (Ctrl+R)."));
  record_->setCheckable(true);
  record_->setMinimumWidth(112);
  pause_ =
      makeButton("pause", QStringLiteral("Pause"),
                 QStringLiteral("Holds the recording; samples meanwhile are not kept (Space)."));
  pause_->setMinimumWidth(96);
  loop_ = makeButton("loop", QStringLiteral("Loop"),
                     QStringLiteral("At the maximum time the recording goes on from its start and "
                                    "keeps the newest stretch; playing begins again at its end."));
  loop_->setCheckable(true);
  live_ = makeButton("live", QStringLiteral("Live"),
                     QStringLiteral("Back from a recording to the living signal."));
  connect(record_, &QPushButton::clicked, this, [this] {
    refresh();  // what it shows is the recorder's, not the click's
    Q_EMIT recordPressed();
  });
  connect(pause_, &QPushButton::clicked, this, &TransportRow::pausePressed);
  connect(loop_, &QPushButton::clicked, this, [this](bool on) { bench_.recorder().setLoop(on); });
  connect(live_, &QPushButton::clicked, this, &TransportRow::livePressed);
  for (QPushButton* button : {record_, pause_, loop_, live_}) row->addWidget(button);
  return part;
}

QWidget* TransportRow::makeClock() {
  auto* part = new QWidget;
  auto* row = new QHBoxLayout(part);
  row->setContentsMargins(look::kGrid, 0, 0, 0);
  row->setSpacing(2 * look::kGrid);
  clock_->setObjectName(QStringLiteral("clock"));
  clock_->setAccessibleName(QStringLiteral("Elapsed time"));
  clock_->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
  state_->setObjectName(QStringLiteral("state"));
  state_->setFont(look::font(look::Type::Strong));
  state_->setMinimumWidth(state_->fontMetrics().horizontalAdvance(QStringLiteral("Recording ")));
  left_->setObjectName(QStringLiteral("left"));
  left_->setProperty("quiet", true);
  left_->setMinimumWidth(
      left_->fontMetrics().horizontalAdvance(QStringLiteral("Live, not recording  ")));
  auto* texts = new QVBoxLayout;
  texts->setSpacing(0);
  texts->addStretch(1);
  texts->addWidget(state_);
  texts->addWidget(left_);
  texts->addStretch(1);
  row->addWidget(clock_);
  row->addLayout(texts);
  return part;
}

void TransportRow::applyLook() {
  dressed_ = false;
  panic_->setFont(look::font(look::Type::Strong));
  refresh();
  least_ = 0;
  fit();
}

void TransportRow::refresh() {
  const RecordState state = bench_.recorder().state();
  if (state != shown_ || !dressed_) refreshButtons(state);
  const bool busy = bench_.opening();
  start_->setEnabled(!busy);
  start_->setText(busy ? QStringLiteral("Starting …") : QStringLiteral("Start"));
  loop_->setChecked(bench_.recorder().loop());
  // Follows the setting whenever that changes; what is chosen here waits for Start.
  if (const std::uint32_t model = buffer::SelectDevice; model != model_) {
    model_ = model;
    models_->setCurrentIndex(static_cast<int>(model));
  }
  refreshClock(state);
  refreshLight();
  shown_ = state;
  dressed_ = true;
}

void TransportRow::refreshButtons(RecordState state) {
  const Theme theme = look::theme();
  const look::Colors colors = look::colors(theme);
  const bool running = state == RecordState::Recording || state == RecordState::Paused;
  record_->setChecked(running);
  name(record_, running ? QStringLiteral("Stop") : QStringLiteral("Record"));
  record_->setIcon(look::icon(running ? QStringLiteral("stop") : QStringLiteral("record"),
                              running ? QColor(Qt::white) : colors.record));
  record_->setEnabled(bench_.recorder().acquires());
  const bool standing = state == RecordState::Review || state == RecordState::Playing;
  const bool goesOn = state == RecordState::Paused || state == RecordState::Review;
  pause_->setEnabled(running || standing);
  name(pause_, state == RecordState::Paused   ? QStringLiteral("Resume")
               : state == RecordState::Review ? QStringLiteral("Play")
                                              : QStringLiteral("Pause"));
  pause_->setIcon(
      look::icon(goesOn ? QStringLiteral("play") : QStringLiteral("pause"), theme.text));
  loop_->setIcon(look::icon(QStringLiteral("loop"), theme.text));
  live_->setIcon(look::icon(QStringLiteral("live"), theme.text));
  music_->setIcon(look::icon(QStringLiteral("note"), theme.text));
  live_->setVisible(standing && bench_.recorder().acquires());
  QPalette palette = state_->palette();
  palette.setColor(QPalette::WindowText, state == RecordState::Recording ? colors.record
                                         : state == RecordState::Paused  ? colors.warn
                                         : state == RecordState::Live    ? colors.good
                                                                         : theme.text);
  state_->setPalette(palette);
  state_->setStyleSheet(
      QStringLiteral("color: %1").arg(palette.color(QPalette::WindowText).name()));
  state_->setText(state == RecordState::Live ? QStringLiteral("Live") : stateText(state));
  fit();
}

void TransportRow::name(QPushButton* button, const QString& word) {
  button->setAccessibleName(word);
  const bool often = button == record_ || button == pause_;
  button->setText(room_ == Room::Words || (often && room_ == Room::FewWords) ? word : QString());
}

void TransportRow::furnish(Room room) {
  room_ = room;
  for (QPushButton* button : {record_, pause_, loop_, live_, music_})
    name(button, button->accessibleName());
  record_->setMinimumWidth(room == Room::Signs ? 0 : 112);
  pause_->setMinimumWidth(room == Room::Signs ? 0 : 96);
  sources_->setMinimumWidth(room == Room::Words ? 210 : room == Room::FewWords ? 150 : 116);
  left_->setVisible(room != Room::Signs);
  QFont figures = look::font(look::Type::Figure);
  if (room == Room::Signs) figures.setPointSizeF(figures.pointSizeF() * 0.75);
  clock_->setFont(figures);
  clock_->setMinimumWidth(clock_->fontMetrics().horizontalAdvance(QStringLiteral("00:00:00")));
  layout()->setSpacing(room == Room::Signs ? look::kGrid : 2 * look::kGrid);
  // Sizes are asked for before the event that would tell the layouts of the parts.
  for (QLayout* each : findChildren<QLayout*>()) {
    each->invalidate();
    if (each->parentWidget() != this) each->parentWidget()->updateGeometry();
  }
  layout()->invalidate();
}

/// The most words that there is room for.
void TransportRow::fit() {
  for (const Room room : kRooms) {
    if (room != room_) furnish(room);
    if (layout()->minimumSize().width() <= width()) return;
  }
  least_ = layout()->minimumSize().width();
  updateGeometry();
}

void TransportRow::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  if (event->oldSize().width() != event->size().width()) fit();
}

/// A part became wider or narrower. What fit() itself changes comes here again, and ends there.
bool TransportRow::event(QEvent* event) {
  const bool done = QWidget::event(event);
  if (event->type() != QEvent::LayoutRequest) return done;
  const int wanted = layout()->minimumSize().width();
  if (std::exchange(seen_, wanted) != wanted) fit();
  return done;
}

QSize TransportRow::minimumSizeHint() const {
  return {least_, QWidget::minimumSizeHint().height()};
}

void TransportRow::refreshClock(RecordState state) {
  const Recorder& recorder = bench_.recorder();
  const auto speed = static_cast<double>(buffer::SampleSpeed.get());
  QString text;
  QString left;
  switch (state) {
    case RecordState::NoInput:
      text = QStringLiteral("–:––:––");
      break;
    case RecordState::Live:
      text = clockText(0);
      left = QStringLiteral("not recording");
      break;
    case RecordState::Recording:
    case RecordState::Paused:
      text = clockText(recorder.seconds());
      left = recorder.loop() ? QStringLiteral("goes round")
                             : QStringLiteral("%1 left").arg(clockText(recorder.secondsLeft()));
      break;
    case RecordState::Review:
    case RecordState::Playing:
      text = clockText(static_cast<double>(buffer::ploop - recorder.start()) / speed);
      left = QStringLiteral("of %1").arg(clockText(recorder.seconds()));
      break;
  }
  if (clock_->text() != text) clock_->setText(text);
  if (left_->text() != left) left_->setText(left);
}

void TransportRow::setMidiCounter(std::function<std::uint64_t()> counter) {
  midi_ = std::move(counter);
  midiSeen_ = midi_ ? midi_() : 0;
  midiGlow_ = 0;
}

void TransportRow::setMusic(bool on, bool able, const QString& words) {
  music_->setChecked(on);
  music_->setEnabled(able);
  if (light_->toolTip() == words) return;
  light_->setToolTip(words);
  light_->setAccessibleDescription(words);
}

void TransportRow::refreshLight() {
  const std::uint64_t now = midi_ ? midi_() : midiSeen_;
  // A message glows for about a third of a second.
  midiGlow_ = now != midiSeen_ ? 4 : std::max(midiGlow_ - 1, 0);
  midiSeen_ = now;
  const Theme theme = look::theme();
  const look::Colors colors = look::colors(theme);
  const QString style =
      QStringLiteral(
          "padding: 6px 10px; border-radius: 6px; font-weight: 600; color: %1; "
          "background: %2; border: 1px solid %3")
          .arg((midiGlow_ > 0 ? colors.onAccent : theme.quietText).name(),
               (midiGlow_ > 0 ? colors.good : theme.plot).name(), colors.line.name());
  // A style is taken up anew, however equal it is.
  if (light_->styleSheet() != style) light_->setStyleSheet(style);
}

}  // namespace ovka::desktop
