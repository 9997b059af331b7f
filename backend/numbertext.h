// Numbers as protocol and file text: decimal point in every locale, enough digits to be read back unchanged.
#ifndef KORVEX2_BACKEND_NUMBERTEXT_H
#define KORVEX2_BACKEND_NUMBERTEXT_H

#include <QByteArray>

#include <optional>

namespace korvex2 {

/// Shortest text that is read back as the same double ("9.39587", "1e-05"); a negative zero is written "0". The
/// value must be finite.
QByteArray numberText(double value);

/// The whole text as a finite real number; a leading plus sign is accepted. Nothing for anything else, for a number
/// beyond the range of a double, for "nan" and "inf".
std::optional<double> realFromText(const QByteArray& text);

/// The whole text as a decimal integer; a leading plus sign is accepted. Nothing for anything else or on overflow.
std::optional<int> integerFromText(const QByteArray& text);

/// Reads a number from the start of [begin, end) the way a stream extraction does, without skipping white space:
/// as much as belongs to the number is taken, what follows is left. `begin` is moved behind the number on success.
std::optional<double> takeReal(const char*& begin, const char* end);
std::optional<int> takeInteger(const char*& begin, const char* end);

}  // namespace korvex2

#endif
