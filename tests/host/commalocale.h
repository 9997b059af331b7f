// Puts the process into a locale whose decimal point is a comma.
#ifndef KORVEX2_TESTS_COMMALOCALE_H
#define KORVEX2_TESTS_COMMALOCALE_H

#include <clocale>
#include <string>

#include <QProcess>
#include <QTemporaryDir>

/// While it lives, the process formats numbers the German way. The locale is made from the system's locale sources
/// (Debian: locales), so no installed locale is needed. Check ready() first.
class CommaLocale {
 public:
  CommaLocale() : previous_(std::setlocale(LC_ALL, nullptr)), previousPath_(qgetenv("LOCPATH")) {
    const QString made = folder_.filePath(QStringLiteral("de_DE.UTF-8"));
    QProcess::execute(QStringLiteral("localedef"), {"-i", "de_DE", "-f", "UTF-8", made});
    qputenv("LOCPATH", folder_.path().toLocal8Bit());
    ready_ = std::setlocale(LC_ALL, "de_DE.UTF-8") != nullptr;
  }
  ~CommaLocale() {
    previousPath_.isNull() ? qunsetenv("LOCPATH") : qputenv("LOCPATH", previousPath_);
    std::setlocale(LC_ALL, previous_.c_str());
  }
  CommaLocale(const CommaLocale&) = delete;
  CommaLocale& operator=(const CommaLocale&) = delete;

  /// True when printf really writes a comma now.
  bool ready() const {
    char text[16];
    std::snprintf(text, sizeof text, "%.1f", 1.5);
    return ready_ && std::string(text) == "1,5";
  }

 private:
  QTemporaryDir folder_;
  std::string previous_;
  QByteArray previousPath_;
  bool ready_ = false;
};

#endif
