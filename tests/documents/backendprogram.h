// The program korvex2-backend on a fresh copy of the shipped bodies, as a child process.
#ifndef KORVEX2_TESTS_BACKENDPROGRAM_H
#define KORVEX2_TESTS_BACKENDPROGRAM_H

#include <gtest/gtest.h>

#include <QDeadlineTimer>
#include <QProcess>
#include <QTemporaryDir>

#include "bodydatabase.h"

class BackendProgram {
 public:
  BackendProgram() {
    const QString source = QStringLiteral(SOURCE_FOLDER "/data");
    EXPECT_EQ(korvex2::copyShippedDatabase(source, database_.path()).toStdString(), "");
    process_.start(BACKEND_PROGRAM, {"--listen", "127.0.0.1:0", "--database", database_.path(), "--rate", "60",
                                     "--trajectory", source + "/trajectories/handheld_xyz.tum"});
    const QDeadlineTimer deadline(10000);
    while (!process_.canReadLine() && process_.waitForReadyRead(static_cast<int>(deadline.remainingTime()))) {
    }
    const QByteArray line = process_.readLine().trimmed();
    EXPECT_TRUE(line.startsWith("korvex2-backend: listening on 127.0.0.1:"))
        << line.toStdString() << process_.readAllStandardError().toStdString();
    port_ = line.mid(line.lastIndexOf(':') + 1).toUShort();
  }
  ~BackendProgram() {
    process_.terminate();
    EXPECT_TRUE(process_.waitForFinished(10000));
    EXPECT_EQ(process_.exitCode(), 0);
    EXPECT_EQ(process_.readAllStandardError().toStdString(), "");
  }

  quint16 port() const { return port_; }

 private:
  QTemporaryDir database_;
  QProcess process_;
  quint16 port_ = 0;
};

#endif
