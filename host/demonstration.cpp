// See demonstration.h.
#include "demonstration.h"

#include <cstdio>

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QPixmap>
#include <QWindow>

#include "mainwindow.h"

namespace korvex2 {

namespace {

/// Lets the window system show the window; gives up waiting after three seconds and grabs what there is.
void waitUntilShown(const QWidget& window) {
  QElapsedTimer clock;
  clock.start();
  while (!(window.windowHandle() != nullptr && window.windowHandle()->isExposed()) && clock.elapsed() < 3000) {
    QApplication::processEvents(QEventLoop::AllEvents, 20);
  }
  QApplication::processEvents();
}

}  // namespace

int runDemonstration(MainWindow& window, const QString& dir) {
  window.show();
  waitUntilShown(window);
  const QString file = QDir(dir).filePath(QStringLiteral("frontend.png"));
  if (!QDir().mkpath(dir) || !window.grab().save(file)) {
    std::fprintf(stderr, "korvex2-frontend: the picture %s cannot be written\n",
                 qPrintable(QDir::toNativeSeparators(file)));
    return 1;
  }
  std::printf("%s\n", qPrintable(QDir::toNativeSeparators(file)));
  return 0;
}

}  // namespace korvex2
