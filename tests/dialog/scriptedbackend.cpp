// See scriptedbackend.h.
#include "scriptedbackend.h"

#include <gtest/gtest.h>

#include <QString>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <sstream>

namespace {

std::string formatted(const char* format, va_list values) {
  char buffer[1024];
  const int length = std::vsnprintf(buffer, sizeof buffer, format, values);
  EXPECT_LT(length, static_cast<int>(sizeof buffer)) << "text too long for the channel";
  return buffer;
}

std::vector<std::string> split(const std::string& text) {
  std::istringstream in(text);
  std::vector<std::string> words;
  for (std::string word; in >> word;) {
    words.push_back(word);
  }
  return words;
}

double number(const std::string& word) {
  bool isNumber = false;
  const double value = QString::fromStdString(word).toDouble(&isNumber);
  EXPECT_TRUE(isNumber) << "\"" << word << "\" is no number";
  return value;
}

/// The number of "b02" or "m03".
int numbered(const std::string& word, char letter) {
  EXPECT_GE(word.size(), 3U) << word;
  EXPECT_EQ(word.front(), letter) << word;
  return static_cast<int>(number(word.substr(1)));
}

bool startsWith(const std::string& text, const std::string& prefix) {
  return text.compare(0, prefix.size(), prefix) == 0;
}

FakeChannel::Answer yesOrNo(bool value) { return {0, value ? "yes" : "no"}; }

template <std::size_t size>
std::string joined(const std::array<double, size>& values) {
  std::string text;
  for (const double value : values) {
    text += (text.empty() ? "" : " ") + fixedText(value, 6);
  }
  return text;
}

}  // namespace

std::string fixedText(double value, int decimals) { return QString::number(value, 'f', decimals).toStdString(); }

Point moved(const std::array<double, 9>& r, const Point& t, const Point& p) {
  return {r[0] * p[0] + r[3] * p[1] + r[6] * p[2] + t[0], r[1] * p[0] + r[4] * p[1] + r[7] * p[2] + t[1],
          r[2] * p[0] + r[5] * p[1] + r[8] * p[2] + t[2]};
}

std::string ScriptedBody::text() const {
  const std::string kind = type == "wandgrip" ? "Wandgrip" : "Standard body";
  const std::string numbered = kind + (number < 10 ? " 0" : " ") + std::to_string(number);
  return description.empty() ? numbered : description + " (" + numbered + ")";
}

std::string ScriptedBody::data() const {
  return type + "|" + std::to_string(number) + "|" + (calibrated ? "calibrated" : "uncalibrated") + "|" + target;
}

FakeChannel::Answer ScriptedChannel::ask(const char* operation, const std::string& text) {
  log.push_back(std::string(operation) + " " + text);
  return respond(operation, text);
}

int ScriptedChannel::get_reals(double* values, int count, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const Answer given = ask("get_reals", formatted(format, arguments));
  va_end(arguments);
  if (given.result == 0) {
    const std::vector<std::string> words = split(given.text);
    for (std::size_t i = 0; i < std::min(words.size(), static_cast<std::size_t>(count)); ++i) {
      values[i] = number(words[i]);
    }
  }
  return given.result;
}

int ScriptedChannel::get_int(int* answer, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const Answer given = ask("get_int", formatted(format, arguments));
  va_end(arguments);
  if (!given.text.empty()) {  // a failed call may have written, too
    *answer = static_cast<int>(number(given.text));
  }
  return given.result;
}

ScriptedBackend::ScriptedBackend() {
  versions.frontend_revision = -7;  // never to be taken for the backend's
  versions.backend_major = 2;
  io.respond = [this](const std::string& operation, const std::string& text) { return answer(operation, text); };
}

ScriptedBody& ScriptedBackend::add(ScriptedBody body) {
  body.emissions.resize(body.markers.size(), EmissionValues{});
  bodies.push_back(std::move(body));
  return bodies.back();
}

ScriptedBody& ScriptedBackend::body(const std::string& type, int number) {
  ScriptedBody* found = find(type, "b" + std::to_string(100 + number).substr(1));
  EXPECT_NE(found, nullptr) << "no such body: " << type << " " << number;
  return found != nullptr ? *found : bodies.at(0);
}

void ScriptedBackend::fail(const std::string& text) {
  disturb = [text](int, const std::string&, const std::string& asked) -> std::optional<Answer> {
    return asked == text ? std::optional<Answer>({1, ""}) : std::nullopt;
  };
}

void ScriptedBackend::failAll(const std::string& prefix) {
  disturb = [prefix](int, const std::string&, const std::string& asked) -> std::optional<Answer> {
    return startsWith(asked, prefix) ? std::optional<Answer>({1, ""}) : std::nullopt;
  };
}

FakeChannel::Answer ScriptedBackend::answer(const std::string& operation, const std::string& text) {
  const int place = queries_++;
  if (disturb) {
    if (const auto wrong = disturb(place, operation, text)) {
      return *wrong;
    }
  }
  return undisturbedAnswer(operation, text);
}

FakeChannel::Answer ScriptedBackend::scriptedAnswer(const std::string& operation, const std::string& text) {
  if (const auto given = answerOfSystem(operation, text)) {
    return *given;
  }
  if (const auto given = answerOfDevices(text)) {
    return *given;
  }
  const std::vector<std::string> words = split(text);
  const auto given = operation == "set_value" || operation == "send_raw_command" ? change(words)
                     : words.size() > 2 && words.at(1) != "type"                 ? answerOfBody(words)
                                                                                 : answerOfCatalogue(words);
  if (given) {
    return *given;
  }
  ADD_FAILURE() << "the backend knows no " << operation << " \"" << text << "\"";
  return {1, ""};
}

std::optional<FakeChannel::Answer> ScriptedBackend::answerOfSystem(const std::string& operation,
                                                                   const std::string& text) {
  if (operation == "get_string" && text == "config is_changeable") {
    return yesOrNo(changeable);
  }
  if (operation == "get_string" && text == "tracking available") {
    return yesOrNo(trackingAvailable);
  }
  if (operation == "get_string" && text == "status active") {
    return Answer{0, measuring ? "mea" : "idle"};
  }
  if (operation == "send_raw_command" && text == "korvex2 tracking start") {
    measuring = startsMeasuring;
    return Answer{0, "korvex2 ok"};
  }
  if (operation == "send_raw_command" && text == "korvex2 tracking stop") {
    measuring = false;
    return Answer{0, "korvex2 ok"};
  }
  if (operation == "send_raw_command" && text == "korvex2 get wandgrip output_6dw") {
    return Answer{0, oldDeviceFormat ? "korvex2 set wandgrip output_6dw yes" : "korvex2 set wandgrip output_6dw no"};
  }
  if (operation == "set_value" && (text == "output active chmon 6dw yes" || text == "output active chmon 6dw2 yes")) {
    return Answer{0, ""};
  }
  return std::nullopt;
}

std::optional<FakeChannel::Answer> ScriptedBackend::answerOfDevices(const std::string& text) {
  if (text == "wandgrip number_of_devices") {
    return Answer{0, std::to_string(devices)};
  }
  if (text == "wandgrip multiuser_available") {
    return yesOrNo(multiUserAvailable);
  }
  if (text == "wandgrip multiuser") {
    return yesOrNo(multiUser);
  }
  if (text == "wandgrip multiuser_with_head_available") {
    return yesOrNo(withHeadAvailable);
  }
  if (text == "wandgrip multiuser_with_head") {
    return yesOrNo(withHead);
  }
  if (text == "wandgrip multiuser yes" || text == "wandgrip multiuser no") {
    multiUser = text == "wandgrip multiuser yes" || multiUserStuck;
    return Answer{0, ""};
  }
  if (text == "wandgrip multiuser_with_head yes" || text == "wandgrip multiuser_with_head no") {
    withHead = text == "wandgrip multiuser_with_head yes" || multiUserStuck;
    return Answer{0, ""};
  }
  return std::nullopt;
}

std::optional<FakeChannel::Answer> ScriptedBackend::answerOfCatalogue(const std::vector<std::string>& words) {
  if (words == Log{"body", "number_of_types"}) {
    return Answer{0, std::to_string(types.size())};
  }
  if (words.size() == 3 && words[1] == "type") {
    const auto index = static_cast<std::size_t>(numbered(words[2], 't')) - 1;
    return index < types.size() ? Answer{0, types[index]} : Answer{1, ""};
  }
  return std::nullopt;
}

std::optional<FakeChannel::Answer> ScriptedBackend::answerOfBody(const std::vector<std::string>& words) {
  const std::string& what = words.at(1);
  const std::string& type = words.at(2);
  if (words.size() == 3 && what == "number_of_bodies") {
    return Answer{0, std::to_string(count(type))};
  }
  if (words.size() == 3 && what == "type_desc") {
    return Answer{0, type == "wandgrip" ? "\"Wandgrip\"" : "\"Standard body\""};
  }
  const ScriptedBody* body = words.size() > 3 ? find(type, words[3]) : nullptr;
  if (body == nullptr) {
    return std::nullopt;
  }
  if (words.size() == 4 && what == "target_type") {
    return Answer{0, "'" + body->target + "' "};
  }
  if (words.size() == 4 && what == "desc") {
    return Answer{0, "\"" + body->description + "\""};
  }
  if (words.size() == 4 && what == "calibrated") {
    return yesOrNo(body->calibrated);
  }
  if (words.size() == 4 && what == "number_of_marker") {
    return Answer{0, std::to_string(body->markers.size())};
  }
  if (words.size() == 5) {
    const auto marker = static_cast<std::size_t>(numbered(words[4], 'm')) - 1;
    if (marker >= body->markers.size()) {
      return Answer{1, ""};
    }
    return Answer{0, what == "marker" ? joined(body->markers[marker]) : joined(body->emissions[marker])};
  }
  return std::nullopt;
}

std::optional<FakeChannel::Answer> ScriptedBackend::change(const std::vector<std::string>& words) {
  if (words.size() > 4 && words[0] == "korvex2" && words[1] == "body") {
    return words[2] == "transform" ? transform(words) : deleteMarker(words);
  }
  ScriptedBody* body = words.size() > 4 && words[0] == "body" ? find(words[2], words[3]) : nullptr;
  if (body == nullptr) {
    return std::nullopt;
  }
  if (words[1] == "number_of_marker") {
    const auto newCount = static_cast<std::size_t>(number(words[4]));
    body->markers.resize(newCount, Point{});
    body->emissions.resize(newCount, EmissionValues{});
    return Answer{0, ""};
  }
  const auto marker = static_cast<std::size_t>(numbered(words[4], 'm')) - 1;
  if (marker >= body->markers.size()) {
    return Answer{1, ""};
  }
  if (words[1] == "marker" && words.size() == 8) {
    body->markers[marker] = {number(words[5]), number(words[6]), number(words[7])};
    return Answer{0, ""};
  }
  if (words[1] == "marker_emission" && words.size() == 9) {
    body->emissions[marker] = {number(words[5]), number(words[6]), number(words[7]), number(words[8])};
    return Answer{0, ""};
  }
  return std::nullopt;
}

FakeChannel::Answer ScriptedBackend::transform(const std::vector<std::string>& words) {
  EXPECT_EQ(words.size(), 17U);
  ScriptedBody* body = find(words[3], words[4]);
  if (body == nullptr || words.size() != 17) {
    return {0, "korvex2 error"};
  }
  const Point translation = {number(words[5]), number(words[6]), number(words[7])};
  std::array<double, 9> rotation{};
  for (std::size_t i = 0; i < rotation.size(); ++i) {
    rotation[i] = number(words[8 + i]);
  }
  for (Point& marker : body->markers) {
    marker = moved(rotation, translation, marker);
  }
  for (EmissionValues& emission : body->emissions) {  // directions turn with the coordinate system
    const Point turned = moved(rotation, {0, 0, 0}, {emission[0], emission[1], emission[2]});
    emission = {turned[0], turned[1], turned[2], emission[3]};
  }
  return {0, "korvex2 ok"};
}

FakeChannel::Answer ScriptedBackend::deleteMarker(const std::vector<std::string>& words) {
  EXPECT_EQ(words.size(), 6U);
  EXPECT_EQ(words[2], "delete_marker");
  ScriptedBody* body = find(words[3], words[4]);
  const int marker = numbered(words[5], 'm') - 1;
  if (body == nullptr || marker < 0 || marker >= static_cast<int>(body->markers.size())) {
    return {0, "korvex2 error"};
  }
  body->markers.erase(body->markers.begin() + marker);
  body->emissions.erase(body->emissions.begin() + marker);
  return {0, "korvex2 ok"};
}

ScriptedBody* ScriptedBackend::find(const std::string& type, const std::string& number) {
  const int wanted = numbered(number, 'b');
  const auto found = std::find_if(bodies.begin(), bodies.end(),
                                  [&](const ScriptedBody& body) { return body.type == type && body.number == wanted; });
  return found == bodies.end() ? nullptr : &*found;
}

int ScriptedBackend::count(const std::string& type) const {
  return static_cast<int>(
      std::count_if(bodies.begin(), bodies.end(), [&](const ScriptedBody& body) { return body.type == type; }));
}
