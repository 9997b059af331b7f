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
      channel_->register_message_receiver("BodyList", this);
    }
    return entry_.action != nullptr ? QList<_GuiElement*>{&entry_} : QList<_GuiElement*>();
  }
  void about_to_exit_module() override {
    delete list_;
    if (channel_ != nullptr) {  // without a channel there was no entry either
      channel_->unregister_message_receiver("BodyList", this);
    }
  }
  void exit_module() override {}
  // Requester, called on the host's delivery thread: nothing here touches a widget, waits or throws.
  int set_ascii_data(const char*, const char* line) override {
    std::atomic_store(&line_, std::make_shared<const QByteArray>(line));
    return 0;
  }
  void set_mea_started() override {}
  void set_mea_stopped() override { set_ascii_data("6d", ""); }
  // MessageReceiver, called on the GUI thread: the adjustment says "reopen" when its dialog was closed.
  int transmit_message(int, const char*, const char* text) override {
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
    QMap<QByteArray, QByteArray> qualities;
    for (int i = 1; i < blocks.size(); i += 3) {  // "ID QUALITY] ", then position and rotation
      const QList<QByteArray> numbers = blocks[i].left(blocks[i].indexOf(']')).split(' ');
      qualities[numbers[0]] = numbers.value(1);
    }
    for (int row = 0; row < list_->topLevelItemCount(); ++row) {
      const QByteArray quality = qualities.value(QByteArray::number(row), "-1");  // none is not tracked, as -1 is
      list_->topLevelItem(row)->setText(2, quality == "-1" ? tr("not tracked") : QString::fromLatin1(quality));
    }
    QTimer::singleShot(100, list_, [this] { showQualities(); });
  }
  void adjust() {
    const QByteArray number = QByteArray::number(list_->currentIndex().row() + 1);
    delete list_;  // the dialog opens inside the next call, and measures by itself
    channel_->send_message("BodyAdjustmentModule", "BodyList", 1, "OpenBodyAdjustmentDialog standard|" + number);
  }
  IOManager* channel_ = nullptr;
  QWidget* parent_ = nullptr;
  QPointer<QTreeWidget> list_;
  _GuiElement entry_;
  std::shared_ptr<const QByteArray> line_;  // the latest; shared with the delivery thread
};
#include "bodylist.moc"
