// Status bar item that tells how the connection to the backend stands.
#ifndef KORVEX2_HOST_CONNECTIONSTATUSLABEL_H
#define KORVEX2_HOST_CONNECTIONSTATUSLABEL_H

#include <QLabel>

#include "backendconnection.h"

namespace korvex2 {

/// Object name "connectionStatus". Reads "Simulated backend", "Connected to HOST:PORT", "Reconnecting to HOST:PORT..."
/// or "Connection to HOST:PORT lost", with a sign of another shape and colour for each; the tool tip says more. A long
/// name of a host is shown with dots in its middle.
class ConnectionStatusLabel : public QLabel {
  Q_OBJECT

 public:
  explicit ConnectionStatusLabel(QWidget* parent = nullptr);

  /// @param details  lines of plain text for the tool tip
  void showStatus(const LinkStatus& status, const QStringList& details);

  QSize sizeHint() const override;
  QSize minimumSizeHint() const override;

 signals:
  void clicked();

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;

 private:
  int signSize() const;

  LinkStatus status_;
};

}  // namespace korvex2

#endif
