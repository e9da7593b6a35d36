#include "HalvoHelper/system/BoundedCopy.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <ostream>

#include "HalvoHelper/system/UniqueDescriptor.h"
#include "HalvoHelper/testing/FifoEnds.h"
#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo {
namespace {

constexpr std::int64_t kNoBound = 1'000'000'000;

class BoundedCopyTest : public testing::Test {
 protected:
  static UniqueDescriptor reading(const std::string& path) {
    return UniqueDescriptor(::open(path.c_str(), O_RDONLY | O_CLOEXEC));
  }
  UniqueDescriptor writing() const {
    return UniqueDescriptor(::open(copy_.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
  }

  TemporaryDirectory directory_;
  std::string copy_ = directory_.path("copy");
};

struct SizeRow {
  std::size_t bytes;
  std::int64_t max;
  bool copied;
};
void PrintTo(const SizeRow& row, std::ostream* out) { *out << row.bytes << " bytes, at most " << row.max; }

class CopiedSize : public BoundedCopyTest, public testing::WithParamInterface<SizeRow> {};

TEST_P(CopiedSize, IsAcceptedUpToTheBound) {
  const auto from = reading(directory_.makeFile("source", std::string(GetParam().bytes, 'd')));

  EXPECT_EQ(halvoCopyBounded(from.get(), writing().get(), GetParam().max), GetParam().copied);
}

INSTANTIATE_TEST_SUITE_P(AroundBoundAndBuffer, CopiedSize,
                         testing::Values(SizeRow{0, 0, true}, SizeRow{1, 0, false}, SizeRow{10, 10, true},
                                         SizeRow{11, 10, false}, SizeRow{1'048'576, 1'048'576, true},
                                         SizeRow{1'048'577, 1'048'576, false}, SizeRow{1'048'577, 1'048'577, true},
                                         SizeRow{3'000'000, 2'999'999, false}));

TEST_F(BoundedCopyTest, EveryByteArrivesInItsPlace) {
  const std::string contents = std::string(1'048'575, 'a') + std::string("\0b\xFF", 3) + std::string(1'500'000, 'c');
  const auto from = reading(directory_.makeFile("source", contents));

  ASSERT_TRUE(halvoCopyBounded(from.get(), writing().get(), kNoBound));

  EXPECT_TRUE(contentsOf(copy_) == contents);
}

TEST_F(BoundedCopyTest, StartsWhereTheSourceStands) {
  const auto from = reading(directory_.makeFile("source", "skipped, copied"));
  ::lseek(from.get(), 9, SEEK_SET);

  ASSERT_TRUE(halvoCopyBounded(from.get(), writing().get(), kNoBound));

  EXPECT_EQ(contentsOf(copy_), "copied");
}

TEST_F(BoundedCopyTest, NothingPastTheBoundIsWrittenWhenTheSourceKeepsGrowing) {
  const FifoWriter source(directory_.makeFifo("growing"), std::string(50'000'000, 'g'));

  EXPECT_FALSE(halvoCopyBounded(source.readEnd(), writing().get(), 5'000'000));

  EXPECT_LE(contentsOf(copy_).size(), 5'000'000U);
}

TEST_F(BoundedCopyTest, InterruptedAndShortWritesAreContinued) {
  const std::string contents(20'000'000, 'i');
  const auto from = reading(directory_.makeFile("source", contents));
  FifoReader reader(directory_.makeFifo("narrow"));
  const SignalStorm storm;

  ASSERT_TRUE(halvoCopyBounded(from.get(), reader.writeEnd(), kNoBound));

  EXPECT_TRUE(reader.finish() == contents);
}

TEST_F(BoundedCopyTest, InterruptedAndShortReadsAreContinued) {
  const std::string contents(2'000'000, 'i');
  const FifoWriter writer(directory_.makeFifo("slow"), contents);
  const SignalStorm storm;

  ASSERT_TRUE(halvoCopyBounded(writer.readEnd(), writing().get(), kNoBound));

  EXPECT_TRUE(contentsOf(copy_) == contents);
}

TEST_F(BoundedCopyTest, ASourceThatCannotBeReadFails) {
  EXPECT_FALSE(halvoCopyBounded(reading(directory_.path()).get(), writing().get(), kNoBound));
  EXPECT_FALSE(halvoCopyBounded(-1, writing().get(), kNoBound));
}

TEST_F(BoundedCopyTest, ADestinationThatCannotBeWrittenFails) {
  const auto from = reading(directory_.makeFile("source", "text"));

  EXPECT_FALSE(halvoCopyBounded(from.get(), reading(directory_.path("source")).get(), kNoBound));
}

}  // namespace
}  // namespace halvo
