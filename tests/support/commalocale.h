// Puts the process into a locale whose decimal point is a comma.
#ifndef KORVEX2_TESTS_COMMALOCALE_H
#define KORVEX2_TESTS_COMMALOCALE_H

#include <QByteArray>
#include <QFile>
#include <QLocale>
#include <QProcess>
#include <QTemporaryDir>

#include <clocale>
#include <cstdio>
#include <string>

/// While it lives, printf and strtod write and read "1,5", the thousands are grouped with points, and the toolkit's
/// default locale is German. The locale is made on the spot by localedef (Debian: libc-bin), so that no other need be
/// installed. Check ready() first: a test under the wrong locale shows nothing.
class CommaLocale {
 public:
  CommaLocale() : toolkit_(QLocale()), numeric_(std::setlocale(LC_NUMERIC, nullptr)), path_(qgetenv("LOCPATH")) {
    QFile source(folder_.filePath(QStringLiteral("source")));
    if (source.open(QIODevice::WriteOnly)) {
      source.write("LC_NUMERIC\ndecimal_point \"<U002C>\"\nthousands_sep \"<U002E>\"\ngrouping 3;3\nEND LC_NUMERIC\n");
      source.close();
    }
    QProcess maker;
    // The other categories stay undefined, which is a warning; -c makes the locale all the same.
    maker.start(QStringLiteral("localedef"),
                {"-c", "-i", source.fileName(), "-f", "ANSI_X3.4-1968", folder_.filePath(QStringLiteral("comma"))});
    maker.waitForFinished();
    qputenv("LOCPATH", folder_.path().toLocal8Bit());
    std::setlocale(LC_NUMERIC, "comma");
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
  }
  ~CommaLocale() {
    path_.isNull() ? qunsetenv("LOCPATH") : qputenv("LOCPATH", path_);
    std::setlocale(LC_NUMERIC, numeric_.c_str());
    QLocale::setDefault(toolkit_);
  }
  CommaLocale(const CommaLocale&) = delete;
  CommaLocale& operator=(const CommaLocale&) = delete;

  /// True when printf and the toolkit really write a comma now.
  bool ready() const {
    char text[16];
    std::snprintf(text, sizeof text, "%.1f", 1.5);
    return std::string(text) == "1,5" && QLocale().decimalPoint() == QLatin1Char(',');
  }

 private:
  QTemporaryDir folder_;
  QLocale toolkit_;
  std::string numeric_;
  QByteArray path_;
};

#endif
