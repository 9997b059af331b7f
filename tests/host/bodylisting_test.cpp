// What the start page asks of the backend.
#include "bodylisting.h"

#include <gtest/gtest.h>

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

}  // namespace

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
