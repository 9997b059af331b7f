// Deleting a marker in the adjustment dialog; undo and redo, which take a deletion back or repeat it.
#include <QMessageBox>
#include <QPushButton>
#include <QScopedValueRollback>

#include "bodyadjustmentdialog.h"
#include "geometryexchange.h"
#include "glcanvas.h"
#include "ui_bodyadjustmentdialog.h"

bool BodyAdjustmentDialog::doDeleteMarker(int marker) {
  return backend_.deleteMarker(chosen_.address(), chosen_.id + 1, marker + 1);
}

void BodyAdjustmentDialog::saveBodyFileForUndo() {
  undo_backup_ = geometry_;
  backup_body_ = chosen_;
}

void BodyAdjustmentDialog::reloadOldMarkerValues() { geometry_ = undo_backup_; }

void BodyAdjustmentDialog::deleteMarker() {
  const int marker = canvas_->getSelectedMarker();
  if (config_locked_ || chosen_.hasCylinder()) {  // the key would reach what the disabled page does not offer
    return;
  }
  if (!backend_.canDeleteMarkers() || chosen_.id < 0 || chosen_.name.isEmpty() || canvas_->getBodyNumMarker() <= 4 ||
      marker == -1 || marker == -2) {
    return;
  }
  const auto answer = QMessageBox::question(this, tr("Korvex2"), tr("Delete selected marker?"),
                                            QMessageBox::Ok | QMessageBox::Cancel, QMessageBox::Cancel);
  if (answer != QMessageBox::Ok) {
    return;
  }
  const Geometry backupBefore = undo_backup_;
  const ChosenBody ownerBefore = backup_body_;
  saveBodyFileForUndo();
  if (!doDeleteMarker(marker)) {  // reported; the body is as it was, and so is what can be undone
    undo_backup_ = backupBefore;
    backup_body_ = ownerBefore;
    return;
  }
  deleted_marker_ = marker;
  deletion_pending_ = true;
  reload_after_deletion(marker);
  ui_->undo_button->setEnabled(true);
}

// The backend numbers the remaining markers anew. What is shown has to follow even when the body cannot be read, or the
// next deletion would hit a neighbour of the selected marker.
void BodyAdjustmentDialog::forget_deleted_marker() {
  Geometry rest = change_written_ ? geometry_of_canvas() : geometry_;
  const auto deleted = static_cast<std::size_t>(deleting_marker_);
  if (deleted < rest.positions.size()) {
    rest.positions.erase(rest.positions.begin() + deleting_marker_);
  }
  if (deleted < rest.emissions.size()) {
    rest.emissions.erase(rest.emissions.begin() + deleting_marker_);
  }
  load_geometry(std::move(rest));
  apply_button_enable(false);
}

void BodyAdjustmentDialog::reload_after_deletion(int marker) {
  const QScopedValueRollback<int> deleting(deleting_marker_, marker);
  // Kept on purpose: the body is found again by its id taken as a row.
  update_current_body(chosen_.id, true);
}

void BodyAdjustmentDialog::on_pushButton_deleteMarker_clicked() { deleteMarker(); }

bool BodyAdjustmentDialog::deletion_is_last_step() const {
  return deletion_pending_ && !undo_backup_.isEmpty() && !canvas_->getBody().canUndo();
}

bool BodyAdjustmentDialog::deletion_can_be_redone() const {
  return deleted_marker_ >= 0 && !deletion_pending_ && backup_body_.isSame(chosen_) && !canvas_->getBody().canUndo() &&
         !canvas_->getBody().canRedo();
}

void BodyAdjustmentDialog::on_undo_button_clicked() {
  finish_typed_edits();
  if (!deletion_is_last_step()) {
    canvas_->undo();
    if (emissions_edited_) {  // no step of the history, but still to be applied
      apply_button_enable(true);
    }
    if (deletion_is_last_step()) {
      ui_->undo_button->setEnabled(true);
    }
    return;
  }
  korvex2::writeGeometry(backend_, backup_body_.address(), backup_body_.id + 1, undo_backup_.positions,
                         undo_backup_.emissions);
  if (backup_body_.isSame(chosen_)) {
    const bool emissionsEdited = emissions_edited_;
    reloadOldMarkerValues();
    load_geometry(Geometry(geometry_));
    apply_button_enable(false);
    if (emissionsEdited) {  // made after the deletion, so it stays
      calcNormalizedUnitVector();
    }
  }
  undo_backup_ = Geometry();
  deletion_pending_ = false;
  ui_->undo_button->setEnabled(false);
  ui_->redo_button->setEnabled(true);
}

void BodyAdjustmentDialog::on_redo_button_clicked() {
  finish_typed_edits();
  if (!deletion_can_be_redone()) {
    canvas_->redo();
    return;
  }
  const int marker = deleted_marker_;
  saveBodyFileForUndo();
  if (!doDeleteMarker(marker)) {
    undo_backup_ = Geometry();
    return;
  }
  deletion_pending_ = true;  // which keeps redo off until the deletion is undone once more
  reload_after_deletion(marker);
  ui_->redo_button->setEnabled(false);
  ui_->undo_button->setEnabled(true);
}
