// The metadata that a Mac's compiler emits for the protocol, against the message table. NSXPC compares these very texts
// on both ends of a connection and drops what does not match.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "HalvoHelperXPC/MessageTable.h"

namespace halvo::sim {
namespace {

using testing::ElementsAreArray;

using Method = std::pair<std::string, std::string>;  // selector, type encoding

std::string contentsOf(const std::string& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// The line of the compiler's intermediate text that defines the symbol; empty when there is none.
std::string definitionOf(const std::string& symbol, const std::string& module) {
  const std::size_t start = module.find("\n@" + symbol + " = ");
  if (start == std::string::npos) return {};
  return module.substr(start + 1, module.find('\n', start + 1) - start - 1);
}

// c"...\00" with quotation marks written as \22.
std::string textOf(const std::string& symbol, const std::string& module) {
  const std::string definition = definitionOf(symbol, module);
  const std::size_t start = definition.find(" c\"");
  const std::size_t end = definition.find("\\00\"", start);
  if (start == std::string::npos || end == std::string::npos) return "no text: " + symbol;
  std::string text = definition.substr(start + 3, end - start - 3);
  for (std::size_t at = text.find("\\22"); at != std::string::npos; at = text.find("\\22")) text.replace(at, 3, "\"");
  return text;
}

// The symbols beginning with `prefix` that the definition refers to, in order.
std::vector<std::string> references(const std::string& definition, const std::string& prefix) {
  std::vector<std::string> symbols;
  for (std::size_t at = definition.find("@" + prefix); at != std::string::npos;
       at = definition.find("@" + prefix, at + 1)) {
    const std::size_t end = definition.find_first_of(",] }", at);
    symbols.push_back(definition.substr(at + 1, end - at - 1));
  }
  return symbols;
}

std::vector<Method> emittedMethods(const std::string& module) {
  const auto names = references(definitionOf("\"_OBJC_$_PROTOCOL_INSTANCE_METHODS_HalvoHelperProtocol\"", module),
                                "OBJC_METH_VAR_NAME_");
  const auto types =
      references(definitionOf("\"_OBJC_$_PROTOCOL_METHOD_TYPES_HalvoHelperProtocol\"", module), "OBJC_METH_VAR_TYPE_");
  std::vector<Method> methods;
  for (std::size_t i = 0; i < names.size() && i < types.size(); ++i) {
    methods.emplace_back(textOf(names[i], module), textOf(types[i], module));
  }
  return methods;
}

std::vector<Method> tableMethods() {
  std::vector<Method> methods;
  for (const auto& message : kHalvoHelperMessages) methods.emplace_back(message.selector, message.typeEncoding);
  return methods;
}

class ProtocolMetadata : public testing::TestWithParam<const char*> {
 protected:
  const std::string module_ = contentsOf(std::string(HALVO_MACHO_METADATA_DIR "/") + GetParam() + "/protocol.ll");
};

TEST_P(ProtocolMetadata, NamesTypesAndOrderAreThoseOfTheTable) {
  EXPECT_THAT(emittedMethods(module_), ElementsAreArray(tableMethods()));
}

TEST_P(ProtocolMetadata, NothingIsOptionalOrAClassMethod) {
  ASSERT_NE(definitionOf("\"_OBJC_$_PROTOCOL_INSTANCE_METHODS_HalvoHelperProtocol\"", module_), "");
  EXPECT_EQ(module_.find("PROTOCOL_INSTANCE_METHODS_OPT_HalvoHelperProtocol"), std::string::npos);
  EXPECT_EQ(module_.find("PROTOCOL_CLASS_METHODS_HalvoHelperProtocol"), std::string::npos);
  EXPECT_EQ(module_.find("PROTOCOL_CLASS_METHODS_OPT_HalvoHelperProtocol"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Processor, ProtocolMetadata, testing::Values("arm64", "x86_64"),
                         [](const auto& info) { return std::string(info.param); });

}  // namespace
}  // namespace halvo::sim
