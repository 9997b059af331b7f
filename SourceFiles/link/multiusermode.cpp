// See multiusermode.h.
#include "multiusermode.h"

#include "backendchannel.h"

namespace korvex2 {

bool MultiUserMode::isActive() { return channel_.isMultiUserAvailable() && channel_.isMultiUserOn(); }

bool MultiUserMode::isWithHead() { return channel_.isMultiUserWithHeadAvailable() && channel_.isMultiUserWithHeadOn(); }

void MultiUserMode::deactivateIfActive() {
  wasActive_ = isActive();
  wasWithHead_ = isWithHead();
  if (!wasActive_) {
    return;
  }
  if (wasWithHead_) {
    channel_.setMultiUserWithHead(false);
  }
  channel_.setMultiUser(false);
}

void MultiUserMode::resetIfWasActive() {
  if (wasActive_) {
    channel_.setMultiUser(true);
    if (wasWithHead_) {
      channel_.setMultiUserWithHead(true);
    }
  }
  wasActive_ = false;
  wasWithHead_ = false;
}

int MultiUserMode::numberOfDevices() { return channel_.numberOfDevices(); }

}  // namespace korvex2
