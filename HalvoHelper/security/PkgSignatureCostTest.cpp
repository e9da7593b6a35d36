// How much work it is to read a report, counted and not timed: the basic blocks that are entered, the bytes that are
// searched and the bytes that are allocated. The build has the compiler call a hook in every basic block of the parser
// and of what it reads text with, and the linker lead their searches here.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <new>
#include <string>

#include "HalvoHelper/security/PkgSignature.h"
#include "HalvoHelper/text/Text.h"

namespace {

std::size_t operations = 0;
std::size_t allocated = 0;

}  // namespace

extern "C" {

// NOLINTBEGIN(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp): the compiler and the linker give the names.
void __sanitizer_cov_trace_pc() { ++operations; }

void* __real_memchr(const void* text, int byte, std::size_t size);

void* __wrap_memchr(const void* text, int byte, std::size_t size) {
  void* found = __real_memchr(text, byte, size);
  operations +=
      found == nullptr ? size : static_cast<std::size_t>(static_cast<char*>(found) - static_cast<const char*>(text));
  return found;
}
// NOLINTEND(bugprone-reserved-identifier,cert-dcl37-c,cert-dcl51-cpp)

}  // extern "C"

void* operator new(std::size_t size) {
  operations += size;
  allocated += size;
  void* memory = std::malloc(size);
  if (memory == nullptr) throw std::bad_alloc();
  return memory;
}

void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

namespace halvo {
namespace {

constexpr std::size_t kKibibyte = 1024;

struct Shape {
  const char* name;
  std::string beginning;
  std::string piece;  // repeated until the size is reached
};

std::string reportOf(const Shape& shape, std::size_t size) {
  std::string report = shape.beginning;
  while (report.size() < size) report += shape.piece;
  return report;
}

std::size_t operationsFor(const std::string& report) {
  operations = 0;
  static_cast<void>(halvoParsePkgSignature(report));
  return operations;
}

class ParserCost : public testing::TestWithParam<Shape> {};

TEST_P(ParserCost, IsCounted) { EXPECT_GT(operationsFor(reportOf(GetParam(), kKibibyte)), kKibibyte / 2); }

TEST_P(ParserCost, GrowsAsTheReport) {
  const std::size_t small = operationsFor(reportOf(GetParam(), 64 * kKibibyte));
  const std::size_t large = operationsFor(reportOf(GetParam(), 1024 * kKibibyte));

  EXPECT_LE(large, small * 17);
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, ParserCost,
    testing::Values(Shape{"OneLongLine", "", "x"}, Shape{"OneLongLineOfBlanks", "", " "},
                    Shape{"OneLongStatus", "Status: ", "x"}, Shape{"LineFeeds", "", "\n"},
                    Shape{"ManyKeys", "", "Status: x\nNotarization: y\n"},
                    Shape{"ManyCertificates", "", "1. Developer ID Installer: Halvo Audio (QX4TRM2ZL9)\n"},
                    Shape{"ManyFingerprintKeys", "1. x\n", "SHA256 Fingerprint:\nAA\n---\n"},
                    Shape{"ManyFingerprintLines", "1. x\nSHA256 Fingerprint:\n", "AA BB CC DD EE FF 00 11\n"},
                    Shape{"OneLongFingerprintLine", "1. x\nSHA256 Fingerprint:\n", "AA "},
                    Shape{"ManyDigitsBeforeADot", "", "1"}, Shape{"ManyDots", "1.", "."},
                    Shape{"IllFormedFingerprints", "1. x\nSHA256 Fingerprint:\n", "\xFF\nSHA256 Fingerprint:\n"}),
    [](const auto& shape) { return shape.param.name; });

std::size_t allocatedFor(const Shape& shape, std::size_t size, const HalvoPkgChainLimits& limits) {
  const std::string report = reportOf(shape, size);
  allocated = 0;
  static_cast<void>(halvoParsePkgSignature(report, limits));
  return allocated;
}

class LimitedCost : public testing::TestWithParam<Shape> {};

TEST_P(LimitedCost, HasNoMemoryForWhatIsNotKept) {
  const HalvoPkgChainLimits limits = {.certificates = 3, .digits = 65};

  EXPECT_EQ(allocatedFor(GetParam(), 64 * kKibibyte, limits), allocatedFor(GetParam(), kKibibyte, limits));
}

INSTANTIATE_TEST_SUITE_P(
    Shapes, LimitedCost,
    testing::Values(Shape{"ManyCertificates", "", "1. Developer ID Installer: Halvo Audio (QX4TRM2ZL9)\n"},
                    Shape{"ManyFingerprintLines", "1. x\nSHA256 Fingerprint:\n", "AA BB CC DD EE FF 00 11\n"},
                    Shape{"OneLongFingerprintLine", "1. x\nSHA256 Fingerprint:\n", "AA "},
                    Shape{"FingerprintOfNobody", "SHA256 Fingerprint:\n", "AA BB\n"}),
    [](const auto& shape) { return shape.param.name; });

TEST(BlankReportCost, EndsAtTheFirstCharacterThatIsNotBlank) {
  const std::string report = reportOf({"", "\n ", "many words "}, 64 * kKibibyte);
  operations = 0;

  EXPECT_FALSE(halvoIsAllWhitespace(report));

  EXPECT_LE(operations, 8 * kKibibyte);
}

}  // namespace
}  // namespace halvo
