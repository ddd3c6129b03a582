// Work in a program of its own: what it returns, and what becomes of every way to fail.
#include "base/limited_program.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "base/descriptor.h"
#include "base/file_error.h"
#include "support/temporary_directory.h"

namespace base {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::StartsWith;

constexpr ProgramLimits kRoomy{std::uint64_t{1} << 30, 20s, 20s, std::uint64_t{1} << 20};

class LimitedProgramTest : public testing::Test {
 protected:
  LimitedProgramTest() {
    std::ofstream(directory_.file("old.odb")) << "hello there";
    file_ = Descriptor(::open(directory_.file("old.odb").c_str(), O_RDONLY | O_CLOEXEC));
  }

  std::string answer(std::vector<std::string> arguments, const ProgramLimits& limits = kRoomy) {
    return runLimited("old.odb", {KOLVEX_ODD_PROGRAM, std::move(arguments), file_.get()}, limits);
  }

  std::string failure(std::vector<std::string> arguments, const ProgramLimits& limits = kRoomy) {
    try {
      return "no failure but " + answer(std::move(arguments), limits);
    } catch (const FileError& error) {
      return error.what();
    }
  }

  TemporaryDirectory directory_;
  Descriptor file_;
};

TEST_F(LimitedProgramTest, ReturnsWhatTheWorkReturns) {
  EXPECT_EQ(answer({"nul"}), std::string("seven\0teen", 10));
  EXPECT_EQ(answer({"answer", ""}), "");
  EXPECT_EQ(answer({"long", "60000"}), std::string(60000, 'x'));
}

TEST_F(LimitedProgramTest, HasTheFileAndNothingElseOpen) {
  EXPECT_EQ(answer({"first-bytes"}), "hello");
  const Descriptor leaking(::open("/dev/null", O_RDONLY));
  EXPECT_EQ(answer({"open-files"}), "3 4 ");
}

TEST_F(LimitedProgramTest, RepeatsErrorsOfTheFileUnderItsName) {
  EXPECT_EQ(failure({"file-error", "/steps", "is missing"}), "old.odb: /steps: is missing");
  EXPECT_EQ(failure({"file-error", "", "cannot be read"}), "old.odb: cannot be read");
}

TEST_F(LimitedProgramTest, TellsOtherErrorsFromThem) {
  EXPECT_EQ(failure({"error"}), "old.odb: reading it failed: no idea");
  EXPECT_EQ(failure({"number"}), "old.odb: reading it failed: unknown exception");
}

TEST_F(LimitedProgramTest, ACrashIsAnError) {
  EXPECT_THAT(failure({"abort"}), StartsWith("old.odb: reading it crashed (Aborted): "));
  EXPECT_THAT(failure({"segv"}), StartsWith("old.odb: reading it crashed (Segmentation fault): "));
}

TEST_F(LimitedProgramTest, AnExitIsAnError) {
  EXPECT_THAT(failure({"exit", "255"}), StartsWith("old.odb: reading it ended the process (status 255): "));
  EXPECT_THAT(failure({"exit", "0"}), StartsWith("old.odb: reading it ended the process (status 0): "));
}

TEST_F(LimitedProgramTest, TakesNoAnswerThatIsNotWhole) {
  for (const std::string message : {"", "V", ".", "Vhalf an answer", "F", "old.odb"}) {
    EXPECT_THAT(failure({"send", message, "0"}), StartsWith("old.odb: reading it ended the process")) << message;
  }
  EXPECT_THAT(failure({"send", "V42.", "1"}), StartsWith("old.odb: reading it ended the process (status 1)"));
  EXPECT_THAT(failure({"send-much"}), StartsWith("old.odb: reading it crashed (Killed)"));
}

TEST_F(LimitedProgramTest, MakesAnErrorOfWhateverElseItIsSent) {
  EXPECT_EQ(failure({"send", "Xwhat is this.", "0"}), "old.odb: reading it failed: what is this");
  EXPECT_EQ(failure({"send", "Fno end of an object.", "0"}), "old.odb: reading it failed: no end of an object");
  EXPECT_EQ(failure({"send", "V42.", "0"}), "no failure but 42");
}

TEST_F(LimitedProgramTest, TimeIsLimitedWhateverIsSentMeanwhile) {
  EXPECT_EQ(failure({"send-on"}, {kRoomy.memory, kRoomy.processorTime, 200ms, kRoomy.answer}),
            "old.odb: reading it took longer than 0.2 s");
}

TEST_F(LimitedProgramTest, TimeIsLimited) {
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(failure({"sleep"}, {kRoomy.memory, 20s, 200ms, kRoomy.answer}),
            "old.odb: reading it took longer than 0.2 s");
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 30s);
}

TEST_F(LimitedProgramTest, IsNotWaitedForWhenItHasClosedItsEnd) {
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_THAT(failure({"close-and-sleep"}), StartsWith("old.odb: reading it crashed (Killed): "));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 30s);
}

TEST_F(LimitedProgramTest, KeepsItsStatusUntilItsEnd) {
  for (int i = 0; i < 300; ++i) ASSERT_EQ(answer({"answer", "7"}), "7") << i;
}

TEST_F(LimitedProgramTest, AnExitRunsTheHandlersWithoutTheStreams) {
  testing::internal::CaptureStdout();
  EXPECT_THAT(failure({"exit-with-handlers"}), StartsWith("old.odb: reading it ended the process (status 255): "));
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(LimitedProgramTest, ProcessorTimeIsLimited) {
  EXPECT_EQ(failure({"busy"}, {kRoomy.memory, 1s, 60s, kRoomy.answer}),
            "old.odb: reading it took more than 1 s of processor time");
}

#if !defined(__SANITIZE_ADDRESS__)
TEST_F(LimitedProgramTest, MemoryIsLimited) {
  EXPECT_EQ(failure({"memory"}, {std::uint64_t{256} << 20, 20s, 20s, kRoomy.answer}),
            "old.odb: reading it took more than 256 MiB of memory");
}
#endif

TEST_F(LimitedProgramTest, HasNoStreamsOfTheParent) {
  testing::internal::CaptureStderr();
  EXPECT_EQ(answer({"complain"}), "");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST_F(LimitedProgramTest, LeavesNoCore) {
  EXPECT_THAT(answer({"limit", "core file"}), testing::ContainsRegex("core file size +0 +0"));
}

TEST_F(LimitedProgramTest, MayRunBesideOtherThreads) {
  std::vector<std::thread> threads;
  std::vector<std::string> answers(4);
  for (std::size_t i = 0; i < answers.size(); ++i) {
    threads.emplace_back([this, i, &answers] {
      for (int k = 0; k < 20; ++k) answers[i] += answer({"answer", std::to_string(i)});
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (std::size_t i = 0; i < answers.size(); ++i) EXPECT_EQ(answers[i], std::string(20, static_cast<char>('0' + i)));
}

TEST_F(LimitedProgramTest, AProgramThatIsNotThereIsNamed) {
  try {
    runLimited("old.odb", {"/no/such/program", {}, file_.get()}, kRoomy);
    FAIL();
  } catch (const FileError& error) {
    EXPECT_THAT(error.what(), HasSubstr("old.odb: cannot be read: /no/such/program cannot be started"));
  }
}

TEST_F(LimitedProgramTest, RefusesToRunByItself) {
  EXPECT_NE(std::system((std::string(KOLVEX_ODD_PROGRAM) + " answer 7 > /dev/null 2>&1").c_str()), 0);
}

TEST(ProgramLimitsTest, GrowWithTheFile) {
  const ProgramLimits small = limitsFor(0);
  const ProgramLimits large = limitsFor(std::int64_t{10} << 30);
  EXPECT_LE(small.memory, std::uint64_t{64} << 20) << "of a small file that asks for more";
  EXPECT_GE(large.memory, std::uint64_t{20} << 30);
  EXPECT_GT(large.processorTime, small.processorTime);
  EXPECT_LE(small.processorTime, 3s) << "a small file that keeps the library turning in circles is told soon";
  EXPECT_GT(small.time, small.processorTime);
}

}  // namespace
}  // namespace base
