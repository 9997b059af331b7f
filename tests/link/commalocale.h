// A locale with a decimal comma, made for the test where the system has none.
#ifndef KORVEX2_TESTS_COMMALOCALE_H
#define KORVEX2_TESTS_COMMALOCALE_H

#include <gtest/gtest.h>

#include <QTemporaryDir>

#include <clocale>
#include <cstdlib>
#include <string>

/// While it lives, the program runs in German. ok() is false, with the test failed, where that cannot be had.
class CommaLocale {
 public:
  CommaLocale() : before_(std::setlocale(LC_ALL, nullptr)) {
    if (std::setlocale(LC_ALL, "de_DE.UTF-8") == nullptr) {
      make();
    }
    ok_ = std::localeconv()->decimal_point == std::string(",");
    EXPECT_TRUE(ok_) << "no locale with a decimal comma: install the packages locales and libc-bin (localedef)";
  }
  ~CommaLocale() {
    std::setlocale(LC_ALL, before_.c_str());
    if (folder_.isValid()) {
      unsetenv("LOCPATH");
    }
  }
  CommaLocale(const CommaLocale&) = delete;
  CommaLocale& operator=(const CommaLocale&) = delete;
  bool ok() const { return ok_; }

 private:
  void make() {
    ASSERT_TRUE(folder_.isValid());
    const std::string folder = folder_.path().toStdString();
    // localedef's own result is of no use: it also complains about matters of taste. The decimal point tells.
    const int made =
        std::system(("localedef --no-archive -i de_DE -f UTF-8 '" + folder + "/de_DE.UTF-8' >/dev/null 2>&1").c_str());
    setenv("LOCPATH", folder.c_str(), 1);
    EXPECT_NE(std::setlocale(LC_ALL, "de_DE.UTF-8"), nullptr) << "localedef ended with " << made;
  }

  std::string before_;
  QTemporaryDir folder_;
  bool ok_ = false;
};

#endif
