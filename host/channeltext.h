// Protocol texts of the backend channel: formatting, checking and strict parsing, independent of the locale.
#ifndef KORVEX2_HOST_CHANNELTEXT_H
#define KORVEX2_HOST_CHANNELTEXT_H

#include <cstdarg>
#include <optional>
#include <vector>

#include <QByteArray>

namespace korvex2 {

/// Longest text that may go to the backend, without its terminating zero.
constexpr int longestCommand = 1023;
/// Room that a caller's answer buffer has at least, with the terminating zero.
constexpr int answerCapacity = 200;

/// Formats printf-style with the decimal point, whatever the locale of the process or thread.
/// @return nothing when `format` is null, cannot be formatted, or the text is empty, longer than longestCommand or
///         not printable ASCII: a line end inside would smuggle a second command into the line
std::optional<QByteArray> formatCommand(const char* format, va_list values);

/// True for a text of printable ASCII characters (32 to 126) only; the empty text is one.
bool isPrintableAscii(const QByteArray& text);

/// An answer without its line end: trailing carriage returns and line feeds are taken off.
QByteArray withoutLineEnd(const QByteArray& answer);

/// The value in an answer of the form "PREFIX VALUE", where the value may be empty ("PREFIX" or "PREFIX ").
/// @return nothing when the answer does not begin with the prefix
std::optional<QByteArray> valueAfter(const QByteArray& prefix, const QByteArray& answer);

/// The whole text as a decimal integer ("12", "-3"); nothing for anything else, a value outside `int` included.
std::optional<int> parseInteger(const QByteArray& text);

/// The whole text as exactly `count` finite decimal numbers separated by blanks; nothing for anything else.
std::optional<std::vector<double>> parseReals(const QByteArray& text, int count);

/// True when the backend refused the command: "korvex2 err", alone or followed by a blank and an explanation.
bool isRefusal(const QByteArray& answer);

}  // namespace korvex2

#endif
