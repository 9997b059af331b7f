// Thousands of damaged lines, read by the tracking stream and by the plain reference.
#include <locale.h>
#include <cmath>
#include <random>

#include "commalocale.h"
#include "livelines.h"
#include "referenceparser.h"
#include "trackingstream.h"

using korvex2::TrackedPose;
using korvex2::TrackingStream;

namespace {

class LineMaker {
 public:
  explicit LineMaker(unsigned seed) : random_(seed) {}

  int below(int limit) { return std::uniform_int_distribution<int>(0, limit - 1)(random_); }

  std::string integer() {
    static const char* const odd[] = {"010", "0x1", "-1", "+2", "08", "4294967296", "-99999999999999999999",
                                      "00",  "1.5"};
    return below(5) == 0 ? odd[below(9)] : std::to_string(below(4));
  }
  std::string real() {
    static const char* const odd[] = {"nan", "inf",     "-inf",  "1e400", "1e39", ".5",
                                      "5.",  "0x1.8p3", "1e-50", "-0",    "1,5"};
    if (below(8) == 0) {
      return odd[below(11)];
    }
    return std::to_string(below(2000) - 1000) + "." + std::to_string(below(1000));
  }
  std::string quality() {
    static const char* const all[] = {"1", "1.000", "-1", "-1.0", "0.99", "0"};
    return all[below(6)];
  }
  std::string reals(int count) {
    std::string text;
    for (int i = 0; i < count; ++i) {
      text += (i == 0 ? "" : " ") + real();
    }
    return text;
  }

  /// A line of one of the three kinds, sound for the most part.
  std::string line(int kind) {
    static const char* const starts[] = {"6d ", "6dw ", "6dw2 "};
    const int records = below(5);
    std::string text = starts[kind];
    if (kind == 2) {
      text += integer() + " ";
    }
    text += below(6) == 0 ? integer() : std::to_string(records);
    for (int i = 0; i < records; ++i) {
      text += below(2) == 0 ? " [" : "[";
      text += (below(3) == 0 ? integer() : std::to_string(i)) + " " + quality();
      text += kind == 0 ? "" : " " + integer();
      text += kind == 2 ? " " + integer() : "";
      text += "][" + reals(3) + "]" + (below(2) == 0 ? " " : "") + "[" + reals(9) + "]";
      text += kind == 2 ? "[" + reals(below(4)) + "]" : "";
    }
    return text;
  }

  void damage(std::string& line) {
    static const std::string characters = "[][] 0123456789xXeE+-.,\tnaifp";
    const std::size_t place = static_cast<std::size_t>(below(static_cast<int>(line.size()) + 1));
    const char character = characters[static_cast<std::size_t>(below(static_cast<int>(characters.size())))];
    switch (below(6)) {
      case 0:
        line.insert(place, 1, character);
        break;
      case 1:
        line.erase(place, 1);
        break;
      case 2:
        line.resize(place);
        break;
      case 3:
        line += line.substr(place);
        break;
      case 4:
        line.erase(place, static_cast<std::size_t>(below(20)));
        break;
      default:
        if (place < line.size()) {
          line[place] = character;
        }
    }
  }

 private:
  std::mt19937 random_;
};

bool same(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

bool same(const TrackedPose& pose, const ReferenceParser::Store& store) {
  bool equal = pose.id == store.id && same(static_cast<double>(pose.quality), static_cast<double>(store.quality)) &&
               pose.buttons == store.buttons && same(pose.position.x, static_cast<double>(store.position[0])) &&
               same(pose.position.y, static_cast<double>(store.position[1])) &&
               same(pose.position.z, static_cast<double>(store.position[2]));
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) {
      equal = equal && same(pose.rotation.data(row, column), store.rotation[row][column]);
    }
  }
  return equal;
}

/// The "C" locale for this thread while it lives, whatever the program's is.
class ClassicLocale {
 public:
  ClassicLocale() : classic_(newlocale(LC_ALL_MASK, "C", nullptr)), before_(uselocale(classic_)) {}
  ~ClassicLocale() {
    uselocale(before_);
    freelocale(classic_);
  }
  ClassicLocale(const ClassicLocale&) = delete;
  ClassicLocale& operator=(const ClassicLocale&) = delete;

 private:
  locale_t classic_;
  locale_t before_;
};

int referenceResult(ReferenceParser& reference, const std::string& tag, const std::string& line) {
  const ClassicLocale classic;
  return reference.read(tag, line);
}

int asNumber(TrackingStream::Tracked tracked) {
  return tracked == TrackingStream::Tracked::Yes ? 1 : tracked == TrackingStream::Tracked::No ? -1 : 0;
}

void compareOnDamagedLines(unsigned seed) {
  static const char* const tags[] = {"6d", "6dw", "6dw2"};
  LineMaker maker(seed);
  TrackingStream stream;
  ReferenceParser reference;
  int sound = 0;
  int malformed = 0;
  int marked = 0;
  for (int round = 0; round < 9000; ++round) {
    const int kind = round % 3;
    reference.chosenType = kind == 0 ? "standard" : "wandgrip";
    reference.chosenIndex = maker.below(4);
    reference.withHead = maker.below(3) == 0;
    stream.setChosenBody(QByteArray::fromStdString(reference.chosenType), reference.chosenIndex);
    stream.setWithHead(reference.withHead);
    std::string line = maker.line(kind);
    for (int damages = maker.below(4); damages > 0; --damages) {
      maker.damage(line);
    }
    TrackingStream::Tracked marking = TrackingStream::Tracked::Unknown;
    const int result = stream.parse(tags[kind], line.c_str(), &marking);
    ASSERT_EQ(result, referenceResult(reference, tags[kind], line)) << "round " << round << ": " << line;
    ASSERT_EQ(asNumber(marking), reference.marking) << "round " << round << ": " << line;
    const TrackingStream::State state = stream.state();
    ASSERT_TRUE(same(state.body, reference.bodyStore)) << "round " << round << ": " << line;
    ASSERT_TRUE(same(state.device, reference.deviceStore)) << "round " << round << ": " << line;
    (result == 0 ? sound : malformed) += 1;
    marked += marking == TrackingStream::Tracked::Yes ? 1 : 0;
  }
  // The lines must be worth reading: plenty of each sort.
  EXPECT_GT(sound, 2000);
  EXPECT_GT(malformed, 2000);
  EXPECT_GT(marked, 1000);
}

}  // namespace

TEST(DamagedLines, AreReadAsThePlainReferenceReadsThem) { compareOnDamagedLines(20230517); }

TEST(DamagedLines, AreReadAsThePlainReferenceReadsThemUnderACommaLocale) {
  const CommaLocale german;
  ASSERT_TRUE(german.ready());
  compareOnDamagedLines(4711);
}
