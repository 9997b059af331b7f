// The three fields' common setters, their arrangement and their report as one triple.
#include "xyzWidget.h"

#include <QBoxLayout>
#include <QColor>
#include <QGroupBox>
#include <QSignalBlocker>
#include <QSizePolicy>

#include <cmath>

namespace {

constexpr double smallestChange = 1e-5;

bool changes(double newValue, double oldValue) { return std::abs(newValue - oldValue) > smallestChange; }

}  // namespace

xyzWidget::xyzWidget(QWidget* parent, bsDoubleMode mode, double minimum, double maximum, bool wrapping)
    : QWidget(parent) {
  create(mode, minimum, maximum, wrapping);
}

xyzWidget::~xyzWidget() = default;

void xyzWidget::create(bsDoubleMode mode, double minimum, double maximum, bool wrapping) {
  setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
  auto* const fields = new QHBoxLayout(this);
  fields->setContentsMargins(0, 0, 0, 0);
  groupBox_ = new QGroupBox(this);
  groupBox_->hide();
  new QHBoxLayout(groupBox_);

  x_ = new bsDoubleWidget(this, mode, minimum, maximum, wrapping);
  y_ = new bsDoubleWidget(this, mode, minimum, maximum, wrapping);
  z_ = new bsDoubleWidget(this, mode, minimum, maximum, wrapping);
  x_->setLabel(tr("X :"));
  y_->setLabel(tr("Y :"));
  z_->setLabel(tr("Z :"));
  x_->setLabelColor(QColor(200, 0, 0));
  y_->setLabelColor(QColor(0, 200, 0));
  z_->setLabelColor(QColor(0, 0, 200));
  for (bsDoubleWidget* const field : {x_, y_, z_}) {
    connect(field, &bsDoubleWidget::valueChanged, this, &xyzWidget::xyzChanged);
    connect(field, &bsDoubleWidget::editingBegin, this, &xyzWidget::xyzEditingBegin);
    connect(field, &bsDoubleWidget::editingFinished, this, &xyzWidget::xyzEditingFinished);
    fields->addWidget(field);
  }
}

double xyzWidget::xValue() const { return x_->value(); }
double xyzWidget::yValue() const { return y_->value(); }
double xyzWidget::zValue() const { return z_->value(); }

QString xyzWidget::xLabel() const { return x_->label(); }
QString xyzWidget::yLabel() const { return y_->label(); }
QString xyzWidget::zLabel() const { return z_->label(); }

bool xyzWidget::getLayoutHorizontal() const { return horizontal_; }

void xyzWidget::setSuffix(const QString& suffix) {
  x_->setSuffix(suffix);
  y_->setSuffix(suffix);
  z_->setSuffix(suffix);
}

void xyzWidget::setStep(double step) {
  x_->setStep(step);
  y_->setStep(step);
  z_->setStep(step);
}

void xyzWidget::setMode(bsDoubleMode mode) {
  x_->setMode(mode);
  y_->setMode(mode);
  z_->setMode(mode);
}

void xyzWidget::showGroupBox(bool show) {
  if (show) {
    moveFieldsTo(groupBox_);
    layout()->addWidget(groupBox_);
    groupBox_->show();
  } else {
    groupBox_->hide();
    moveFieldsTo(this);
  }
}

void xyzWidget::setGroupTitle(const QString& title) { groupBox_->setTitle(title); }

QString xyzWidget::groupTitle() const { return groupBox_->title(); }

void xyzWidget::setValues(double x, double y, double z) {
  if (!changes(x, xValue()) && !changes(y, yValue()) && !changes(z, zValue())) {
    return;
  }
  {
    const QSignalBlocker xBlocker(x_);
    const QSignalBlocker yBlocker(y_);
    const QSignalBlocker zBlocker(z_);
    x_->setValue(x);
    y_->setValue(y);
    z_->setValue(z);
  }
  emit valueChanged(xValue(), yValue(), zValue());
}

void xyzWidget::adjustValues(double x, double y, double z) { setValues(xValue() + x, yValue() + y, zValue() + z); }

void xyzWidget::setXValue(double value) { x_->setValue(value); }
void xyzWidget::setYValue(double value) { y_->setValue(value); }
void xyzWidget::setZValue(double value) { z_->setValue(value); }

void xyzWidget::setLabels(const QString& xLabel, const QString& yLabel, const QString& zLabel) {
  setXLabel(xLabel);
  setYLabel(yLabel);
  setZLabel(zLabel);
}

// By value: callers outside the library are bound to these signatures.
// NOLINTBEGIN(performance-unnecessary-value-param)
void xyzWidget::setXLabel(QString label) { x_->setLabel(label); }
void xyzWidget::setYLabel(QString label) { y_->setLabel(label); }
void xyzWidget::setZLabel(QString label) { z_->setLabel(label); }
// NOLINTEND(performance-unnecessary-value-param)

void xyzWidget::reset() {
  x_->reset();
  y_->reset();
  z_->reset();
}

void xyzWidget::setLayoutHorizontal(bool horizontal) {
  horizontal_ = horizontal;
  for (bsDoubleWidget* const field : {x_, y_, z_}) {
    field->parentWidget()->layout()->removeWidget(field);
  }
  delete layout();
  delete groupBox_->layout();
  const QBoxLayout::Direction direction = horizontal ? QBoxLayout::LeftToRight : QBoxLayout::TopToBottom;
  auto* const fields = new QBoxLayout(direction, this);
  fields->setContentsMargins(0, 0, 0, 0);
  new QBoxLayout(direction, groupBox_);
  moveFieldsTo(this);
}

void xyzWidget::setXRange(double minimum, double maximum) { x_->setRange(minimum, maximum); }
void xyzWidget::setYRange(double minimum, double maximum) { y_->setRange(minimum, maximum); }
void xyzWidget::setZRange(double minimum, double maximum) { z_->setRange(minimum, maximum); }

void xyzWidget::setXWrapping(bool wrapping) { x_->setWrapping(wrapping); }
void xyzWidget::setYWrapping(bool wrapping) { y_->setWrapping(wrapping); }
void xyzWidget::setZWrapping(bool wrapping) { z_->setWrapping(wrapping); }

void xyzWidget::xyzChanged(double) { emit valueChanged(xValue(), yValue(), zValue()); }

// Takes the fields out of the layout they are in and puts them, visible as before, at the end of the layout of
// `parent`.
void xyzWidget::moveFieldsTo(QWidget* parent) {
  for (bsDoubleWidget* const field : {x_, y_, z_}) {
    field->parentWidget()->layout()->removeWidget(field);
    if (field->parentWidget() != parent) {
      const bool hidden = field->testAttribute(Qt::WA_WState_ExplicitShowHide) && field->isHidden();
      field->setParent(parent);  // hides it
      field->setVisible(!hidden);
    }
    parent->layout()->addWidget(field);
  }
}
