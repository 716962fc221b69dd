#include <QActionGroup>
#include <QColorDialog>
#include <QComboBox>
#include <QHBoxLayout>
#include <QMenu>
#include <QSignalBlocker>
#include <QToolButton>
#include <array>

#include "View.h"
#include "ViewChoices.h"

namespace ovka::desktop {
namespace {

/// What the row of controls holds besides channels and modes; the menu has everything.
constexpr std::array<std::string_view, 4> kControls{"gain", "highF", "seconds", "freeze"};

void addSwitch(QMenu& menu, View& view, const ChoiceRow& row) {
  const display::ViewField& field = viewField(row.field);
  QAction* action = menu.addAction(row.title);
  action->setCheckable(true);
  action->setChecked(display::valueOf(view.choice(), field) != 0);
  action->setToolTip(row.hint);
  QObject::connect(action, &QAction::toggled, &view, [&view, &field](bool on) {
    ViewChoice choice = view.choice();
    if (display::assign(choice, field, on ? 1 : 0)) view.setChoice(choice);
  });
}

void addList(QMenu& menu, View& view, const ChoiceRow& row) {
  const display::ViewField& field = viewField(row.field);
  QMenu* list = menu.addMenu(row.title);
  auto* group = new QActionGroup(list);
  const double present = display::valueOf(view.choice(), field);
  for (const OfferedValue& offer : row.values) {
    QAction* action = list->addAction(QString::fromUtf8(offer.text));
    action->setCheckable(true);
    action->setChecked(offer.value == present);
    group->addAction(action);
    QObject::connect(action, &QAction::triggered, &view, [&view, &field, value = offer.value] {
      ViewChoice choice = view.choice();
      if (display::assign(choice, field, value)) view.setChoice(choice);
    });
  }
}

QToolButton* toggle(QWidget* parent, const QString& text, const QString& name) {
  auto* button = new QToolButton(parent);
  button->setText(text);
  button->setAccessibleName(name);
  button->setToolTip(name);
  button->setCheckable(true);
  button->setAutoRaise(true);
  return button;
}

/// A channel's button wears the channel's colour while it is on.
void addChannel(QHBoxLayout& row, View& view, QWidget* parent, std::size_t channel) {
  const QString name = QString::fromUtf8(kChannelNames[channel]);
  QToolButton* button = toggle(parent, name, QStringLiteral("Channel ") + name);
  row.addWidget(button);
  QObject::connect(button, &QToolButton::toggled, &view, [&view, channel](bool on) {
    const int bit = 1 << channel;
    view.setChannels(on ? view.choice().channels | bit : view.choice().channels & ~bit);
  });
  const auto follow = [&view, button, channel] {
    const QSignalBlocker quiet(button);
    button->setChecked(view.showsChannel(channel));
    const QColor color = Theme::current(view.palette()).channels[channel];
    button->setStyleSheet(view.showsChannel(channel)
                              ? QStringLiteral("font-weight: bold; color: %1").arg(color.name())
                              : QString());
  };
  QObject::connect(&view, &View::choiceChanged, button, follow);
  follow();
}

void addChoice(QHBoxLayout& layout, View& view, QWidget* parent, const ChoiceRow& row) {
  const display::ViewField& field = viewField(row.field);
  auto* box = new QComboBox(parent);
  box->setAccessibleName(row.title);
  box->setToolTip(QString::fromUtf8(row.hint));
  for (const OfferedValue& offer : row.values)
    box->addItem(QString::fromUtf8(offer.text), offer.value);
  layout.addWidget(box);
  QObject::connect(box, &QComboBox::activated, &view, [&view, &field, box](int index) {
    ViewChoice choice = view.choice();
    if (display::assign(choice, field, box->itemData(index).toDouble())) view.setChoice(choice);
  });
  const auto follow = [&view, &field, &row, box] {
    box->setCurrentIndex(nearestOffer(row, display::valueOf(view.choice(), field)));
  };
  QObject::connect(&view, &View::choiceChanged, box, follow);
  follow();
}

void addToggle(QHBoxLayout& layout, View& view, QWidget* parent, const ChoiceRow& row) {
  const display::ViewField& field = viewField(row.field);
  QToolButton* button = toggle(parent, row.title, row.title);
  button->setToolTip(row.hint);
  layout.addWidget(button);
  QObject::connect(button, &QToolButton::toggled, &view, [&view, &field](bool on) {
    ViewChoice choice = view.choice();
    if (display::assign(choice, field, on ? 1 : 0)) view.setChoice(choice);
  });
  const auto follow = [&view, &field, button] {
    const QSignalBlocker quiet(button);
    button->setChecked(display::valueOf(view.choice(), field) != 0);
  };
  QObject::connect(&view, &View::choiceChanged, button, follow);
  follow();
}

void addModes(QHBoxLayout& layout, View& view, QWidget* parent) {
  auto* box = new QComboBox(parent);
  box->setAccessibleName(QStringLiteral("Mode"));
  box->setToolTip(QStringLiteral("What the view shows, and how."));
  box->addItems(view.modes());
  layout.addWidget(box);
  QObject::connect(box, &QComboBox::activated, &view, &View::setMode);
  const auto follow = [&view, box] { box->setCurrentIndex(view.choice().mode); };
  QObject::connect(&view, &View::choiceChanged, box, follow);
  follow();
}

}  // namespace

QWidget* View::makeControls(QWidget* parent) {
  auto* controls = new QWidget(parent);
  auto* layout = new QHBoxLayout(controls);
  layout->setContentsMargins(4, 2, 4, 2);
  layout->setSpacing(4);
  for (std::size_t c = 0; c < kChannels; ++c) addChannel(*layout, *this, controls, c);
  layout->addSpacing(6);
  if (modes().size() > 1) addModes(*layout, *this, controls);
  addOwnControls(*layout, controls);
  layout->addStretch(1);
  for (const std::string_view field : kControls) {
    const ChoiceRow* row = choiceRow(field);
    if (row == nullptr || !uses(field)) continue;
    if (row->values.size() == 1) {
      addToggle(*layout, *this, controls, *row);
    } else {
      addChoice(*layout, *this, controls, *row);
    }
  }
  return controls;
}

void View::fillMenu(QMenu& menu) {
  for (std::size_t c = 0; c < kChannels; ++c) {
    QAction* action = menu.addAction(QStringLiteral("Channel %1").arg(kChannelNames[c]));
    action->setCheckable(true);
    action->setChecked(showsChannel(c));
    connect(action, &QAction::toggled, this,
            [this, c] { setChannels(choice_.channels ^ (1 << c)); });
  }
  if (const QStringList names = modes(); names.size() > 1) {
    menu.addSeparator();
    auto* group = new QActionGroup(&menu);
    for (int mode = 0; mode < names.size(); ++mode) {
      QAction* action = menu.addAction(names[mode]);
      action->setCheckable(true);
      action->setChecked(mode == choice_.mode);
      group->addAction(action);
      connect(action, &QAction::triggered, this, [this, mode] { setMode(mode); });
    }
  }
  menu.addSeparator();
  for (const ChoiceRow& row : choiceRows()) {
    if (!uses(row.field)) continue;
    if (row.values.size() == 1) {
      addSwitch(menu, *this, row);
    } else {
      addList(menu, *this, row);
    }
  }
  if (uses("hold") || uses("average")) {
    menu.addAction(QStringLiteral("Start holds and averages anew"), this, &View::startHoldsAnew);
  }
  addOwnMenu(menu);
  menu.addSeparator();
  QMenu* colors = menu.addMenu(QStringLiteral("Channel colours"));
  for (std::size_t c = 0; c < kChannels; ++c) {
    colors->addAction(QStringLiteral("Channel %1 …").arg(kChannelNames[c]), this,
                      [this, c] { chooseColor(c); });
  }
  colors->addAction(QStringLiteral("Those of the theme"), this, [] {
    for (auto& color : display::channelColorX) color = -1;
    display::broughtX = display::broughtX + 1;
  });
}

void View::chooseColor(std::size_t channel) {
  auto* dialog = new QColorDialog(theme_.channels[channel], this);
  dialog->setObjectName(QStringLiteral("channelColor"));
  dialog->setWindowTitle(QStringLiteral("Colour of channel %1").arg(kChannelNames[channel]));
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  connect(dialog, &QColorDialog::colorSelected, this, [channel](const QColor& color) {
    display::channelColorX[channel] = static_cast<std::int32_t>(color.rgb() & 0xFFFFFFU);
    display::broughtX = display::broughtX + 1;
  });
  dialog->open();
}

}  // namespace ovka::desktop
