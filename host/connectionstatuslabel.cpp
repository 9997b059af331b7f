// See connectionstatuslabel.h.
#include "connectionstatuslabel.h"

#include <QMouseEvent>
#include <QPainter>
#include <QStyle>
#include <QTextDocument>

namespace korvex2 {

namespace {

constexpr int gap = 5;           // between the sign and the text, and at both ends
constexpr int mostLetters = 52;  // shown of a text, on average

/// Shapes differ for those who do not tell the colours apart. They are drawn in a square from (0, 0) to (1, 1).
void drawSign(QPainter& painter, const LinkStatus& status) {
  const auto pen = [&painter](const QColor& color) {
    painter.setPen(QPen(color, 0.14, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
  };
  painter.setBrush(Qt::NoBrush);
  if (status.place.isEmpty()) {  // an empty square
    pen(QColor(0x5a, 0x6b, 0x7b));
    painter.drawRoundedRect(QRectF(0.07, 0.07, 0.86, 0.86), 0.18, 0.18);
    return;
  }
  switch (status.state) {
    case LinkState::connected:  // a tick on a disc
      painter.setPen(Qt::NoPen);
      painter.setBrush(QColor(0x2e, 0x7d, 0x32));
      painter.drawEllipse(QRectF(0.0, 0.0, 1.0, 1.0));
      pen(Qt::white);
      painter.setBrush(Qt::NoBrush);
      painter.drawPolyline(QPolygonF({{0.26, 0.52}, {0.44, 0.70}, {0.75, 0.34}}));
      break;
    case LinkState::reconnecting: {  // an arrow round
      pen(QColor(0xb2, 0x6a, 0x00));
      painter.drawArc(QRectF(0.14, 0.14, 0.72, 0.72), 60 * 16, 280 * 16);
      painter.setPen(Qt::NoPen);
      painter.setBrush(QColor(0xb2, 0x6a, 0x00));
      painter.drawPolygon(QPolygonF({{0.62, 0.42}, {1.0, 0.42}, {0.86, 0.08}}));
      break;
    }
    case LinkState::lost:  // a cross on a square
      painter.setPen(Qt::NoPen);
      painter.setBrush(QColor(0xc6, 0x28, 0x28));
      painter.drawRoundedRect(QRectF(0.0, 0.0, 1.0, 1.0), 0.18, 0.18);
      pen(Qt::white);
      painter.drawLine(QPointF(0.3, 0.3), QPointF(0.7, 0.7));
      painter.drawLine(QPointF(0.7, 0.3), QPointF(0.3, 0.7));
      break;
  }
}

QString textFor(const LinkStatus& status) {
  if (status.place.isEmpty()) {
    return ConnectionStatusLabel::tr("Simulated backend");
  }
  switch (status.state) {
    case LinkState::connected:
      return ConnectionStatusLabel::tr("Connected to %1").arg(status.place);
    case LinkState::reconnecting:
      return ConnectionStatusLabel::tr("Reconnecting to %1...").arg(status.place);
    case LinkState::lost:
      break;
  }
  return ConnectionStatusLabel::tr("Connection to %1 lost").arg(status.place);
}

}  // namespace

ConnectionStatusLabel::ConnectionStatusLabel(QWidget* parent) : QLabel(parent) {
  setObjectName(QStringLiteral("connectionStatus"));
  setTextFormat(Qt::PlainText);
  showStatus({}, {});
}

void ConnectionStatusLabel::showStatus(const LinkStatus& status, const QStringList& details) {
  status_ = status;
  setText(textFor(status));
  QStringList lines = QStringList(text()) + details;
  const bool waits = status.state != LinkState::connected;
  if (waits) {
    lines += tr("Click to try at once");
  }
  setToolTip(Qt::convertFromPlainText(lines.join(QLatin1Char('\n')), Qt::WhiteSpaceNormal));
  setCursor(waits ? Qt::PointingHandCursor : Qt::ArrowCursor);
  updateGeometry();
  update();
}

int ConnectionStatusLabel::signSize() const { return fontMetrics().ascent(); }

QSize ConnectionStatusLabel::sizeHint() const {
  const int width = qMin(fontMetrics().horizontalAdvance(text()) + 1, fontMetrics().averageCharWidth() * mostLetters);
  return {gap + signSize() + gap + width + gap, QLabel::sizeHint().height()};
}

QSize ConnectionStatusLabel::minimumSizeHint() const { return sizeHint(); }

void ConnectionStatusLabel::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  const QRect room = contentsRect();
  const int size = signSize();
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(room.left() + gap, room.top() + (room.height() - size) / 2.0);
  painter.scale(size, size);
  drawSign(painter, status_);
  painter.restore();
  const QRect textRoom = room.adjusted(gap + size + gap, 0, 0, 0);
  const QString shown = fontMetrics().elidedText(text(), Qt::ElideMiddle, textRoom.width());
  style()->drawItemText(&painter, textRoom, Qt::AlignLeft | Qt::AlignVCenter, palette(), isEnabled(), shown,
                        foregroundRole());
}

void ConnectionStatusLabel::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton && rect().contains(event->pos())) {
    emit clicked();
  }
}

}  // namespace korvex2
