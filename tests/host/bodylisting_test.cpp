// What the start page asks of the backend.
#include "bodylisting.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "scriptedconnection.h"

using namespace korvex2;

namespace {

void answer(ScriptedConnection& backend, const QByteArray& query, const QByteArray& value) {
  backend.answers["korvex2 get " + query] = "korvex2 set " + query + " " + value;
}

ScriptedConnection& withOneBody(ScriptedConnection& backend) {
  answer(backend, "body number_of_types", "1");
  answer(backend, "body type t01", "standard");
  answer(backend, "body type_desc standard", "\"Standard body\"");
  answer(backend, "body number_of_bodies standard", "1");
  answer(backend, "body desc standard b01", "\"Head\"");
  answer(backend, "body calibrated standard b01", "yes");
  answer(backend, "body number_of_marker standard b01", "5");
  return backend;
}

/// As many bodies as wanted; keeps how many lines went together.
class ManyBodies : public ScriptedConnection {
 public:
  explicit ManyBodies(int standard, int devices) {
    answer(*this, "body number_of_types", "2");
    answer(*this, "body type t01", "standard");
    answer(*this, "body type t02", "wandgrip");
    for (const auto& [type, count] : {std::make_pair(QByteArray("standard"), standard), {"wandgrip", devices}}) {
      answer(*this, "body type_desc " + type, "\"" + type.toUpper() + '"');
      answer(*this, "body number_of_bodies " + type, QByteArray::number(count));
      for (int n = 1; n <= count; ++n) {
        const QByteArray key = type + (n < 10 ? " b0" : " b") + QByteArray::number(n);
        answer(*this, "body desc " + key, '"' + key + '"');
        answer(*this, "body calibrated " + key, n % 2 == 0 ? "yes" : "no");
        answer(*this, "body number_of_marker " + key, QByteArray::number(n));
      }
    }
  }
  QByteArrayList exchangeTogether(const QByteArrayList& lines) override {
    batches.push_back(lines.size());
    return ScriptedConnection::exchangeTogether(lines);
  }

  std::vector<int> batches;
};

}  // namespace

TEST(BodyListing, AsksInBatches) {
  ManyBodies backend(50, 20);
  const std::vector<BodySummary> bodies = listBodies(backend);
  ASSERT_EQ(bodies.size(), 70u);
  EXPECT_EQ(backend.batches, (std::vector<int>{1, 2, 4, 48, 48, 48, 48, 18}));
  for (std::size_t i = 0; i < bodies.size(); ++i) {
    const int number = static_cast<int>(i < 50 ? i + 1 : i - 49);
    EXPECT_EQ(bodies[i].type, i < 50 ? "standard" : "wandgrip");
    EXPECT_EQ(bodies[i].typeDescription, bodies[i].type.toUpper());
    EXPECT_EQ(bodies[i].number, number);
    EXPECT_EQ(bodies[i].markers, number);
    EXPECT_EQ(bodies[i].calibrated, number % 2 == 0);
    EXPECT_TRUE(bodies[i].description.startsWith(bodies[i].type + " b"));
  }
}

TEST(BodyListing, GivesUpAtTheFirstBatchThatIsNotAnswered) {
  ManyBodies backend(50, 20);
  backend.answers.erase("korvex2 get body calibrated standard b20");  // in the second batch of bodies
  const std::vector<BodySummary> bodies = listBodies(backend);
  ASSERT_EQ(bodies.size(), 19u);
  EXPECT_EQ(bodies[18].markers, 19);
  EXPECT_EQ(backend.batches, (std::vector<int>{1, 2, 4, 48, 48}));
}

TEST(BodyListing, ASecondTypeThatCannotBeReadLeavesTheFirst) {
  ManyBodies backend(3, 2);
  answer(backend, "body number_of_bodies wandgrip", "many");
  EXPECT_EQ(listBodies(backend).size(), 3u);
  answer(backend, "body type t02", "");
  EXPECT_EQ(listBodies(backend).size(), 3u);
  backend.answers.erase("korvex2 get body type t02");
  EXPECT_EQ(listBodies(backend).size(), 3u);
}

TEST(BodyListing, AsksTypeByTypeAndBodyByBody) {
  ScriptedConnection backend;
  const std::vector<BodySummary> bodies = listBodies(withOneBody(backend));
  ASSERT_EQ(bodies.size(), 1u);
  EXPECT_EQ(bodies[0].type, "standard");
  EXPECT_EQ(bodies[0].typeDescription, "Standard body");
  EXPECT_EQ(bodies[0].number, 1);
  EXPECT_EQ(bodies[0].description, "Head");
  EXPECT_EQ(bodies[0].markers, 5);
  EXPECT_TRUE(bodies[0].calibrated);
}

TEST(BodyListing, KeepsWhatWasFoundWhenAQueryFails) {
  ScriptedConnection backend;
  answer(withOneBody(backend), "body number_of_bodies standard", "2");
  EXPECT_EQ(listBodies(backend).size(), 1u);
  backend.answers.erase("korvex2 get body type_desc standard");
  EXPECT_TRUE(listBodies(backend).empty());
  backend.answers.clear();
  EXPECT_TRUE(listBodies(backend).empty());
}

TEST(BodyListing, DoesNotFollowAnAbsurdCount) {
  ScriptedConnection backend;
  backend.respond = [](const QByteArray& line, QByteArray& given) {
    given = "korvex2 set " + line.mid(12) + " 2000000000";
    return true;
  };
  EXPECT_LE(listBodies(backend).size(), 10000u);
  backend.respond = [](const QByteArray& line, QByteArray& given) {
    given = "korvex2 set " + line.mid(12) + " -5";
    return true;
  };
  EXPECT_TRUE(listBodies(backend).empty());
}
