#include "Banner.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QStyle>
#include <QVBoxLayout>
#include <algorithm>

#include "Look.h"

namespace ovka::desktop {

Banner::Banner(QWidget* parent)
    : QFrame(parent),
      text_(new QLabel),
      detail_(new QLabel),
      more_(new QLabel),
      buttons_(new QHBoxLayout) {
  setObjectName(QStringLiteral("banner"));
  setAccessibleName(QStringLiteral("Message"));
  text_->setFont(look::font(look::Type::Strong));
  text_->setWordWrap(true);
  text_->setTextFormat(Qt::PlainText);
  detail_->setWordWrap(true);
  detail_->setTextFormat(Qt::PlainText);
  detail_->setTextInteractionFlags(Qt::TextSelectableByMouse);
  more_->setProperty("quiet", true);
  auto* texts = new QVBoxLayout;
  texts->setSpacing(2);
  texts->addWidget(text_);
  texts->addWidget(detail_);
  auto* row = new QHBoxLayout(this);
  row->setContentsMargins(16, 10, 16, 10);
  row->setSpacing(look::kGrid);
  row->addLayout(texts, 1);
  row->addWidget(more_);
  row->addLayout(buttons_);
  hide();
}

void Banner::show(Message message) {
  if (!message.key.isEmpty()) {
    const auto same = std::find_if(line_.begin(), line_.end(), [&](const Message& waiting) {
      return waiting.key == message.key;
    });
    if (same != line_.end()) {
      *same = std::move(message);
      present();
      return;
    }
  }
  // What is wrong now goes before what can wait.
  const auto later = std::find_if(line_.begin(), line_.end(), [&](const Message& waiting) {
    return waiting.level < message.level;
  });
  line_.insert(later, std::move(message));
  present();
}

void Banner::withdraw(const QString& key) {
  std::erase_if(line_, [&](const Message& message) { return message.key == key; });
  present();
}

QString Banner::text() const {
  return line_.empty() ? QString() : line_.front().text;
}

void Banner::next() {
  if (!line_.empty()) line_.pop_front();
  present();
}

void Banner::present() {
  while (QLayoutItem* item = buttons_->takeAt(0)) {
    if (item->widget() != nullptr) {
      item->widget()->hide();
      item->widget()->deleteLater();
    }
    delete item;
  }
  setVisible(!line_.empty());
  if (line_.empty()) return;
  const Message& message = line_.front();
  constexpr const char* kLevels[] = {"note", "care", "problem"};
  setProperty("level", QLatin1String(kLevels[static_cast<int>(message.level)]));
  style()->unpolish(this);
  style()->polish(this);
  text_->setText(message.text);
  detail_->setText(message.detail);
  detail_->setVisible(!message.detail.isEmpty());
  setAccessibleDescription(message.text + QLatin1Char(' ') + message.detail);
  more_->setText(line_.size() > 1 ? QStringLiteral("%1 more").arg(line_.size() - 1) : QString());
  for (const Button& button : message.buttons) {
    auto* widget = new QPushButton(button.text);
    QObject::connect(widget, &QPushButton::clicked, this, [this, press = button.press] {
      const auto kept = press;  // the message may go with its line
      next();
      if (kept) kept();
    });
    buttons_->addWidget(widget);
  }
  auto* close = new QPushButton(QStringLiteral("Close"));
  close->setProperty("flat", true);
  close->setAccessibleName(QStringLiteral("Close the message"));
  QObject::connect(close, &QPushButton::clicked, this, [this] { next(); });
  buttons_->addWidget(close);
}

}  // namespace ovka::desktop
