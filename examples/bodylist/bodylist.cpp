// Example module: lists the backend's bodies, tells how well one of them is tracked, opens it for adjustment.
#include <QAction>
#include <QDialog>
#include <QLabel>
#include <QListWidget>
#include <QPointer>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>

#include <algorithm>
#include <atomic>
#include <charconv>
#include <cstring>

#include "iomanager.h"
#include "messagereceiver.h"
#include "moduleinterface.h"
#include "requester.h"

/// What a live line says of one body; goes from the delivery thread to the GUI thread as one atomic value.
struct Report {
  int id;         // as in the line, -1: nothing known
  float quality;  // -1: not tracked
};

class BodyListWindow : public QDialog, public Requester, public MessageReceiver {
  Q_OBJECT

 public:
  BodyListWindow(IOManager* channel, QWidget* parent) : QDialog(parent), channel_(channel) {
    setWindowTitle(tr("Bodies"));
    auto* const adjust = new QPushButton(tr("&Adjust..."));
    auto* const column = new QVBoxLayout(this);
    column->addWidget(list_);
    column->addWidget(quality_);
    column->addWidget(adjust);
    connect(adjust, &QPushButton::clicked, this, &BodyListWindow::adjustBody);
    connect(&timer_, &QTimer::timeout, this, &BodyListWindow::showQuality);
    channel_->register_message_receiver("BodyList", this);
  }

  /// The last moment at which the channel may be used.
  void leave() {
    hide();
    channel_->unregister_message_receiver("BodyList", this);
  }

  // Requester: called on the host's delivery thread. Nothing here touches a widget, waits or throws.
  int set_ascii_data(const char*, const char* line) override {
    Report report{wantedId_, -1.0F};
    const char* const end = line + std::strlen(line);
    int block = 0;  // "6d 2 [0 1] [x y z] [9 numbers] [1 -1] [...": a body's first block has id and quality
    for (const char* at = std::strchr(line, '['); at != nullptr; at = std::strchr(at + 1, '[')) {
      int id = -1;
      const auto number = std::from_chars(at + 1, end, id);  // unlike strtod, it knows no decimal comma
      if (block++ % 3 == 0 && number.ec == std::errc() && id == report.id && number.ptr != end) {
        std::from_chars(number.ptr + 1, end, report.quality);
      }
    }
    latest_ = report;
    return 0;
  }
  void set_mea_started() override {}
  void set_mea_stopped() override { latest_ = Report{-1, -1.0F}; }

  // MessageReceiver: called on the GUI thread.
  int transmit_message(int, const char*, const char* text) override {
    if (std::strcmp(text, "reopen") == 0) {  // the adjustment dialog was closed
      show();
    }
    return 0;
  }

 protected:
  void showEvent(QShowEvent*) override {
    readBodies();
    char answer[200];
    channel_->register_requester("6d", this);
    channel_->set_value("output active %s %s yes", "chmon", "6d");
    if (channel_->get_string(answer, "status active") == 0 && std::strcmp(answer, "mea") != 0) {
      started_ = channel_->send_raw_command(answer, "korvex2 tracking start") == 0;
    }
    timer_.start(100);
  }
  void hideEvent(QHideEvent*) override {
    timer_.stop();
    channel_->unregister_requester("6d", this);  // no call is under way when this returns, and none will come
    char answer[200];
    if (started_) {  // a measurement that was there before goes on
      channel_->send_raw_command(answer, "korvex2 tracking stop");
    }
    started_ = false;
    latest_ = Report{-1, -1.0F};
  }

 private:
  void readBodies() {
    list_->clear();
    char description[200] = "";
    int bodies = 0;
    bool read = channel_->get_int(&bodies, "body number_of_bodies standard") == 0;
    for (int body = 1; read && body <= std::min(bodies, 99); ++body) {  // whatever the backend says
      int markers = 0;
      read = channel_->get_string(description, "body desc standard b%2.2d", body) == 0 &&
             channel_->get_int(&markers, "body number_of_marker standard b%2.2d", body) == 0;
      const QString name = QString::fromUtf8(description).remove(QLatin1Char('"'));  // it comes in double quotes
      list_->addItem(read ? tr("%1: %2 (%3 markers)").arg(body).arg(name).arg(markers) : tr("%1: unknown").arg(body));
    }
    if (!read) {
      channel_->send_message("standard", "BodyList", 1, "Error: Unable to read the list of bodies");
    }
    list_->setCurrentRow(0);
    // With a tracked head, the head has the id 0 and every body the next higher one.
    char answer[200];
    const bool head = channel_->get_string(answer, "wandgrip multiuser_with_head") == 0;
    firstId_ = head && std::strcmp(answer, "yes") == 0 ? 1 : 0;
  }

  void showQuality() {
    wantedId_ = list_->currentRow() < 0 ? -1 : list_->currentRow() + firstId_;
    const Report report = latest_;
    const bool known = report.id >= 0 && report.id == wantedId_;  // it may still be about the body chosen before
    quality_->setText(!known               ? tr("No live data")
                      : report.quality < 0 ? tr("Not tracked")
                                           : tr("Tracked, quality %1").arg(double{report.quality}));
  }

  void adjustBody() {
    if (list_->currentRow() < 0) {
      return;
    }
    const QByteArray text = "OpenBodyAdjustmentDialog standard|" + QByteArray::number(list_->currentRow() + 1);
    hide();  // the dialog runs inside the next call and starts its own measurement
    if (channel_->send_message("BodyAdjustmentModule", "BodyList", 1, text.constData()) != 0) {
      show();  // there is no such module; the host has told the operator
    }
  }

  IOManager* const channel_;
  QListWidget* const list_ = new QListWidget;
  QLabel* const quality_ = new QLabel;
  QTimer timer_;
  int firstId_ = 0;                // of the first standard body in the live lines
  bool started_ = false;           // whether the running measurement is this window's
  std::atomic<int> wantedId_{-1};  // shared with the delivery thread, as is the next
  std::atomic<Report> latest_{Report{-1, -1.0F}};
};

class BodyListModule : public QObject, public ModuleInterface {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID KORVEX2_MODULE_INTERFACE_IID)
  Q_INTERFACES(ModuleInterface)

 public:
  ~BodyListModule() override { exit_module(); }

  QString get_module_name() const override { return tr("Body List"); }
  QString get_module_version() const override { return QStringLiteral("v1.0.0"); }

  void set_param(QString name, QVariant value) override {
    if (name == QLatin1String("CommandManager")) {
      channel_ = value.value<IOManager*>();
    } else if (name == QLatin1String("ModuleParent")) {
      parent_ = value.value<QWidget*>();
    }
  }

  QList<_GuiElement*> get_gui_elements() override {
    if (channel_ == nullptr) {
      return {};
    }
    if (entry_.action == nullptr) {
      window_ = new BodyListWindow(channel_, parent_);
      entry_.action = new QAction(tr("Body &list"), this);
      entry_.action->setStatusTip(tr("Show the bodies of the backend"));
      entry_.menu_title = tr("&Calibration");
      entry_.placement_of_menu = 300;  // the menu's place among the menus
      entry_.placement_in_menu = 690;  // the entry's place in its menu: behind "Body adjustment" (680)
      entry_.widget = window_;
      connect(entry_.action, &QAction::triggered, window_, &QWidget::show);
      connect(entry_.action, &QAction::triggered, window_, &QWidget::raise);
    }
    return {&entry_};
  }

  void about_to_exit_module() override {
    if (window_ != nullptr) {
      window_->leave();
    }
  }
  void exit_module() override {
    delete window_;
    entry_.widget = nullptr;
  }

 private:
  IOManager* channel_ = nullptr;
  QWidget* parent_ = nullptr;
  QPointer<BodyListWindow> window_;  // becomes null when the host's window takes it along
  _GuiElement entry_;
};

#include "bodylist.moc"
