// A tracking backend for the dialog's tests: keeps bodies and modes, answers every text, can be told to go wrong.
#ifndef KORVEX2_TESTS_SCRIPTEDBACKEND_H
#define KORVEX2_TESTS_SCRIPTEDBACKEND_H

#include <array>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "backendversions.h"
#include "fakechannel.h"

using Log = std::vector<std::string>;
using Point = std::array<double, 3>;
using EmissionValues = std::array<double, 4>;

/// One body of the backend. Millimetres in the body's own coordinate system, opening angle in degrees.
struct ScriptedBody {
  std::string type;  ///< "standard" or "wandgrip"
  int number = 1;    ///< within the type
  std::string description;
  std::vector<Point> markers;
  std::vector<EmissionValues> emissions;  ///< as many as markers
  bool calibrated = true;
  std::string target = "tt_std";

  /// The selector's text and the data behind it.
  std::string text() const;
  std::string data() const;
};

/// The channel double with answers that need not be numbers at all: "nan" and "inf" are read as such, and an answer
/// that is too short leaves the rest of the caller's values alone.
class ScriptedChannel : public FakeChannel {
 public:
  int get_reals(double* values, int count, const char* format, ...) override KORVEX2_PRINTF(4, 5);
  int get_int(int* answer, const char* format, ...) override KORVEX2_PRINTF(3, 4);

 private:
  Answer ask(const char* operation, const std::string& text);
};

/// Behind `io` as long as it lives. Changes arrive in `bodies` as the texts say: a transform moves every marker to
/// p' = R p + t and turns every emission's direction, a deletion takes one out, a setting overwrites one value.
///
/// In the tests over a network the answers come from the real backend program instead: what a case sets here is set
/// there before the next text goes out, and what a text changed there is read back into these fields.
class ScriptedBackend {
 public:
  using Answer = FakeChannel::Answer;
  /// What goes wrong: asked before the backend does anything, with the query's place in the order of queries (from 0).
  /// An answer given here is all that happens.
  using Disturbance =
      std::function<std::optional<Answer>(int place, const std::string& operation, const std::string& text)>;

  ScriptedBackend();
  ScriptedBackend(const ScriptedBackend&) = delete;
  ScriptedBackend& operator=(const ScriptedBackend&) = delete;

  /// Gets ready to answer, which may take a turn of the event loop when the answers come from elsewhere. The first text
  /// does it otherwise.
  void prepare();

  ScriptedBody& add(ScriptedBody body);
  ScriptedBody& body(const std::string& type, int number);

  /// Every query with exactly this text fails, until nothing() is called.
  void fail(const std::string& text);
  /// Every query whose text begins so fails.
  void failAll(const std::string& prefix);
  void nothingFails() { disturb = nullptr; }
  int queries() const { return queries_; }
  void countFromZero() { queries_ = 0; }

  ScriptedChannel io;
  BackendVersions versions;
  std::vector<std::string> types = {"standard", "wandgrip"};
  std::vector<ScriptedBody> bodies;
  bool changeable = true;
  bool trackingAvailable = true;
  bool measuring = false;
  bool startsMeasuring = true;  ///< "tracking start" is obeyed
  bool oldDeviceFormat = false;
  bool multiUserAvailable = true;
  bool multiUser = false;
  bool withHeadAvailable = true;
  bool withHead = false;
  bool multiUserStuck = false;  ///< switching it off is accepted and not done
  int devices = 1;
  Disturbance disturb;

 private:
  struct Elsewhere;

  Answer answer(const std::string& operation, const std::string& text);
  /// What the backend answers when nothing goes wrong: scriptedAnswer(), or what another backend says.
  Answer undisturbedAnswer(const std::string& operation, const std::string& text);
  Answer scriptedAnswer(const std::string& operation, const std::string& text);
  std::optional<Answer> answerOfSystem(const std::string& operation, const std::string& text);
  std::optional<Answer> answerOfDevices(const std::string& text);
  std::optional<Answer> answerOfCatalogue(const std::vector<std::string>& words);
  std::optional<Answer> answerOfBody(const std::vector<std::string>& words);
  std::optional<Answer> change(const std::vector<std::string>& words);
  Answer transform(const std::vector<std::string>& words);
  Answer deleteMarker(const std::vector<std::string>& words);
  ScriptedBody* find(const std::string& type, const std::string& number);
  int count(const std::string& type) const;

  int queries_ = 0;
  std::shared_ptr<Elsewhere> elsewhere_;  // the way to another backend; empty when the answers are made here
};

/// R p + t with R's elements column by column, as the transform command sends them.
Point moved(const std::array<double, 9>& rotation, const Point& translation, const Point& p);

/// Number texts with the decimal point whatever the locale.
std::string fixedText(double value, int decimals);

#endif
