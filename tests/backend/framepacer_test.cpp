// When frames are due: without drift, without bursts, for ever.
#include "framepacer.h"

#include <gtest/gtest.h>

#include <vector>

using korvex2::FramePacer;
using namespace std::chrono_literals;

TEST(FramePacer, GivesOutEveryFrameAtItsDeadlineAndNotBefore) {
  for (const int rate : {1, 3, 7, 60, 90, 144, 999, 1000}) {
    FramePacer pacer(rate);
    for (std::int64_t frame = 0; frame < 2500; ++frame) {
      const FramePacer::Time due = pacer.deadline();
      // The frame's exact time is frame / rate; the deadline is the first whole nanosecond that is not before it.
      ASSERT_GE(due.count() * rate, frame * 1'000'000'000) << rate << " Hz, frame " << frame;
      ASSERT_LT((due.count() - 1) * rate, frame * 1'000'000'000) << rate << " Hz, frame " << frame;
      if (frame > 0) {
        ASSERT_FALSE(pacer.take(due - 1ns)) << rate << " Hz, frame " << frame;
      }
      ASSERT_EQ(pacer.take(due), frame) << rate << " Hz";
      ASSERT_FALSE(pacer.take(due)) << "the same frame twice";
      ASSERT_GT(pacer.deadline(), due);
    }
  }
}

TEST(FramePacer, ASecondHasExactlyTheRateOfFrames) {
  for (const int rate : {1, 7, 60, 1000}) {
    FramePacer pacer(rate);
    int frames = 0;
    while (pacer.deadline() < 1s) {
      ASSERT_TRUE(pacer.take(pacer.deadline()));
      ++frames;
    }
    EXPECT_EQ(frames, rate);
  }
}

TEST(FramePacer, LatenessDoesNotAddUp) {
  FramePacer pacer(100);
  for (int frame = 0; frame < 1000; ++frame) {
    ASSERT_EQ(pacer.take(frame * 10ms + 7ms), frame);
    ASSERT_EQ(pacer.deadline(), (frame + 1) * 10ms);
  }
}

TEST(FramePacer, AfterAStallItLeavesFramesOutAndMakesNoneUp) {
  FramePacer pacer(100);
  ASSERT_EQ(pacer.take(0ms), 0);
  ASSERT_EQ(pacer.take(10ms), 1);
  EXPECT_EQ(pacer.take(517ms), 51) << "only the latest";
  EXPECT_FALSE(pacer.take(518ms));
  EXPECT_EQ(pacer.deadline(), 520ms);
  EXPECT_EQ(pacer.take(520ms), 52);
}

TEST(FramePacer, StillCountsAfterYears) {
  FramePacer pacer(1000);
  const FramePacer::Time years = 24h * 365 * 50;
  EXPECT_EQ(pacer.take(years + 1ms), std::int64_t{50} * 365 * 86400 * 1000 + 1);
  EXPECT_EQ(pacer.deadline(), years + 2ms);
}

TEST(FramePacer, TellsAFramesTimeInSeconds) {
  const FramePacer pacer(60);
  EXPECT_DOUBLE_EQ(pacer.secondsOf(90), 1.5);
}
