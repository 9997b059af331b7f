// Subscriber to the backend's live output lines, implemented by modules and called by the host.
#ifndef KORVEX2_REQUESTER_H
#define KORVEX2_REQUESTER_H

/// Receives live output lines of the record kinds it was registered for (see IOManager::register_requester).
///
/// Binary contract: three virtual slots, no data, no virtual destructor. Never reorder.
class Requester {
 public:
  /// Slot 0. One live line. Called on the host's delivery thread, at any rate; must return quickly, must not throw.
  /// @param tag   record kind, for example "6d"; zero-terminated ASCII
  /// @param line  the whole line with its tag, zero-terminated ASCII; valid during the call only
  /// @return 0; the host does not look at it
  virtual int set_ascii_data(const char* tag, const char* line) = 0;
  /// Slot 1. The backend's measurement started.
  virtual void set_mea_started() = 0;
  /// Slot 2. The backend's measurement stopped.
  virtual void set_mea_stopped() = 0;

 protected:
  ~Requester() = default;  // the host never deletes a requester
};

#endif
