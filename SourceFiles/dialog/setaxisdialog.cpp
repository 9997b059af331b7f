// The choice of three different axes and its announcement.
#include "setaxisdialog.h"

#include <QComboBox>
#include <QPalette>
#include <QPushButton>
#include <QSignalBlocker>
#include <QString>

#include "ui_setaxisdialog.h"

namespace {

constexpr int axisCount = 3;
const char* const axisNames[axisCount] = {"X", "Y", "Z"};

// Any other text counts as X.
int axisOfText(const QString& text) {
  for (int axis = 0; axis < axisCount; ++axis) {
    if (text == QLatin1String(axisNames[axis])) {
      return axis;
    }
  }
  return ABC_AXIS_X;
}

// A field that only informs is disabled; its text is still there to be read.
void keepTextReadable(QComboBox* field) {
  QPalette palette = field->palette();
  for (const QPalette::ColorRole role : {QPalette::Text, QPalette::ButtonText, QPalette::WindowText}) {
    palette.setColor(QPalette::Disabled, role, palette.color(QPalette::Active, role));
  }
  field->setPalette(palette);
}

}  // namespace

SetAxisDialog::SetAxisDialog(QWidget* parent) : QDialog(parent), ui_(std::make_unique<Ui::SetAxisDialog>()) {
  ui_->setupUi(this);
  keepTextReadable(ui_->comboBox_axisToCalculate);
  const auto indexChanged = QOverload<int>::of(&QComboBox::currentIndexChanged);
  connect(ui_->comboBox_axisToSet, indexChanged, this, &SetAxisDialog::onAxisToSetChoice);
  connect(ui_->comboBox_axisToPreserve, indexChanged, this, &SetAxisDialog::onAxisToPreserveChoice);
  connect(ui_->okButton, &QPushButton::clicked, this, &SetAxisDialog::accept);
  connect(ui_->okButton, &QPushButton::clicked, this, &SetAxisDialog::validateSetAxis);
  connect(ui_->cancelButton, &QPushButton::clicked, this, &SetAxisDialog::reject);
  onAxisToSetChoice(ABC_AXIS_X);  // the fields agree from the start, so that an untouched dialog can be confirmed
}

SetAxisDialog::~SetAxisDialog() = default;

void SetAxisDialog::onAxisToSetChoice(int index) {
  if (index < 0 || index >= axisCount) {
    return;
  }
  {
    const QSignalBlocker setBlocker(ui_->comboBox_axisToSet);
    const QSignalBlocker preserveBlocker(ui_->comboBox_axisToPreserve);
    ui_->comboBox_axisToSet->setCurrentIndex(index);
    ui_->comboBox_axisToPreserve->clear();
    for (int axis = 0; axis < axisCount; ++axis) {
      if (axis != index) {
        ui_->comboBox_axisToPreserve->addItem(QLatin1String(axisNames[axis]));
      }
    }
    ui_->comboBox_axisToPreserve->setCurrentIndex(0);
  }
  onAxisToPreserveChoice(0);
}

void SetAxisDialog::onAxisToPreserveChoice(int index) {
  const int preserved = axisOfText(ui_->comboBox_axisToPreserve->itemText(index));
  ui_->comboBox_axisToCalculate->setCurrentIndex(axisCount - preserved - ui_->comboBox_axisToSet->currentIndex());
}

void SetAxisDialog::validateSetAxis() {
  const int axisToSet = ui_->comboBox_axisToSet->currentIndex();
  const int axisToKeep = axisOfText(ui_->comboBox_axisToPreserve->currentText());
  if (axisToSet < 0 || axisToSet == axisToKeep) {
    return;  // laying an axis onto itself is a programming error to whoever receives it
  }
  emit setAxis(static_cast<abcAxis>(axisToSet), static_cast<abcAxis>(axisToKeep));
}
