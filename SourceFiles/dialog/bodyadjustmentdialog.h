// The adjustment dialog: pick a body, see it, redefine its coordinate system, send the result to the backend.
#ifndef BODYADJUSTMENTDIALOG_H
#define BODYADJUSTMENTDIALOG_H

#include <QByteArray>
#include <QDialog>
#include <QIcon>
#include <QList>
#include <QPixmap>
#include <QString>

#include <cstdint>
#include <memory>
#include <vector>

#include "abcmarkerdata.h"
#include "backendchannel.h"
#include "bsFrame.h"
#include "bsMatrix.h"
#include "bsVector.h"
#include "multiusermode.h"
#include "requester.h"
#include "trackingstream.h"

class BodyAdjustmentMessageReceiver;
class BodyTable;
class GLCanvas;
class IOManager;
class QAction;
class QMenu;
class QTimer;
class SetAxisDialog;
struct BackendVersions;
namespace Ui {
class BodyAdjustmentDialogClass;
}

/// Modal dialog on one body at a time. Everything but set_ascii_data() runs on the GUI thread.
///
/// What is kept where: the canvas holds the body as it was read from the backend and the frame T that the operator
/// makes of it; writing sends inverse(T) and reads the body again, so that T starts from identity after every apply.
/// Lengths are millimetres, positions are in the body's own coordinate system as the backend has it.
///
/// Bodies are addressed as the backend does, by type name and number within the type; the selector's row is used only
/// to read an entry, to remember which rows were applied, and where this is said.
class BodyAdjustmentDialog : public QDialog, public Requester {
  Q_OBJECT

 public:
  /// Channel and versions stay the host's and must outlive the dialog; null is taken, every backend call then fails.
  BodyAdjustmentDialog(IOManager* channel, QWidget* parent, BackendVersions* versions);
  ~BodyAdjustmentDialog() override;

  // --- Requester: called on the host's delivery thread ---------------------------------------------------------------
  int set_ascii_data(const char* tag, const char* line) override;
  void set_mea_started() override {}
  void set_mea_stopped() override {}

  /// The host is about to shut down: no message reaches the dialog any more and nothing is refreshed.
  void about_to_exit();

  // --- state of the backend ------------------------------------------------------------------------------------------
  bool is_config_locked();
  bool is_tracking_available();
  bool get_wandgrip_old_format();
  bool is_multi_user_active();
  bool is_multi_user_with_head();
  void deactivateIfMultiUserIsActive();
  void resetIfMultiUserWasActive();
  int get_number_of_wandgrip();

  // --- list of bodies ------------------------------------------------------------------------------------------------
  void fill_comb_box();
  /// Reads a row of the selector back, -1 the current one. A row without data gives an empty type, number 0 and not
  /// calibrated, and leaves targetType alone.
  void get_combobox_data(QString& type, int& number, bool& calibrated, QString& targetType, int index = -1);
  /// Selects the row of the body that another module asked for; returns whether there is one.
  bool adjust_comboBox_body();

  // --- geometry of bodies --------------------------------------------------------------------------------------------
  bool get_body_marker_info(std::vector<bsVector>& positions, std::vector<Emission>& emissions, const QString& type,
                            int number);
  bool haveEmissions(const std::vector<Emission>& emissions) const;
  /// Writes marker values of the chosen body.
  void saveBodyToBackend(const std::vector<bsVector>& positions, const std::vector<Emission>& emissions);
  bool is_body_calibrated(const QString& type, int number);
  /// Deletes a marker (index from 0) of the chosen body in the backend; returns whether the backend did.
  bool doDeleteMarker(int marker);
  /// Keeps the current marker values as the ones to return to; no file is involved.
  void saveBodyFileForUndo();
  void reloadOldMarkerValues();
  /// Sends the chosen body's new coordinate system; returns whether it was delivered.
  bool send_command();
  /// Takes back what was applied since the dialog was opened.
  void set_all_body_to_old_value();
  void deleteMarker();

  // --- enabling ------------------------------------------------------------------------------------------------------
  void enable_dialog(bool enable);
  void lock_dialog(bool lock, bool viewOff);
  void default_button_setting(bool noEditableBody, bool viewOff);
  void active_online_checkbox();

 signals:
  void set_chosen_body_tracked(bool status);

 public slots:
  int update_and_exec();
  void on_ok_button_clicked();
  void on_apply_button_clicked();
  void on_help_button_clicked();
  void on_reset_view_button_clicked();
  void on_online_checkbox_clicked();
  void on_undo_button_clicked();
  void on_redo_button_clicked();
  void on_pushButton_deleteMarker_clicked();
  void on_set_origin_cog_button_clicked();
  void on_adjust_axes_to_room_button_clicked();
  void on_pushButton_due_to_body_clicked();
  void on_pushButton_due_to_room_clicked();
  void on_pushButton_due_to_room_0_clicked();
  void on_doubleSpinBox_ex_valueChanged(double);
  void on_doubleSpinBox_ey_valueChanged(double);
  void on_doubleSpinBox_ez_valueChanged(double);
  void on_doubleSpinBox_alpha_valueChanged(double);
  void calcNormalizedUnitVector();
  void enableEmissionTab(bool b);
  void keyPressEvent(QKeyEvent* event) override;
  void showEvent(QShowEvent* event) override;
  void hideEvent(QHideEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
  void onReceiveOpenBodyAdjustmentDialog(QString src, QString msg);
  void reject() override;
  void can_set_origin_to_marker_slot(bool can_set);
  void set_origin_to_marker();
  void can_set_axis_slot(bool can_set);
  void set_axis();
  void update_current_body(int index, bool show_msg = true);
  void update_after_apply(int index);
  void update_track();
  void toggled_small_markers();
  void toggled_colored_markers();
  void toggled_marker_emissions();
  void toggled_long_axes();
  void toggled_show_COG();
  void toggled_show_XY();
  void toggled_show_YZ();
  void toggled_show_XZ();
  void toggled_show_room_ori();
  void toggled_switch_view();
  void table_body_change();
  void apply_button_enable(bool can_apply = true);
  void update_room_buttons(bool status);
  void enable_undo_disable_redo();
  void onCanDeleteMarker();

 private:
  /// The body that the operator chose, as its row told.
  struct ChosenBody {
    QString name;    // type name, empty when no body is chosen
    int id = -1;     // number minus one, -1 when no body is chosen
    int index = -1;  // row in the selector
    bool calibrated = false;
    QString type = QStringLiteral("tt_std");  // target type
    bool isSame(const ChosenBody& other) const { return name == other.name && id == other.id; }
    QByteArray address() const { return name.toLatin1(); }
    bool isStandardTarget() const { return type == QLatin1String("tt_std"); }
    bool hasCylinder() const { return type.endsWith(QLatin1String("_cyl")); }
  };
  /// A body's marker values as the backend gave them.
  struct Geometry {
    std::vector<bsVector> positions;
    std::vector<Emission> emissions;
    bool isEmpty() const { return positions.empty(); }
  };
  /// Emissions of a body as they were before the first apply, in the coordinate system of that time.
  struct OriginalEmissions {
    ChosenBody body;
    std::vector<Emission> values;
    bool overwritten = false;  // an apply wrote others
  };
  /// What the canvas shows, kept here and mirrored by the context menu.
  struct DisplayFlags {
    bool smallMarkers = false;
    bool coloredMarkers = true;
    bool emissions = true;
    bool longAxes = false;
    bool cog = false;
    bool xyPlane = true;
    bool yzPlane = false;
    bool xzPlane = false;
    bool roomOrientation = false;
  };

  // construction
  void load_icons();
  void initMessageReceiver();
  void create_dialog();
  void init_widgets();
  void init_glcanvas();
  void init_body_table02();
  void init_special_pictures();
  void build_context_menu();
  void connect_widgets();
  void connect_view_widgets();
  void connect_body_widgets();
  void default_menu_setting();

  // opening and closing
  void ask_backend_state();
  void reset_bookkeeping();
  void choose_first_body();
  void show_tracking_message();
  void close_with(int result);
  bool confirm_discard();
  void write_deletion_back();
  void write_emissions_back(const ChosenBody& body);

  // bodies
  bool read_row(int index, ChosenBody& body);
  bool is_shown_already(int row) const;
  void show_no_body();
  bool leave_modified_body(int nextIndex);
  void show_uncalibrated_body();
  bool load_geometry(Geometry geometry);
  void unload_body_keeping_view();
  void after_failed_fetch(const ChosenBody& previous);
  void select_row(int row);
  void restart_timer();
  bool has_unwritten_change() const;
  bool write_chosen_body();
  void forget_written_change();
  void forget_deleted_marker();
  OriginalEmissions& keep_original_emissions();
  const std::vector<Emission>& present_emissions() const;
  void reload_after_deletion(int marker);
  Geometry geometry_of_canvas() const;
  void fill_tables_from_canvas();
  void finish_typed_edits();
  void discard_typed_edits();
  bool deletion_is_last_step() const;
  bool deletion_can_be_redone() const;
  void set_applied(int row);
  bsMatrix& saved_transform(const ChosenBody& body);
  void tell_tracked();
  void run_canvas_operation(void (GLCanvas::*operation)());

  std::unique_ptr<Ui::BodyAdjustmentDialogClass> ui_;
  mutable korvex2::BackendChannel backend_;
  korvex2::MultiUserMode multi_user_;
  korvex2::TrackingStream stream_;
  IOManager* channel_;

  bool config_locked_ = false;
  bool tracking_available_ = false;
  bool with_head_ = false;
  bool old_device_format_ = false;
  bool measurement_active_ = false;
  bool online_ = false;
  bool running_ = false;           // inside the modal run
  bool change_written_ = false;    // the change in the canvas is in the backend, only reading it back is outstanding
  bool emissions_edited_ = false;  // emissions in the canvas are not those of the backend
  bool unknown_type_told_ = false;

  std::uint64_t told_markings_ = 0;  // markings of the stream that set_chosen_body_tracked() has told of

  ChosenBody chosen_;
  Geometry geometry_;              // of the body in the canvas, as fetched
  Geometry undo_backup_;           // the body before the last marker deletion, in the backend's present coordinates
  ChosenBody backup_body_;         // whose undo_backup_ is
  int deleted_marker_ = -1;        // whose deletion can be redone
  int deleting_marker_ = -1;       // while the body is read again after its deletion
  bool deletion_pending_ = false;  // a deletion is in the backend and was not undone
  std::vector<bsMatrix> saved_transforms_;  // by body slot: what was applied since the opening
  std::vector<OriginalEmissions> original_emissions_;
  std::vector<bool> applied_;  // by row
  int standard_slots_ = 0;     // slots of standard bodies; those of hand-held devices follow
  bsFrame saved_view_;
  QString requesting_module_;
  QString requested_body_;

  GLCanvas* canvas_ = nullptr;
  BodyTable* tables_ = nullptr;
  SetAxisDialog* axis_dialog_ = nullptr;
  BodyAdjustmentMessageReceiver* receiver_ = nullptr;
  QMenu* canvas_menu_ = nullptr;
  QMenu* table_menu_ = nullptr;
  QTimer* timer_ = nullptr;
  DisplayFlags display_;
  QIcon lock_icon_;
  QPixmap red_icon_;
  QPixmap green_icon_;
  QPixmap grey_icon_;
};

#endif
