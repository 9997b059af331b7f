// See demooperator.h.
#include "demo/demooperator.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QDoubleSpinBox>
#include <QLineEdit>
#include <QScreen>
#include <QStackedWidget>
#include <QTabBar>
#include <QTabWidget>
#include <QTest>
#include <QTimer>

#include <cmath>
#include <memory>

namespace korvex2 {

namespace {

constexpr double initialCameraDistance = 300.0;  // mm, the module's own
constexpr int settleMs = 120;                    // a few repaints of the view
constexpr int dragStep = 40;                     // pixels of one mouse move

}  // namespace

template <class Widget>
Widget* DemoOperator::find(const QString& name) {
  auto* widget = dialog_ != nullptr ? dialog_->findChild<Widget*>(name) : nullptr;
  if (widget == nullptr) {
    complain(QStringLiteral("the dialog has no %1").arg(name));
  }
  return widget;
}

void DemoOperator::wait(int milliseconds) { QTest::qWait(milliseconds); }

void DemoOperator::takePicture(QWidget* window, const QString& name) {
  wait(settleMs);
  if (window == nullptr) {
    complain(QStringLiteral("nothing to take the picture %1 of").arg(name));
    return;
  }
  const QRect area = window->frameGeometry();
  const QPixmap picture = QApplication::primaryScreen()->grabWindow(0, area.x(), area.y(), area.width(), area.height());
  const QString file =
      QDir(dir_).filePath(QStringLiteral("%1_%2.png").arg(++pictures_, 2, 10, QLatin1Char('0')).arg(name));
  if (!picture.save(file)) {
    complain(QStringLiteral("the picture %1 cannot be written").arg(file));
  }
}

void DemoOperator::chooseBody(const QString& description) { chooseEntry(QStringLiteral("body_name"), description); }

void DemoOperator::chooseEntry(const QString& listName, const QString& description) {
  auto* list = find<QComboBox>(listName);
  if (list == nullptr) {
    return;
  }
  const int row = list->findText(description, Qt::MatchStartsWith);
  if (row < 0) {
    complain(QStringLiteral("there is no %1 in the list").arg(description));
    return;
  }
  QTest::mouseClick(list, Qt::LeftButton);
  wait(QApplication::doubleClickInterval() + settleMs);  // an open list ignores a release that comes too soon
  const QModelIndex entry = list->model()->index(row, list->modelColumn(), list->rootModelIndex());
  list->view()->scrollTo(entry);
  const QPoint place = list->view()->visualRect(entry).center();
  QTest::mouseMove(list->view()->viewport(), place);
  QTest::mouseClick(list->view()->viewport(), Qt::LeftButton, Qt::NoModifier, place);
  wait(settleMs);
  if (list->currentIndex() != row) {
    complain(QStringLiteral("%1 was clicked, but %2 is chosen").arg(description, list->currentText()));
  }
}

void DemoOperator::press(const QString& button) {
  auto* control = find<QAbstractButton>(button);
  if (control == nullptr) {
    return;
  }
  if (!control->isEnabled()) {
    complain(QStringLiteral("%1 is disabled").arg(button));
    return;
  }
  QTest::mouseClick(control, Qt::LeftButton);
  wait(settleMs);
}

void DemoOperator::pressAndAnswer(const QString& button, const std::function<void(QWidget*)>& act) {
  auto answered = std::make_shared<bool>(false);
  QTimer poll;
  QObject::connect(&poll, &QTimer::timeout, [this, act, answered] {
    QWidget* window = QApplication::activeModalWidget();
    if (window != nullptr && window != dialog_ && window->isVisible() && !*answered) {
      *answered = true;
      act(window);
    }
  });
  poll.start(50);
  press(button);
  if (!*answered) {
    complain(QStringLiteral("%1 opened no window").arg(button));
  }
}

void DemoOperator::showPage(int page) {
  if (auto* pages = find<QTabWidget>(QStringLiteral("tabWidget"))) {
    QTest::mouseClick(pages->tabBar(), Qt::LeftButton, Qt::NoModifier, pages->tabBar()->tabRect(page).center());
    wait(settleMs);
  }
}

void DemoOperator::type(const QString& group, int axis, const QString& number) {
  auto* entries = find<QWidget>(group);
  if (entries == nullptr) {
    return;
  }
  const QList<QDoubleSpinBox*> fields = entries->findChildren<QDoubleSpinBox*>();
  if (axis >= fields.size()) {
    complain(QStringLiteral("%1 has no field %2").arg(group).arg(axis));
    return;
  }
  typeInto(fields[axis], number);
}

void DemoOperator::typeNumber(const QString& field, const QString& number) {
  if (auto* entry = find<QDoubleSpinBox>(field)) {
    typeInto(entry, number);
  }
}

void DemoOperator::typeInto(QDoubleSpinBox* field, const QString& number) {
  auto* text = field->findChild<QLineEdit*>();
  QTest::mouseClick(text, Qt::LeftButton);
  QTest::keyClick(text, Qt::Key_A, Qt::ControlModifier);
  QTest::keyClicks(text, QString(number).replace(QLatin1Char('.'), field->locale().decimalPoint()));
  QTest::keyClick(text, Qt::Key_Return);
  wait(settleMs);
}

QWidget* DemoOperator::view() {
  auto* pages = find<QStackedWidget>(QStringLiteral("stackedWidget"));
  return pages != nullptr ? pages->currentWidget() : nullptr;
}

QSizeF DemoOperator::viewSize() {
  const QWidget* widget = view();
  return widget != nullptr ? QSizeF(widget->size()) : QSizeF(1.0, 1.0);
}

bool DemoOperator::viewShows(const QPoint& place, const QColor& colour) {
  QWidget* widget = view();
  if (widget == nullptr || !widget->rect().contains(place)) {
    return false;
  }
  constexpr int beside = 6;  // pixels: the view may be a frame older than the line
  const QPoint corner = widget->mapToGlobal(place) - QPoint(beside, beside);
  const QImage seen =
      QApplication::primaryScreen()->grabWindow(0, corner.x(), corner.y(), 2 * beside + 1, 2 * beside + 1).toImage();
  for (int y = 0; y < seen.height(); ++y) {
    for (int x = 0; x < seen.width(); ++x) {
      const QColor pixel = seen.pixelColor(x, y);
      if (pixel.value() > 40 && pixel.saturation() > 200 && std::abs(pixel.hue() - colour.hue()) < 12) {
        return true;
      }
    }
  }
  return false;
}

void DemoOperator::moveCameraBack(int millimetres) {
  QWidget* canvas = view();
  if (canvas == nullptr) {
    return;
  }
  for (int left = millimetres; left > 0; left -= dragStep) {  // a pixel up is a millimetre away
    const QPoint start(canvas->width() / 2, canvas->height() / 2 + dragStep);
    const QPoint end = start - QPoint(0, qMin(left, dragStep));
    QTest::mousePress(canvas, Qt::LeftButton, Qt::ShiftModifier, start);
    QMouseEvent move(QEvent::MouseMove, end, canvas->mapToGlobal(end), Qt::NoButton, Qt::LeftButton, Qt::ShiftModifier);
    QApplication::sendEvent(canvas, &move);
    QTest::mouseRelease(canvas, Qt::LeftButton, Qt::ShiftModifier, end);
  }
  cameraDistance_ += millimetres;
  wait(settleMs);
}

void DemoOperator::resetCamera() {
  press(QStringLiteral("reset_view_button"));
  cameraDistance_ = initialCameraDistance;
}

void DemoOperator::clickMarker(const Point& position, const Point& centre) {
  QWidget* canvas = view();
  if (canvas == nullptr) {
    return;
  }
  const QPoint place = projected(position, centre, cameraDistance_, canvas->size()).toPoint();
  if (!canvas->rect().contains(place)) {
    complain(QStringLiteral("a marker to click lies outside of the view"));
    return;
  }
  QTest::mouseClick(canvas, Qt::LeftButton, Qt::NoModifier, place);
  wait(settleMs);
}

void DemoOperator::clickEmptySpace() {
  if (QWidget* canvas = view()) {
    QTest::mouseClick(canvas, Qt::LeftButton, Qt::NoModifier, QPoint(3, 3));
    wait(settleMs);
  }
}

bool DemoOperator::isEnabled(const QString& control) {
  auto* widget = find<QWidget>(control);
  return widget != nullptr && widget->isEnabled();
}

}  // namespace korvex2
