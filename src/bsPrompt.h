// One question and answer of the interactive stream input that vectors, matrices and quaternions share.
#ifndef KORVEX2_BSPROMPT_H
#define KORVEX2_BSPROMPT_H

#include <istream>

namespace korvex2 {

/// Reads a number the stream's ordinary way, but leaves `value` alone when there is none to read (the library itself
/// would set it to 0, or to the largest number when out of range).
void readNumber(std::istream& in, double& value);

/// Writes the question to standard output, then reads as above.
void askForNumber(std::istream& in, const char* question, double& value);

}  // namespace korvex2

#endif
