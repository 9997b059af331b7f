// See bsPrompt.h.
#include "bsPrompt.h"

#include <iostream>

namespace korvex2 {

void readNumber(std::istream& in, double& value) {
  double number = 0.0;
  if (in >> number) {
    value = number;
  }
}

void askForNumber(std::istream& in, const char* question, double& value) {
  std::cout << question;
  readNumber(in, value);
}

}  // namespace korvex2
