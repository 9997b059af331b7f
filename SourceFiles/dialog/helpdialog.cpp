// Set-up of the help window.
#include "helpdialog.h"

#include "ui_helpdialog.h"

HelpDialog::HelpDialog(QWidget* parent)
    : QDialog(parent, Qt::WindowTitleHint | Qt::WindowSystemMenuHint), ui_(std::make_unique<Ui::HelpDialog>()) {
  ui_->setupUi(this);
  for (QLabel* const picture : {ui_->label_5, ui_->label_3, ui_->label_7}) {
    ui_->gridLayout->setAlignment(picture, Qt::AlignCenter);
  }
  connect(ui_->exit_button, &QPushButton::clicked, this, &HelpDialog::close);
}

HelpDialog::~HelpDialog() = default;
