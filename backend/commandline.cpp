// Splits a command line into its fields; any bytes may come.
#include "commandline.h"

#include <QTextCodec>

#include <algorithm>
#include <utility>

#include "interpreter.h"

namespace korvex2 {

namespace {

bool isBlank(char c) { return c == ' ' || c == '\t'; }

bool isControl(char c) { return (static_cast<unsigned char>(c) < 0x20 && c != '\t') || c == 0x7f; }

bool isAscii(const QByteArray& text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool isUtf8(const QByteArray& text) {
  QTextCodec::ConverterState state;
  QTextCodec::codecForName("UTF-8")->toUnicode(text.constData(), text.size(), &state);
  return state.invalidChars == 0 && state.remainingChars == 0;
}

CommandLine refused(const char* reason) {
  CommandLine result;
  result.outcome = Outcome::failed(ErrorNumber::BadLine, QString::fromLatin1(reason));
  return result;
}

int withoutLineEnd(const QByteArray& line) {
  int size = line.size();
  size -= size > 0 && line[size - 1] == '\n' ? 1 : 0;
  size -= size > 0 && size < line.size() && line[size - 1] == '\r' ? 1 : 0;
  return size;
}

}  // namespace

CommandLine splitCommandLine(const QByteArray& line) {
  const int end = withoutLineEnd(line);
  if (end > Interpreter::longestLine) {
    return refused("the line is too long");
  }
  if (std::any_of(line.begin(), line.begin() + end, isControl)) {
    return refused("the line has control characters");
  }
  CommandLine result;
  constexpr std::size_t usualFields = 18;  // the longest command
  result.fields.reserve(usualFields);
  int position = 0;
  while (true) {
    while (position < end && isBlank(line[position])) {
      ++position;
    }
    if (position == end) {
      return result;
    }
    Field field;
    if (line[position] == '"') {
      const int close = line.indexOf('"', position + 1);
      if (close < 0) {
        return refused("a double quote is not closed");
      }
      field = {line.mid(position + 1, close - position - 1), true};
      position = close + 1;
      if (position < end && !isBlank(line[position])) {
        return refused("a double quote ends within a field");
      }
    } else {
      const int start = position;
      while (position < end && !isBlank(line[position])) {
        ++position;
      }
      field = {line.mid(start, position - start), false};
      if (field.text.contains('"')) {
        return refused("a double quote begins within a field");
      }
    }
    if (field.quoted ? !isUtf8(field.text) : !isAscii(field.text)) {
      return refused("the line has bytes that are no text");
    }
    result.fields.push_back(std::move(field));
  }
}

QString shownField(const QByteArray& text) {
  QString shown;
  for (int i = 0; i < std::min(text.size(), 24); ++i) {
    const char c = text[i];
    const bool usual = c >= ' ' && c <= '~' && c != '"';
    shown += QLatin1Char(usual ? c : '?');
  }
  return shown;
}

}  // namespace korvex2
