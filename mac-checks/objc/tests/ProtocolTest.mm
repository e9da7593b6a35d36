// The declaration that NSXPC gets to see, as the run time knows it, against the message table of the portable side.
#import <objc/runtime.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <map>
#include <string>

#include "HalvoHelperXPC/MessageTable.h"
#import "transport/mac/ExportedHandler.h"

namespace halvo::sim {
namespace {

using testing::ContainerEq;

std::map<std::string, std::string> declaredMethods(BOOL required, BOOL instance) {
  unsigned count = 0;
  struct objc_method_description* const methods =
      protocol_copyMethodDescriptionList(@protocol(HalvoHelperProtocol), required, instance, &count);
  std::map<std::string, std::string> found;
  for (unsigned i = 0; i < count; ++i) found.emplace(sel_getName(methods[i].name), methods[i].types);
  std::free(methods);
  return found;
}

// This run time's metadata names neither the classes nor the blocks' signatures.
std::string plainEncoding(std::string_view extended) {
  std::string plain;
  for (std::size_t i = 0; i < extended.size(); ++i) {
    if (extended[i] == '<') i = extended.find('>', i) + 1;
    if (extended[i] == '"') i = extended.find('"', i + 1) + 1;
    plain += extended[i];
  }
  return plain;
}

std::map<std::string, std::string> tableMethods() {
  std::map<std::string, std::string> expected;
  for (const auto& message : kHalvoHelperMessages) {
    expected.emplace(message.selector, plainEncoding(message.typeEncoding));
  }
  return expected;
}

TEST(ProtocolTest, RequiredInstanceMethodsAreThoseOfTheTable) {
  EXPECT_THAT(declaredMethods(YES, YES), ContainerEq(tableMethods()));
}

TEST(ProtocolTest, ThereAreTenOfThem) { EXPECT_EQ(declaredMethods(YES, YES).size(), 10U); }

TEST(ProtocolTest, NothingIsOptionalOrAClassMethod) {
  EXPECT_TRUE(declaredMethods(NO, YES).empty());
  EXPECT_TRUE(declaredMethods(YES, NO).empty());
}

TEST(ProtocolTest, TheExportedObjectAdoptsItAndAnswersEveryMessage) {
  EXPECT_TRUE([HalvoExportedHandler conformsToProtocol:@protocol(HalvoHelperProtocol)]);
  for (const auto& message : kHalvoHelperMessages) {
    EXPECT_TRUE([HalvoExportedHandler instancesRespondToSelector:sel_registerName(message.selector.data())])
        << message.selector;
  }
}

}  // namespace
}  // namespace halvo::sim
