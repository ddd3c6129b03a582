// A program that answers one request after the other, and what becomes of every way to fail.
#include "base/limited_session.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <optional>
#include <string>

#include "base/file_error.h"

namespace base {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::StartsWith;

constexpr ProgramLimits kRoomy{std::uint64_t{1} << 30, 20s, 20s, std::uint64_t{1} << 20};

class LimitedSessionTest : public testing::Test {
 protected:
  LimitedSession& start(const ProgramLimits& limits = kRoomy) {
    return session_.emplace("old.e", LimitedProgram{KOLVEX_ODD_PROGRAM, {"requests"}, file_.get()}, limits);
  }

  static std::string failure(LimitedSession& session, const std::string& request) {
    try {
      return "no failure but " + session.ask(request);
    } catch (const FileError& error) {
      return error.what();
    }
  }

  Descriptor file_ = Descriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC));
  std::optional<LimitedSession> session_;
};

TEST_F(LimitedSessionTest, AnswersOneRequestAfterTheOther) {
  LimitedSession& session = start();
  for (int i = 0; i < 300; ++i) ASSERT_EQ(session.ask("answer " + std::to_string(i)), std::to_string(i));
  EXPECT_EQ(session.ask("long 1000000"), std::string(1000000, 'x'));
  EXPECT_EQ(session.ask("nul"), std::string("seven\0teen", 10));
}

TEST_F(LimitedSessionTest, FillsRoomOfTheRightSizeAndNoOther) {
  LimitedSession& session = start();
  std::array<std::byte, 5> room{};
  session.ask("answer seven", room);
  EXPECT_EQ(room[4], std::byte{'n'});
  EXPECT_THROW(session.ask("answer eleven", room), FileError);
  EXPECT_FALSE(session.isAlive());
}

TEST_F(LimitedSessionTest, GoesOnAfterAnError) {
  LimitedSession& session = start();
  EXPECT_EQ(failure(session, "file-error coordx damaged"), "old.e: coordx: damaged");
  EXPECT_EQ(failure(session, "error"), "old.e: reading it failed: no idea");
  EXPECT_EQ(failure(session, "number"), "old.e: reading it failed: unknown exception");
  EXPECT_EQ(session.ask("answer 7"), "7");
}

TEST_F(LimitedSessionTest, ACrashIsAnErrorOfThisRequestAndAllThatFollow) {
  LimitedSession& session = start();
  EXPECT_THAT(failure(session, "abort"), StartsWith("old.e: reading it crashed (Aborted): "));
  EXPECT_FALSE(session.isAlive());
  EXPECT_THAT(failure(session, "answer 7"), StartsWith("old.e: reading it crashed (Aborted): "));
  EXPECT_THAT(failure(start(), "exit 3"), StartsWith("old.e: reading it ended the process (status 3): "));
}

TEST_F(LimitedSessionTest, WhatIsNoAnswerEndsIt) {
  // Heads of answers that say something else than follows, or are cut.
  EXPECT_THAT(failure(start(), "send V 0"), HasSubstr("reading it "));
  EXPECT_THAT(failure(start(), "send-much"), HasSubstr("reading it "));
}

TEST_F(LimitedSessionTest, LimitsAreKept) {
  EXPECT_THAT(failure(start({kRoomy.memory, 20s, 20s, 10}), "long 11"), HasSubstr("reading it crashed (Killed)"));
  EXPECT_EQ(failure(start({kRoomy.memory, 20s, 200ms, 100}), "sleep"), "old.e: reading it took longer than 0.2 s");
  EXPECT_EQ(failure(start({kRoomy.memory, 1s, 60s, 100}), "busy"),
            "old.e: reading it took more than 1 s of processor time");
}

}  // namespace
}  // namespace base
