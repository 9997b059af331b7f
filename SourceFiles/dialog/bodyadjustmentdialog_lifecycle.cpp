// Opening, showing, hiding and closing of the adjustment dialog.
#include <QHideEvent>
#include <QMessageBox>
#include <QPointer>
#include <QShowEvent>
#include <QSignalBlocker>
#include <QTimer>

#include <algorithm>

#include "bodyadjustmentdialog.h"
#include "bodyadjustmentmessagereceiver.h"
#include "bodycatalogue.h"
#include "bodytable.h"
#include "geometryexchange.h"
#include "glcanvas.h"
#include "ui_bodyadjustmentdialog.h"

namespace {

// Room for as many bodies as a backend can have, whatever it answered: kept on purpose, the bookkeeping of a session
// must not depend on an answer that may change while the dialog is open.
constexpr int standardCapacity = 50;
constexpr int deviceCapacity = 20;

}  // namespace

int BodyAdjustmentDialog::update_and_exec() {
  if (running_) {  // a second request while the dialog is open only brings it to the front
    raise();
    activateWindow();
    return QDialog::Rejected;
  }
  running_ = true;
  ask_backend_state();
  reset_bookkeeping();
  deactivateIfMultiUserIsActive();
  fill_comb_box();
  show_tracking_message();
  choose_first_body();

  with_head_ = is_multi_user_with_head();
  stream_.setWithHead(with_head_);
  active_online_checkbox();
  online_ = false;
  ui_->online_checkbox->setChecked(false);
  canvas_->setOnline(false);
  enableEmissionTab(false);
  ui_->pushButton_due_to_room->setEnabled(false);
  ui_->pushButton_due_to_room_0->setEnabled(false);
  const QPointer<BodyAdjustmentDialog> self(this);
  const int result = exec();
  if (!self.isNull()) {  // the host may have ended meanwhile
    running_ = false;
  }
  return result;
}

void BodyAdjustmentDialog::ask_backend_state() {
  config_locked_ = is_config_locked();
  if (config_locked_) {
    setWindowIcon(lock_icon_);
    lock_dialog(true, true);
  } else {
    setWindowIcon(parentWidget() != nullptr ? parentWidget()->windowIcon() : QIcon());
    lock_dialog(false, true);
  }
  tracking_available_ = is_tracking_available();
  enable_dialog(tracking_available_);
  if (tracking_available_) {
    ui_->loadBody->setText(tr("Bod&y"));
    ui_->body_icon->clear();
  }
}

void BodyAdjustmentDialog::reset_bookkeeping() {
  undo_backup_ = Geometry();
  backup_body_ = ChosenBody();
  deleted_marker_ = -1;
  deletion_pending_ = false;
  change_written_ = false;
  original_emissions_.clear();
  saved_transforms_.clear();
  applied_.clear();

  int standardCount = 0;
  int deviceCount = 0;
  if (backend_.numberOfBodies("standard", standardCount)) {
    standardCount = standardCapacity;
  }
  if (backend_.numberOfBodies("wandgrip", deviceCount)) {
    deviceCount = deviceCapacity;
  }
  // A failed query may have left anything in its answer.
  standard_slots_ = qBound(0, standardCount, 1000);
  const auto slotCount = static_cast<std::size_t>(standard_slots_ + qBound(0, deviceCount, 1000));
  saved_transforms_.assign(slotCount, bsMatrix::getIdentityMatrix());
  applied_.assign(slotCount, false);
}

void BodyAdjustmentDialog::choose_first_body() {
  show_no_body();
  if (requesting_module_.isEmpty()) {
    ui_->body_name->setEnabled(true);
    ui_->body_name->setFocus();
    default_button_setting(true, false);
    return;
  }
  adjust_comboBox_body();
  ui_->body_name->setEnabled(false);
  if (canvas_->isBodyLoaded()) {
    default_button_setting(false, false);
  } else if (chosen_.index < 0) {
    default_button_setting(true, false);
  }
}

void BodyAdjustmentDialog::onReceiveOpenBodyAdjustmentDialog(QString src, QString msg) {
  requesting_module_ = src;
  requested_body_ = msg;
  update_and_exec();
}

void BodyAdjustmentDialog::fill_comb_box() {
  // No entry is loaded on the way: a combo box would make its first entry current by itself.
  const QSignalBlocker quiet(ui_->body_name);
  ui_->body_name->clear();
  if (is_multi_user_active() && get_number_of_wandgrip() != 0) {
    ui_->error_label->setText(tr("<b><font color=red>Multi user should be disabled!</font></b>"));
    ui_->error_label->show();
  } else {
    ui_->error_label->clear();
    ui_->error_label->hide();
  }
  for (const korvex2::SelectorEntry& entry : korvex2::listBodies(backend_).entries) {
    ui_->body_name->insertItem(ui_->body_name->count(), QIcon(), entry.text, entry.data);
  }
  ui_->body_name->setCurrentIndex(-1);
}

// Filling the list has used the error label for its own warning; the operator must be able to read both.
void BodyAdjustmentDialog::show_tracking_message() {
  if (tracking_available_) {
    return;
  }
  const QString listWarning = ui_->error_label->text();
  enable_dialog(false);
  if (!listWarning.isEmpty()) {
    ui_->error_label->setText(listWarning + QStringLiteral("<br>") + ui_->error_label->text());
  }
}

bool BodyAdjustmentDialog::adjust_comboBox_body() {
  for (int row = 0; row < ui_->body_name->count(); ++row) {
    if (korvex2::matchesKey(ui_->body_name->itemData(row).toString(), requested_body_)) {
      ui_->body_name->setCurrentIndex(row);
      return true;
    }
  }
  return false;
}

void BodyAdjustmentDialog::showEvent(QShowEvent* event) {
  QDialog::showEvent(event);
  if (event->spontaneous()) {  // back from an icon: the stream was never stopped
    return;
  }
  old_device_format_ = get_wandgrip_old_format();
  const char* const deviceKind = old_device_format_ ? "6dw" : "6dw2";
  backend_.subscribe("6d", this);
  backend_.subscribe(deviceKind, this);
  backend_.activateOutput(deviceKind);
  if (tracking_available_) {
    backend_.startTracking();
  }
  switch (backend_.measurement()) {
    case korvex2::BackendChannel::Measurement::Unknown:
      backend_.reportMeasurementFailure();
      break;
    case korvex2::BackendChannel::Measurement::Running:
      measurement_active_ = true;
      break;
    case korvex2::BackendChannel::Measurement::Stopped:
      break;
  }
  active_online_checkbox();
  timer_->start();
}

void BodyAdjustmentDialog::hideEvent(QHideEvent* event) {
  QDialog::hideEvent(event);
  if (event->spontaneous()) {
    return;
  }
  timer_->stop();
  if (backend_.measurement() == korvex2::BackendChannel::Measurement::Running) {
    if (tracking_available_) {
      backend_.stopTracking();
    }
    measurement_active_ = false;
  }
  active_online_checkbox();
  backend_.unsubscribe("6d", this);
  backend_.unsubscribe(old_device_format_ ? "6dw" : "6dw2", this);
}

void BodyAdjustmentDialog::on_ok_button_clicked() {
  finish_typed_edits();
  if (has_unwritten_change() && !write_chosen_body()) {
    return;  // the failure was reported; closing now would lose the operator's work
  }
  if (canvas_->isBodyLoaded() && (canvas_->isBodyModified() || emissions_edited_)) {
    unload_body_keeping_view();
  }
  close_with(QDialog::Accepted);
}

void BodyAdjustmentDialog::reject() {
  finish_typed_edits();  // Escape leaves an entry open: what was typed is a change like others, and asked for
  if (!confirm_discard()) {
    return;
  }
  unload_body_keeping_view();
  close_with(QDialog::Rejected);
}

// The marker deletion is taken back only when the dialog really closes: "No" leaves everything as it is.
bool BodyAdjustmentDialog::confirm_discard() {
  const bool anyApplied = std::find(applied_.begin(), applied_.end(), true) != applied_.end();
  if (!anyApplied && !has_unwritten_change()) {
    write_deletion_back();
    return true;
  }
  const auto answer = QMessageBox::warning(this, tr("Body Adjustment"), tr("Discard the changes for all bodies?"),
                                           QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
  if (answer != QMessageBox::Yes) {
    return false;
  }
  write_deletion_back();
  set_all_body_to_old_value();
  return true;
}

void BodyAdjustmentDialog::write_deletion_back() {
  if (deletion_pending_ && !undo_backup_.isEmpty()) {
    korvex2::writeGeometry(backend_, backup_body_.address(), backup_body_.id + 1, undo_backup_.positions,
                           undo_backup_.emissions);
  }
}

void BodyAdjustmentDialog::close_with(int result) {
  discard_typed_edits();
  resetIfMultiUserWasActive();
  if (result == QDialog::Accepted) {
    accept();
  } else {
    QDialog::reject();
  }
  requested_body_.clear();
  if (!requesting_module_.isEmpty()) {
    const QByteArray module = requesting_module_.toLatin1();
    requesting_module_.clear();
    backend_.sendReopen(module);
  }
}

void BodyAdjustmentDialog::set_all_body_to_old_value() {
  for (std::size_t row = 0; row < applied_.size(); ++row) {
    if (!applied_[row]) {
      continue;
    }
    ChosenBody body;
    QString type;
    int number = 0;
    bool calibrated = false;
    get_combobox_data(type, number, calibrated, body.type, static_cast<int>(row));
    if (number < 1) {
      backend_.reportWrongBodyId();
      return;
    }
    body.name = type;
    body.id = number - 1;
    bsMatrix back;
    saved_transform(body).fastInvert(back);
    // Emissions as they were belong to the coordinates as they were.
    if (backend_.sendBodyTransform(body.address(), number, back) == korvex2::BackendChannel::CommandResult::Done) {
      write_emissions_back(body);
    }
  }
}

void BodyAdjustmentDialog::write_emissions_back(const ChosenBody& body) {
  if (!backend_.writesEmissions()) {
    return;
  }
  for (const OriginalEmissions& kept : original_emissions_) {
    for (std::size_t i = 0; kept.overwritten && kept.body.isSame(body) && i < kept.values.size(); ++i) {
      backend_.setMarkerEmission(body.address(), body.id + 1, static_cast<int>(i) + 1, kept.values[i]);
    }
  }
}

void BodyAdjustmentDialog::about_to_exit() {
  backend_.unregisterReceiver(receiver_);
  timer_->stop();
}

bool BodyAdjustmentDialog::is_config_locked() { return backend_.isConfigLocked(); }
bool BodyAdjustmentDialog::is_tracking_available() { return backend_.isTrackingAvailable(); }
bool BodyAdjustmentDialog::get_wandgrip_old_format() { return backend_.hasOldDeviceFormat(); }
bool BodyAdjustmentDialog::is_multi_user_active() { return multi_user_.isActive(); }
bool BodyAdjustmentDialog::is_multi_user_with_head() { return multi_user_.isWithHead(); }
void BodyAdjustmentDialog::deactivateIfMultiUserIsActive() { multi_user_.deactivateIfActive(); }
void BodyAdjustmentDialog::resetIfMultiUserWasActive() { multi_user_.resetIfWasActive(); }
int BodyAdjustmentDialog::get_number_of_wandgrip() { return multi_user_.numberOfDevices(); }
