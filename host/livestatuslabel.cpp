// See livestatuslabel.h.
#include "livestatuslabel.h"

#include <algorithm>
#include <utility>

#include <QTimer>

namespace korvex2 {

LiveStatusLabel::LiveStatusLabel(std::function<LiveStatus()> status, QWidget* parent)
    : QLabel(parent), status_(std::move(status)) {
  setObjectName(QStringLiteral("liveStatus"));
  last_ = status_();
  sinceLast_.start();
  showStatus(last_, 1.0);
  auto* timer = new QTimer(this);
  connect(timer, &QTimer::timeout, this, &LiveStatusLabel::refresh);
  timer->start(1000);
}

void LiveStatusLabel::refresh() { showStatus(status_(), static_cast<double>(sinceLast_.restart()) / 1000.0); }

void LiveStatusLabel::showStatus(const LiveStatus& status, double seconds) {
  if (status.offered && withdrawn_) {
    show();
  } else if (!status.offered) {
    hide();
  }
  withdrawn_ = !status.offered;
  QString tip = tr("Whether the backend measures, and how many live tracking lines the modules get");
  if (status.droppedDatagrams > 0 || status.droppedLines > 0) {
    tip += tr("\nOf no use so far: %1 frames that came twice, too late or from elsewhere, %2 damaged lines")
               .arg(status.droppedDatagrams)
               .arg(status.droppedLines);
  }
  if (tip != toolTip()) {
    setToolTip(tip);
  }
  if (status.measuring) {
    // Another connection begins to count anew.
    const auto lines = static_cast<double>(status.lines - std::min(status.lines, last_.lines));
    setText(tr("Measuring, %1 lines/s").arg(seconds > 0.0 ? qRound(lines / seconds) : 0));
  } else {
    setText(tr("Not measuring"));
  }
  last_ = status;
}

}  // namespace korvex2
