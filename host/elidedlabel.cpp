// See elidedlabel.h.
#include "elidedlabel.h"

#include <QPainter>
#include <QStyle>

namespace korvex2 {

ElidedLabel::ElidedLabel(QWidget* parent) : QLabel(parent) {
  setTextFormat(Qt::PlainText);
  setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred);
}

QSize ElidedLabel::minimumSizeHint() const { return {fontMetrics().averageCharWidth() * 10, fontMetrics().height()}; }

void ElidedLabel::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  const QRect room = contentsRect();
  const QString line = QString(text()).replace(QLatin1Char('\n'), QLatin1Char(' '));
  const QString shown = fontMetrics().elidedText(line, Qt::ElideRight, room.width());
  style()->drawItemText(&painter, room, Qt::AlignLeft | Qt::AlignVCenter, palette(), isEnabled(), shown,
                        foregroundRole());
}

}  // namespace korvex2
