// Construction of the adjustment dialog: form, canvas, tables, menus and everything that is wired to them.
#include "bodyadjustmentdialog.h"

#include <QLayout>
#include <QMenu>
#include <QTimer>

#include "bodyadjustmentmessagereceiver.h"
#include "bodytable.h"
#include "glcanvas.h"
#include "iomanager.h"
#include "setaxisdialog.h"
#include "ui_bodyadjustmentdialog.h"
#include "xyzWidget.h"

namespace {

constexpr int refreshMs = 30;
constexpr int stateIconSize = 18;  // pixels, square
constexpr int pictureHeight = 84;  // of the pictures on the special page, logical pixels

QPixmap stateIcon(const QString& path) {
  const QPixmap picture(path);
  return picture.isNull()
             ? picture
             : picture.scaled(stateIconSize, stateIconSize, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

}  // namespace

BodyAdjustmentDialog::BodyAdjustmentDialog(IOManager* channel, QWidget* parent, BackendVersions* versions)
    : QDialog(parent),
      ui_(std::make_unique<Ui::BodyAdjustmentDialogClass>()),
      backend_(channel, versions),
      multi_user_(backend_),
      channel_(channel) {
  lock_icon_ = QIcon(QStringLiteral(":/lock.png"));
  initMessageReceiver();
  load_icons();
  create_dialog();
  init_widgets();
  connect_widgets();
  default_menu_setting();
  ui_->pushButton_due_to_room->setEnabled(false);
  ui_->pushButton_due_to_room_0->setEnabled(false);
  ui_->adjust_axes_to_room_button->setEnabled(false);
  ui_->pushButton_deleteMarker->setEnabled(false);
  ui_->error_label->hide();
  active_online_checkbox();
}

BodyAdjustmentDialog::~BodyAdjustmentDialog() {
  if (isVisible()) {  // the host ends while the dialog is open: no live line may reach it any more
    hide();
  }
}

void BodyAdjustmentDialog::load_icons() {
  red_icon_ = stateIcon(QStringLiteral(":/red.png"));
  green_icon_ = stateIcon(QStringLiteral(":/green.png"));
  grey_icon_ = stateIcon(QStringLiteral(":/grey.png"));
}

void BodyAdjustmentDialog::initMessageReceiver() {
  receiver_ = new BodyAdjustmentMessageReceiver(this, channel_);
  backend_.registerReceiver(receiver_);
  connect(receiver_, SIGNAL(OpenBodyAdjustmentDialog(QString, QString)), this,
          SLOT(onReceiveOpenBodyAdjustmentDialog(QString, QString)));
}

void BodyAdjustmentDialog::create_dialog() {
  ui_->setupUi(this);
  setWindowFlags(windowFlags() | Qt::WindowMaximizeButtonHint);
  axis_dialog_ = new SetAxisDialog(this);
  timer_ = new QTimer(this);
  timer_->setInterval(refreshMs);
}

void BodyAdjustmentDialog::init_widgets() {
  init_glcanvas();
  init_body_table02();
  ui_->stackedWidget->insertWidget(0, canvas_);
  ui_->stackedWidget->insertWidget(1, tables_);
  ui_->stackedWidget->setCurrentIndex(0);
  setTabOrder(ui_->body_name, canvas_);
  init_special_pictures();

  ui_->set_origin_button->setEnabled(false);
  ui_->set_axis_button->setEnabled(false);
  ui_->adjust_axes_to_room_button->setEnabled(false);
  ui_->pushButton_deleteMarker->setEnabled(false);

  const auto setRanges = [](xyzWidget* entry, double minimum, double maximum, bool wrapping) {
    entry->setXRange(minimum, maximum);
    entry->setYRange(minimum, maximum);
    entry->setZRange(minimum, maximum);
    entry->setXWrapping(wrapping);
    entry->setYWrapping(wrapping);
    entry->setZWrapping(wrapping);
  };
  setRanges(ui_->pos_xyzWidget, -999.99, 999.99, false);
  setRanges(ui_->ori_xyzWidget, 0.0, 360.0, true);
  setRanges(ui_->body_pos_xyzWidget, -999.99, 999.99, false);
  setRanges(ui_->body_ori_xyzWidget, 0.0, 360.0, true);
  ui_->body_pos_xyzWidget->setMode(bsDoubleSpin);
  ui_->body_ori_xyzWidget->setMode(bsDoubleSpin);

  ui_->body_pos_xyzWidget->setLabels(tr("x [mm]"), tr("y [mm]"), tr("z [mm]"));
  ui_->body_ori_xyzWidget->setLabels(tr("x [deg]"), tr("y [deg]"), tr("z [deg]"));
  ui_->pos_xyzWidget->setLabels(tr("x:"), tr("y:"), tr("z:"));
  ui_->ori_xyzWidget->setLabels(tr("x:"), tr("y:"), tr("z:"));
}

void BodyAdjustmentDialog::init_glcanvas() {
  canvas_ = new GLCanvas(this);
  canvas_->setObjectName(QStringLiteral("canvas"));
  canvas_->setAccessibleName(tr("Graphic view"));
  canvas_->setWhatsThis(ui_->page_1->whatsThis());
  canvas_->setModificationMode(ABC_MODIFY_BODY);
  saved_view_ = canvas_->get_view();
  build_context_menu();
  canvas_->set_menu(canvas_menu_);
}

void BodyAdjustmentDialog::init_body_table02() {
  tables_ = new BodyTable(this);
  tables_->setObjectName(QStringLiteral("tables"));
  tables_->layout()->setContentsMargins(0, 0, 0, 0);  // flush with the canvas that they take the place of
  tables_->setWhatsThis(ui_->page_2->whatsThis());
  table_menu_ = new QMenu(this);
  QAction* graphicView = table_menu_->addAction(tr("Graphic view"));
  connect(graphicView, SIGNAL(triggered()), this, SLOT(toggled_switch_view()));
  tables_->set_menu(table_menu_);
}

void BodyAdjustmentDialog::init_special_pictures() {
  const qreal ratio = devicePixelRatioF();
  const auto show = [ratio](QLabel* label, const QString& path) {
    QPixmap picture(path);
    if (picture.isNull()) {
      return;
    }
    picture = picture.scaledToHeight(qRound(pictureHeight * ratio), Qt::SmoothTransformation);
    picture.setDevicePixelRatio(ratio);
    label->setPixmap(picture);
  };
  show(ui_->label_6, QStringLiteral(":/71.png"));
  show(ui_->label_3, QStringLiteral(":/due_to_body.png"));
  show(ui_->label_8, QStringLiteral(":/72.png"));
  show(ui_->label_4, QStringLiteral(":/due_to_room_cog.png"));
  show(ui_->label_10, QStringLiteral(":/72.png"));
  show(ui_->label_5, QStringLiteral(":/due_to_room.png"));
}

void BodyAdjustmentDialog::build_context_menu() {
  canvas_menu_ = new QMenu(this);
  const auto addSwitch = [this](const QString& text, bool checked, const char* slot) {
    QAction* action = canvas_menu_->addAction(text);
    action->setCheckable(true);
    action->setChecked(checked);
    connect(action, SIGNAL(triggered()), this, slot);
    return action;
  };
  const DisplayFlags defaults;
  addSwitch(tr("Small markers"), defaults.smallMarkers, SLOT(toggled_small_markers()));
  addSwitch(tr("Colored markers"), defaults.coloredMarkers, SLOT(toggled_colored_markers()));
  addSwitch(tr("Emissions"), defaults.emissions, SLOT(toggled_marker_emissions()));
  addSwitch(tr("Long axes"), defaults.longAxes, SLOT(toggled_long_axes()));
  addSwitch(tr("Show COG"), defaults.cog, SLOT(toggled_show_COG()));
  canvas_menu_->addSeparator();
  addSwitch(tr("Show XY plane"), defaults.xyPlane, SLOT(toggled_show_XY()));
  addSwitch(tr("Show YZ plane"), defaults.yzPlane, SLOT(toggled_show_YZ()));
  addSwitch(tr("Show XZ plane"), defaults.xzPlane, SLOT(toggled_show_XZ()));
  canvas_menu_->addSeparator();
  QAction* room = addSwitch(tr("Show room orientation"), defaults.roomOrientation, SLOT(toggled_show_room_ori()));
  room->setEnabled(false);
  connect(canvas_, SIGNAL(is_online(bool)), room, SLOT(setEnabled(bool)));
  canvas_menu_->addSeparator();
  QAction* addLine = canvas_menu_->addAction(tr("Add line between markers"), canvas_, SLOT(introduceLine()));
  addLine->setEnabled(false);
  connect(canvas_, SIGNAL(canIntroduceLine(bool)), addLine, SLOT(setEnabled(bool)));
  QAction* deleteLine = canvas_menu_->addAction(tr("Delete line between markers"), canvas_, SLOT(deleteLine()));
  deleteLine->setEnabled(false);
  connect(canvas_, SIGNAL(canDeleteLine(bool)), deleteLine, SLOT(setEnabled(bool)));
  canvas_menu_->addSeparator();
  canvas_menu_->addAction(tr("Data view"), this, SLOT(toggled_switch_view()));
}

void BodyAdjustmentDialog::connect_widgets() {
  connect_view_widgets();
  connect_body_widgets();
  connect(timer_, SIGNAL(timeout()), canvas_, SLOT(updateGL()));
  connect(timer_, SIGNAL(timeout()), this, SLOT(update_track()));
  // Kept on purpose: highlighting an entry of the open list already switches the body.
  connect(ui_->body_name, SIGNAL(highlighted(int)), ui_->body_name, SIGNAL(currentIndexChanged(int)));
  connect(ui_->body_name, SIGNAL(currentIndexChanged(int)), this, SLOT(update_current_body(int)));
  connect(this, SIGNAL(set_chosen_body_tracked(bool)), this, SLOT(update_room_buttons(bool)), Qt::UniqueConnection);
  connect(canvas_, SIGNAL(canDeleteMarker()), this, SLOT(onCanDeleteMarker()));
}

void BodyAdjustmentDialog::connect_view_widgets() {
  connect(ui_->pos_xyzWidget, SIGNAL(valueChanged(double, double, double)), canvas_,
          SLOT(translateView(double, double, double)));
  connect(canvas_, SIGNAL(translateViewRequest(double, double, double)), ui_->pos_xyzWidget,
          SLOT(adjustValues(double, double, double)));
  connect(ui_->pos_xyzWidget, SIGNAL(xyzEditingFinished()), canvas_, SIGNAL(storeViewRequest()));
  connect(ui_->ori_xyzWidget, SIGNAL(valueChanged(double, double, double)), canvas_,
          SLOT(rotateView(double, double, double)));
  connect(canvas_, SIGNAL(rotateViewRequest(double, double, double)), ui_->ori_xyzWidget,
          SLOT(adjustValues(double, double, double)));
  connect(ui_->ori_xyzWidget, SIGNAL(xyzEditingBegin()), canvas_, SLOT(rotateViewBegin()));
  connect(ui_->ori_xyzWidget, SIGNAL(xyzEditingFinished()), canvas_, SLOT(rotateViewEnd()));
  connect(ui_->ori_xyzWidget, SIGNAL(xyzEditingFinished()), canvas_, SIGNAL(storeViewRequest()));
  // The order matters: the view is saved before the entries go back to zero, or their return would move it.
  connect(canvas_, SIGNAL(storeViewRequest()), canvas_, SLOT(saveCurrentView()));
  connect(canvas_, SIGNAL(storeViewRequest()), ui_->ori_xyzWidget, SLOT(reset()));
  connect(canvas_, SIGNAL(storeViewRequest()), ui_->pos_xyzWidget, SLOT(reset()));
}

void BodyAdjustmentDialog::connect_body_widgets() {
  connect(ui_->body_pos_xyzWidget, SIGNAL(valueChanged(double, double, double)), this,
          SLOT(enable_undo_disable_redo()));
  connect(ui_->body_ori_xyzWidget, SIGNAL(valueChanged(double, double, double)), this,
          SLOT(enable_undo_disable_redo()));
  connect(ui_->body_pos_xyzWidget, SIGNAL(valueChanged(double, double, double)), canvas_,
          SLOT(translateBody(double, double, double)));
  connect(ui_->body_pos_xyzWidget, SIGNAL(xyzEditingFinished()), canvas_, SIGNAL(storeBodyRequest()));
  // The canvas stores on storeBodyRequest() since its own construction, so it does before these resets.
  connect(canvas_, SIGNAL(storeBodyRequest()), ui_->body_pos_xyzWidget, SLOT(reset()));
  connect(ui_->body_ori_xyzWidget, SIGNAL(valueChanged(double, double, double)), canvas_,
          SLOT(rotateBody(double, double, double)));
  connect(ui_->body_ori_xyzWidget, SIGNAL(xyzEditingFinished()), canvas_, SIGNAL(storeBodyRequest()));
  connect(canvas_, SIGNAL(storeBodyRequest()), ui_->body_ori_xyzWidget, SLOT(reset()));
  connect(canvas_, SIGNAL(body_change(bool)), this, SLOT(table_body_change()));
  connect(canvas_, SIGNAL(body_change(bool)), this, SLOT(apply_button_enable(bool)));
  connect(ui_->set_origin_button, SIGNAL(clicked()), this, SLOT(set_origin_to_marker()));
  connect(canvas_, SIGNAL(canSetOriginToMarker(bool)), this, SLOT(can_set_origin_to_marker_slot(bool)));
  connect(ui_->set_axis_button, SIGNAL(clicked()), this, SLOT(set_axis()));
  connect(axis_dialog_, SIGNAL(setAxis(abcAxis, abcAxis)), canvas_, SLOT(setAxisToMarkers(abcAxis, abcAxis)));
  connect(canvas_, SIGNAL(canSetAxisToMarkers(bool)), this, SLOT(can_set_axis_slot(bool)));
  connect(canvas_, SIGNAL(canUndo(bool)), ui_->undo_button, SLOT(setEnabled(bool)));
  connect(canvas_, SIGNAL(canRedo(bool)), ui_->redo_button, SLOT(setEnabled(bool)));
}

void BodyAdjustmentDialog::default_menu_setting() {
  display_ = DisplayFlags();
  canvas_->showSmallMarkers(display_.smallMarkers);
  canvas_->showColoredMarkers(display_.coloredMarkers);
  canvas_->showMarkerEmissions(display_.emissions);
  canvas_->showLongAxes(display_.longAxes);
  canvas_->showCOG(display_.cog);
  canvas_->showXYGrid(display_.xyPlane);
  canvas_->showYZGrid(display_.yzPlane);
  canvas_->showXZGrid(display_.xzPlane);
  canvas_->show_room_ori(display_.roomOrientation);
}
