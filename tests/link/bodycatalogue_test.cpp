// The list of bodies: order of the queries, texts of the entries, failures, and entries read back.
#include "bodycatalogue.h"

#include <algorithm>

#include "linkfixture.h"

using korvex2::CatalogueListing;
using korvex2::listBodies;
using korvex2::matchesKey;
using korvex2::parseEntryData;
using korvex2::SelectedBody;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

namespace {

Log texts(const CatalogueListing& listing) {
  Log all;
  for (const auto& entry : listing.entries) {
    all.push_back(entry.text.toStdString());
  }
  return all;
}

Log data(const CatalogueListing& listing) {
  Log all;
  for (const auto& entry : listing.entries) {
    all.push_back(entry.data.toStdString());
  }
  return all;
}

}  // namespace

class BodyCatalogueTest : public LinkTest {
 protected:
  /// Two standard bodies, a type of no interest, one hand-held device.
  void SetUp() override {
    io.answers = {{"body number_of_types", "3"},
                  {"body type t01", "standard"},
                  {"body number_of_bodies standard", "2"},
                  {"body type_desc standard", "\"Standard body\""},
                  {"body calibrated standard b01", "yes"},
                  {"body target_type standard b01", "'tt_std'"},
                  {"body desc standard b01", "\"Head\""},
                  {"body calibrated standard b02", "no"},
                  {"body target_type standard b02", " 'tt_5dof' "},
                  {"body desc standard b02", "\"\""},
                  {"body type t02", "glove"},
                  {"body type t03", "wandgrip"},
                  {"body number_of_bodies wandgrip", "1"},
                  {"body type_desc wandgrip", "Hand-held device"},
                  {"body calibrated wandgrip b01", "yes"},
                  {"body target_type wandgrip b01", "tt_std"},
                  {"body desc wandgrip b01", ""}};
  }

  const Log fullLog = {"get_int body number_of_types",
                       "get_string body type t01",
                       "get_int body number_of_bodies standard",
                       "get_string body type_desc standard",
                       "get_string body calibrated standard b01",
                       "get_string body target_type standard b01",
                       "get_string body desc standard b01",
                       "get_string body calibrated standard b02",
                       "get_string body target_type standard b02",
                       "get_string body desc standard b02",
                       "get_string body type t02",
                       "get_string body type t03",
                       "get_int body number_of_bodies wandgrip",
                       "get_string body type_desc wandgrip",
                       "get_string body calibrated wandgrip b01",
                       "get_string body target_type wandgrip b01",
                       "get_string body desc wandgrip b01"};
};

TEST_F(BodyCatalogueTest, ListsBodiesByTypeInTheBackendsOrder) {
  const CatalogueListing listing = listBodies(channel);
  EXPECT_TRUE(listing.complete);
  EXPECT_THAT(texts(listing), ElementsAre("Head (Standard body 01)", "Standard body 02", "Hand-held device 01"));
  EXPECT_THAT(data(listing), ElementsAre("standard|1|calibrated|tt_std", "standard|2|uncalibrated|tt_5dof",
                                         "wandgrip|1|calibrated|tt_std"));
}

TEST_F(BodyCatalogueTest, QueriesComeInAFixedOrder) {
  listBodies(channel);
  EXPECT_THAT(io.log, ElementsAreArray(fullLog));
}

TEST_F(BodyCatalogueTest, EachFailedQueryEndsTheListingWithItsReportAndTheEntriesSoFar) {
  struct Failure {
    std::string query;
    std::string report;
    std::size_t entries;
  };
  const Failure failures[] = {
      {"get_int body number_of_types", "Error: Unable to get number of types for body", 0},
      {"get_string body type t01", "Error: Unable to check body type", 0},
      {"get_int body number_of_bodies standard", "Error: Unable to check number of bodies for body", 0},
      {"get_string body type_desc standard", "Error: Unable to check body type description", 0},
      {"get_string body target_type standard b01", "Error: Unable to check body target_type", 0},
      {"get_string body desc standard b01", "Error: Unable to check body description", 0},
      {"get_string body target_type standard b02", "Error: Unable to check body target_type", 1},
      {"get_string body desc standard b02", "Error: Unable to check body description", 1},
      {"get_string body type t02", "Error: Unable to check body type", 2},
      {"get_string body type t03", "Error: Unable to check body type", 2},
      {"get_int body number_of_bodies wandgrip", "Error: Unable to check number of bodies for body", 2},
      {"get_string body type_desc wandgrip", "Error: Unable to check body type description", 2},
      {"get_string body desc wandgrip b01", "Error: Unable to check body description", 2}};
  for (const Failure& failure : failures) {
    SCOPED_TRACE(failure.query);
    io.failing = {failure.query};
    io.takeLog();
    const CatalogueListing listing = listBodies(channel);
    EXPECT_FALSE(listing.complete);
    EXPECT_EQ(listing.entries.size(), failure.entries);
    Log expected(fullLog.begin(), std::find(fullLog.begin(), fullLog.end(), failure.query) + 1);
    expected.push_back(reported(failure.report));
    EXPECT_THAT(io.log, ElementsAreArray(expected));
  }
}

TEST_F(BodyCatalogueTest, AFailedCalibrationQueryIsReportedAndTheListingGoesOn) {
  io.failing = {"get_string body calibrated standard b01"};
  const CatalogueListing listing = listBodies(channel);
  EXPECT_TRUE(listing.complete);
  EXPECT_THAT(data(listing), ElementsAre("standard|1|uncalibrated|tt_std", "standard|2|uncalibrated|tt_5dof",
                                         "wandgrip|1|calibrated|tt_std"));
  EXPECT_THAT(io.reports(), ElementsAre("Error: Unable to check body cali info"));
}

TEST_F(BodyCatalogueTest, TargetTypesAreAskedFromOneTwelveOn) {
  for (const auto& old : {backendVersion(1, 11, 5), backendVersion(1, 12, -2)}) {
    versions = old;
    io.takeLog();
    const CatalogueListing listing = listBodies(channel);
    EXPECT_THAT(data(listing), ElementsAre("standard|1|calibrated|tt_std", "standard|2|uncalibrated|tt_std",
                                           "wandgrip|1|calibrated|tt_std"));
    Log expected;
    std::copy_if(fullLog.begin(), fullLog.end(), std::back_inserter(expected),
                 [](const std::string& entry) { return entry.find("target_type") == std::string::npos; });
    EXPECT_THAT(io.log, ElementsAreArray(expected));
  }
  for (const auto& recent : {backendVersion(1, 12, -1), backendVersion(1, 12, 0)}) {
    versions = recent;
    EXPECT_EQ(data(listBodies(channel)).at(1), "standard|2|uncalibrated|tt_5dof");
  }
}

TEST_F(BodyCatalogueTest, NoTypesGiveNoEntriesAndNoReport) {
  for (const char* count : {"0", "-1", "-2147483648"}) {
    io.answers["body number_of_types"] = count;
    io.takeLog();
    const CatalogueListing listing = listBodies(channel);
    EXPECT_TRUE(listing.complete);
    EXPECT_THAT(listing.entries, IsEmpty());
    EXPECT_THAT(io.log, ElementsAre("get_int body number_of_types"));
  }
}

TEST_F(BodyCatalogueTest, ATypeWithoutBodiesAddsNoEntry) {
  for (const char* count : {"0", "-3"}) {
    io.answers["body number_of_bodies standard"] = count;
    const CatalogueListing listing = listBodies(channel);
    EXPECT_TRUE(listing.complete);
    EXPECT_THAT(texts(listing), ElementsAre("Hand-held device 01"));
  }
  EXPECT_THAT(io.reports(), IsEmpty());
}

TEST_F(BodyCatalogueTest, TypesAreKnownInAnyLetterCaseAndKeepTheirSpelling) {
  io.answers = {{"body number_of_types", "5"},
                {"body type t01", "Standard"},
                {"body type t02", "WANDGRIP"},
                {"body type t03", "standard "},
                {"body type t04", ""},
                {"body type t05", "standardbody"},
                {"body number_of_bodies Standard", "1"},
                {"body type_desc Standard", "S"},
                {"body calibrated Standard b01", "yes"},
                {"body target_type Standard b01", "tt_std"},
                {"body desc Standard b01", "One"},
                {"body number_of_bodies WANDGRIP", "0"},
                {"body type_desc WANDGRIP", "W"}};
  const CatalogueListing listing = listBodies(channel);
  EXPECT_TRUE(listing.complete);
  EXPECT_THAT(data(listing), ElementsAre("Standard|1|calibrated|tt_std"));
  EXPECT_THAT(io.reports(), IsEmpty());
}

TEST_F(BodyCatalogueTest, QuotesReachNoTextAndApostrophesNoTargetType) {
  io.answers["body type_desc standard"] = "\"Stan\"dard\" body";
  io.answers["body desc standard b01"] = "\"The \"big\" one's 'head'\"";
  io.answers["body target_type standard b01"] = "  'tt_'std_cyl'  ";
  const CatalogueListing listing = listBodies(channel);
  EXPECT_EQ(texts(listing).at(0), "The big one's 'head' (Standard body 01)");
  EXPECT_EQ(data(listing).at(0), "standard|1|calibrated|tt_std_cyl");
}

TEST_F(BodyCatalogueTest, BlanksInsideTheApostrophesAreTrimmedToo) {
  io.answers["body target_type standard b01"] = "' tt_std '";
  EXPECT_EQ(data(listBodies(channel)).at(0), "standard|1|calibrated|tt_std");
}

TEST_F(BodyCatalogueTest, DescriptionsThatLookLikePlaceholdersAreShownAsTheyAre) {
  io.answers["body desc standard b01"] = "%1 %2 %s|";
  io.answers["body type_desc standard"] = "%1";
  const CatalogueListing listing = listBodies(channel);
  EXPECT_EQ(texts(listing).at(0), "%1 %2 %s| (%1 01)");
  EXPECT_EQ(texts(listing).at(1), "%1 02");
}

TEST_F(BodyCatalogueTest, UmlautsInDescriptionsAreKept) {
  io.answers["body desc standard b01"] = "\"Kopfträger\"";
  EXPECT_EQ(texts(listBodies(channel)).at(0), "Kopfträger (Standard body 01)");
}

TEST_F(BodyCatalogueTest, NumbersInTextsHaveAtLeastTwoDigits) {
  io.respond = [](const std::string&, const std::string& text) {
    if (text == "body number_of_types") {
      return FakeChannel::Answer{0, "1"};
    }
    if (text == "body type t01") {
      return FakeChannel::Answer{0, "standard"};
    }
    if (text == "body number_of_bodies standard") {
      return FakeChannel::Answer{0, "100"};
    }
    return FakeChannel::Answer{0, text == "body type_desc standard" ? "Body" : ""};
  };
  const CatalogueListing listing = listBodies(channel);
  ASSERT_EQ(listing.entries.size(), 100u);
  EXPECT_EQ(texts(listing).at(8), "Body 09");
  EXPECT_EQ(texts(listing).at(9), "Body 10");
  EXPECT_EQ(texts(listing).at(99), "Body 100");
  EXPECT_EQ(data(listing).at(8), "standard|9|uncalibrated|");
  EXPECT_EQ(data(listing).at(99), "standard|100|uncalibrated|");
  EXPECT_EQ(io.log.back(), "get_string body desc standard b100");
}

TEST_F(BodyCatalogueTest, AbsurdCountsCountAsFailed) {
  for (const char* count : {"100", "2000000000", "2147483647"}) {
    io.answers["body number_of_types"] = count;
    io.takeLog();
    const CatalogueListing listing = listBodies(channel);
    EXPECT_FALSE(listing.complete);
    EXPECT_THAT(io.log,
                ElementsAre("get_int body number_of_types", reported("Error: Unable to get number of types for body")));
  }
  io.answers["body number_of_types"] = "3";
  for (const char* count : {"1000", "2000000000", "2147483647"}) {
    io.answers["body number_of_bodies wandgrip"] = count;
    io.takeLog();
    const CatalogueListing listing = listBodies(channel);
    EXPECT_FALSE(listing.complete);
    EXPECT_EQ(listing.entries.size(), 2u) << "the standard bodies stay";
    EXPECT_EQ(io.log.back(), reported("Error: Unable to check number of bodies for body"));
  }
}

TEST_F(BodyCatalogueTest, TheMostTypesAndBodiesBelievedAreListed) {
  io.respond = [](const std::string&, const std::string& text) {
    if (text == "body number_of_types") {
      return FakeChannel::Answer{0, "99"};
    }
    if (text == "body number_of_bodies standard") {
      return FakeChannel::Answer{0, "999"};
    }
    return FakeChannel::Answer{0, text == "body type t99" ? "standard" : "other"};
  };
  const CatalogueListing listing = listBodies(channel);
  EXPECT_TRUE(listing.complete);
  EXPECT_EQ(listing.entries.size(), 999u);
}

// --- entries read back ----------------------------------------------------------------------------------------------

TEST(BodyEntryData, ReadsBackTypeNumberCalibrationAndTargetType) {
  const auto key = parseEntryData("standard|12|calibrated|tt_5dof");
  ASSERT_TRUE(key.has_value());
  EXPECT_EQ(key->type, "standard");
  EXPECT_EQ(key->number, 12);
  EXPECT_TRUE(key->calibrated);
  EXPECT_EQ(key->targetType, "tt_5dof");
}

TEST(BodyEntryData, IsCalibratedOnTheExactWordOnly) {
  for (const char* word : {"uncalibrated", "Calibrated", "calibrated ", "", "yes"}) {
    const auto key = parseEntryData(QStringLiteral("wandgrip|1|%1|tt_std").arg(QLatin1String(word)));
    ASSERT_TRUE(key.has_value());
    EXPECT_FALSE(key->calibrated) << word;
  }
}

TEST(BodyEntryData, IsNothingWithFewerThanFourParts) {
  for (const char* few : {"", "standard", "standard|1", "standard|1|calibrated", "||"}) {
    EXPECT_FALSE(parseEntryData(QLatin1String(few)).has_value()) << few;
  }
}

TEST(BodyEntryData, KeepsEmptyPartsAndIgnoresMoreThanFour) {
  const auto empty = parseEntryData("|||");
  ASSERT_TRUE(empty.has_value());
  EXPECT_EQ(empty->type, "");
  EXPECT_EQ(empty->number, 0);
  EXPECT_FALSE(empty->calibrated);
  EXPECT_EQ(empty->targetType, "");
  const auto more = parseEntryData("standard|2|calibrated|tt_std|extra");
  ASSERT_TRUE(more.has_value());
  EXPECT_EQ(more->targetType, "tt_std");
}

TEST(BodyEntryData, ReadsNumbersInDecimal) {
  EXPECT_EQ(parseEntryData("standard|010|calibrated|tt_std")->number, 10);
  EXPECT_EQ(parseEntryData("standard|0x10|calibrated|tt_std")->number, 0);
  EXPECT_EQ(parseEntryData("standard|one|calibrated|tt_std")->number, 0);
  EXPECT_EQ(parseEntryData("standard|99999999999|calibrated|tt_std")->number, 0);
}

TEST(BodyEntryData, ReadsBackWhatTheListingWrote) {
  FakeChannel io;
  io.respond = [](const std::string&, const std::string& text) {
    if (text.find("number_of") != std::string::npos) {
      return FakeChannel::Answer{0, "1"};
    }
    if (text == "body type t01") {
      return FakeChannel::Answer{0, "wandgrip"};
    }
    return FakeChannel::Answer{0, text == "body calibrated wandgrip b01" ? "yes" : "tt_pen_cyl"};
  };
  const BackendVersions versions = backendVersion(1, 12, 0);
  korvex2::BackendChannel channel(&io, &versions);
  const auto key = parseEntryData(listBodies(channel).entries.at(0).data);
  ASSERT_TRUE(key.has_value());
  EXPECT_EQ(key->type, "wandgrip");
  EXPECT_EQ(key->number, 1);
  EXPECT_TRUE(key->calibrated);
  EXPECT_EQ(key->targetType, "tt_pen_cyl");
}

TEST(BodyEntryData, MatchesAKeyThatIsFollowedByASeparator) {
  const QString entry = QStringLiteral("standard|1|calibrated|tt_std");
  EXPECT_TRUE(matchesKey(entry, "standard|1"));
  EXPECT_TRUE(matchesKey(entry, "standard")) << "the first body of the type then";
  EXPECT_FALSE(matchesKey(entry, "Standard|1")) << "letter case counts";
  EXPECT_FALSE(matchesKey(entry, "standard|")) << "two separators do not follow each other";
  EXPECT_FALSE(matchesKey(entry, ""));
  EXPECT_FALSE(matchesKey("standard|12|calibrated|tt_std", "standard|1"));
  EXPECT_FALSE(matchesKey(entry, "standard|1|calibrated|tt_std")) << "no separator follows";
}
