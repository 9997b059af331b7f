// Typed decimal points, releases, and fractions of a notch.
#include "entryfields.h"

#include <QFocusEvent>
#include <QLineEdit>
#include <QLocale>
#include <QPointer>
#include <QWheelEvent>

#include <utility>

namespace korvex2 {

namespace {

constexpr int notch = QWheelEvent::DefaultDeltasPerStep;

}  // namespace

QValidator::State EntrySpinBox::validate(QString& text, int& pos) const {
  const QChar mark = locale().decimalPoint();
  const int numberLength = text.endsWith(suffix()) ? text.size() - suffix().size() : text.size();
  const int point = text.leftRef(numberLength).indexOf(QLatin1Char('.'));
  if (mark != QLatin1Char('.') && point >= 0 && !text.leftRef(numberLength).contains(mark)) {
    text[point] = mark;
  }
  return QDoubleSpinBox::validate(text, pos);
}

void EntrySpinBox::focusOutEvent(QFocusEvent* event) {
  const QPointer<EntrySpinBox> self(this);  // whoever hears of the entry's end may delete it
  QDoubleSpinBox::focusOutEvent(event);
  if (self != nullptr) {
    lineEdit()->deselect();
  }
}

ThumbWheel::ThumbWheel(QWidget* parent, std::function<void()> released, std::function<void(Qt::FocusReason)> focusLost)
    : QwtWheel(parent), released_(std::move(released)), focusLost_(std::move(focusLost)) {}

void ThumbWheel::mouseReleaseEvent(QMouseEvent* event) {
  const QPointer<QwtWheel> self(this);
  QwtWheel::mouseReleaseEvent(event);
  if (self != nullptr) {
    released_();
  }
}

void ThumbWheel::focusOutEvent(QFocusEvent* event) {
  const Qt::FocusReason reason = event->reason();
  QwtWheel::focusOutEvent(event);
  focusLost_(reason);
}

void ThumbWheel::wheelEvent(QWheelEvent* event) {
  scrolled_ += event->angleDelta().y();
  const int notches = scrolled_ / notch * notch;
  if (notches == 0) {
    event->accept();
    return;
  }
  scrolled_ -= notches;
  QWheelEvent whole(event->position(), event->globalPosition(), event->pixelDelta(), QPoint(0, notches),
                    event->buttons(), event->modifiers(), event->phase(), event->inverted(), event->source());
  QwtWheel::wheelEvent(&whole);
  event->setAccepted(whole.isAccepted());
}

}  // namespace korvex2
