// Fuzz target: live tracking lines, read by the tracking stream and by the plain reference.
//
// The input is text, taken line by line:
//   =sIh     chooses a body: s standard, w wandgrip, anything else no type with lines; I the list index as its distance
//            from the character 0; h switches "with head" on, else it is off
//   ~        makes the stores "not seen"
//   T|L      delivers the line L under the tag T
//   L        delivers the line L under the tag that it begins with
#include <locale.h>

#include <cmath>
#include <sstream>

#include "../link/referenceparser.h"
#include "fuzztarget.h"
#include "trackingstream.h"

using korvex2::TrackedPose;
using korvex2::TrackingStream;

namespace {

/// The "C" locale for this thread while it lives; the reference reads as the program's locale does.
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

bool same(double a, double b) { return a == b || (std::isnan(a) && std::isnan(b)); }

bool same(const TrackedPose& pose, const ReferenceParser::Store& store) {
  bool equal = pose.id == store.id && same(static_cast<double>(pose.quality), static_cast<double>(store.quality)) &&
               pose.buttons == store.buttons && same(pose.position.x, static_cast<double>(store.position[0])) &&
               same(pose.position.y, static_cast<double>(store.position[1])) &&
               same(pose.position.z, static_cast<double>(store.position[2]));
  for (int n = 0; n < 4; ++n) {
    equal = equal && pose.rotation.data(3, n) == (n == 3 ? 1.0 : 0.0) && pose.rotation.data(n, 3) == (n == 3);
  }
  for (int row = 0; row < 3; ++row) {
    for (int column = 0; column < 3; ++column) {
      equal = equal && same(pose.rotation.data(row, column), store.rotation[row][column]);
    }
  }
  return equal;
}

/// Whether a pose may be shown, told from its numbers alone.
bool mayBeShown(const ReferenceParser::Store& store, int index) {
  bool finite = true;
  for (const float value : store.position) {
    finite = finite && std::isfinite(value);
  }
  for (const auto& row : store.rotation) {
    for (const double value : row) {
      finite = finite && std::isfinite(value);
    }
  }
  return finite && store.quality == 1.0F && store.id == index;
}

int asNumber(TrackingStream::Tracked tracked) {
  return tracked == TrackingStream::Tracked::Yes ? 1 : tracked == TrackingStream::Tracked::No ? -1 : 0;
}

/// Two streams, one asked by parse() and one by take(), and the reference beside them.
class Readers {
 public:
  void choose(const std::string& line) {
    const char type = line.size() > 1 ? line[1] : ' ';
    reference_.chosenType = type == 's' ? "standard" : type == 'w' ? "wandgrip" : "Standard";
    reference_.chosenIndex = line.size() > 2 ? line[2] - '0' : -1;
    reference_.withHead = line.size() > 3 && line[3] == 'h';
    for (TrackingStream* stream : {&parsing_, &taking_}) {
      stream->setChosenBody(QByteArray::fromStdString(reference_.chosenType), reference_.chosenIndex);
      stream->setWithHead(reference_.withHead);
    }
    tracked_ = 0;
  }

  void resetQualities() {
    parsing_.resetQualities();
    taking_.resetQualities();
    reference_.bodyStore.quality = -1.0F;
    reference_.deviceStore.quality = -1.0F;
  }

  /// @return what was wrong, empty when nothing
  std::string deliver(const std::string& tag, const std::string& line) {
    const std::uint64_t markings = parsing_.state().markings;
    const std::uint64_t droppedBefore = parsing_.droppedTooLong();
    const bool ofInterest = (tag == "6d" && reference_.chosenType == "standard") ||
                            ((tag == "6dw" || tag == "6dw2") && reference_.chosenType == "wandgrip");
    const bool tooLong = line.size() > TrackingStream::longestLine;
    int expected = 0;
    reference_.marking = 0;
    if (!tooLong) {
      const ClassicLocale classic;
      expected = reference_.read(tag, line);
    }
    TrackingStream::Tracked parsed = TrackingStream::Tracked::Unknown;
    TrackingStream::Tracked taken = TrackingStream::Tracked::Unknown;
    if (parsing_.parse(tag.c_str(), line.c_str(), &parsed) != expected) {
      return "another result than the reference's";
    }
    if (taking_.take(tag.c_str(), line.c_str(), &taken) != 0) {
      return "take() did not return 0";
    }
    if (asNumber(parsed) != reference_.marking || taken != parsed) {
      return "another marking than the reference's";
    }
    tracked_ = reference_.marking != 0 ? reference_.marking : tracked_;
    if ((parsing_.state().markings > markings) != (reference_.marking != 0)) {
      return "markings are miscounted";
    }
    if (parsing_.droppedTooLong() - droppedBefore != (tooLong && ofInterest ? 1U : 0U) || parsing_.droppedBusy() != 0) {
      return "dropped lines are miscounted";
    }
    return compareStates();
  }

 private:
  std::string compareStates() const {
    for (const TrackingStream* stream : {&parsing_, &taking_}) {
      const TrackingStream::State state = stream->state();
      if (!same(state.body, reference_.bodyStore) || !same(state.device, reference_.deviceStore)) {
        return "another record than the reference's";
      }
      if (asNumber(state.tracked) != tracked_) {
        return "another last marking than the reference's";
      }
      const int index = reference_.chosenIndex;
      if (state.body.seenAs(index) != mayBeShown(reference_.bodyStore, index) ||
          state.device.seenAs(index) != mayBeShown(reference_.deviceStore, index)) {
        return "a pose is wrongly shown or held back";
      }
    }
    return {};
  }

  TrackingStream parsing_;
  TrackingStream taking_;
  ReferenceParser reference_;
  int tracked_ = 0;  // last marking since the body was chosen
};

/// What a function that takes zero-terminated text sees of it.
std::string untilZero(const std::string& text) { return text.c_str(); }

}  // namespace

int fuzzOne(const std::uint8_t* data, std::size_t size) {
  std::istringstream input(fuzzText(data, size));
  Readers readers;
  std::string line;
  while (std::getline(input, line)) {
    if (!line.empty() && line[0] == '=') {
      readers.choose(line);
    } else if (line == "~") {
      readers.resetQualities();
    } else {
      const std::size_t bar = line.find('|');
      const std::string tag = line.substr(0, bar == std::string::npos ? line.find(' ') : bar);
      const std::string delivered = bar == std::string::npos ? line : line.substr(bar + 1);
      const std::string problem = readers.deliver(untilZero(tag), untilZero(delivered));
      if (!problem.empty()) {
        return fuzzProblem(problem + ": " + line);
      }
    }
  }
  return 0;
}
