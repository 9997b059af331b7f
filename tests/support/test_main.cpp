// Main function of every test program: one application object, and toolkit wiring warnings fail the running case.
#include <gtest/gtest.h>

#include <QApplication>
#include <QString>

#include <clocale>
#include <cstdio>

namespace {

void failOnWiringWarnings(QtMsgType type, const QMessageLogContext&, const QString& text) {
  std::fprintf(stderr, "%s\n", qPrintable(text));
  static const char* const wiring[] = {"No matching signal", "No such slot",     "No such signal",
                                       "No such method",     "QObject::connect", "Could not parse stylesheet",
                                       "QLayout: "};
  for (const char* words : wiring) {
    if (type != QtDebugMsg && text.contains(QLatin1String(words))) {
      ADD_FAILURE() << "toolkit warning: " << qPrintable(text);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  if (testing::GTEST_FLAG(list_tests)) {
    return RUN_ALL_TESTS();  // listing needs no display
  }
  if (qEnvironmentVariableIsEmpty("DISPLAY") && qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY")) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
  }
  QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  qInstallMessageHandler(failOnWiringWarnings);
  return RUN_ALL_TESTS();
}
