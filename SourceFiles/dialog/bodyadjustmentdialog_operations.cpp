// What the single controls of the adjustment dialog do, and when they are enabled.
#include <QKeyEvent>
#include <QMessageBox>
#include <QResizeEvent>
#include <QThread>
#include <QTimer>

#include <utility>

#include "bodyadjustmentdialog.h"
#include "bodytable.h"
#include "glcanvas.h"
#include "helpdialog.h"
#include "setaxisdialog.h"
#include "ui_bodyadjustmentdialog.h"

namespace {
constexpr double initialCameraDistance = 300.0;    // mm
constexpr quint32 labelMnemonicModifiers = 0x211;  // native state of the label's mnemonic, kept as it is
}  // namespace

// --- enabling --------------------------------------------------------------------------------------------------------

void BodyAdjustmentDialog::enable_dialog(bool enable) {
  if (enable) {
    ui_->error_label->clear();
    ui_->error_label->hide();
  } else {
    ui_->error_label->setText(tr("<b><font color=red>Tracking is not available!</font></b>"));
    ui_->error_label->show();
  }
  ui_->reset_view_button->setEnabled(enable);
}

void BodyAdjustmentDialog::lock_dialog(bool lock, bool viewOff) {
  default_button_setting(lock, viewOff);
  for (int page = 0; page < ui_->tabWidget->count(); ++page) {
    ui_->tabWidget->widget(page)->setEnabled(!lock);
  }
}

void BodyAdjustmentDialog::default_button_setting(bool noEditableBody, bool viewOff) {
  ui_->reset_view_button->setEnabled(!viewOff);
  ui_->pos_xyzWidget->setEnabled(!viewOff);
  ui_->ori_xyzWidget->setEnabled(!viewOff);
  if (noEditableBody) {
    ui_->pushButton_due_to_body->setEnabled(false);
    ui_->apply_button->setEnabled(false);
    ui_->body_pos_xyzWidget->setEnabled(false);
    ui_->body_ori_xyzWidget->setEnabled(false);
    ui_->undo_button->setEnabled(false);
    ui_->redo_button->setEnabled(false);
    ui_->set_origin_cog_button->setEnabled(false);
    ui_->pushButton_deleteMarker->setEnabled(false);
    return;
  }
  if (!config_locked_) {
    ui_->pushButton_due_to_body->setEnabled(chosen_.isStandardTarget());
    ui_->body_pos_xyzWidget->setEnabled(chosen_.type != QLatin1String("tt_5dof"));
    ui_->body_ori_xyzWidget->setEnabled(true);
    ui_->set_origin_cog_button->setEnabled(true);
  }
  if (!online_) {
    ui_->pushButton_due_to_room->setEnabled(false);
    ui_->pushButton_due_to_room_0->setEnabled(false);
    ui_->adjust_axes_to_room_button->setEnabled(false);
  }
  ui_->pushButton_deleteMarker->setEnabled(false);  // the canvas enables it when a marker is selected
}

void BodyAdjustmentDialog::active_online_checkbox() {
  QString type;
  QString targetType;
  int number = 0;
  bool calibrated = false;
  if (ui_->body_name->currentIndex() != -1) {
    get_combobox_data(type, number, calibrated, targetType);
  }
  ui_->online_checkbox->setEnabled(measurement_active_ && calibrated);
}

void BodyAdjustmentDialog::apply_button_enable(bool can_apply) { ui_->apply_button->setEnabled(can_apply); }

void BodyAdjustmentDialog::can_set_origin_to_marker_slot(bool can_set) {
  ui_->set_origin_button->setEnabled(can_set && !config_locked_);
}

void BodyAdjustmentDialog::can_set_axis_slot(bool can_set) {
  ui_->set_axis_button->setEnabled(can_set && !config_locked_);
}

void BodyAdjustmentDialog::enable_undo_disable_redo() {
  ui_->undo_button->setEnabled(true);
  ui_->redo_button->setEnabled(false);
}

void BodyAdjustmentDialog::onCanDeleteMarker() {
  const int marker = canvas_->getSelectedMarker();
  const auto count = static_cast<int>(canvas_->getBodyNumMarker());
  ui_->pushButton_deleteMarker->setEnabled(backend_.canDeleteMarkers() && chosen_.id >= 0 && !chosen_.name.isEmpty() &&
                                           count > 4 && marker >= 0 && marker < count);
}

void BodyAdjustmentDialog::update_room_buttons(bool status) {
  if (online_ && !config_locked_ && chosen_.isStandardTarget()) {
    ui_->pushButton_due_to_room->setEnabled(status);
    ui_->pushButton_due_to_room_0->setEnabled(status);
    ui_->adjust_axes_to_room_button->setEnabled(status);
  }
  if (ui_->body_name->currentIndex() != -1 && chosen_.calibrated) {
    ui_->body_icon->setPixmap(status ? green_icon_ : red_icon_);
  }
}

// --- coordinate system
// -------------------------------------------------------------------------------------------------

void BodyAdjustmentDialog::run_canvas_operation(void (GLCanvas::*operation)()) {
  finish_typed_edits();
  (canvas_->*operation)();
  apply_button_enable(true);
  fill_tables_from_canvas();
}

void BodyAdjustmentDialog::set_origin_to_marker() { run_canvas_operation(&GLCanvas::setOriginToMarker); }

void BodyAdjustmentDialog::on_set_origin_cog_button_clicked() { run_canvas_operation(&GLCanvas::set_origin_to_cog); }

void BodyAdjustmentDialog::set_axis() {
  finish_typed_edits();
  if (axis_dialog_->exec() == QDialog::Accepted) {  // its setAxis() has reached the canvas
    apply_button_enable(true);
    fill_tables_from_canvas();
  }
}

void BodyAdjustmentDialog::on_pushButton_due_to_body_clicked() { run_canvas_operation(&GLCanvas::set_due_to_body); }

void BodyAdjustmentDialog::on_adjust_axes_to_room_button_clicked() {
  if (online_) {
    run_canvas_operation(&GLCanvas::setParallelAxes);
  }
}

void BodyAdjustmentDialog::on_pushButton_due_to_room_clicked() {
  if (online_) {
    run_canvas_operation(&GLCanvas::set_due_to_room_cog);
  }
}

void BodyAdjustmentDialog::on_pushButton_due_to_room_0_clicked() {
  if (online_) {
    run_canvas_operation(&GLCanvas::set_due_to_room_marker);
  }
}

void BodyAdjustmentDialog::table_body_change() { fill_tables_from_canvas(); }

void BodyAdjustmentDialog::fill_tables_from_canvas() {
  tables_->update_table_widgets(canvas_->give_data_with_emissions());
}

// --- view
// --------------------------------------------------------------------------------------------------------------

void BodyAdjustmentDialog::on_reset_view_button_clicked() {
  canvas_->setViewOrientation(bsMatrix::getIdentityMatrix());
  if (canvas_->getModificationMode() == ABC_MODIFY_BODY) {
    canvas_->setViewPosition(bsVector(0.0, 0.0, -initialCameraDistance));
  }
}

void BodyAdjustmentDialog::on_help_button_clicked() {
  HelpDialog help(this);
  help.exec();
}

void BodyAdjustmentDialog::toggled_small_markers() {
  display_.smallMarkers = !display_.smallMarkers;
  canvas_->showSmallMarkers(display_.smallMarkers);
}

void BodyAdjustmentDialog::toggled_colored_markers() {
  display_.coloredMarkers = !display_.coloredMarkers;
  canvas_->showColoredMarkers(display_.coloredMarkers);
}

void BodyAdjustmentDialog::toggled_marker_emissions() {
  display_.emissions = !display_.emissions;
  canvas_->showMarkerEmissions(display_.emissions);
}

void BodyAdjustmentDialog::toggled_long_axes() {
  display_.longAxes = !display_.longAxes;
  canvas_->showLongAxes(display_.longAxes);
}

void BodyAdjustmentDialog::toggled_show_COG() {
  display_.cog = !display_.cog;
  canvas_->showCOG(display_.cog);
}

void BodyAdjustmentDialog::toggled_show_XY() {
  display_.xyPlane = !display_.xyPlane;
  canvas_->showXYGrid(display_.xyPlane);
}

void BodyAdjustmentDialog::toggled_show_YZ() {
  display_.yzPlane = !display_.yzPlane;
  canvas_->showYZGrid(display_.yzPlane);
}

void BodyAdjustmentDialog::toggled_show_XZ() {
  display_.xzPlane = !display_.xzPlane;
  canvas_->showXZGrid(display_.xzPlane);
}

void BodyAdjustmentDialog::toggled_show_room_ori() {
  display_.roomOrientation = !display_.roomOrientation;
  canvas_->show_room_ori(display_.roomOrientation);
}

void BodyAdjustmentDialog::toggled_switch_view() {
  const bool toTables = canvas_->isVisible();
  ui_->stackedWidget->setCurrentIndex(toTables ? 1 : 0);
  ui_->reset_view_button->setEnabled(!toTables);
  if (!toTables) {
    canvas_->setFocus();
  }
}

// --- live pose
// ---------------------------------------------------------------------------------------------------------

int BodyAdjustmentDialog::set_ascii_data(const char* tag, const char* line) {
  using Tracked = korvex2::TrackingStream::Tracked;
  Tracked marked = Tracked::Unknown;
  stream_.take(tag, line, &marked);
  if (marked != Tracked::Unknown && QThread::currentThread() == thread()) {
    tell_tracked();
  }
  return 0;  // from the delivery thread the timer tells: a thousand lines a second are not a thousand signals
}

void BodyAdjustmentDialog::tell_tracked() {
  using Tracked = korvex2::TrackingStream::Tracked;
  const auto [tracked, markings] = stream_.look(
      [](const korvex2::TrackingStream::State& state) { return std::make_pair(state.tracked, state.markings); });
  if (markings == told_markings_) {
    return;
  }
  told_markings_ = markings;
  if (tracked != Tracked::Unknown) {
    emit set_chosen_body_tracked(tracked == Tracked::Yes);
  }
}

void BodyAdjustmentDialog::update_track() {
  tell_tracked();
  if (!online_) {
    return;
  }
  const bool standard = chosen_.name == QLatin1String("standard");
  if (!standard && chosen_.name != QLatin1String("wandgrip")) {
    if (!unknown_type_told_) {  // once, not on every tick
      unknown_type_told_ = true;
      QMessageBox::information(this, tr("[Korvexlib] Error"), tr("Unknown body type.\nGoing offline..."),
                               QMessageBox::Ok);
    }
    return;
  }
  if (!canvas_->isBodyLoaded()) {
    return;
  }
  const korvex2::TrackingStream::State state = stream_.state();
  const korvex2::TrackedPose& pose = standard ? state.body : state.device;
  // The store keeps the record's own id, which in multi-user mode "with head" is one more for bodies.
  const bool seen = pose.seenAs(chosen_.id + (standard && with_head_ ? 1 : 0));
  canvas_->setTrackedBodySeen(seen);
  if (seen) {
    canvas_->setTrackedBodyOrientation(pose.rotation);
    canvas_->setTrackedBodyPosition(pose.position);
  }
}

void BodyAdjustmentDialog::on_online_checkbox_clicked() {
  timer_->stop();
  unknown_type_told_ = false;
  if (ui_->online_checkbox->isChecked()) {
    canvas_->setOnline(true);
    online_ = true;
  } else {
    online_ = false;
    canvas_->setOnline(false);
    ui_->pushButton_due_to_room->setEnabled(false);
    ui_->pushButton_due_to_room_0->setEnabled(false);
    ui_->adjust_axes_to_room_button->setEnabled(false);
  }
  timer_->start();
}

// --- emission editor
// ---------------------------------------------------------------------------------------------------

void BodyAdjustmentDialog::on_doubleSpinBox_ex_valueChanged(double) { calcNormalizedUnitVector(); }
void BodyAdjustmentDialog::on_doubleSpinBox_ey_valueChanged(double) { calcNormalizedUnitVector(); }
void BodyAdjustmentDialog::on_doubleSpinBox_ez_valueChanged(double) { calcNormalizedUnitVector(); }
void BodyAdjustmentDialog::on_doubleSpinBox_alpha_valueChanged(double) { calcNormalizedUnitVector(); }

void BodyAdjustmentDialog::calcNormalizedUnitVector() {
  bsVector direction(ui_->doubleSpinBox_ex->value(), ui_->doubleSpinBox_ey->value(), ui_->doubleSpinBox_ez->value());
  direction.normalize();
  ui_->label_ex->setText(QString::number(direction[0], 'f', 3));
  ui_->label_ey->setText(QString::number(direction[1], 'f', 3));
  ui_->label_ez->setText(QString::number(direction[2], 'f', 3));
  canvas_->setMarkerEmission(direction[0], direction[1], direction[2], ui_->doubleSpinBox_alpha->value());
  if (canvas_->isBodyLoaded()) {
    emissions_edited_ = true;
    apply_button_enable(true);
    fill_tables_from_canvas();
    canvas_->updateGL();
  }
}

void BodyAdjustmentDialog::enableEmissionTab(bool /*b*/) {
  // Nothing, on purpose: the page follows the tab widget's general enabling.
}

// --- events
// ------------------------------------------------------------------------------------------------------------

void BodyAdjustmentDialog::keyPressEvent(QKeyEvent* event) {
  switch (event->key()) {
    case Qt::Key_Delete:
      deleteMarker();
      return;
    case Qt::Key_Y:
      if (event->nativeModifiers() == labelMnemonicModifiers) {
        ui_->body_name->setFocus();
      }
      event->accept();
      return;
    default:
      QDialog::keyPressEvent(event);
  }
}

void BodyAdjustmentDialog::resizeEvent(QResizeEvent* event) {
  tables_->set_tables_column_size();
  QDialog::resizeEvent(event);
}
