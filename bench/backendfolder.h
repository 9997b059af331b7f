// A database of many bodies, made by code, and the program korvex2-backend on it.
#ifndef KORVEX2_BENCH_BACKENDFOLDER_H
#define KORVEX2_BENCH_BACKENDFOLDER_H

#include <QProcess>
#include <QTemporaryDir>

namespace korvex2_bench {

/// The program runs as long as this lives. Ends the benchmark when it does not come up.
class BackendOnBodies {
 public:
  /// @param bodies, markers  standard bodies, each with so many markers; all are calibrated
  /// @param rate             frames of live lines a second
  BackendOnBodies(int bodies, int markers, int rate);
  ~BackendOnBodies();

  quint16 port() const { return port_; }
  /// Processor time of the program so far, in seconds.
  double processorTime() const;

 private:
  QTemporaryDir folder_;
  QProcess program_;
  quint16 port_ = 0;
};

/// Starts a program that prints a line which ends in ":PORT"; returns the port, or 0.
quint16 startListening(QProcess& program, const QString& file, const QStringList& arguments);

}  // namespace korvex2_bench

#endif
