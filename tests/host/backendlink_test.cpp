// The link by itself: what an owner may do while it is told of a connection.
#include "backendlink.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QEventLoop>
#include <QTest>
#include <QTimer>

#include <functional>

#include "lineserver.h"

using namespace korvex2;
using namespace std::chrono_literals;

namespace {

/// Has no opening lines.
class Owner : public BackendLinkOwner {
 public:
  QList<QByteArray> openingLines(const QHostAddress&, const QHostAddress&) override { return {}; }
  QString takeOpeningAnswer(const QByteArray&, const QByteArray&) override { return {}; }
  bool takePostedAnswer(const QByteArray&, const QByteArray& answer, std::chrono::steady_clock::time_point) override {
    answers.push_back(answer);
    return true;
  }
  void linkChanged() override {
    if (changed) {
      changed();
    }
  }

  std::function<void()> changed;
  std::vector<QByteArray> answers;
};

}  // namespace

TEST(BackendLink, AnswersComeToALoopInsideTheNewsOfTheConnection) {
  LineServer server;
  server.setAnswer("korvex2 get a", "korvex2 set a 7");
  Owner owner;
  NetworkOptions options;
  options.heartbeat = 60000ms;
  BackendLink link(owner, BackendAddress{QStringLiteral("127.0.0.1"), server.port()}, options);
  bool inside = false;
  bool answered = false;
  QElapsedTimer clock;
  owner.changed = [&] {
    if (link.isConnected() && !inside) {
      inside = true;
      link.post("korvex2 get a");
      // A plain loop, as a dialog has: objects that are to be deleted later stay meanwhile.
      QEventLoop loop;
      QTimer look;
      QObject::connect(&look, &QTimer::timeout, &loop, [&] {
        answered = !owner.answers.empty();
        if (answered || clock.elapsed() > 1000) {
          loop.quit();
        }
      });
      look.start(5);
      clock.start();
      loop.exec();
    }
  };
  link.start();
  ASSERT_TRUE(QTest::qWaitFor([&] { return inside && owner.answers.size() >= 2; }, 4000));
  EXPECT_TRUE(answered) << "somebody else took the answer";
  EXPECT_EQ(owner.answers[0], "korvex2 set a 7");
  EXPECT_TRUE(link.isConnected());
  EXPECT_EQ(link.connections(), 1);
  owner.changed = {};
}
