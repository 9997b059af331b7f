// The operator's hands and the record of the entry widgets' signals.
#include "entryfixture.h"

#include <QApplication>
#include <QMouseEvent>
#include <QVBoxLayout>
#include <QWheelEvent>
#include <QtTest>

namespace {

std::string text(double value) { return QString::number(value, 'g', 10).toStdString(); }

void sendMouse(QwtWheel* wheel, QEvent::Type type, int pixels, Qt::MouseButton button, Qt::MouseButtons buttons) {
  const QPoint at(wheel->width() / 2 + pixels, wheel->height() / 2);
  QMouseEvent event(type, at, wheel->mapToGlobal(at), button, buttons, Qt::NoModifier);
  QApplication::sendEvent(wheel, &event);
}

}  // namespace

void record(bsDoubleWidget* widget, Log* log) {
  QObject::connect(widget, &bsDoubleWidget::editingBegin, [log] { log->push_back("begin"); });
  QObject::connect(widget, &bsDoubleWidget::editingFinished, [log] { log->push_back("finished"); });
  QObject::connect(widget, &bsDoubleWidget::valueChanged,
                   [log](double value) { log->push_back("value " + text(value)); });
}

void record(xyzWidget* widget, Log* log) {
  QObject::connect(widget, &xyzWidget::xyzEditingBegin, [log] { log->push_back("begin"); });
  QObject::connect(widget, &xyzWidget::xyzEditingFinished, [log] { log->push_back("finished"); });
  QObject::connect(widget, &xyzWidget::valueChanged, [log](double x, double y, double z) {
    log->push_back("value " + text(x) + " " + text(y) + " " + text(z));
  });
}

Log take(Log* log) {
  Log taken;
  taken.swap(*log);
  return taken;
}

QDoubleSpinBox* spinOf(const bsDoubleWidget* widget) { return widget->findChild<QDoubleSpinBox*>(); }

QwtWheel* wheelOf(const bsDoubleWidget* widget) { return widget->findChild<QwtWheel*>(); }

QLabel* labelOf(const bsDoubleWidget* widget) { return widget->findChild<QLabel*>(); }

std::vector<bsDoubleWidget*> fieldsOf(const xyzWidget* widget) {
  std::vector<bsDoubleWidget*> fields(3, nullptr);
  for (bsDoubleWidget* const field : widget->findChildren<bsDoubleWidget*>()) {
    const QColor color = labelOf(field)->palette().color(QPalette::WindowText);
    fields.at(color.red() == 200 ? 0 : color.green() == 200 ? 1 : 2) = field;
  }
  return fields;
}

void press(QwtWheel* wheel) { sendMouse(wheel, QEvent::MouseButtonPress, 0, Qt::LeftButton, Qt::LeftButton); }

void dragTo(QwtWheel* wheel, int pixels) { sendMouse(wheel, QEvent::MouseMove, pixels, Qt::NoButton, Qt::LeftButton); }

void release(QwtWheel* wheel) { sendMouse(wheel, QEvent::MouseButtonRelease, 0, Qt::LeftButton, Qt::NoButton); }

void scroll(QWidget* target, int delta, Qt::KeyboardModifiers modifiers) {
  const QPoint at = target->rect().center();
  QWheelEvent event(at, target->mapToGlobal(at), QPoint(), QPoint(0, delta), Qt::NoButton, modifiers, Qt::NoScrollPhase,
                    false);
  QApplication::sendEvent(target, &event);
}

void leave(QWidget* widget) {
  QEvent event(QEvent::Leave);
  QApplication::sendEvent(widget, &event);
}

double draggedTo(double wheelValue) { return wheelValue > 180.0 ? wheelValue - 361.0 : wheelValue; }

bool showActive(QWidget* window) {
  window->show();
  window->activateWindow();
  return QTest::qWaitForWindowActive(window);
}

EntryWindow::EntryWindow(QWidget* underTest) : elsewhere(new QLineEdit) {
  auto* const layout = new QVBoxLayout(this);
  layout->addWidget(underTest);
  layout->addWidget(elsewhere);
  resize(400, 200);
}

bool EntryWindow::activate() {
  const bool active = showActive(this);
  elsewhere->setFocus();
  return active && elsewhere->hasFocus();
}
