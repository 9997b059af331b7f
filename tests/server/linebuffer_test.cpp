// From bytes to lines, wherever the bytes are cut.
#include "linebuffer.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

using korvex2::LineBuffer;

namespace {

using Lines = std::vector<std::pair<std::string, char>>;

Lines takeAll(LineBuffer& buffer) {
  Lines lines;
  while (const auto line = buffer.take()) {
    lines.emplace_back(line->text.toStdString(), line->end);
  }
  return lines;
}

Lines linesOf(const std::string& bytes, std::size_t piece) {
  LineBuffer buffer;
  Lines lines;
  for (std::size_t at = 0; at < bytes.size(); at += piece) {
    const std::string part = bytes.substr(at, piece);
    buffer.append(part.data(), part.size());
    for (auto& line : takeAll(buffer)) {
      lines.push_back(std::move(line));
    }
  }
  return lines;
}

const std::size_t longest = 131072;

}  // namespace

TEST(LineBuffer, ALineEndsWithALineFeedOrAZeroByteAndOneCarriageReturnBelongsToTheEnd) {
  using namespace std::string_literals;
  const std::string bytes = "one\ntwo\0three\r\nfour\r\0\nfi\rve\r\r\n\0rest"s;
  const Lines expected = {{"one", '\n'}, {"two", '\0'},      {"three", '\n'}, {"four", '\0'},
                          {"", '\n'},    {"fi\rve\r", '\n'}, {"", '\0'}};
  for (std::size_t piece = 1; piece <= bytes.size(); ++piece) {
    EXPECT_EQ(linesOf(bytes, piece), expected) << piece;
  }
}

TEST(LineBuffer, HasNothingToGiveBeforeTheEnd) {
  LineBuffer buffer;
  EXPECT_FALSE(buffer.hasLine());
  buffer.append("korvex2\r", 8);
  EXPECT_FALSE(buffer.hasLine());
  EXPECT_FALSE(buffer.take().has_value());
  buffer.append("\n", 1);
  EXPECT_TRUE(buffer.hasLine());
  EXPECT_EQ(buffer.take()->text, "korvex2");
  EXPECT_FALSE(buffer.hasLine());
}

TEST(LineBuffer, TheLongestLineFitsWithEveryEnd) {
  for (const std::string& end :
       {std::string("\n"), std::string("\r\n"), std::string("\0", 1), std::string("\r\0", 2)}) {
    LineBuffer buffer;
    const std::string text(longest, 'x');
    buffer.append(text.data(), text.size());
    EXPECT_FALSE(buffer.isTooLong());
    buffer.append(end.data(), 1);
    EXPECT_FALSE(buffer.isTooLong());
    EXPECT_EQ(buffer.hasLine(), end.size() == 1);
    if (end.size() == 2) {
      EXPECT_EQ(buffer.room(), 1U);
      buffer.append(end.data() + 1, 1);
    }
    ASSERT_TRUE(buffer.hasLine());
    EXPECT_EQ(static_cast<std::size_t>(buffer.take()->text.size()), longest);
    EXPECT_EQ(buffer.room(), longest + 2);
  }
}

TEST(LineBuffer, ALineThatIsLongerIsTooLongWithOrWithoutItsEnd) {
  for (const std::string tail : {"x", "x\n", "\rx", "\r\r"}) {
    LineBuffer buffer;
    const std::string text = std::string(longest, 'x') + tail;
    buffer.append(text.data(), text.size());
    EXPECT_TRUE(buffer.isTooLong());
    EXPECT_FALSE(buffer.hasLine());
    EXPECT_FALSE(buffer.take().has_value());
  }
}

TEST(LineBuffer, LinesBeforeOneThatIsTooLongAreGiven) {
  LineBuffer buffer;
  buffer.append("a\nb\n", 4);
  const std::string text(longest - 2, 'x');
  buffer.append(text.data(), text.size());
  EXPECT_EQ(buffer.room(), 0U);
  EXPECT_FALSE(buffer.isTooLong());
  EXPECT_EQ(takeAll(buffer), (Lines{{"a", '\n'}, {"b", '\n'}}));
  EXPECT_EQ(buffer.room(), 4U);
  buffer.append("xxxx", 4);
  EXPECT_TRUE(buffer.isTooLong());
}

TEST(LineBuffer, NeverHoldsMoreThanItsCapacityAndStillLosesNothing) {
  LineBuffer buffer;
  std::string sent;
  std::string got;
  for (int i = 0; i < 3000; ++i) {
    const std::string line = std::to_string(i) + std::string(static_cast<std::size_t>(i % 500), 'y') + '\n';
    ASSERT_GE(buffer.room(), line.size());
    buffer.append(line.data(), line.size());
    sent += line;
    if (i % 200 == 199) {  // about 50 kB behind
      for (const auto& [text, end] : takeAll(buffer)) {
        got += text + end;
      }
    }
  }
  EXPECT_EQ(got, sent);
}
