// Keeps the multi-user mode of hand-held devices off while the dialog is open.
#ifndef KORVEX2_MULTIUSERMODE_H
#define KORVEX2_MULTIUSERMODE_H

namespace korvex2 {

class BackendChannel;

/// Switches the mode off and remembers what it switched off, so that exactly that is switched on again.
/// Failures are reported by the channel, which must outlive this object.
class MultiUserMode {
 public:
  explicit MultiUserMode(BackendChannel& channel) : channel_(channel) {}

  bool isActive();
  bool isWithHead();

  /// Asks for both modes, remembers the answers, and when multi user is on switches it off, "with head" first.
  /// With multi user off nothing is switched, whatever "with head" says.
  void deactivateIfActive();
  /// Switches on again what deactivateIfActive() found on, "with head" only together with multi user. Forgets both.
  void resetIfWasActive();

  bool wasActive() const { return wasActive_; }
  bool wasWithHead() const { return wasWithHead_; }

  /// Number of hand-held devices, 0 when it cannot be asked.
  int numberOfDevices();
  /// Whether the operator must be told that the mode is on although it should be off: it is, and there are devices.
  bool warningNeeded() { return isActive() && numberOfDevices() != 0; }

 private:
  BackendChannel& channel_;
  bool wasActive_ = false;
  bool wasWithHead_ = false;
};

}  // namespace korvex2

#endif
