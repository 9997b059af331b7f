// See connectdialog.h.
#include "connectdialog.h"

#include <optional>
#include <utility>

#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QSpinBox>
#include <QStyle>
#include <QStyleOptionButton>
#include <QTimer>
#include <QVBoxLayout>

#include "connectionsettings.h"

namespace korvex2 {

ConnectDialog::ConnectDialog(const Start& start, Connector connector, QWidget* parent)
    : QDialog(parent),
      connector_(std::move(connector)),
      simulatedOffered_(start.simulatedOffered),
      simulated_(new QRadioButton(tr("&Simulated backend in this program"), this)),
      network_(new QRadioButton(tr("Backend on the &network"), this)),
      addresses_(new QComboBox(this)),
      timeout_(new QSpinBox(this)),
      sign_(new QLabel(this)),
      message_(new QLabel(this)),
      progress_(new QProgressBar(this)),
      confirm_(new QPushButton(tr("&Connect"), this)),
      keepTrying_(new QPushButton(tr("&Keep trying"), this)) {
  setObjectName(QStringLiteral("connectDialog"));
  setWindowTitle(tr("Connect"));
  setWindowFlag(Qt::WindowContextHelpButtonHint, false);
  build(start);
  for (QRadioButton* choice : {simulated_, network_}) {
    connect(choice, &QRadioButton::toggled, this, &ConnectDialog::fieldsChanged);
  }
  connect(addresses_, &QComboBox::editTextChanged, this, &ConnectDialog::fieldsChanged);
  connect(timeout_, QOverload<int>::of(&QSpinBox::valueChanged), this, &ConnectDialog::fieldsChanged);
  connect(keepTrying_, &QPushButton::clicked, this, &QDialog::accept);
  fieldsChanged();
  if (network_->isChecked()) {
    addresses_->setFocus();
    addresses_->lineEdit()->selectAll();
  }
}

ConnectDialog::~ConnectDialog() = default;

void ConnectDialog::build(const Start& start) {
  simulated_->setObjectName(QStringLiteral("simulated"));
  network_->setObjectName(QStringLiteral("network"));
  (start.simulated && start.simulatedOffered ? simulated_ : network_)->setChecked(true);

  sign_->setPixmap(style()->standardIcon(QStyle::SP_MessageBoxWarning).pixmap(fontMetrics().height() * 3 / 2));
  sign_->setAlignment(Qt::AlignTop);
  message_->setObjectName(QStringLiteral("message"));
  message_->setTextFormat(Qt::PlainText);
  message_->setWordWrap(true);
  message_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
  message_->setMinimumHeight(fontMetrics().lineSpacing() * 3);  // so that the dialog keeps its size
  auto* messageLine = new QHBoxLayout;
  messageLine->addWidget(sign_, 0, Qt::AlignTop);
  messageLine->addWidget(message_, 1);
  progress_->setObjectName(QStringLiteral("progress"));
  progress_->setRange(0, 0);  // for how long is not known
  progress_->setTextVisible(false);
  for (QWidget* withdrawn : {static_cast<QWidget*>(progress_), static_cast<QWidget*>(sign_)}) {
    QSizePolicy kept = withdrawn->sizePolicy();
    kept.setRetainSizeWhenHidden(withdrawn == progress_);
    withdrawn->setSizePolicy(kept);
  }
  confirm_->setObjectName(QStringLiteral("confirm"));
  confirm_->setDefault(true);
  keepTrying_->setObjectName(QStringLiteral("keepTrying"));
  keepTrying_->setAutoDefault(false);
  keepTrying_->setToolTip(tr("Close this dialog and go on trying; the status bar shows how it stands"));

  auto* buttons = new QDialogButtonBox(QDialogButtonBox::Cancel, this);
  buttons->button(QDialogButtonBox::Cancel)->setObjectName(QStringLiteral("cancel"));
  buttons->addButton(keepTrying_, QDialogButtonBox::ActionRole);
  buttons->addButton(confirm_, QDialogButtonBox::AcceptRole);
  connect(buttons, &QDialogButtonBox::accepted, this, &ConnectDialog::confirm);
  connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

  auto* layout = new QVBoxLayout(this);
  layout->setSpacing(10);
  layout->addWidget(simulated_);
  layout->addWidget(network_);
  layout->addWidget(buildNetworkChoice(start));
  layout->addLayout(messageLine, 1);
  layout->addWidget(progress_);
  layout->addWidget(buttons);
}

QWidget* ConnectDialog::buildNetworkChoice(const Start& start) {
  addresses_->setObjectName(QStringLiteral("address"));
  addresses_->setEditable(true);
  addresses_->setInsertPolicy(QComboBox::NoInsert);
  addresses_->setMinimumContentsLength(34);
  addresses_->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  addresses_->addItems(start.recent);
  addresses_->setEditText(!start.address.isEmpty()  ? start.address
                          : !start.recent.isEmpty() ? start.recent.constFirst()
                                                    : BackendAddress().text());
  addresses_->setToolTip(tr("Host, or host and port: 127.0.0.1, tracker.example:%1, [::1]:%1").arg(defaultBackendPort));
  timeout_->setObjectName(QStringLiteral("timeout"));
  timeout_->setRange(ConnectionSettings::shortestTimeout, ConnectionSettings::longestTimeout);
  timeout_->setSingleStep(100);
  timeout_->setSuffix(tr(" ms"));
  timeout_->setValue(start.timeout > 0 ? start.timeout : ConnectionSettings::usualTimeout);
  timeout_->setToolTip(tr("Time within which a command has to be answered; then the connection is made anew"));

  networkFields_ = new QWidget(this);
  auto* form = new QFormLayout(networkFields_);
  QStyleOptionButton option;
  option.initFrom(network_);
  const int indent = style()->pixelMetric(QStyle::PM_ExclusiveIndicatorWidth, &option, network_) +
                     style()->pixelMetric(QStyle::PM_RadioButtonLabelSpacing, &option, network_);
  form->setContentsMargins(indent, 0, 0, 0);
  form->addRow(tr("&Address:"), addresses_);
  form->addRow(tr("&Time-out:"), timeout_);
  timeout_->setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  return networkFields_;
}

bool ConnectDialog::isSimulated() const { return simulated_->isChecked(); }

int ConnectDialog::timeout() const { return timeout_->value(); }

std::unique_ptr<BackendConnection> ConnectDialog::takeConnection() {
  if (connection_ != nullptr) {
    connection_->setLinkListener({});
  }
  return std::move(connection_);
}

void ConnectDialog::showMessage(const QString& text, bool warning) {
  message_->setText(text);
  sign_->setVisible(warning);
}

void ConnectDialog::fieldsChanged() {
  connection_.reset();  // an attempt with other values is none
  setStep(Step::choosing);
  if (isSimulated()) {
    showMessage(tr("Bodies and live lines come from a simulation; nothing else is needed."), false);
    return;
  }
  QString problem;
  const std::optional<BackendAddress> address = BackendAddress::parse(addresses_->currentText(), &problem);
  confirm_->setEnabled(address.has_value());
  showMessage(problem, address == std::nullopt && !addresses_->currentText().trimmed().isEmpty());
}

void ConnectDialog::setStep(Step step) {
  step_ = step;
  const bool connecting = step == Step::connecting;
  simulated_->setEnabled(simulatedOffered_ && !connecting);
  networkFields_->setEnabled(network_->isChecked() && !connecting);
  network_->setEnabled(!connecting);
  confirm_->setEnabled(!connecting);
  progress_->setVisible(connecting);
  keepTrying_->setVisible(step == Step::failed);
}

void ConnectDialog::confirm() {
  if (isSimulated()) {
    accept();
    return;
  }
  const std::optional<BackendAddress> address = BackendAddress::parse(addresses_->currentText());
  if (!address || step_ == Step::connecting) {
    return;
  }
  address_ = *address;
  setStep(Step::connecting);
  showMessage(tr("Connecting to %1...").arg(address_.text()), false);
  connection_.reset();  // the one before, if any, before its place is taken
  connection_ = connector_(address_, timeout());
  // Called from within the connection, which must not be given away meanwhile.
  connection_->setLinkListener([this] { QTimer::singleShot(0, this, &ConnectDialog::follow); });
  follow();
}

void ConnectDialog::follow() {
  if (connection_ == nullptr) {
    return;
  }
  const LinkStatus status = connection_->linkStatus();
  if (status.state == LinkState::connected) {
    accept();
  } else if (!status.reason.isEmpty()) {
    setStep(Step::failed);
    showMessage(tr("%1 could not be reached: %2.").arg(address_.text(), status.reason), true);
  }
}

}  // namespace korvex2
