// Live poses and marker coordinates fit together: a marker stays in its place in the room whatever frame it is told in.
#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "databasecopy.h"
#include "livelinereader.h"
#include "livelines.h"
#include "trajectory.h"

using namespace korvex2;
using korvex2_test::LineReader;
using korvex2_test::LineRecord;
using korvex2_test::TrackingLine;

namespace {

using Point = std::array<double, 3>;

class LivePhysics : public korvex2_test::DatabaseCopy {
 protected:
  void SetUp() override {
    DatabaseCopy::SetUp();
    TrajectoryContent content = readTrajectory(KORVEX2_SHIPPED_DATA "/trajectories/handheld_xyz.tum");
    ASSERT_TRUE(content.trajectory) << content.problem.toStdString();
    Motion motion;
    motion.setTrajectory({"standard", 1}, *content.trajectory);
    lines = LiveLines(motion);
    measure();
  }
  void measure() {
    command("tracking start");
    command("set output active chmon 6dw2 yes");
  }
  void command(const std::string& text) { ASSERT_EQ(ask("korvex2 " + text), "korvex2 ok") << text; }

  LineRecord record(const std::string& type, int id, double seconds) const {
    for (const QByteArray& text : lines.frame(liveStateOf(*interpreter), 0, seconds)) {
      if (text.startsWith(type == "standard" ? "6d " : "6dw2 ")) {
        const std::optional<TrackingLine> line = LineReader::read(text);
        if (line && line->find(id) != nullptr) {
          return *line->find(id);
        }
      }
    }
    ADD_FAILURE() << "there is no record of " << type << ' ' << id;
    return {};
  }

  /// Marker coordinates as any client reads them.
  std::vector<Point> markers(const std::string& body) {
    const auto values = [this](const std::string& query) {
      return ask("korvex2 get " + query).substr(std::string("korvex2 set ").size() + query.size());
    };
    std::vector<Point> result(std::stoul(values("body number_of_marker " + body)));
    for (std::size_t i = 0; i < result.size(); ++i) {
      std::istringstream text(values("body marker " + body + " m" + std::to_string(i + 1)));
      text >> result[i][0] >> result[i][1] >> result[i][2];
      EXPECT_FALSE(text.fail());
    }
    return result;
  }

  /// Where the markers are in the room.
  std::vector<Point> places(const std::string& type, int number, double seconds) {
    const LineRecord pose = record(type, number - 1, seconds);
    EXPECT_EQ(pose.quality, 1.0);
    std::vector<Point> result;
    for (const Point& marker : markers(type + " b0" + std::to_string(number))) {
      result.push_back(pose.place(marker));
    }
    return result;
  }

  static void expectSame(const std::vector<Point>& a, const std::vector<Point>& b, double tolerance) {
    ASSERT_EQ(a.size(), b.size());
    for (std::size_t i = 0; i < a.size(); ++i) {
      for (std::size_t axis = 0; axis < 3; ++axis) {
        EXPECT_NEAR(a[i][axis], b[i][axis], tolerance) << "marker " << i + 1;
      }
    }
  }

  LiveLines lines;
};

/// Each of the two poses is rounded to 4 decimals of position and 7 of rotation; with coordinates below 1,000 mm in the
/// sum of their three axes that makes at most 2 * (0.5e-4 + 0.5e-7 * 1,000), and 3,000 mm make twice as much.
constexpr double rounding = 5e-4;

// 36.87 degrees about z: cosine 0.8, sine 0.6; then a turn of the axes.
const char* const turnAndMove = "12.5 -80 7.25 0.8 0.6 0 -0.6 0.8 0 0 0 1";
const char* const axesInTurn = "-100 40 300 0 1 0 0 0 1 1 0 0";

}  // namespace

TEST_F(LivePhysics, MarkersStayInTheRoomWhenABodyGetsAnotherFrame) {
  for (const double seconds : {0.0, 1.3, 7.77, 40.0}) {
    const std::vector<Point> before = places("standard", 1, seconds);
    const LineRecord poseBefore = record("standard", 0, seconds);
    const std::vector<Point> coordinatesBefore = markers("standard b01");
    command(std::string("body transform standard b01 ") + turnAndMove);
    EXPECT_GT(std::fabs(markers("standard b01")[0][1] - coordinatesBefore[0][1]), 1.0) << "coordinates do change";
    EXPECT_NE(record("standard", 0, seconds).position, poseBefore.position) << "and so does the pose";
    expectSame(places("standard", 1, seconds), before, rounding);
    command(std::string("body transform standard b01 ") + axesInTurn);
    expectSame(places("standard", 1, seconds), before, rounding);
  }
}

TEST_F(LivePhysics, DevicesAndBodiesAtRestDoSoToo) {
  const std::vector<Point> device = places("wandgrip", 2, 5.0);
  const std::vector<Point> table = places("standard", 2, 5.0);
  command(std::string("body transform wandgrip b02 ") + turnAndMove);
  command(std::string("body transform standard b02 ") + axesInTurn);
  expectSame(places("wandgrip", 2, 5.0), device, rounding);
  expectSame(places("standard", 2, 5.0), table, rounding);
}

TEST_F(LivePhysics, ATransformByEightDecimalsLeavesNoTrace) {
  // A rotation as clients send it, rounded: about (1, 2, 2) / 3 by 50 degrees.
  const double c = std::cos(50.0 * std::acos(-1.0) / 180.0);
  const double s = std::sin(50.0 * std::acos(-1.0) / 180.0);
  const double u[3] = {1.0 / 3.0, 2.0 / 3.0, 2.0 / 3.0};
  const double cross[3][3] = {{0, -u[2], u[1]}, {u[2], 0, -u[0]}, {-u[1], u[0], 0}};
  std::string text = "body transform standard b01 1000.125 -2000.25 500.5";
  for (int column = 0; column < 3; ++column) {
    for (int row = 0; row < 3; ++row) {
      char number[32];
      std::snprintf(number, sizeof number, " %.8f",
                    (row == column ? c : 0.0) + (1.0 - c) * u[row] * u[column] + s * cross[row][column]);
      text += number;
    }
  }
  const std::vector<Point> before = places("standard", 1, 3.0);
  for (int i = 0; i < 3; ++i) {
    command(text);
  }
  // Coordinates grow to some 10 m by three moves: 0.5e-4 + 0.5e-7 * 20,000, twice.
  expectSame(places("standard", 1, 3.0), before, 2.2e-3);
}

TEST_F(LivePhysics, MarkersAreWhereTheyWereAfterARestart) {
  command(std::string("body transform standard b01 ") + turnAndMove);
  const std::vector<Point> before = places("standard", 1, 2.0);
  open();
  measure();
  expectSame(places("standard", 1, 2.0), before, rounding);
}

TEST_F(LivePhysics, AnotherBodysFrameIsNoneOfABodysBusiness) {
  const LineRecord before = record("standard", 2, 4.0);
  command(std::string("body transform standard b01 ") + turnAndMove);
  EXPECT_EQ(record("standard", 2, 4.0).position, before.position);
  EXPECT_EQ(record("standard", 2, 4.0).rotation, before.rotation);
}

TEST_F(LivePhysics, TheCupMovesAsItWasRecorded) {
  std::ifstream file(KORVEX2_SHIPPED_DATA "/trajectories/handheld_xyz.tum");
  std::string text;
  double first = -1.0;
  int compared = 0;
  while (std::getline(file, text)) {
    double t = 0;
    double x = 0;
    double y = 0;
    double z = 0;
    double q[4] = {};
    if (text[0] == '#') {
      continue;
    }
    std::istringstream(text) >> t >> x >> y >> z >> q[0] >> q[1] >> q[2] >> q[3];
    first = first < 0.0 ? t : first;
    if (t - first < 1.0 || t - first > 29.0) {
      continue;  // speeds up and slows down at the ends
    }
    const LineRecord cup = record("standard", 0, t - first + 0.25);
    ASSERT_EQ(cup.quality, 1.0);
    // Seconds since 1970 with four decimals leave the times within 3e-7 s; the cup moves slower than 2 m/s.
    ASSERT_NEAR(cup.position[0], 1000.0 * x, 1e-3) << text;
    ASSERT_NEAR(cup.position[1], 1000.0 * y, 1e-3) << text;
    ASSERT_NEAR(cup.position[2], 1000.0 * z, 1e-3) << text;
    const double square = q[0] * q[0] + q[1] * q[1] + q[2] * q[2] + q[3] * q[3];
    ASSERT_NEAR(cup.rotation[1], 2.0 * (q[0] * q[1] + q[2] * q[3]) / square, 1e-5) << text;
    ASSERT_NEAR(cup.rotation[8], 1.0 - 2.0 * (q[0] * q[0] + q[1] * q[1]) / square, 1e-5) << text;
    ++compared;
  }
  EXPECT_GT(compared, 2500);
}

TEST_F(LivePhysics, TheTableIsAtRestAndTilted) {
  const LineRecord first = record("standard", 1, 0.0);
  for (const double seconds : {0.4, 17.0, 3600.0}) {
    EXPECT_EQ(record("standard", 1, seconds).position, first.position);
    EXPECT_EQ(record("standard", 1, seconds).rotation, first.rotation);
  }
  EXPECT_LT(first.rotation[8], std::cos(2.0 * std::acos(-1.0) / 180.0)) << "more than two degrees";
  EXPECT_GT(first.rotation[8], std::cos(10.0 * std::acos(-1.0) / 180.0));
}

TEST_F(LivePhysics, BodiesMoveGentlyAndNeverJump) {
  constexpr double step = 1.0 / 60.0;
  for (int id : {0, 2, 3, 4, 6}) {
    Point before = record("standard", id, 0.0).position;
    Point speedBefore{};
    double fastest = 0.0;
    for (int i = 1; i < 4000; ++i) {  // past both ends of the recording
      const LineRecord now = record("standard", id, i * step);
      Point speed{};
      for (std::size_t axis = 0; axis < 3; ++axis) {
        speed[axis] = (now.position[axis] - before[axis]) / step;
        fastest = std::max(fastest, std::fabs(speed[axis]));
      }
      if (i > 1) {
        for (std::size_t axis = 0; axis < 3; ++axis) {
          // A hand shakes: within a sixtieth of a second the recorded one changes its speed by 144 mm/s at most.
          ASSERT_LT(std::fabs(speed[axis] - speedBefore[axis]), 160.0) << id << " at " << i * step;
        }
      }
      before = now.position;
      speedBefore = speed;
    }
    EXPECT_GT(fastest, 10.0) << id << " moves";
    EXPECT_LT(fastest, 620.0) << id << "; the recorded hand reaches 591 mm/s";
  }
}

TEST_F(LivePhysics, EveryReportedRotationIsOne) {
  for (double seconds = 0.0; seconds < 70.0; seconds += 0.37) {
    for (const std::string type : {"standard", "wandgrip"}) {
      for (int id = 0; id < 2; ++id) {
        const std::array<double, 9> r = record(type, id, seconds).rotation;
        for (std::size_t a = 0; a < 3; ++a) {
          for (std::size_t b = 0; b < 3; ++b) {
            const double product = r[3 * a] * r[3 * b] + r[3 * a + 1] * r[3 * b + 1] + r[3 * a + 2] * r[3 * b + 2];
            ASSERT_NEAR(product, a == b ? 1.0 : 0.0, 3e-7);  // seven decimals
          }
        }
        const double determinant = r[0] * (r[4] * r[8] - r[5] * r[7]) - r[3] * (r[1] * r[8] - r[2] * r[7]) +
                                   r[6] * (r[1] * r[5] - r[2] * r[4]);
        ASSERT_NEAR(determinant, 1.0, 1e-6);
      }
    }
  }
}

TEST_F(LivePhysics, WithoutARecordingTheCupMovesByItself) {
  lines = LiveLines();
  EXPECT_EQ(record("standard", 0, 0.0).quality, 1.0);
  EXPECT_NE(record("standard", 0, 0.0).position, record("standard", 0, 1.0).position);
}

TEST_F(LivePhysics, ABodyIsNotTrackedInALongGapOfItsRecording) {
  TrajectoryContent content = parseTrajectory("0 1 0 0 0 0 0 1\n3 2 0 0 0 0 0 1\n3.1 2 0 0 0 0 0 1\n");
  ASSERT_TRUE(content.trajectory);
  Motion motion;
  motion.setTrajectory({"standard", 3}, *content.trajectory);
  lines = LiveLines(motion);
  EXPECT_EQ(record("standard", 2, 1.0).quality, -1.0);
  EXPECT_EQ(record("standard", 2, 0.0).quality, 1.0);
  EXPECT_EQ(record("standard", 0, 1.0).quality, 1.0);
}
