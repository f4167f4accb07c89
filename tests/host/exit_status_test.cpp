#include "host/exit_status.h"

#include <csignal>

#include <gtest/gtest.h>

#include "front/error.h"

namespace ostra {
namespace {

RequestEnd cancelled(std::string_view domain, int code) {
  return {NSError(domain, code, {{std::string(NSLocalizedDescriptionKey), std::string("sentence")}})};
}

TEST(ExitStatus, TellsHowTheRequestEnded) {
  EXPECT_EQ(exitStatus(RequestEnd{}, {}), 0);
  EXPECT_EQ(exitStatus(cancelled(kBundleIdentifier, 1), {}), 1);
  EXPECT_EQ(exitStatus(cancelled(kBundleIdentifier, 2), {}), 2);
  EXPECT_EQ(exitStatus(cancelled(kBundleIdentifier, 3), {}), 2);
  EXPECT_EQ(exitStatus(cancelled(NSCocoaErrorDomain, 3072), {}), 130);
}

TEST(ExitStatus, LooksAtTheDomainToo) {
  EXPECT_EQ(exitStatus(cancelled(NSPOSIXErrorDomain, 2), {}), 1);
  EXPECT_EQ(exitStatus(cancelled(kBundleIdentifier, 3072), {}), 1);
}

TEST(ExitStatus, IsThatOfTheSignalWhateverTheRequestSays) {
  EXPECT_EQ(exitStatus({}, SIGTERM), 143);
  EXPECT_EQ(exitStatus(RequestEnd{}, SIGINT), 130);
  EXPECT_EQ(exitStatus(cancelled(kBundleIdentifier, 1), SIGHUP), 129);
}

TEST(HostMessage, IsForRefusalsOnlyBecauseTheAlertShowedTheRest) {
  EXPECT_EQ(hostMessage(cancelled(kBundleIdentifier, 2)), "sentence");
  EXPECT_EQ(hostMessage(cancelled(kBundleIdentifier, 3)), "sentence");
  EXPECT_FALSE(hostMessage(cancelled(kBundleIdentifier, 1)));
  EXPECT_FALSE(hostMessage(cancelled(NSCocoaErrorDomain, 3072)));
  EXPECT_FALSE(hostMessage(RequestEnd{}));
}

}  // namespace
}  // namespace ostra
