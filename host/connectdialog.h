// The dialog in which the operator chooses the backend to work with.
#ifndef KORVEX2_HOST_CONNECTDIALOG_H
#define KORVEX2_HOST_CONNECTDIALOG_H

#include <functional>
#include <memory>

#include <QDialog>
#include <QStringList>

#include "backendaddress.h"
#include "backendconnection.h"

class QComboBox;
class QLabel;
class QProgressBar;
class QPushButton;
class QRadioButton;
class QSpinBox;

namespace korvex2 {

/// The simulated backend in this program, or one on the network. The dialog shows how connecting goes and closes when
/// it is done; when an attempt fails it says why, and the operator may go on trying in the main window, connect to
/// another address, or leave everything as it is.
///
/// Object names: "simulated" and "network" (radio buttons), "address" (editable combo box), "timeout" (spin box,
/// milliseconds), "message" (label), "progress" (bar), "confirm", "keepTrying" and "cancel" (buttons).
class ConnectDialog : public QDialog {
  Q_OBJECT

 public:
  /// What the dialog shows at first.
  struct Start {
    bool simulated = true;         ///< which of the two is chosen
    bool simulatedOffered = true;  ///< whether it can be
    QString address;               ///< empty: the first of the recent ones, or the usual one
    QStringList recent;
    int timeout = 0;  ///< milliseconds
  };
  /// Begins to connect and returns at once.
  using Connector = std::function<std::unique_ptr<BackendConnection>(const BackendAddress& address, int timeout)>;

  ConnectDialog(const Start& start, Connector connector, QWidget* parent = nullptr);
  ~ConnectDialog() override;

  bool isSimulated() const;
  BackendAddress address() const { return address_; }
  int timeout() const;
  /// The connection that came about, or that is still tried.
  std::unique_ptr<BackendConnection> takeConnection();

 private:
  enum class Step { choosing, connecting, failed };

  void build(const Start& start);
  QWidget* buildNetworkChoice(const Start& start);
  void fieldsChanged();
  void confirm();
  void follow();
  void setStep(Step step);
  void showMessage(const QString& text, bool warning);

  Connector connector_;
  const bool simulatedOffered_;
  std::unique_ptr<BackendConnection> connection_;
  BackendAddress address_;
  Step step_ = Step::choosing;
  QRadioButton* simulated_;
  QRadioButton* network_;
  QWidget* networkFields_ = nullptr;
  QComboBox* addresses_;
  QSpinBox* timeout_;
  QLabel* sign_;
  QLabel* message_;
  QProgressBar* progress_;
  QPushButton* confirm_;
  QPushButton* keepTrying_;
};

}  // namespace korvex2

#endif
