// Work in a child process: what it returns, and what becomes of every way to fail.
#include "base/limited_child.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <new>
#include <vector>

#include "base/file_error.h"
#include "support/temporary_directory.h"

namespace base {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::StartsWith;

constexpr ChildLimits kRoomy{std::uint64_t{1} << 30, 20s, 20s};

std::string failureOf(const std::function<std::string()>& work, const ChildLimits& limits = kRoomy) {
  try {
    return "no failure but " + runLimited("old.odb", limits, work);
  } catch (const FileError& error) {
    return error.what();
  }
}

TEST(LimitedChild, ReturnsWhatTheWorkReturns) {
  EXPECT_EQ(runLimited("old.odb", kRoomy, [] { return std::string("seven\0teen", 10); }),
            std::string("seven\0teen", 10));
  EXPECT_EQ(runLimited("old.odb", kRoomy, [] { return std::string(); }), "");
  const std::string large(60000, 'x');
  EXPECT_EQ(runLimited("old.odb", kRoomy, [&] { return large; }), large);
}

TEST(LimitedChild, LeavesTheMemoryOfTheParentAlone) {
  int number = 1;
  runLimited("old.odb", kRoomy, [&] { return std::to_string(number = 2); });
  EXPECT_EQ(number, 1);
}

TEST(LimitedChild, RepeatsTheErrorsOfTheStore) {
  EXPECT_EQ(failureOf([]() -> std::string { throw FileError("old.odb", "/steps", "is missing"); }),
            "old.odb: /steps: is missing");
  EXPECT_EQ(failureOf([]() -> std::string { throw FileError("other.odb", "", "cannot be created"); }),
            "other.odb: cannot be created");
}

TEST(LimitedChild, TellsOtherErrorsFromThem) {
  EXPECT_EQ(failureOf([]() -> std::string { throw std::runtime_error("no idea"); }),
            "old.odb: reading it failed: no idea");
  EXPECT_EQ(failureOf([]() -> std::string { throw 3; }), "old.odb: reading it failed: unknown exception");
}

TEST(LimitedChild, ACrashIsAnError) {
  EXPECT_THAT(failureOf([]() -> std::string { std::abort(); }), StartsWith("old.odb: reading it crashed (Aborted): "));
  EXPECT_THAT(failureOf([]() -> std::string {
                ::kill(::getpid(), SIGSEGV);
                return "";
              }),
              StartsWith("old.odb: reading it crashed (Segmentation fault): "));
}

TEST(LimitedChild, AnExitIsAnError) {
  EXPECT_THAT(failureOf([]() -> std::string { std::_Exit(255); }),
              StartsWith("old.odb: reading it ended the process (status 255): "));
  EXPECT_THAT(failureOf([]() -> std::string { std::_Exit(0); }),
              StartsWith("old.odb: reading it ended the process (status 0): "));
}

void sendToAllPipes(const std::string& message) {
  for (int file = 3; file < 100; ++file) {
    struct stat status {};
    if (::fstat(file, &status) != 0 || !S_ISFIFO(status.st_mode)) continue;
    for (std::size_t sent = 0; sent < message.size();) {
      const ssize_t written = ::write(file, message.data() + sent, message.size() - sent);
      if (written <= 0) break;
      sent += static_cast<std::size_t>(written);
    }
  }
}

// What comes of a child that has been taken over and sends something of its own.
std::string failureAfterSending(const std::string& message, int status = 0) {
  return failureOf([&]() -> std::string {
    sendToAllPipes(message);
    ::_exit(status);
  });
}

TEST(LimitedChild, TakesNoAnswerThatIsNotWhole) {
  for (const std::string message : {"", "V", ".", "Vhalf an answer", "S", "old.odb"}) {
    EXPECT_THAT(failureAfterSending(message), StartsWith("old.odb: reading it ended the process")) << message;
  }
  EXPECT_THAT(failureAfterSending("V42.", 1), StartsWith("old.odb: reading it ended the process (status 1)"));
  EXPECT_THAT(failureAfterSending(std::string(1 << 20, 'V')), StartsWith("old.odb: reading it crashed (Killed)"));
}

TEST(LimitedChild, MakesAnErrorOfWhateverElseItIsSent) {
  EXPECT_EQ(failureAfterSending("Xwhat is this."), "old.odb: reading it failed: what is this");
  EXPECT_EQ(failureAfterSending("Sno name of a file."), "no name of a file: no name of a file");
  EXPECT_EQ(failureAfterSending("V42."), "no failure but 42");
}

TEST(LimitedChild, TimeIsLimitedWhateverIsSentMeanwhile) {
  const auto sendOn = []() -> std::string {
    for (;;) {
      sendToAllPipes("V");
      ::usleep(100);
    }
  };
  EXPECT_EQ(failureOf(sendOn, {kRoomy.memory, kRoomy.processorTime, 200ms}),
            "old.odb: reading it took longer than 0.2 s");
}

TEST(LimitedChild, TimeIsLimited) {
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(failureOf(
                []() -> std::string {
                  ::sleep(60);
                  return "";
                },
                {kRoomy.memory, 20s, 200ms}),
            "old.odb: reading it took longer than 0.2 s");
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 30s);
}

TEST(LimitedChild, IsNotWaitedForWhenItHasClosedItsEnd) {
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_THAT(failureOf([]() -> std::string {
                ::close_range(3, ~0U, 0);
                ::sleep(60);
                return "";
              }),
              StartsWith("old.odb: reading it crashed (Killed): "));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, 30s);
}

TEST(LimitedChild, KeepsItsStatusUntilItsEnd) {
  for (int i = 0; i < 300; ++i) ASSERT_EQ(runLimited("old.odb", kRoomy, [] { return std::string("7"); }), "7") << i;
}

TEST(LimitedChild, AnExitRunsTheHandlersWithoutTheStreams) {
  testing::internal::CaptureStdout();
  EXPECT_THAT(failureOf([]() -> std::string {
                std::fputs("said by the child", stdout);
                std::exit(255);
              }),
              StartsWith("old.odb: reading it ended the process (status 255): "));
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST(LimitedChild, ProcessorTimeIsLimited) {
  EXPECT_EQ(failureOf(
                []() -> std::string {
                  const auto start = std::chrono::steady_clock::now();
                  while (std::chrono::steady_clock::now() - start < 50s) {
                  }
                  return "late";
                },
                {kRoomy.memory, 1s, 60s}),
            "old.odb: reading it took more than 1 s of processor time");
}

#if !defined(__SANITIZE_ADDRESS__)
TEST(LimitedChild, MemoryIsLimited) {
  EXPECT_EQ(failureOf(
                []() -> std::string {
                  std::vector<char> large(std::size_t{512} << 20, 'x');
                  return {large.back()};
                },
                {std::uint64_t{256} << 20, 20s, 20s}),
            "old.odb: reading it took more than 256 MiB of memory");
}
#endif

TEST(LimitedChild, HasNoStreamsOfTheParent) {
  testing::internal::CaptureStderr();
  runLimited("old.odb", kRoomy, [] {
    std::fputs("HDF5-DIAG: Error detected\n", stderr);
    std::fflush(stderr);
    return std::string();
  });
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

// How many descriptors lead to a file.
std::string descriptorsOf(const std::string& path) {
  struct stat wanted {};
  ::stat(path.c_str(), &wanted);
  int count = 0;
  for (int file = 0; file < 1000; ++file) {
    struct stat status {};
    if (::fstat(file, &status) == 0 && status.st_dev == wanted.st_dev && status.st_ino == wanted.st_ino) ++count;
  }
  return std::to_string(count);
}

TEST(LimitedChild, HasNoOpenFilesOfTheParent) {
  const TemporaryDirectory directory;
  const std::string path = directory.file("locked");
  // On both sides of the number that the pipe will have.
  const int low = ::open(path.c_str(), O_WRONLY | O_CREAT, 0600);
  const int high = ::fcntl(low, F_DUPFD, 500);
  EXPECT_EQ(descriptorsOf(path), "2");
  EXPECT_EQ(runLimited("old.odb", kRoomy, [&] { return descriptorsOf(path); }), "0");
  EXPECT_EQ(descriptorsOf(path), "2") << "the parent's stay";
  ::close(low);
  ::close(high);
}

TEST(LimitedChild, LeavesNoCore) {
  const TemporaryDirectory directory;
  const std::string limits = runLimited("old.odb", kRoomy, [] {
    std::ifstream file("/proc/self/limits");
    std::string line;
    while (std::getline(file, line) && line.find("core file") == std::string::npos) {
    }
    return line;
  });
  EXPECT_THAT(limits, testing::ContainsRegex("core file size +0 +0"));
}

TEST(LimitedChild, AnAnswerWithoutAnEndIsNone) {
  const std::string tooMuch(std::size_t{70} << 10, 'x');
  EXPECT_EQ(runLimited("old.odb", kRoomy, [&] { return tooMuch; }).size(), std::size_t{64} << 10);
}

TEST(LimitedChild, LimitsGrowWithTheFile) {
  const ChildLimits small = limitsFor(0);
  const ChildLimits large = limitsFor(std::int64_t{10} << 30);
  EXPECT_LE(small.memory, std::uint64_t{256} << 20) << "of a small file that asks for more";
  EXPECT_GE(large.memory, std::uint64_t{20} << 30);
  EXPECT_GT(large.processorTime, small.processorTime);
  EXPECT_LE(small.processorTime, 3s) << "a small file that keeps the library turning in circles is told soon";
  EXPECT_GT(small.time, small.processorTime);
}

}  // namespace
}  // namespace base
