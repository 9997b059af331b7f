// Status bar item that tells whether a measurement runs and how many live lines come.
#ifndef KORVEX2_HOST_LIVESTATUSLABEL_H
#define KORVEX2_HOST_LIVESTATUSLABEL_H

#include <functional>

#include <QElapsedTimer>
#include <QLabel>

#include "backendconnection.h"

namespace korvex2 {

/// Object name "liveStatus". Reads "Not measuring" or "Measuring, 120 lines/s"; brought up to date every second.
/// Hidden where the connection has no live lines to offer. The tool tip tells what was dropped.
class LiveStatusLabel : public QLabel {
  Q_OBJECT

 public:
  /// @param status  asked every second on the GUI thread; must stay callable as long as the label lives
  explicit LiveStatusLabel(std::function<LiveStatus()> status, QWidget* parent = nullptr);

  /// Shows a status that was read `seconds` after the one before.
  void showStatus(const LiveStatus& status, double seconds);

 private:
  void refresh();

  std::function<LiveStatus()> status_;
  LiveStatus last_;
  bool withdrawn_ = false;  // hidden because nothing is offered
  QElapsedTimer sinceLast_;
};

}  // namespace korvex2

#endif
