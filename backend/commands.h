// The vocabulary of the command language: which queries, settings and commands there are, and what they do.
#ifndef KORVEX2_BACKEND_COMMANDS_H
#define KORVEX2_BACKEND_COMMANDS_H

#include <QByteArray>

#include <cstdint>
#include <utility>
#include <vector>

#include "bodydatabase.h"
#include "commandline.h"
#include "outcome.h"

namespace korvex2 {

class ClientState;
class Interpreter;

/// What the fields behind a query, setting or command say, checked against the database.
struct Arguments {
  BodyKey key;                         ///< %type, %body
  const Body* body = nullptr;          ///< %body
  const BodyType* bodyType = nullptr;  ///< %type, %typenumber
  int marker = 0;                      ///< %marker: from 1; it exists
  int count = 0;                       ///< %count
  bool flag = false;                   ///< %flag: yes or no
  std::vector<double> reals;           ///< %real
  BackendVersion version;              ///< %version
  QByteArray text;                     ///< %text, %kind, %state, %file
  QByteArray channel;                  ///< %channel
  std::uint16_t port = 0;              ///< %port: 1 or more
};

/// Value of a query, or why there is none.
struct QueryAnswer {
  QueryAnswer() = default;
  QueryAnswer(QByteArray answered) : value(std::move(answered)) {}
  QueryAnswer(Outcome failure) : outcome(std::move(failure)) {}

  QByteArray value;
  Outcome outcome;
};

/// Every line that the backend understands, as a pattern: "korvex2 get body desc %type %body". The placeholders are
/// those of Arguments; one that stands for several fields stands there as often.
std::vector<QByteArray> vocabulary();

/// Answers the fields behind `korvex2 get`.
QueryAnswer answerQuery(const Interpreter& interpreter, const ClientState& client, const std::vector<Field>& fields);

/// Carries out the fields behind `korvex2 set`.
Outcome carryOutSetting(Interpreter& interpreter, ClientState& client, const std::vector<Field>& fields);

/// Carries out the fields behind `korvex2`, where neither get nor set follows.
Outcome carryOutCommand(Interpreter& interpreter, ClientState& client, const std::vector<Field>& fields);

}  // namespace korvex2

#endif
