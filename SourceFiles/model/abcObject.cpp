// See abcObject.h.
#include "abcObject.h"

abcObject::abcObject(abcObjectType type) : type_(type), color_(255, 255, 255, 255) {}

abcObject::~abcObject() = default;
