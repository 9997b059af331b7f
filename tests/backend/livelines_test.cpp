// Live lines: grammar, kinds, formats, ids, what is not tracked, bounds.
#include "livelines.h"

#include <gtest/gtest.h>

#include <QRegularExpression>

#include <cmath>
#include <limits>
#include <map>
#include <set>
#include <string>

#include "commalocale.h"
#include "databasecopy.h"
#include "livelinereader.h"

using namespace korvex2;
using korvex2_test::LineReader;
using korvex2_test::LineRecord;
using korvex2_test::TrackingLine;

namespace {

class LiveLinesTest : public korvex2_test::DatabaseCopy {
 protected:
  void SetUp() override {
    DatabaseCopy::SetUp();
    command("tracking start");
  }
  void command(const std::string& text) { ASSERT_EQ(ask("korvex2 " + text), "korvex2 ok") << text; }

  std::vector<QByteArray> frame(std::int64_t number, double seconds) const {
    return lines.frame(liveStateOf(*interpreter), number, seconds);
  }
  std::vector<std::string> tags(std::int64_t number = 0) const {
    std::vector<std::string> result;
    for (const QByteArray& line : frame(number, 0.0)) {
      result.push_back(line.left(line.indexOf(' ')).toStdString());
    }
    return result;
  }
  /// The frame's line of that kind, taken apart.
  TrackingLine line(const std::string& tag, std::int64_t number = 0, double seconds = 0.0) const {
    for (const QByteArray& text : frame(number, seconds)) {
      if (text.startsWith(QByteArray::fromStdString(tag + ' '))) {
        const std::optional<TrackingLine> read = LineReader::read(text);
        EXPECT_TRUE(read) << text.toStdString();
        return read.value_or(TrackingLine());
      }
    }
    ADD_FAILURE() << "there is no line " << tag;
    return {};
  }

  LiveLines lines;
};

using Tags = std::vector<std::string>;

std::vector<int> idsOf(const TrackingLine& line) {
  std::vector<int> ids;
  for (const LineRecord& record : line.records) {
    ids.push_back(record.id);
  }
  return ids;
}

LiveState crowd(int bodies) {
  LiveState state;
  state.measuring = state.output6d = state.output6dw2 = state.output6dw = true;
  for (int number = 1; number <= bodies; ++number) {
    state.standard.push_back({{"standard", number}, {}, true});
    state.devices.push_back({{"wandgrip", number}, {}, true});
  }
  return state;
}

}  // namespace

TEST_F(LiveLinesTest, NothingIsReportedWhileNothingIsMeasured) {
  EXPECT_EQ(tags(), (Tags{"fr", "ts", "6d"}));
  command("tracking stop");
  EXPECT_EQ(tags(), Tags{});
  command("tracking start");
  EXPECT_EQ(tags(), (Tags{"fr", "ts", "6d"}));
  command("set tracking available no");
  EXPECT_EQ(tags(), Tags{});
}

TEST_F(LiveLinesTest, OnlyKindsThatAreSwitchedOnAreReported) {
  command("set output active chmon 6dw2 yes");
  EXPECT_EQ(tags(), (Tags{"fr", "ts", "6d", "6dw2"}));
  command("set output active chmon 6d no");
  EXPECT_EQ(tags(), (Tags{"fr", "ts", "6dw2"}));
  command("set output active chmon 6dw2 no");
  EXPECT_EQ(tags(), (Tags{"fr", "ts"}));
  command("set output active chmon 6dw yes");
  EXPECT_EQ(tags(), (Tags{"fr", "ts"})) << "devices report in the new format";
}

TEST_F(LiveLinesTest, DevicesReportInTheFormatOfTheSetting) {
  command("set output active chmon 6dw yes");
  command("set output active chmon 6dw2 yes");
  EXPECT_EQ(tags(), (Tags{"fr", "ts", "6d", "6dw2"}));
  command("set wandgrip output_6dw yes");
  EXPECT_EQ(tags(), (Tags{"fr", "ts", "6d", "6dw"}));
  command("set output active chmon 6dw no");
  EXPECT_EQ(tags(), (Tags{"fr", "ts", "6d"}));
}

TEST_F(LiveLinesTest, AFrameBeginsWithItsNumberAndTime) {
  const std::vector<QByteArray> lines = frame(4711, 78.5166666);
  EXPECT_EQ(LineReader::single(lines[0], "fr", 0), 4711.0);
  ASSERT_TRUE(LineReader::single(lines[1], "ts", 3));
  EXPECT_NEAR(*LineReader::single(lines[1], "ts", 3), 78.5166666, 1e-6);
}

TEST_F(LiveLinesTest, StandardBodiesAreAllInOneLineWithIdsFromZero) {
  const TrackingLine line = this->line("6d");
  EXPECT_EQ(idsOf(line), (std::vector<int>{0, 1, 2, 3, 4, 5, 6}));
  for (const LineRecord& record : line.records) {
    EXPECT_EQ(record.quality, record.id == 5 ? -1.0 : 1.0) << "the phone is not calibrated";
    EXPECT_TRUE(record.numbers.empty());
  }
}

TEST_F(LiveLinesTest, DevicesHaveButtonsInTheOldFormatAndTwoNumbersAndAFourthBlockInTheNew) {
  command("set output active chmon 6dw yes");
  command("set output active chmon 6dw2 yes");
  const TrackingLine fresh = line("6dw2");
  EXPECT_EQ(fresh.devices, 2);
  EXPECT_EQ(idsOf(fresh), (std::vector<int>{0, 1}));
  command("set wandgrip output_6dw yes");
  const TrackingLine old = line("6dw");
  EXPECT_EQ(idsOf(old), (std::vector<int>{0, 1}));
  for (std::size_t i = 0; i < 2; ++i) {
    EXPECT_EQ(fresh.records.at(i).quality, 1.0);
    EXPECT_EQ(old.records.at(i).position, fresh.records.at(i).position);
    EXPECT_EQ(old.records.at(i).rotation, fresh.records.at(i).rotation);
    EXPECT_EQ(old.records.at(i).numbers.at(0), fresh.records.at(i).numbers.at(0));
  }
}

TEST_F(LiveLinesTest, TheTriggerOfADeviceIsPressedNowAndThen) {
  command("set output active chmon 6dw2 yes");
  std::set<int> first;
  std::set<int> second;
  for (int i = 0; i < 100; ++i) {
    const TrackingLine line = this->line("6dw2", 0, 0.1 * i);
    first.insert(line.records.at(0).numbers.at(0));
    second.insert(line.records.at(1).numbers.at(0));
    EXPECT_EQ(line.records.at(0).last.at(0), line.records.at(0).numbers.at(0));
  }
  EXPECT_EQ(first, (std::set<int>{0, 1}));
  EXPECT_EQ(second, (std::set<int>{0, 1}));
}

TEST_F(LiveLinesTest, IdsOfStandardBodiesAreOneHigherWithHead) {
  command("set output active chmon 6dw2 yes");
  command("set wandgrip multiuser yes");
  EXPECT_EQ(line("6d").records.at(0).id, 0) << "multi-user without head";
  command("set wandgrip multiuser_with_head yes");
  EXPECT_EQ(idsOf(line("6d")), (std::vector<int>{1, 2, 3, 4, 5, 6, 7}));
  EXPECT_EQ(idsOf(line("6dw2")), (std::vector<int>{0, 1})) << "devices keep theirs";
  const TrackingLine with = line("6d", 0, 3.0);
  // A client asks for the with-head mode alone, whatever the plain mode is.
  command("set wandgrip multiuser no");
  EXPECT_EQ(line("6d").records.at(0).id, 1);
  command("set wandgrip multiuser_with_head no");
  const TrackingLine without = line("6d", 0, 3.0);
  EXPECT_EQ(without.records.at(0).id, 0);
  EXPECT_EQ(with.records.at(3).position, without.records.at(3).position) << "the same body by another id";
  command("set wandgrip multiuser_with_head yes");
  command("set wandgrip multiuser_with_head_available no");
  EXPECT_EQ(line("6d").records.at(0).id, 0);
}

TEST_F(LiveLinesTest, ABodyIsTrackedFromTheMomentItIsCalibrated) {
  LineRecord phone = line("6d").at(5);
  EXPECT_EQ(phone.quality, -1.0);
  EXPECT_EQ(phone.position, (std::array<double, 3>{0, 0, 0}));
  EXPECT_EQ(phone.rotation, (std::array<double, 9>{1, 0, 0, 0, 1, 0, 0, 0, 1}));
  command("set body calibrated standard b06 yes");
  phone = line("6d").at(5);
  EXPECT_EQ(phone.quality, 1.0);
  EXPECT_NE(phone.position, (std::array<double, 3>{0, 0, 0}));
  command("set body calibrated wandgrip b01 no");
  command("set output active chmon 6dw2 yes");
  EXPECT_EQ(line("6dw2").records.at(0).quality, -1.0);
  EXPECT_EQ(line("6dw2").records.at(1).quality, 1.0);
}

TEST_F(LiveLinesTest, ABodyWithABrokenFileIsNotTracked) {
  close();
  korvex2_test::writeBytes(path("bodies/table.body"), "4\nnot a body\n");
  open();
  command("tracking start");
  EXPECT_EQ(line("6d").at(1).quality, -1.0);
  EXPECT_EQ(line("6d").at(0).quality, 1.0);
}

TEST_F(LiveLinesTest, BodiesAreLostNowAndThenTheSameWayEveryTime) {
  command("set output active chmon 6dw yes");
  command("set wandgrip output_6dw yes");
  constexpr int frames = 3000;
  for (const char* tag : {"6d", "6dw"}) {
    std::map<int, int> lost;
    std::map<int, int> missing;
    std::set<std::string> together;
    for (int number = 0; number < frames; ++number) {
      const TrackingLine line = this->line(tag, number, number / 60.0);
      const int bodies = std::string(tag) == "6d" ? 7 : 2;
      for (int id = 0; id < bodies; ++id) {
        const LineRecord* record = line.find(id);
        missing[id] += record == nullptr ? 1 : 0;
        lost[id] += record != nullptr && record->quality == -1.0 ? 1 : 0;
        const bool away = record == nullptr || (record->quality == -1.0 && id != 5);
        ASSERT_FALSE(away && number < 600) << "everything is in sight at the beginning";
      }
    }
    for (const auto& [id, count] : lost) {
      EXPECT_GT(missing[id], 0) << tag << ' ' << id;
      EXPECT_LT(missing[id], frames / 50) << tag << ' ' << id;
      EXPECT_GT(count, 0) << tag << ' ' << id;
      if (id != 5) {
        EXPECT_LT(count, frames / 50) << tag << ' ' << id;
      }
    }
  }
  for (const int number : {605, 650, 765, 800, 1505}) {
    EXPECT_EQ(frame(number, 1.0), frame(number, 1.0));
  }
}

TEST_F(LiveLinesTest, BodiesAreNotLostAllAtOnce) {
  for (int number = 0; number < 1800; ++number) {
    const TrackingLine line = this->line("6d", number);
    int seen = 0;
    for (const LineRecord& record : line.records) {
      seen += record.quality == 1.0 ? 1 : 0;
    }
    ASSERT_GE(seen, 4) << number;
  }
}

TEST_F(LiveLinesTest, DevicesInTheNewFormatNeverLoseTheirPlace) {
  command("set output active chmon 6dw2 yes");
  int lost = 0;
  for (int number = 0; number < 2000; ++number) {
    const TrackingLine line = this->line("6dw2", number);
    ASSERT_EQ(idsOf(line), (std::vector<int>{0, 1}));
    lost += line.records.at(0).quality == -1.0 ? 1 : 0;
    if (line.records.at(0).quality == -1.0) {
      EXPECT_EQ(line.records.at(0).numbers.at(0), 0) << "nobody hears the trigger either";
    }
  }
  EXPECT_GT(lost, 0);
}

TEST_F(LiveLinesTest, NumbersHaveAPointUnderACommaLocale) {
  command("set output active chmon 6dw2 yes");
  const std::vector<QByteArray> expected = frame(12, 3.25);
  const CommaLocale comma;
  ASSERT_TRUE(comma.ready());
  EXPECT_EQ(frame(12, 3.25), expected);
}

TEST_F(LiveLinesTest, AnEmptyDatabaseHasLinesWithoutRecords) {
  LiveState state;
  state.measuring = state.output6d = state.output6dw2 = state.output6dw = true;
  EXPECT_EQ(lines.frame(state, 0, 0.0), (std::vector<QByteArray>{"fr 0", "ts 0.000000", "6d 0", "6dw2 0 0"}));
  state.oldDeviceFormat = true;
  EXPECT_EQ(lines.frame(state, 0, 0.0).back(), "6dw 0");
}

TEST_F(LiveLinesTest, PositionsHaveFourDecimalsRotationsSevenAndTimesSix) {
  const auto decimalsIn = [](const QString& text) {
    std::set<int> counts;
    const QStringList words = text.split(QRegularExpression("[][ ]+"), Qt::SkipEmptyParts);
    for (const QString& word : words) {
      counts.insert(word.contains('.') ? word.size() - word.indexOf('.') - 1 : 0);
    }
    return counts;
  };
  LiveState state = crowd(3);
  for (const bool old : {false, true}) {
    state.oldDeviceFormat = old;
    const std::vector<QByteArray> frame = LiveLines().frame(state, 7, 7.0 / 60.0);
    ASSERT_EQ(frame.size(), 4U);
    EXPECT_EQ(frame[1], "ts 0.116667");
    for (const QByteArray& line : {frame[2], frame[3]}) {
      const QStringList blocks = QString::fromLatin1(line).split('[').mid(1);
      const int perRecord = line.startsWith("6dw2") ? 4 : 3;
      ASSERT_EQ(blocks.size(), 3 * perRecord) << line.constData();
      for (int i = 0; i < blocks.size(); ++i) {
        const int block = i % perRecord;
        EXPECT_EQ(decimalsIn(blocks[i]), std::set<int>{block == 1 ? 4 : block == 2 ? 7 : 0}) << blocks[i].toStdString();
      }
    }
  }
}

TEST(LiveLinesOfACrowd, AreNeverLongerThanAClientReads) {
  const LiveLines lines;
  for (const int bodies : {20, 60, 70, 75, 80, 99}) {
    LiveState state = crowd(bodies);
    for (const bool old : {false, true}) {
      state.oldDeviceFormat = old;
      const std::vector<QByteArray> frame = lines.frame(state, 0, 0.0);
      ASSERT_EQ(frame.size(), 4U);
      for (const QByteArray& text : {frame[2], frame[3]}) {
        ASSERT_LE(text.size(), 9999);
        const std::optional<TrackingLine> line = LineReader::read(text);
        ASSERT_TRUE(line) << text.toStdString();
        const int records = static_cast<int>(line->records.size());
        EXPECT_GE(records, std::min(bodies, 60));
        for (int i = 0; i < records; ++i) {
          ASSERT_EQ(line->records[static_cast<std::size_t>(i)].id, i) << "left out from the end";
        }
        if (line->tag == "6dw2") {
          EXPECT_EQ(line->devices, bodies);
        }
      }
    }
  }
}

TEST(LiveLinesOfACrowd, NoTwoBodiesAreAtTheSamePlace) {
  const std::optional<TrackingLine> line = LineReader::read(LiveLines().frame(crowd(60), 0, 0.0)[2]);
  ASSERT_TRUE(line);
  for (const LineRecord& a : line->records) {
    for (const LineRecord& b : line->records) {
      if (a.id != b.id) {
        EXPECT_GT(std::hypot(a.position[0] - b.position[0], a.position[1] - b.position[1]), 30.0);
      }
    }
  }
}

TEST(LiveLinesOfASpoiltBody, NumbersBeyondAllMeasureAreNotReported) {
  const double infinity = std::numeric_limits<double>::infinity();
  for (const double bad : {infinity, -infinity, std::nan(""), 1e300, -1e13}) {
    LiveState state = crowd(3);
    state.standard[0].toMeasured.position[1] = bad;
    state.standard[2].toMeasured.rotation[4] = bad;
    const QByteArray text = LiveLines().frame(state, 0, 0.0)[2];
    const std::optional<TrackingLine> line = LineReader::read(text);
    ASSERT_TRUE(line) << text.toStdString();
    ASSERT_EQ(line->records.size(), 3U);
    EXPECT_EQ(line->records.at(0).quality, -1.0);
    EXPECT_EQ(line->records.at(1).quality, 1.0);
    EXPECT_EQ(line->records.at(2).quality, -1.0);
  }
}
