// Live lines: which records are taken, what they change, and what a bad line does.
#include "trackingstream.h"

#include <limits>

#include "livelines.h"

using korvex2::TrackedPose;
using korvex2::TrackingStream;
using Tracked = TrackingStream::Tracked;

class TrackingStreamTest : public testing::Test {
 protected:
  /// The result of reading a line; `marked` tells what it said of the chosen body.
  int read(const char* tag, const std::string& line) {
    marked = Tracked::Unknown;
    return stream.parse(tag, line.c_str(), &marked);
  }
  TrackedPose bodyPose() const { return stream.state().body; }
  TrackedPose devicePose() const { return stream.state().device; }
  /// Gives both stores a pose (id 1, quality 1) and leaves the body chosen that was asked for.
  void fillStores(const QByteArray& type, int index) {
    stream.setChosenBody("standard", 1);
    ASSERT_EQ(read("6d", "6d 1 " + body("1", "1")), 0);
    stream.setChosenBody("wandgrip", 1);
    ASSERT_EQ(read("6dw", "6dw 1 " + device("1", "1", "5")), 0);
    stream.setChosenBody(type, index);
  }

  TrackingStream stream;
  Tracked marked = Tracked::Unknown;
};

TEST_F(TrackingStreamTest, KnowsNothingAtFirst) {
  expectUntouched(bodyPose());
  expectUntouched(devicePose());
  EXPECT_EQ(stream.state().tracked, Tracked::Unknown);
  EXPECT_EQ(stream.state().markings, 0u);
  EXPECT_EQ(stream.droppedTooLong(), 0u);
  EXPECT_EQ(stream.droppedBusy(), 0u);
}

// --- which lines are taken ------------------------------------------------------------------------------------------

TEST_F(TrackingStreamTest, TakesOnlyLinesOfTheChosenBodysKind) {
  const std::string bodyLine = "6d 1 " + body("0", "1");
  const std::string deviceLine = "6dw 1 " + device("0", "1", "0");
  const std::string device2Line = "6dw2 1 1 " + device2("0", "1", "0");
  for (const char* type : {"", "Standard", "STANDARD", "standard ", "wandgrips", "Wandgrip", "other"}) {
    stream.setChosenBody(type, 0);
    EXPECT_EQ(read("6d", bodyLine), 0);
    EXPECT_EQ(read("6dw", deviceLine), 0);
    EXPECT_EQ(read("6dw2", device2Line), 0);
    EXPECT_EQ(read("6d", "malformed"), 0) << "not even looked at";
    expectUntouched(bodyPose());
    expectUntouched(devicePose());
  }
  stream.setChosenBody("standard", 0);
  read("6dw", deviceLine);
  read("6dw2", device2Line);
  expectUntouched(devicePose());
  for (const char* tag : {"6d ", "6D", "6", "", "6di", "6dw22", "3d"}) {
    EXPECT_EQ(read(tag, bodyLine), 0);
    expectUntouched(bodyPose());
  }
  EXPECT_EQ(read("6d", bodyLine), 0);
  expectPose(bodyPose());
  expectUntouched(devicePose());
  stream.setChosenBody("wandgrip", 0);
  read("6d", "6d 1 " + body("0", "0.5"));
  EXPECT_EQ(bodyPose().quality, 1.0F);
  read("6dw", deviceLine);
  expectPose(devicePose());
}

TEST_F(TrackingStreamTest, NullTextsAreIgnored) {
  stream.setChosenBody("standard", 0);
  EXPECT_EQ(stream.take(nullptr, "6d 0"), 0);
  EXPECT_EQ(stream.take("6d", nullptr), 0);
  EXPECT_EQ(stream.state().markings, 0u);
}

TEST_F(TrackingStreamTest, TheHostHearsZeroEvenOfMalformedLines) {
  stream.setChosenBody("standard", 0);
  EXPECT_EQ(stream.parse("6d", "6d x"), -1);
  EXPECT_EQ(stream.take("6d", "6d x"), 0);
  EXPECT_EQ(stream.take("6d", ("6d 1 " + body("0", "1")).c_str(), &marked), 0);
  EXPECT_EQ(marked, Tracked::Yes);
  expectPose(bodyPose());
}

// --- 6d -------------------------------------------------------------------------------------------------------------

TEST_F(TrackingStreamTest, BodyIsFoundByItsId) {
  stream.setChosenBody("standard", 7);
  EXPECT_EQ(read("6d", "6d 3 " + body("3", "1", identityBlocks) + body("7", "0.75") + body("8", "1", identityBlocks)),
            0);
  EXPECT_EQ(bodyPose().id, 7);
  EXPECT_EQ(bodyPose().quality, 0.75F);
  EXPECT_EQ(bodyPose().buttons, 0);
  expectPose(bodyPose());
  EXPECT_EQ(marked, Tracked::Yes);
  EXPECT_EQ(stream.state().tracked, Tracked::Yes);
}

TEST_F(TrackingStreamTest, BodyIsFoundByItsIdMinusOneWithHead) {
  stream.setChosenBody("standard", 7);
  stream.setWithHead(true);
  read("6d", "6d 2 " + body("7", "0.5", identityBlocks) + body("8", "1"));
  EXPECT_EQ(bodyPose().id, 8) << "the record's own id is kept";
  expectPose(bodyPose());
  stream.setWithHead(false);
  read("6d", "6d 2 " + body("7", "0.5", identityBlocks) + body("8", "1"));
  EXPECT_EQ(bodyPose().id, 7);
}

TEST_F(TrackingStreamTest, TheLowestIdMinusOneIsNoOtherBody) {
  stream.setChosenBody("standard", std::numeric_limits<int>::max());
  stream.setWithHead(true);
  EXPECT_EQ(read("6d", "6d 1 " + body("-2147483648", "1")), 0);
  EXPECT_EQ(marked, Tracked::No);
}

TEST_F(TrackingStreamTest, WithHeadDoesNotMatterToDevices) {
  stream.setChosenBody("wandgrip", 1);
  stream.setWithHead(true);
  read("6dw", "6dw 1 " + device("1", "1", "0"));
  expectPose(devicePose());
}

TEST_F(TrackingStreamTest, BodyThatNoRecordMatchesIsNotTracked) {
  fillStores("standard", 2);
  EXPECT_EQ(read("6d", "6d 2 " + body("0", "1") + body("1", "0.5")), 0);
  EXPECT_EQ(marked, Tracked::No);
  EXPECT_EQ(stream.state().tracked, Tracked::No);
  EXPECT_EQ(bodyPose().id, 1) << "the store keeps its last record";
  EXPECT_EQ(bodyPose().quality, 1.0F);
}

TEST_F(TrackingStreamTest, NoBodyRecordsMeanNotTracked) {
  for (const char* line : {"6d 0", "6d -1", "6d 0 [0 1][1 2 3]", "6d -2147483648", "6d -99999999999999999999"}) {
    fillStores("standard", 1);
    EXPECT_EQ(read("6d", line), 0) << line;
    EXPECT_EQ(marked, Tracked::No) << line;
    expectPose(bodyPose());
  }
}

TEST_F(TrackingStreamTest, LostBodyKeepsEverythingButItsRotation) {
  fillStores("standard", 1);
  const auto before = stream.state().markings;
  EXPECT_EQ(read("6d", "6d 1 " + body("1", "-1", "[7 8 9][1 2 3 4 5 6 7 8 9]")), 0);
  EXPECT_EQ(marked, Tracked::Unknown) << "it counts as matched, so nothing is marked";
  EXPECT_EQ(stream.state().markings, before);
  EXPECT_EQ(bodyPose().id, 1);
  EXPECT_EQ(bodyPose().quality, 1.0F);
  EXPECT_EQ(bodyPose().position.x, 1.0);
  EXPECT_EQ(bodyPose().position.y, 2.0);
  EXPECT_EQ(bodyPose().position.z, 3.0);
  expectIdentity(bodyPose().rotation);
}

TEST_F(TrackingStreamTest, OnlyAQualityOfExactlyMinusOneIsLost) {
  stream.setChosenBody("standard", 0);
  for (const char* quality : {"-0.999", "-1.0001", "-2", "0", "0.99", "nan", "inf"}) {
    stream.setChosenBody("standard", 0);
    EXPECT_EQ(read("6d", "6d 1 " + body("0", quality)), 0);
    EXPECT_EQ(marked, Tracked::Yes) << quality;
  }
  for (const char* quality : {"-1", "-1.0", "-1e0", "-0x1p0", "-1.000000001"}) {  // the last is -1 in single precision
    EXPECT_EQ(read("6d", "6d 1 " + body("0", quality)), 0);
    EXPECT_EQ(marked, Tracked::Unknown) << quality;
  }
}

TEST_F(TrackingStreamTest, TheLastOfSeveralMatchingRecordsStays) {
  stream.setChosenBody("standard", 4);
  read("6d", "6d 2 " + body("4", "1", identityBlocks) + body("4", "0.5"));
  EXPECT_EQ(bodyPose().quality, 0.5F);
  expectPose(bodyPose());
  EXPECT_EQ(stream.state().markings, 2u);
}

// --- 6dw ------------------------------------------------------------------------------------------------------------

TEST_F(TrackingStreamTest, OldDeviceIsFoundByItsIdWithItsButtons) {
  stream.setChosenBody("wandgrip", 1);
  EXPECT_EQ(read("6dw", "6dw 2 " + device("0", "1", "9", identityBlocks) + device("1", "0.5", "6")), 0);
  EXPECT_EQ(devicePose().id, 1);
  EXPECT_EQ(devicePose().quality, 0.5F);
  EXPECT_EQ(devicePose().buttons, 6);
  expectPose(devicePose());
  EXPECT_EQ(marked, Tracked::Yes);
  expectUntouched(bodyPose());
}

TEST_F(TrackingStreamTest, LostOldDeviceIsNotTrackedAndKeepsItsPose) {
  fillStores("wandgrip", 1);
  EXPECT_EQ(read("6dw", "6dw 1 " + device("1", "-1", "3", identityBlocks)), 0);
  EXPECT_EQ(marked, Tracked::No);
  EXPECT_EQ(devicePose().quality, 1.0F);
  EXPECT_EQ(devicePose().buttons, 5);
  expectPose(devicePose());
}

TEST_F(TrackingStreamTest, DeviceLinesWithoutAMatchChangeNothing) {
  fillStores("wandgrip", 3);
  const auto before = stream.state().markings;
  for (const std::string& line :
       {std::string("6dw 0"), std::string("6dw -5"), "6dw 1 " + device("1", "0.5", "0", identityBlocks)}) {
    EXPECT_EQ(read("6dw", line), 0);
    EXPECT_EQ(marked, Tracked::Unknown);
  }
  for (const std::string& line :
       {std::string("6dw2 4 0"), std::string("6dw2 1 -5"), "6dw2 1 1 " + device2("3", "0.5", "0", identityBlocks)}) {
    EXPECT_EQ(read("6dw2", line), 0);
    EXPECT_EQ(marked, Tracked::Unknown);
  }
  EXPECT_EQ(stream.state().markings, before);
  EXPECT_EQ(devicePose().quality, 1.0F);
  expectPose(devicePose());
}

TEST_F(TrackingStreamTest, OldDevicesSecondIntegerIsNotNeeded) {
  stream.setChosenBody("wandgrip", 0);
  EXPECT_EQ(read("6dw", "6dw 1 [0 1]" + poseBlocks), -1) << "the button value is missing";
  expectUntouched(devicePose());
}

// --- 6dw2 -----------------------------------------------------------------------------------------------------------

TEST_F(TrackingStreamTest, NewDeviceIsFoundByItsPlaceInTheLine) {
  stream.setChosenBody("wandgrip", 1);
  EXPECT_EQ(read("6dw2", "6dw2 2 2 " + device2("1", "0.25", "1", identityBlocks) + device2("40", "0.5", "6")), 0);
  EXPECT_EQ(devicePose().id, 40) << "the record's own id is stored";
  EXPECT_EQ(devicePose().quality, 0.5F);
  EXPECT_EQ(devicePose().buttons, 6) << "the first integer after the quality";
  expectPose(devicePose());
  EXPECT_EQ(marked, Tracked::Yes);
  EXPECT_FALSE(devicePose().seenAs(1));
}

TEST_F(TrackingStreamTest, NewDevicesRecordCountIsTheSecondInteger) {
  stream.setChosenBody("wandgrip", 0);
  EXPECT_EQ(read("6dw2", "6dw2 3 1 " + device2("0", "1", "0")), 0);
  expectPose(devicePose());
  EXPECT_EQ(read("6dw2", "6dw2 1 3 " + device2("0", "1", "0")), -1) << "two records are missing";
  EXPECT_EQ(read("6dw2", "6dw2 1 " + device2("0", "1", "0")), -1) << "no second integer";
}

TEST_F(TrackingStreamTest, LostNewDeviceIsNotTracked) {
  fillStores("wandgrip", 0);
  EXPECT_EQ(read("6dw2", "6dw2 1 1 " + device2("0", "-1", "0", identityBlocks)), 0);
  EXPECT_EQ(marked, Tracked::No);
  EXPECT_EQ(stream.state().tracked, Tracked::No);
  expectPose(devicePose());
}

TEST_F(TrackingStreamTest, NewDevicesFourthBlockIsSkippedButMustBeThere) {
  stream.setChosenBody("wandgrip", 0);
  const std::string head = "6dw2 1 1 [0 1 2 3]" + poseBlocks;
  EXPECT_EQ(read("6dw2", head), -1);
  EXPECT_EQ(read("6dw2", head + "["), -1);
  EXPECT_EQ(read("6dw2", head + "]"), -1);
  expectUntouched(devicePose());
  for (const char* block : {"[]", "[1 2 3]", "[anything at all: [[[]", " x [\t]"}) {
    EXPECT_EQ(read("6dw2", head + block), 0) << block;
  }
  expectPose(devicePose());
  // The fourth block's content is not the next record's head.
  EXPECT_EQ(read("6dw2", "6dw2 2 2 " + device2("0", "1", "0") + device2("1", "1", "0")), 0);
}

// --- malformed lines ------------------------------------------------------------------------------------------------

TEST_F(TrackingStreamTest, LinesWithoutACountAreMalformed) {
  stream.setChosenBody("standard", 0);
  for (const char* line : {"", "6", "6d", "6d ", "6d x", "6d [0 1]", "6d    ", "6d -", "6d +"}) {
    EXPECT_EQ(read("6d", line), -1) << '"' << line << '"';
  }
  stream.setChosenBody("wandgrip", 0);
  for (const char* line : {"", "6dw", "6dw ", "6dw x"}) {
    EXPECT_EQ(read("6dw", line), -1) << '"' << line << '"';
  }
  for (const char* line : {"", "6dw2", "6dw2 ", "6dw2 x", "6dw2 1", "6dw2 1 x", "6dw2 1 [0 1 2 3]"}) {
    EXPECT_EQ(read("6dw2", line), -1) << '"' << line << '"';
  }
  EXPECT_EQ(stream.state().markings, 0u);
  expectUntouched(bodyPose());
  expectUntouched(devicePose());
}

TEST_F(TrackingStreamTest, AnEarlierLongerLineLeavesNothingBehind) {
  stream.setChosenBody("standard", 0);
  ASSERT_EQ(read("6d", "6d 1 " + body("0", "1")), 0);
  EXPECT_EQ(read("6d", "6"), -1);
  EXPECT_EQ(read("6d", "6d"), -1);
  EXPECT_EQ(read("6d", "6d 1 "), -1);
  EXPECT_EQ(read("6d", "6d 1 [0 1]"), -1);
}

TEST_F(TrackingStreamTest, MalformedBlocksEndTheLine) {
  stream.setChosenBody("standard", 0);
  for (const char* record :
       {"", "[", "]", "[]", "[0", "0 1]", "[0]", "[0 x]", "[x 1]", "[0 1]", "[0 1][1 2]", "[0 1][1 2 3]",
        "[0 1][1 2 3][1 0 0 0 1 0 0 0]", "[0 1][1 2 3][1 0 0 0 1 0 0 0 x]", "[0 1][1 2 3][1 0 0 0 1 0 0 0 1",
        "[[0 1][1 2 3][1 0 0 0 1 0 0 0 1]", "]0 1[[1 2 3][1 0 0 0 1 0 0 0 1]", "[0 1][1,5 2 3][1 0 0 0 1 0 0 0 1]"}) {
    EXPECT_EQ(read("6d", std::string("6d 1 ") + record), -1) << record;
    EXPECT_EQ(marked, Tracked::Unknown) << record;
  }
  expectUntouched(bodyPose());
}

TEST_F(TrackingStreamTest, NumbersDoNotReachAcrossTheEndOfABlock) {
  stream.setChosenBody("standard", 0);
  EXPECT_EQ(read("6d", "6d 1 [0][1][1 2 3][1 0 0 0 1 0 0 0 1]"), -1);
}

TEST_F(TrackingStreamTest, TextAroundTheBlocksAndMoreNumbersInThemDoNotMatter) {
  stream.setChosenBody("standard", 0);
  EXPECT_EQ(read("6d", "6d 1,garbage ] [ 0\t 1 extra] ] xyz [1 2 3 4 5]abc[11 21 31 12 22 32 13 23 33 0] rest ["), 0);
  expectPose(bodyPose());
}

TEST_F(TrackingStreamTest, TheTagInTheLineIsSkippedUnread) {
  stream.setChosenBody("standard", 0);
  EXPECT_EQ(read("6d", "???1 " + body("0", "1")), 0);
  expectPose(bodyPose());
}

TEST_F(TrackingStreamTest, RecordsBeforeAMalformedOneKeepTheirEffect) {
  stream.setChosenBody("standard", 0);
  EXPECT_EQ(read("6d", "6d 2 " + body("0", "1") + "[1 1][broken]"), -1);
  expectPose(bodyPose());
  EXPECT_EQ(marked, Tracked::Yes);
  stream.setChosenBody("standard", 5);
  EXPECT_EQ(read("6d", "6d 2 " + body("0", "1") + "[1 1][broken]"), -1);
  EXPECT_EQ(marked, Tracked::Unknown) << "a line not read to its end does not say that the body is missing";
  stream.setChosenBody("wandgrip", 0);
  EXPECT_EQ(read("6dw", "6dw 2 " + device("0", "1", "3") + "[1 1]"), -1);
  EXPECT_EQ(devicePose().buttons, 3);
}

TEST_F(TrackingStreamTest, AMalformedRecordHasNoEffectItself) {
  stream.setChosenBody("wandgrip", 0);
  EXPECT_EQ(read("6dw2", "6dw2 1 1 [0 1 2 3]" + poseBlocks + "no fourth block"), -1);
  expectUntouched(devicePose());
  EXPECT_EQ(marked, Tracked::Unknown);
}

TEST_F(TrackingStreamTest, HostileCountsEndAtTheFirstMissingRecord) {
  stream.setChosenBody("standard", 0);
  for (const char* count : {"2000000000", "2147483647", "4294967297", "99999999999999999999", "0x7fffffff"}) {
    EXPECT_EQ(read("6d", std::string("6d ") + count + " " + body("0", "1")), -1) << count;
    EXPECT_EQ(marked, Tracked::Yes) << count;
  }
  stream.setChosenBody("wandgrip", 0);
  EXPECT_EQ(read("6dw", "6dw 2000000000 " + device("0", "1", "0")), -1);
  EXPECT_EQ(read("6dw2", "6dw2 1 2000000000 " + device2("0", "1", "0")), -1);
}

TEST_F(TrackingStreamTest, TheLockIsFreeAfterEveryKindOfEnd) {
  stream.setChosenBody("standard", 0);
  for (const char* line : {"6d", "6d x", "6d 0", "6d 1 [", "6d 1 [0 1][1 2 3][1 2 3 4 5 6 7 8 9]"}) {
    read("6d", line);
    stream.setWithHead(false);  // would wait for ever
  }
  EXPECT_EQ(stream.droppedBusy(), 0u);
}

// --- long lines -----------------------------------------------------------------------------------------------------

TEST_F(TrackingStreamTest, ALineOf9999CharactersIsTaken) {
  stream.setChosenBody("standard", 0);
  std::string line = "6d 1 " + body("0", "1");
  line.append(9999 - line.size(), ' ');
  EXPECT_EQ(read("6d", line), 0);
  expectPose(bodyPose());
  EXPECT_EQ(stream.droppedTooLong(), 0u);
}

TEST_F(TrackingStreamTest, ALongerLineIsDroppedWhole) {
  stream.setChosenBody("standard", 0);
  std::string line = "6d 1 " + body("0", "1");
  line.append(10000 - line.size(), ' ');
  EXPECT_EQ(read("6d", line), 0);
  EXPECT_EQ(stream.droppedTooLong(), 1u);
  line.append(100000, ']');
  EXPECT_EQ(read("6d", line), 0);
  EXPECT_EQ(stream.droppedTooLong(), 2u);
  expectUntouched(bodyPose());
  EXPECT_EQ(marked, Tracked::Unknown);
  EXPECT_EQ(read("6d", "6d 1 " + body("0", "1")), 0) << "the next line is taken";
  expectPose(bodyPose());
}

TEST_F(TrackingStreamTest, ALongLineOfAnotherKindIsNotCounted) {
  stream.setChosenBody("standard", 0);
  const std::string line(20000, '[');
  EXPECT_EQ(read("6dw", line), 0);
  EXPECT_EQ(read("3d", line), 0);
  EXPECT_EQ(stream.droppedTooLong(), 0u);
}

// --- choosing, resetting, showing -----------------------------------------------------------------------------------

TEST_F(TrackingStreamTest, ResettingTheQualitiesKeepsTheRest) {
  fillStores("standard", 1);
  stream.resetQualities();
  EXPECT_EQ(bodyPose().quality, -1.0F);
  EXPECT_EQ(devicePose().quality, -1.0F);
  EXPECT_EQ(bodyPose().id, 1);
  EXPECT_EQ(devicePose().id, 1);
  EXPECT_EQ(devicePose().buttons, 5);
  expectPose(bodyPose());
  expectPose(devicePose());
  EXPECT_FALSE(bodyPose().seenAs(1));
}

TEST_F(TrackingStreamTest, ChoosingABodyForgetsTheMarkingOfTheOneBefore) {
  fillStores("standard", 1);
  EXPECT_EQ(stream.state().tracked, Tracked::Unknown);
  read("6d", "6d 0");
  EXPECT_EQ(stream.state().tracked, Tracked::No);
  const auto markings = stream.state().markings;
  stream.setChosenBody("standard", 0);
  EXPECT_EQ(stream.state().tracked, Tracked::Unknown);
  EXPECT_EQ(stream.state().markings, markings);
  expectPose(bodyPose());
}

TEST_F(TrackingStreamTest, EveryMarkingIsCounted) {
  stream.setChosenBody("standard", 0);
  read("6d", "6d 0");
  read("6d", "6d 0");
  read("6d", "6d 1 " + body("0", "1"));
  EXPECT_EQ(stream.state().markings, 3u);
  EXPECT_EQ(stream.state().tracked, Tracked::Yes);
}

TEST(TrackedPoseTest, IsSeenWithQualityOneAndTheBodysIdOnly) {
  TrackedPose pose;
  EXPECT_FALSE(pose.seenAs(-1)) << "nothing seen yet";
  pose.id = 2;
  for (const float quality : {0.99F, 1.0000001F, 0.0F, -1.0F, 2.0F, std::numeric_limits<float>::quiet_NaN()}) {
    pose.quality = quality;
    EXPECT_FALSE(pose.seenAs(2)) << quality;
  }
  pose.quality = 1.0F;
  EXPECT_TRUE(pose.seenAs(2));
  EXPECT_FALSE(pose.seenAs(1));
  EXPECT_FALSE(pose.seenAs(-1));
}

TEST(TrackedPoseTest, IsNotSeenWithNumbersThatCannotBeShown) {
  for (const double bad : {std::numeric_limits<double>::infinity(), std::numeric_limits<double>::quiet_NaN()}) {
    TrackedPose pose;
    pose.id = 0;
    pose.quality = 1.0F;
    pose.position.y = bad;
    EXPECT_FALSE(pose.seenAs(0));
    pose.position.y = 0.0;
    EXPECT_TRUE(pose.seenAs(0));
    pose.rotation.data(2, 1) = bad;
    EXPECT_FALSE(pose.seenAs(0));
  }
}
