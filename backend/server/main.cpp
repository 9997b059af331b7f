// The program korvex2-backend.
#include "listenaddress.h"

int main() { return 1; }
