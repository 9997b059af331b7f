// A short text that stands for the markers of a body, to find out whether somebody changed them.
#ifndef KORVEX2_BACKEND_BODYSTATE_H
#define KORVEX2_BACKEND_BODYSTATE_H

#include <QByteArray>

#include "body.h"

namespace korvex2 {

constexpr int bodyStateLength = 16;

/// 16 lower-case hexadecimal digits: the first eight bytes of the SHA-256 of the marker count and, marker by marker, of
/// position, emission direction and opening angle, each a double of eight bytes, lowest first. The same text tells the
/// same markers, after a restart of the backend, too, and on every machine; -0 counts as 0.
QByteArray bodyState(const Body& body);

/// Whether a text can be a body's state.
bool isBodyState(const QByteArray& text);

}  // namespace korvex2

#endif
