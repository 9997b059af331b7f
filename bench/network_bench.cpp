// Times the dialog on a backend on the network: opening it, against a plain exchange of the same lines, and following.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QDialog>
#include <QTest>

#include <sched.h>
#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <clocale>
#include <cstddef>
#include <cstdlib>
#include <ctime>
#include <memory>
#include <vector>

#include "backendfolder.h"
#include "measuredhost.h"
#include "pingpong.h"
#include "requester.h"

namespace {

using namespace korvex2_bench;
using Clock = std::chrono::steady_clock;

constexpr int bodies = 70;
constexpr int markers = 30;
constexpr int followedBodies = 50;  // as many as find room in a line
constexpr int linesPerSecond = 1000;
constexpr int followedMs = 5000;

/// Which processors the programs of a case run on. Left to the system, two programs that talk to each other sometimes
/// share one and sometimes do not, for as long as they run, and a round trip takes some 7 or some 60 microseconds.
enum class Processors {
  One,  ///< all on the same: what a round trip costs to compute
  Two   ///< the host on one, whoever answers on another: with the time it takes to wake it up
};

/// Binds the calling thread, and the programs that it starts from now on, to the first or second processor that this
/// program may use.
bool runOn(std::size_t processor) {
  static const cpu_set_t allowed = [] {
    cpu_set_t set;
    CPU_ZERO(&set);
    ::sched_getaffinity(0, sizeof set, &set);
    return set;
  }();
  std::size_t found = 0;
  for (int cpu = 0; cpu < CPU_SETSIZE; ++cpu) {
    if (CPU_ISSET(cpu, &allowed) && found++ == processor) {
      cpu_set_t one;
      CPU_ZERO(&one);
      CPU_SET(cpu, &one);
      return ::sched_setaffinity(0, sizeof one, &one) == 0;
    }
  }
  return false;
}

/// Seconds that the same work took again and again. The median is the work's own: what else the machine does makes some
/// of them longer.
class Times {
 public:
  void add(double seconds) { seconds_.push_back(seconds); }
  double median() {
    const auto middle = seconds_.begin() + static_cast<std::ptrdiff_t>(seconds_.size() / 2);
    std::nth_element(seconds_.begin(), middle, seconds_.end());
    return *middle;
  }
  double best() const { return *std::min_element(seconds_.begin(), seconds_.end()); }

 private:
  std::vector<double> seconds_;
};

/// Opening the dialog on one body of 70. `ratio` is the rate of round trips while the dialog is in the channel's calls,
/// to that of the same lines between two programs that do nothing else, taken right after it; `ratio_qt` that to two
/// programs that use Qt's sockets. To tell where the time goes there are the rates of the connection alone, without the
/// channel around it, and of the backend, asked the same by a plain program. Rates are those of the median opening;
/// `ratio_best` is that of the best ones.
void openDialog(benchmark::State& state, Processors processors) {
  if (!runOn(processors == Processors::One ? 0 : 1)) {
    state.SkipWithError("there are not enough processors");
    return;
  }
  const BackendOnBodies backend(bodies, markers, 60);
  runOn(0);
  MeasuredHost host(backend.port());
  const MeasuredHost::Opening first = host.open(1);  // and everything is warm
  runOn(processors == Processors::One ? 0 : 1);      // for the partners
  const LineLengths& lines = first.lines;
  const QString program = QCoreApplication::applicationFilePath();
  PingPong plain(program, Sockets::Plain, lines);
  PingPong qt(program, Sockets::Qt, lines);
  runOn(0);
  PingPong alone(backend.port(), first.commands);
  plain.play();
  qt.play();
  alone.play();
  Times whole;
  Times inChannel;
  Times inExchanges;
  Times plainTimes;
  Times qtTimes;
  Times aloneTimes;
  int body = 0;
  for (auto _ : state) {
    const MeasuredHost::Opening opening = host.open(body++ % bodies + 1);
    const double plainTime = plain.play();
    const double qtTime = qt.play();
    const double aloneTime = alone.play();
    if (opening.lines.size() != lines.size() || plainTime < 0.0 || qtTime < 0.0 || aloneTime < 0.0) {
      state.SkipWithError("an exchange failed");
      return;
    }
    state.SetIterationTime(opening.whole);
    whole.add(opening.whole);
    inChannel.add(opening.inChannel);
    inExchanges.add(opening.inExchanges);
    plainTimes.add(plainTime);
    qtTimes.add(qtTime);
    aloneTimes.add(aloneTime);
  }
  const auto trips = static_cast<double>(lines.size());
  state.counters["round_trips"] = trips;
  state.counters["trips_per_s"] = trips / inChannel.median();
  state.counters["connection_per_s"] = trips / inExchanges.median();
  state.counters["backend_per_s"] = trips / aloneTimes.median();
  state.counters["plain_per_s"] = trips / plainTimes.median();
  state.counters["qt_per_s"] = trips / qtTimes.median();
  state.counters["ratio"] = plainTimes.median() / inChannel.median();
  state.counters["ratio_best"] = plainTimes.best() / inChannel.best();
  state.counters["ratio_qt"] = qtTimes.median() / inChannel.median();
  state.counters["opening_ms"] = 1e3 * whole.median();
}

/// Counts lines, and tells the processor time of the thread that brings them.
class CountingRequester : public Requester {
 public:
  int set_ascii_data(const char* /*tag*/, const char* line) override {
    records = std::atoi(line + 2);  // "6d 50 ..."
    timespec now{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    threadTime = static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
    ++lines;
    return 0;
  }
  void set_mea_started() override {}
  void set_mea_stopped() override {}

  std::atomic<double> threadTime{0.0};
  std::atomic<int> lines{0};
  std::atomic<int> records{0};
};

double processorTime() {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& t) {
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_usec) * 1e-6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

/// The dialog online on one of 50 bodies, all of which are in each of a thousand lines a second: shares of one
/// processor that the host's delivery thread, the host and the backend take.
void followBodies(benchmark::State& state) {
  runOn(1);  // if there is another
  const BackendOnBodies backend(followedBodies, markers, linesPerSecond);
  runOn(0);
  MeasuredHost host(backend.port());
  CountingRequester counter;
  host.frontend().channel().register_requester("6d", &counter);
  for (auto _ : state) {
    host.follow(1, [&](QDialog&) {
      QTest::qWait(500);  // the measurement has begun
      const int lines = counter.lines;
      const double delivery = counter.threadTime;
      const double process = processorTime();
      const double server = backend.processorTime();
      const Clock::time_point begin = Clock::now();
      QTest::qWait(followedMs);
      const double wall = std::chrono::duration<double>(Clock::now() - begin).count();
      state.SetIterationTime(wall);
      state.counters["lines_per_s"] = (counter.lines - lines) / wall;
      state.counters["bodies_in_a_line"] = counter.records.load();
      state.counters["delivery_thread"] = (counter.threadTime - delivery) / wall;
      state.counters["host_process"] = (processorTime() - process) / wall;
      state.counters["backend_process"] = (backend.processorTime() - server) / wall;
    });
  }
  host.frontend().channel().unregister_requester("6d", &counter);
  if (counter.records < followedBodies) {
    state.SkipWithError("bodies are missing in the lines");
  } else if (counter.lines < linesPerSecond * followedMs / 1000 * 9 / 10) {
    state.SkipWithError("lines are missing: the machine is too busy");
  }
}

}  // namespace

BENCHMARK_CAPTURE(openDialog, one_processor, Processors::One)
    ->UseManualTime()
    ->Iterations(100)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(openDialog, two_processors, Processors::Two)
    ->UseManualTime()
    ->Iterations(100)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(followBodies)->UseManualTime()->Iterations(1)->Unit(benchmark::kMillisecond);

int main(int argc, char** argv) {
  const int partner = playPartner(argc, argv);
  if (partner >= 0) {
    return partner;
  }
  QApplication application(argc, argv);
  std::setlocale(LC_NUMERIC, "C");
  QApplication::setQuitOnLastWindowClosed(false);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
