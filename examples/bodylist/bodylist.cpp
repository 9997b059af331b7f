// Example module: shows the backend's bodies and how well each is tracked; a double click opens one for adjustment.
#include <QAction>
#include <QPointer>
#include <QTimer>
#include <QTreeWidget>
#include <memory>

#include "iomanager.h"
#include "messagereceiver.h"
#include "moduleinterface.h"
#include "requester.h"

class BodyListModule : public QObject, public ModuleInterface, public Requester, public MessageReceiver {
  Q_OBJECT
  Q_PLUGIN_METADATA(IID KORVEX2_MODULE_INTERFACE_IID)
  Q_INTERFACES(ModuleInterface)

 public:
  QString get_module_name() const override { return tr("Body List"); }
  QString get_module_version() const override { return QStringLiteral("v1.0.0"); }
  void set_param(QString name, QVariant value) override {
    channel_ = name == QLatin1String("CommandManager") ? value.value<IOManager*>() : channel_;
    parent_ = name == QLatin1String("ModuleParent") ? value.value<QWidget*>() : parent_;
  }
  QList<_GuiElement*> get_gui_elements() override {
    if (channel_ != nullptr && entry_.action == nullptr) {
      entry_ = {new QAction(tr("Body &list"), this), 690, tr("&Calibration"), 300, nullptr, 0};
      connect(entry_.action, &QAction::triggered, this, &BodyListModule::open);
    }
    return entry_.action != nullptr ? QList<_GuiElement*>{&entry_} : QList<_GuiElement*>();
  }
  void about_to_exit_module() override { delete list_; }  // ends the subscription, too
  void exit_module() override {}
  int set_ascii_data(const char*, const char* line) override {  // not on the GUI thread: no widgets, no waiting
    std::atomic_store(&line_, std::make_shared<const QByteArray>(line));
    return 0;
  }
  void set_mea_started() override {}
  void set_mea_stopped() override { set_ascii_data("6d", ""); }
  int transmit_message(int, const char*, const char* text) override {  // "reopen": the adjustment was closed
    if (qstrcmp(text, "reopen") == 0) {
      open();
    }
    return 0;
  }

 private:
  void open() {
    delete list_;
    set_mea_stopped();  // what was known before is known no more
    list_ = new QTreeWidget(parent_);
    list_->setWindowFlags(Qt::Dialog);
    list_->setAttribute(Qt::WA_DeleteOnClose);
    list_->setWindowTitle(tr("Bodies"));
    list_->setMinimumSize(460, 240);
    list_->setHeaderLabels({tr("Body"), tr("Markers"), tr("Quality")});
    list_->setColumnWidth(0, 240);
    connect(list_, &QTreeWidget::activated, this, &BodyListModule::adjust, Qt::QueuedConnection);
    connect(list_, &QObject::destroyed, this, [this] { channel_->unregister_requester("6d", this); });
    int bodies = 0;
    bool read = channel_->get_int(&bodies, "body number_of_bodies standard") == 0;
    char answer[200] = "";
    for (int body = 1; read && body <= qMin(bodies, 99); ++body) {  // whatever the backend says
      int markers = 0;
      read = channel_->get_string(answer, "body desc standard b%2.2d", body) == 0 &&
             channel_->get_int(&markers, "body number_of_marker standard b%2.2d", body) == 0;
      const QString name = QString::fromUtf8(answer).remove('"');  // it comes in double quotes
      new QTreeWidgetItem(list_, {read ? name : tr("unknown"), QString::number(markers)});
    }
    if (!read) {
      channel_->send_message("standard", "BodyList", 1, "Error: Unable to read the list of bodies");
    }
    channel_->register_requester("6d", this);
    channel_->send_raw_command(answer, "korvex2 tracking start");
    showQualities();
    list_->show();
  }
  void showQualities() {
    const QList<QByteArray> blocks = std::atomic_load(&line_)->split('[');
    QMap<QByteArray, QString> qualities;
    for (int i = 1; i < blocks.size(); i += 3) {  // "ID QUALITY] ", then position and rotation
      const QList<QByteArray> numbers = blocks[i].left(blocks[i].indexOf(']')).split(' ');
      qualities[numbers[0]] = numbers.value(1) == "-1" ? tr("not tracked") : numbers.value(1);
    }
    for (int row = 0; row < list_->topLevelItemCount(); ++row) {
      list_->topLevelItem(row)->setText(2, qualities.value(QByteArray::number(row), tr("not tracked")));
    }
    QTimer::singleShot(100, list_, [this] { showQualities(); });
  }
  void adjust() {
    if (list_ != nullptr) {  // two presses of Return are two calls, but one list
      const QByteArray number = QByteArray::number(list_->currentIndex().row() + 1);
      delete list_;  // the dialog opens inside send_message, and measures by itself
      channel_->register_message_receiver("BodyList", this);
      channel_->send_message("BodyAdjustmentModule", "BodyList", 1, "OpenBodyAdjustmentDialog standard|" + number);
      channel_->unregister_message_receiver("BodyList", this);
    }
  }
  IOManager* channel_ = nullptr;
  QWidget* parent_ = nullptr;
  QPointer<QTreeWidget> list_;
  _GuiElement entry_;
  std::shared_ptr<const QByteArray> line_;  // the latest; shared with the delivery thread
};
#include "bodylist.moc"
