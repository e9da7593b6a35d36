#include "sim/launchd/Job.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>

#include "HalvoHelper/testing/TemporaryDirectory.h"

namespace halvo::sim {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

// A job whose program ends at once, so that every process can be collected without waiting for anything else.
class JobTest : public testing::Test {
 protected:
  JobTest() {
    std::filesystem::create_directories(root.path() / "sim/job-output");
    std::filesystem::create_directories(root.path() / "var/run/mach");
  }

  static JobDescription description() {
    JobDescription job;
    job.label = "test";
    job.program = "/bin/true";
    job.arguments = {"/bin/true"};
    return job;
  }

  static void collect(Job& job) {
    int status = 0;
    ::waitpid(job.process().value_or(-1), &status, 0);
    job.processEnded(status);
  }

  const TemporaryDirectory root;
  const LaunchdPaths paths = launchdPaths(root.path());
  const Job::Clock::time_point start = Job::Clock::now();
};

TEST_F(JobTest, NothingIsDueForAJobThatNobodyAsksFor) {
  Job job("system", description());

  EXPECT_FALSE(job.startIfDue(start, paths));
  EXPECT_EQ(job.deadline(start), std::nullopt);
}

TEST_F(JobTest, RunningAtLoadHappensOnce) {
  JobDescription atLoad = description();
  atLoad.runAtLoad = true;
  Job job("system", atLoad);

  EXPECT_TRUE(job.startIfDue(start, paths));
  collect(job);

  EXPECT_FALSE(job.startIfDue(start + std::chrono::hours(1), paths));
}

TEST_F(JobTest, StartsAreAThrottleIntervalApart) {
  JobDescription always = description();
  always.keepAlive = true;
  Job job("system", always);

  EXPECT_TRUE(job.startIfDue(start, paths));
  collect(job);

  EXPECT_EQ(job.deadline(start), start + std::chrono::seconds(10));
  EXPECT_FALSE(job.startIfDue(start + std::chrono::milliseconds(9999), paths));
  EXPECT_TRUE(job.startIfDue(start + std::chrono::seconds(10), paths));
  collect(job);
}

TEST_F(JobTest, AServiceIsListenedForAgainWhenTheThrottleIntervalIsOver) {
  JobDescription server = description();
  server.machServices = {"test.service"};
  server.runAtLoad = true;
  Job job("system", server);
  ASSERT_EQ(job.publish(paths.machServices), std::nullopt);

  EXPECT_TRUE(job.startIfDue(start, paths));
  EXPECT_THAT(job.awaited(start), IsEmpty());
  collect(job);

  EXPECT_THAT(job.awaited(start + std::chrono::seconds(9)), IsEmpty());
  EXPECT_EQ(job.deadline(start + std::chrono::seconds(9)), start + std::chrono::seconds(10));
  EXPECT_THAT(job.awaited(start + std::chrono::seconds(10)), SizeIs(1));
  EXPECT_EQ(job.deadline(start + std::chrono::seconds(10)), std::nullopt);
}

TEST_F(JobTest, AProgramThatCannotStartIsNotTriedAgainAtOnce) {
  JobDescription broken = description();
  broken.program = "/nowhere/program";
  broken.keepAlive = true;
  broken.throttleInterval = std::chrono::seconds(0);
  Job job("system", broken);

  EXPECT_TRUE(job.startIfDue(start, paths));

  EXPECT_EQ(job.state().lastExitStatus, 78);
  EXPECT_EQ(job.deadline(start), start + std::chrono::seconds(1));
}

TEST_F(JobTest, AServiceThatCannotBePublishedSaysWhy) {
  JobDescription server = description();
  server.machServices = {"test.service"};
  Job job("system", server);

  EXPECT_EQ(job.publish(root.path() / "absent"),
            "The service test.service cannot be published: No such file or directory.");
}

TEST_F(JobTest, AProcessMayTakeItsExitTimeOutToEnd) {
  JobDescription slow = description();
  slow.runAtLoad = true;
  slow.exitTimeOut = std::chrono::seconds(3);
  Job job("system", slow);
  job.startIfDue(start, paths);

  job.terminate(start, nullptr);

  EXPECT_EQ(job.deadline(start), start + std::chrono::seconds(3));
  collect(job);
}

TEST_F(JobTest, WithoutAnExitTimeOutNoProcessIsKilled) {
  JobDescription patient = description();
  patient.runAtLoad = true;
  patient.exitTimeOut = std::chrono::seconds(0);
  Job job("system", patient);
  job.startIfDue(start, paths);

  job.terminate(start, nullptr);

  EXPECT_EQ(job.deadline(start), std::nullopt);
  collect(job);
}

TEST_F(JobTest, AJobOnItsWayOutNeverStartsAgain) {
  JobDescription always = description();
  always.keepAlive = true;
  Job job("system", always);

  job.terminate(start, nullptr);

  EXPECT_FALSE(job.startIfDue(start, paths));
  EXPECT_TRUE(job.leaving());
}

}  // namespace
}  // namespace halvo::sim
