// Puts the process into a locale whose decimal point is a comma.
#ifndef KORVEX2_TESTS_COMMALOCALE_H
#define KORVEX2_TESTS_COMMALOCALE_H

#include <clocale>
#include <cstdio>
#include <string>

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

/// While it lives, printf and strtod write and read "1,5". The locale is made on the spot by localedef (Debian:
/// libc-bin), so no other locale need be installed. Check ready() first.
class CommaLocale {
 public:
  CommaLocale() : previous_(std::setlocale(LC_NUMERIC, nullptr)), previousPath_(qgetenv("LOCPATH")) {
    QFile source(folder_.filePath(QStringLiteral("source")));
    if (source.open(QIODevice::WriteOnly)) {
      source.write("LC_NUMERIC\ndecimal_point \"<U002C>\"\nthousands_sep \"\"\ngrouping -1\nEND LC_NUMERIC\n");
      source.close();
    }
    QProcess maker;
    // The other categories stay undefined, which is a warning; -c makes the locale all the same.
    maker.start(QStringLiteral("localedef"),
                {"-c", "-i", source.fileName(), "-f", "ANSI_X3.4-1968", folder_.filePath(QStringLiteral("comma"))});
    maker.waitForFinished();
    qputenv("LOCPATH", folder_.path().toLocal8Bit());
    std::setlocale(LC_NUMERIC, "comma");
  }
  ~CommaLocale() {
    previousPath_.isNull() ? qunsetenv("LOCPATH") : qputenv("LOCPATH", previousPath_);
    std::setlocale(LC_NUMERIC, previous_.c_str());
  }
  CommaLocale(const CommaLocale&) = delete;
  CommaLocale& operator=(const CommaLocale&) = delete;

  /// True when printf really writes a comma now.
  bool ready() const {
    char text[16];
    std::snprintf(text, sizeof text, "%.1f", 1.5);
    return std::string(text) == "1,5";
  }

 private:
  QTemporaryDir folder_;
  std::string previous_;
  QByteArray previousPath_;
};

#endif
