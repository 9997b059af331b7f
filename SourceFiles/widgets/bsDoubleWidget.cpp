// The value's way between spin box, thumb wheel and client, and the brackets around an operator's edit.
#include "bsDoubleWidget.h"

#include <QApplication>
#include <QBoxLayout>
#include <QBrush>
#include <QColor>
#include <QFont>
#include <QHideEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QPalette>
#include <QPointer>
#include <QSizePolicy>

#include <cmath>

#include "entryfields.h"

namespace {

constexpr double smallestChange = 1e-5;
constexpr int fieldMinimumWidth = 56;
constexpr int fieldSpacing = 5;
constexpr double wheelRange = 360.0;
constexpr double wheelHalfTurn = 180.0;
// One more than the wheel's range. Kept on purpose: a turn through the wheel's seam counts one step more.
constexpr double wheelPeriod = 361.0;

}  // namespace

/// A change that the program makes to the spin box: it moves no focus and leaves no edit open that was not open before.
class bsDoubleWidget::ProgramChange {
 public:
  explicit ProgramChange(bsDoubleWidget* widget)
      : widget_(widget), wasEditing_(widget->editing_), wasProgramChange_(widget->programChange_) {
    widget->programChange_ = true;
  }
  ~ProgramChange() {
    if (widget_ == nullptr) {
      return;  // a client deleted the widget on being told of the change
    }
    widget_->programChange_ = wasProgramChange_;
    if (!wasEditing_) {
      widget_->editing_ = false;
    }
  }
  ProgramChange(const ProgramChange&) = delete;
  ProgramChange& operator=(const ProgramChange&) = delete;

 private:
  QPointer<bsDoubleWidget> widget_;
  bool wasEditing_;
  bool wasProgramChange_;
};

bsDoubleWidget::bsDoubleWidget(QWidget* parent, bsDoubleMode mode, double minimum, double maximum, bool wrapping)
    : QWidget(parent) {
  setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
  createFields(minimum, maximum, wrapping);
  connectFields();
  bsDoubleWidget::setMode(mode);
  bsDoubleWidget::setWheelOrientation(bsDoubleHorizontal);
}

bsDoubleWidget::~bsDoubleWidget() {
  // A window is closed by its base class: the fields would lose the focus there and call what is gone of this object.
  spin_->disconnect(this);
  delete wheel_;
}

void bsDoubleWidget::createFields(double minimum, double maximum, bool wrapping) {
  outerLayout_ = new QBoxLayout(QBoxLayout::LeftToRight, this);
  outerLayout_->setContentsMargins(0, 0, 0, 0);

  label_ = new QLabel(this);
  label_->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
  outerLayout_->addWidget(label_);

  innerLayout_ = new QBoxLayout(QBoxLayout::TopToBottom);
  innerLayout_->setSpacing(fieldSpacing);
  outerLayout_->addLayout(innerLayout_);

  spin_ = new korvex2::EntrySpinBox(this);
  spin_->setAlignment(Qt::AlignRight);
  spin_->setMinimumWidth(fieldMinimumWidth);
  spin_->setWrapping(wrapping);
  spin_->setRange(minimum, wrapping ? maximum - 1.0 : maximum);
  innerLayout_->addWidget(spin_);

  wheel_ = new korvex2::ThumbWheel(
      this,
      [this] {
        if (mouseEditing_) {
          setMouseEditingFinished();
        }
      },
      [this](Qt::FocusReason reason) {
        // The spin box takes the focus for an edit on the wheel, a menu or another window only borrows it.
        const bool left = reason != Qt::PopupFocusReason && reason != Qt::ActiveWindowFocusReason;
        if (left && QApplication::focusWidget() != spin_) {
          finishWheelEdit();
        }
      });
  wheel_->setRange(0.0, wheelRange);
  wheel_->setSingleStep(1.0);
  wheel_->setPageStepCount(10);
  wheel_->setTotalAngle(3600.0);
  wheel_->setWrapping(true);
  wheel_->setTickCount(15);
  innerLayout_->addWidget(wheel_);
}

void bsDoubleWidget::connectFields() {
  connect(spin_, QOverload<double>::of(&QDoubleSpinBox::valueChanged), this, &bsDoubleWidget::spinChanged);
  connect(spin_, &QDoubleSpinBox::editingFinished, this, &bsDoubleWidget::setEditingFinished);
  connect(wheel_, &QwtWheel::valueChanged, this, &bsDoubleWidget::wheelChanged);
  connect(wheel_, &QwtWheel::wheelPressed, this, &bsDoubleWidget::setMouseEditingBegin);
  connect(wheel_, &QwtWheel::wheelReleased, this, &bsDoubleWidget::setMouseEditingFinished);
}

void bsDoubleWidget::languageChange() {}

double bsDoubleWidget::value() const { return spin_->value(); }

QString bsDoubleWidget::label() const { return label_->text(); }

void bsDoubleWidget::setStep(double step) {
  if (!(step >= 0.0)) {
    return;  // the spin box takes no such step, so the maximum must not move either
  }
  const ProgramChange change(this);
  if (spin_->wrapping()) {
    spin_->setMaximum(spin_->maximum() + spin_->singleStep() - step);
  }
  spin_->setSingleStep(step);
}

void bsDoubleWidget::setWrapping(bool wrapping) {
  if (spin_->wrapping() == wrapping) {
    return;
  }
  const ProgramChange change(this);
  spin_->setWrapping(wrapping);
  spin_->setMaximum(spin_->maximum() + (wrapping ? -1.0 : 1.0));
}

void bsDoubleWidget::setLabelColor(const QColor& color) {
  QPalette palette = label_->palette();
  palette.setBrush(QPalette::WindowText, QBrush(color, Qt::SolidPattern));
  label_->setPalette(palette);
}

void bsDoubleWidget::setRange(double minimum, double maximum) {
  if (std::isnan(minimum) || std::isnan(maximum)) {
    return;
  }
  const ProgramChange change(this);
  spin_->setRange(minimum, spin_->wrapping() ? maximum - 1.0 : maximum);
}

void bsDoubleWidget::showLabel(bool show) { label_->setVisible(show); }

void bsDoubleWidget::setLabel(const QString& label) {
  label_->setText(label);
  nameFields();
}

void bsDoubleWidget::setLabelFont(const QFont& font) { label_->setFont(font); }

void bsDoubleWidget::setSuffix(const QString& suffix) { spin_->setSuffix(suffix); }

void bsDoubleWidget::setDecimals(int decimals) {
  const ProgramChange change(this);
  spin_->setDecimals(decimals);
}

void bsDoubleWidget::setValue(double value) {
  if (!std::isfinite(value) || std::abs(value - this->value()) <= smallestChange) {
    return;
  }
  {
    const QSignalBlocker blocker(spin_);
    spin_->setValue(value);
  }
  emit valueChanged(value);
}

void bsDoubleWidget::adjustValue(double inc) {
  if (!std::isfinite(inc) || std::abs(inc) <= smallestChange) {
    return;
  }
  takeFocus();
  spin_->setValue(value() + inc);
}

void bsDoubleWidget::setMode(bsDoubleMode mode) {
  if (mode != bsDoubleSpin && mode != bsDoubleWheel && mode != bsDoubleSpinWheel) {
    return;
  }
  spin_->setVisible(mode != bsDoubleWheel);
  wheel_->setVisible(mode != bsDoubleSpin);
  label_->setBuddy(mode == bsDoubleWheel ? static_cast<QWidget*>(wheel_) : spin_);
}

void bsDoubleWidget::setLabelPosition(bsDoublePosition position) {
  switch (position) {
    case bsDoubleTop:
      outerLayout_->setDirection(QBoxLayout::TopToBottom);
      label_->setAlignment(Qt::AlignCenter);
      break;
    case bsDoubleBottom:
      outerLayout_->setDirection(QBoxLayout::BottomToTop);
      label_->setAlignment(Qt::AlignCenter);
      break;
    case bsDoubleLeft:
      outerLayout_->setDirection(QBoxLayout::LeftToRight);
      label_->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
      break;
    case bsDoubleRight:
      outerLayout_->setDirection(QBoxLayout::RightToLeft);
      label_->setAlignment(Qt::AlignLeft | Qt::AlignVCenter);
      break;
  }
}

void bsDoubleWidget::setWheelPosition(bsDoublePosition position) {
  switch (position) {
    case bsDoubleTop:
      innerLayout_->setDirection(QBoxLayout::BottomToTop);
      break;
    case bsDoubleBottom:
      innerLayout_->setDirection(QBoxLayout::TopToBottom);
      break;
    case bsDoubleLeft:
      innerLayout_->setDirection(QBoxLayout::RightToLeft);
      break;
    case bsDoubleRight:
      innerLayout_->setDirection(QBoxLayout::LeftToRight);
      break;
  }
}

void bsDoubleWidget::setWheelOrientation(bsDoubleOrientation orientation) {
  switch (orientation) {
    case bsDoubleHorizontal:
      setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
      wheel_->setOrientation(Qt::Horizontal);
      wheel_->setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
      wheel_->setMinimumWidth(fieldMinimumWidth);
      innerLayout_->setAlignment(wheel_, Qt::Alignment());
      break;
    case bsDoubleVertical:
      setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Expanding);
      wheel_->setOrientation(Qt::Vertical);
      wheel_->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Expanding);
      wheel_->setMinimumWidth(0);
      innerLayout_->setAlignment(wheel_, Qt::AlignHCenter);
      break;
  }
}

void bsDoubleWidget::reset() {
  const ProgramChange change(this);
  zeroWheel();
  spin_->setValue(0.0);
}

void bsDoubleWidget::resetWheel() { zeroWheel(); }

void bsDoubleWidget::spinChanged(double inc) {
  setEditingBegin();
  emit valueChanged(inc);
}

void bsDoubleWidget::wheelChanged(double inc) {
  double turned = inc - lastWheelValue_;
  if (turned > wheelHalfTurn) {
    lastWheelValue_ += wheelPeriod;
  } else if (turned < -wheelHalfTurn) {
    lastWheelValue_ -= wheelPeriod;
  }
  turned = inc - lastWheelValue_;
  if (!mouseEditing_) {
    wheelEditPending_ = true;
  }
  const unsigned int resets = wheelResets_;
  const int steps = static_cast<int>(turned);
  if (steps != 0) {
    takeFocus();
    spin_->stepBy(steps);
  }
  // A client may have reset the widget on being told of the step; the wheel then stands at zero, not at `inc`.
  lastWheelValue_ = resets == wheelResets_ ? inc : 0.0;
}

void bsDoubleWidget::setEditingBegin() {
  if (editing_) {
    return;
  }
  editing_ = true;
  if (!programChange_) {
    spin_->setFocus();
  }
  emit editingBegin();
}

void bsDoubleWidget::setEditingFinished() {
  // Giving up the focus makes the spin box announce the end of editing once more: the same edit, so it ends once.
  if (!editing_ || finishing_) {
    return;
  }
  const QPointer<bsDoubleWidget> self(this);
  finishing_ = true;
  resetWheel();
  spin_->clearFocus();
  emit editingFinished();
  if (self == nullptr) {
    return;
  }
  editing_ = false;
  wheelEditPending_ = false;
  finishing_ = false;
}

void bsDoubleWidget::setMouseEditingBegin() {
  wheelEditPending_ = false;
  mouseEditing_ = true;
  setEditingBegin();
}

void bsDoubleWidget::setMouseEditingFinished() {
  const QPointer<bsDoubleWidget> self(this);
  setEditingFinished();
  if (self != nullptr) {
    mouseEditing_ = false;
  }
}

void bsDoubleWidget::hideEvent(QHideEvent* event) {
  QWidget::hideEvent(event);
  // A hidden widget sees neither the release nor the leaving mouse that would end an edit on the wheel.
  if (event->spontaneous()) {
    return;
  }
  if (mouseEditing_) {
    setMouseEditingFinished();
  } else {
    finishWheelEdit();
  }
}

void bsDoubleWidget::keyPressEvent(QKeyEvent* event) {
  // Return confirms the typed value; passed on, it would also press the default button of the surrounding dialog.
  const bool confirms = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
  if (confirms && !wheel_->hasFocus()) {
    event->accept();
    return;
  }
  QWidget::keyPressEvent(event);
}

void bsDoubleWidget::leaveEvent(QEvent* event) {
  event->accept();
  finishWheelEdit();
}

void bsDoubleWidget::nameFields() {
  QString name = label().remove(QLatin1Char('&')).trimmed();
  if (name.endsWith(QLatin1Char(':'))) {
    name = name.chopped(1).trimmed();
  }
  spin_->setAccessibleName(name);
  wheel_->setAccessibleName(name);
}

// Before a value changes, not while: another field that loses the focus ends its edit, and its client may reset this
// widget on that occasion.
void bsDoubleWidget::takeFocus() {
  if (!editing_ && !programChange_) {
    spin_->setFocus();
  }
}

void bsDoubleWidget::zeroWheel() {
  ++wheelResets_;
  lastWheelValue_ = 0.0;
  if (wheel_->value() == 0.0) {
    return;  // setting the value would break off a drag that has just begun
  }
  wheel_->setValue(0.0);
}

void bsDoubleWidget::finishWheelEdit() {
  if (!wheelEditPending_) {
    return;
  }
  const QPointer<bsDoubleWidget> self(this);
  setEditingFinished();
  if (self != nullptr) {
    wheelEditPending_ = false;
  }
}
