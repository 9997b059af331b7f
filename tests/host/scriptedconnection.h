// Double of a backend connection: keeps what was sent and answers as the test says.
#ifndef KORVEX2_TESTS_SCRIPTEDCONNECTION_H
#define KORVEX2_TESTS_SCRIPTEDCONNECTION_H

#include <functional>
#include <map>
#include <vector>

#include "backendconnection.h"

/// Answers come from `respond` when set, else from `answers` by line; a line without an answer is not answered.
class ScriptedConnection : public korvex2::BackendConnection {
 public:
  bool exchange(const QByteArray& line, QByteArray& answer) override {
    sent.push_back(line);
    if (respond) {
      return respond(line, answer);
    }
    const auto found = answers.find(line);
    if (found == answers.end()) {
      return false;
    }
    answer = found->second;
    return true;
  }
  korvex2::BackendVersionNumber version() const override { return number; }
  QString description() const override { return QStringLiteral("Scripted backend"); }
  QStringList problems() const override { return troubles; }

  std::vector<QByteArray> sent;
  std::map<QByteArray, QByteArray> answers;
  std::function<bool(const QByteArray& line, QByteArray& answer)> respond;
  korvex2::BackendVersionNumber number{1, 20, 3};
  QStringList troubles;
};

#endif
