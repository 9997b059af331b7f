// The link's classes on the channel double, with a backend that can do everything.
#ifndef KORVEX2_TESTS_LINKFIXTURE_H
#define KORVEX2_TESTS_LINKFIXTURE_H

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "backendchannel.h"
#include "backendversions.h"
#include "fakechannel.h"

using Log = std::vector<std::string>;

inline BackendVersions backendVersion(int major, int minor, int revision) {
  BackendVersions versions;
  // The front end's own version must never be taken for the backend's.
  versions.frontend_major = 0;
  versions.frontend_minor = 0;
  versions.frontend_revision = -7;
  versions.backend_major = major;
  versions.backend_minor = minor;
  versions.backend_revision = revision;
  return versions;
}

/// The log entry of an error report.
inline std::string reported(const std::string& text) { return "send_message standard Korvex2 1 " + text; }

class LinkTest : public testing::Test {
 protected:
  FakeChannel io;
  BackendVersions versions = backendVersion(2, 0, 0);
  korvex2::BackendChannel channel{&io, &versions};
};

#endif
