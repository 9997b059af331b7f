// See livestatuslabel.h.
#include "livestatuslabel.h"

#include <utility>

#include <QTimer>

namespace korvex2 {

LiveStatusLabel::LiveStatusLabel(std::function<LiveStatus()> status, QWidget* parent)
    : QLabel(parent), status_(std::move(status)) {
  setObjectName(QStringLiteral("liveStatus"));
  setToolTip(tr("Whether the backend measures, and how many live tracking lines the modules get"));
  last_ = status_();
  if (!last_.offered) {
    hide();
  }
  sinceLast_.start();
  showStatus(last_, 1.0);
  auto* timer = new QTimer(this);
  connect(timer, &QTimer::timeout, this, &LiveStatusLabel::refresh);
  timer->start(1000);
}

void LiveStatusLabel::refresh() { showStatus(status_(), static_cast<double>(sinceLast_.restart()) / 1000.0); }

void LiveStatusLabel::showStatus(const LiveStatus& status, double seconds) {
  if (status.measuring) {
    const auto lines = static_cast<double>(status.lines - last_.lines);
    setText(tr("Measuring, %1 lines/s").arg(seconds > 0.0 ? qRound(lines / seconds) : 0));
  } else {
    setText(tr("Not measuring"));
  }
  last_ = status;
}

}  // namespace korvex2
