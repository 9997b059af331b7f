// Choosing, applying and reading back bodies in the adjustment dialog.
#include <QMessageBox>
#include <QPushButton>
#include <QSignalBlocker>
#include <QTimer>

#include "bodyadjustmentdialog.h"
#include "bodycatalogue.h"
#include "bodytable.h"
#include "bsDoubleWidget.h"
#include "bsQuaternion.h"
#include "geometryexchange.h"
#include "glcanvas.h"
#include "ui_bodyadjustmentdialog.h"
#include "xyzWidget.h"

namespace {

/// Standard bodies beyond their slots go behind the last slot that a hand-held device can have.
constexpr int standardOverflow = 2000;

/// What needs the room waits for a live line that says that the body is tracked: what was said of another body does not
/// count, and a body of another target type never hears.
void disableRoomButtons(const Ui::BodyAdjustmentDialogClass& ui) {
  for (QPushButton* button : {ui.pushButton_due_to_room, ui.pushButton_due_to_room_0, ui.adjust_axes_to_room_button}) {
    button->setEnabled(false);
  }
}

}  // namespace

void BodyAdjustmentDialog::update_current_body(int index, bool show_msg) {
  if (sender() == ui_->body_name && is_shown_already(index)) {
    return;  // opening the list highlights the entry that is chosen: nothing to switch to, nothing to ask
  }
  stream_.resetQualities();
  if (index == -1) {
    show_no_body();
    restart_timer();
    return;
  }
  if (show_msg && !leave_modified_body(index)) {
    return;
  }
  const ChosenBody previous = chosen_;
  if (!read_row(index, chosen_)) {
    default_button_setting(true, false);
    restart_timer();
    return;
  }
  if (chosen_.calibrated) {
    Geometry fetched;
    ui_->loadBody->setText(chosen_.hasCylinder() ? tr("<b><font color=gray>Bod&y has cylinder marker!</font></b>")
                                                 : tr("Bod&y"));
    connect(this, SIGNAL(set_chosen_body_tracked(bool)), this, SLOT(update_room_buttons(bool)), Qt::UniqueConnection);
    if (!get_body_marker_info(fetched.positions, fetched.emissions, chosen_.name, chosen_.id + 1)) {
      after_failed_fetch(previous);
      return;
    }
    if (!chosen_.isSame(previous)) {
      ui_->body_icon->clear();  // what it says of the previous body is not true of this one
    }
    const bool locked = config_locked_ || chosen_.hasCylinder();
    const bool loaded = load_geometry(std::move(fetched));
    lock_dialog(locked, false);
    if (!loaded) {
      default_button_setting(true, false);
    }
  } else {
    show_uncalibrated_body();
  }
  disableRoomButtons(*ui_);
  stream_.setChosenBody(chosen_.address(), chosen_.id);
  unknown_type_told_ = false;
  apply_button_enable(false);  // until the canvas reports a change of this body
  active_online_checkbox();
  select_row(index);
  restart_timer();
}

bool BodyAdjustmentDialog::is_shown_already(int row) const {
  return row >= 0 && row == chosen_.index && !chosen_.name.isEmpty() && canvas_->isBodyLoaded() == chosen_.calibrated;
}

void BodyAdjustmentDialog::show_no_body() {
  discard_typed_edits();
  tables_->clear_tables();
  canvas_->setOnline(false);
  if (canvas_->isBodyLoaded()) {
    unload_body_keeping_view();
  }
  chosen_ = ChosenBody();
  geometry_ = Geometry();
  disableRoomButtons(*ui_);
  stream_.setChosenBody(QByteArray(), -1);
  stream_.resetQualities();
  ui_->loadBody->setText(tr("Bod&y"));
  ui_->body_icon->clear();
  default_button_setting(true, false);
  active_online_checkbox();
}

// Asks what becomes of the change before another body takes the canvas. False: stay with the present body, because its
// change could not be written and would be lost.
bool BodyAdjustmentDialog::leave_modified_body(int nextIndex) {
  if (!has_unwritten_change()) {
    return true;
  }
  ui_->body_name->hidePopup();  // an open list would keep the mouse to itself
  const auto answer = QMessageBox::warning(this, tr("Body Adjustment"), tr("Apply the changes?"),
                                           QMessageBox::Yes | QMessageBox::No, QMessageBox::Yes);
  if (answer != QMessageBox::Yes) {
    return true;
  }
  const bool written = write_chosen_body();
  if (written) {
    set_applied(chosen_.index);
  } else if (nextIndex != chosen_.index) {
    select_row(chosen_.index);
    restart_timer();
    return false;
  }
  return true;
}

bool BodyAdjustmentDialog::read_row(int index, ChosenBody& body) {
  QString name;
  int number = 0;
  bool calibrated = false;
  QString type = QStringLiteral("tt_std");
  get_combobox_data(name, number, calibrated, type, index);
  if (name.isEmpty() || number < 1) {
    body.name.clear();
    body.id = 0;
    body.calibrated = false;
    body.type = QStringLiteral("tt_std");
    return false;
  }
  body.name = name;
  body.id = number - 1;
  body.index = index;
  body.calibrated = calibrated;
  body.type = type;
  return true;
}

// The canvas still holds the previous body: it stays the chosen one, or a later apply would send its change to the
// body that could not be read.
void BodyAdjustmentDialog::after_failed_fetch(const ChosenBody& previous) {
  if (deleting_marker_ >= 0) {
    forget_deleted_marker();
  } else if (change_written_) {
    forget_written_change();
  }
  chosen_ = previous;
  if (chosen_.index >= 0) {
    ui_->loadBody->setText(!chosen_.calibrated     ? tr("<b><font color=red>Bod&y not calibrated!</font></b>")
                           : chosen_.hasCylinder() ? tr("<b><font color=gray>Bod&y has cylinder marker!</font></b>")
                                                   : tr("Bod&y"));
  }
  select_row(chosen_.index);
  active_online_checkbox();
  restart_timer();
}

void BodyAdjustmentDialog::show_uncalibrated_body() {
  discard_typed_edits();
  ui_->loadBody->setText(tr("<b><font color=red>Bod&y not calibrated!</font></b>"));
  disconnect(this, SIGNAL(set_chosen_body_tracked(bool)), this, SLOT(update_room_buttons(bool)));
  ui_->body_icon->setPixmap(grey_icon_);
  tables_->clear_tables();
  if (canvas_->isBodyLoaded()) {
    unload_body_keeping_view();
  }
  geometry_ = Geometry();
  default_button_setting(true, true);
  enableEmissionTab(false);
}

// Puts fetched geometry into tables and canvas. The camera stays where the operator left it.
bool BodyAdjustmentDialog::load_geometry(Geometry geometry) {
  discard_typed_edits();
  geometry_ = std::move(geometry);
  tables_->update_table_widgets(chosen_.id + 1, &geometry_.positions, &geometry_.emissions);
  if (canvas_->isBodyLoaded()) {
    unload_body_keeping_view();
  }
  change_written_ = false;
  emissions_edited_ = false;
  if (!canvas_->loadBody(&geometry_.positions, &geometry_.emissions)) {
    return false;
  }
  canvas_->set_view(saved_view_);
  if (ui_->online_checkbox->isChecked()) {
    canvas_->setOnline(true);
    disableRoomButtons(*ui_);  // until a pose of what was loaded is shown: the canvas starts without one
  }
  return true;
}

void BodyAdjustmentDialog::unload_body_keeping_view() {
  canvas_->setOnline(false);
  saved_view_ = canvas_->get_view();
  canvas_->unloadBody();
  change_written_ = false;
  emissions_edited_ = false;
}

void BodyAdjustmentDialog::select_row(int row) {
  const QSignalBlocker quiet(ui_->body_name);
  ui_->body_name->setCurrentIndex(row);
}

void BodyAdjustmentDialog::restart_timer() { timer_->start(); }

void BodyAdjustmentDialog::on_apply_button_clicked() {
  finish_typed_edits();
  if (has_unwritten_change()) {
    const int row = ui_->body_name->currentIndex();
    if (tracking_available_) {
      backend_.stopTracking();
    }
    const bool written = write_chosen_body();
    if (written) {
      set_applied(row);
    }
    if (tracking_available_) {
      backend_.startTracking();
    }
    if (written) {  // otherwise the change stays in the canvas, to be tried again
      update_after_apply(row);
    }
  }
  apply_button_enable(false);
}

void BodyAdjustmentDialog::update_after_apply(int index) {
  timer_->stop();
  stream_.resetQualities();
  if (!canvas_->isBodyLoaded() && !canvas_->isBodyModified()) {
    restart_timer();
    return;
  }
  set_applied(chosen_.index);
  const ChosenBody previous = chosen_;
  Geometry fetched;
  if (!read_row(index, chosen_) ||
      !get_body_marker_info(fetched.positions, fetched.emissions, chosen_.name, chosen_.id + 1)) {
    after_failed_fetch(previous);
    return;
  }
  if (!load_geometry(std::move(fetched))) {
    default_button_setting(true, false);
  } else {
    default_button_setting(false, false);
  }
  enableEmissionTab(true);
  stream_.setChosenBody(chosen_.address(), chosen_.id);
  active_online_checkbox();
  restart_timer();
}

bool BodyAdjustmentDialog::has_unwritten_change() const {
  return canvas_->isBodyLoaded() && (canvas_->isBodyModified() || emissions_edited_) && !change_written_;
}

// The coordinate system first; marker values only when emissions were edited, since the backend transforms its markers
// by itself and more precisely than three decimals tell.
bool BodyAdjustmentDialog::write_chosen_body() {
  if (chosen_.name.isEmpty()) {
    return false;
  }
  OriginalEmissions& original = keep_original_emissions();  // the backend turns them with the coordinate system
  if (canvas_->isBodyModified() && !send_command()) {
    return false;
  }
  if (emissions_edited_) {
    original.overwritten = true;
    const Geometry edited = geometry_of_canvas();
    saveBodyToBackend(edited.positions, edited.emissions);
  }
  change_written_ = true;
  return true;
}

BodyAdjustmentDialog::Geometry BodyAdjustmentDialog::geometry_of_canvas() const {
  Geometry geometry;
  for (const AbcMarkerData& marker : canvas_->give_data_with_emissions()) {
    geometry.positions.push_back(marker.position);
    geometry.emissions.push_back({marker.emission_x, marker.emission_y, marker.emission_z, marker.opening_angle});
  }
  return geometry;
}

bool BodyAdjustmentDialog::send_command() {
  const bsMatrix sent = canvas_->give_body_transformation();
  const auto result = backend_.sendBodyTransform(chosen_.address(), chosen_.id + 1, sent);
  if (result == korvex2::BackendChannel::CommandResult::Failed) {
    return false;
  }
  // The backend's coordinates are now p' = sent * p, after all that was sent before.
  bsMatrix& saved = saved_transform(chosen_);
  const bsMatrix sinceOpening = sent * saved;
  saved = sinceOpening;
  if (!undo_backup_.isEmpty() && backup_body_.isSame(chosen_)) {  // the kept markers live in the new coordinates too
    for (bsVector& position : undo_backup_.positions) {
      position = sent * position;
    }
    const bsVector origin = sent * bsVector(0, 0, 0);
    for (Emission& emission : undo_backup_.emissions) {  // directions: turned, not moved
      const bsVector turned = sent * bsVector(emission.x, emission.y, emission.z) - origin;
      emission = {turned.x, turned.y, turned.z, emission.angle};
    }
  }
  return true;
}

// The change is in the backend, but reading the body back failed. The canvas starts anew from what the backend must
// have now, or the same change would be sent a second time.
void BodyAdjustmentDialog::forget_written_change() {
  load_geometry(geometry_of_canvas());
  apply_button_enable(false);
}

// Undoing the coordinate system does not bring back emissions that were overwritten, so the old ones must be kept.
BodyAdjustmentDialog::OriginalEmissions& BodyAdjustmentDialog::keep_original_emissions() {
  for (OriginalEmissions& kept : original_emissions_) {
    if (kept.body.isSame(chosen_)) {
      if (!kept.overwritten && kept.values.size() != present_emissions().size()) {  // a marker is gone for good
        kept.values = present_emissions();
      }
      return kept;
    }
  }
  original_emissions_.push_back({chosen_, present_emissions()});
  return original_emissions_.back();
}

// A marker whose deletion can still be taken back counts among them.
const std::vector<Emission>& BodyAdjustmentDialog::present_emissions() const {
  const bool deletionPending = deletion_pending_ && backup_body_.isSame(chosen_) && !undo_backup_.isEmpty();
  return deletionPending ? undo_backup_.emissions : geometry_.emissions;
}

bsMatrix& BodyAdjustmentDialog::saved_transform(const ChosenBody& body) {
  // Slots of hand-held devices follow those of standard bodies, or the first body of each type would share one.
  const bool device = body.name.compare(QLatin1String("wandgrip"), Qt::CaseInsensitive) == 0;
  const int id = qMax(0, body.id);
  int place = device ? standard_slots_ + id : id;
  if (!device && id >= standard_slots_) {
    place += standardOverflow;
  }
  const auto slot = static_cast<std::size_t>(place);
  if (slot >= saved_transforms_.size()) {  // more bodies than usual, or a failed count query left too little room
    saved_transforms_.resize(slot + 1, bsMatrix::getIdentityMatrix());
  }
  return saved_transforms_[slot];
}

void BodyAdjustmentDialog::set_applied(int row) {
  if (row < 0) {
    return;
  }
  const auto slot = static_cast<std::size_t>(row);
  if (slot >= applied_.size()) {
    applied_.resize(slot + 1, false);
  }
  applied_[slot] = true;
}

void BodyAdjustmentDialog::get_combobox_data(QString& type, int& number, bool& calibrated, QString& targetType,
                                             int index) {
  const int row = index == -1 ? ui_->body_name->currentIndex() : index;
  const auto key = korvex2::parseEntryData(ui_->body_name->itemData(row).toString());
  if (!key) {
    type.clear();
    number = 0;
    calibrated = false;
    return;
  }
  type = key->type;
  number = key->number;
  calibrated = key->calibrated;
  targetType = key->targetType;
}

bool BodyAdjustmentDialog::get_body_marker_info(std::vector<bsVector>& positions, std::vector<Emission>& emissions,
                                                const QString& type, int number) {
  return korvex2::readGeometry(backend_, type.toLatin1(), number, positions, emissions);
}

bool BodyAdjustmentDialog::haveEmissions(const std::vector<Emission>& emissions) const {
  return korvex2::haveEmissions(emissions);
}

void BodyAdjustmentDialog::saveBodyToBackend(const std::vector<bsVector>& positions,
                                             const std::vector<Emission>& emissions) {
  korvex2::writeGeometry(backend_, chosen_.address(), chosen_.id + 1, positions, emissions);
}

bool BodyAdjustmentDialog::is_body_calibrated(const QString& type, int number) {
  return korvex2::isBodyCalibrated(backend_, type.toLatin1(), number);
}

// A shortcut leaves the keyboard focus, and with it the edit, in the entry: what was typed counts as entered.
void BodyAdjustmentDialog::finish_typed_edits() {
  for (bsDoubleWidget* entry : findChildren<bsDoubleWidget*>()) {
    entry->setEditingFinished();
  }
}

// What was typed and never finished belongs to no body: the entries go back to zero without a word.
void BodyAdjustmentDialog::discard_typed_edits() {
  for (xyzWidget* group : {ui_->body_pos_xyzWidget, ui_->body_ori_xyzWidget, ui_->pos_xyzWidget, ui_->ori_xyzWidget}) {
    const QSignalBlocker quiet(group);
    group->reset();
    for (bsDoubleWidget* entry : group->findChildren<bsDoubleWidget*>()) {
      entry->setEditingFinished();
    }
  }
}
