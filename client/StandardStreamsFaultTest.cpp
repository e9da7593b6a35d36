// What becomes of the standard streams where the system opens nothing any more.
#include <gtest/gtest.h>

#include <cerrno>

#include "HalvoHelper/testing/SystemCallFaults.h"
#include "client/StandardStreams.h"

namespace halvo {
namespace {

TEST(StandardStreamsFaultTest, WhatCannotBeTakenIsNotTriedForever) {
  const SystemCallFault fault("open", EMFILE);

  takeClosedStandardStreams();

  EXPECT_EQ(fault.calls(), 1);
}

}  // namespace
}  // namespace halvo
