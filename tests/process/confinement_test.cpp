// What a process that has confined itself can still do, and what it cannot, each in a child of its own.
#include "process/confinement.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/ptrace.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "support/temporary_directory.h"

namespace {

using Confine = std::function<Confinement()>;

constexpr int kUnconfined = 200;  // statuses of children, beyond the numbers of errors
constexpr int kThrown = 201;

// What an act ended with in a child that has confined itself: 0, or the error; or how the child ended.
int ended(const Confine& confine, const std::function<int()>& act) {
  const pid_t child = ::fork();
  if (child == 0) {
    if (confine && !confine().ofCalls) std::_Exit(kUnconfined);
    try {
      errno = 0;
      std::_Exit(act() >= 0 ? 0 : errno);
    } catch (...) {
      std::_Exit(kThrown);
    }
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
}

struct Act {
  const char* name;
  std::function<int()> run;  // negative with errno set when it fails
};

long inChild(const std::function<void()>& act) {
  const pid_t child = ::fork();
  if (child == 0) {
    act();
    std::_Exit(0);
  }
  if (child > 0) ::waitpid(child, nullptr, 0);
  return child;
}

void* mapped(int protection) { return ::mmap(nullptr, 4096, protection, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0); }

class ConfinementTest : public testing::Test {
 protected:
  void SetUp() override {
    if (ended([] { return confineToOpenFiles(); }, [] { return 0; }) == kUnconfined) {
      GTEST_SKIP() << "this build or kernel does not confine";
    }
    before_ = std::filesystem::current_path();
    std::filesystem::current_path(directory_.file(""));
    std::filesystem::create_directory("other");
    std::ofstream("mine") << "mine";
    std::ofstream("other/yours") << "yours";
    program_ = ::open("/bin/true", O_RDONLY | O_CLOEXEC);
    open_ = ::open("mine", O_RDWR | O_CLOEXEC);
  }
  void TearDown() override {
    if (open_ < 0) return;
    ::close(open_);
    ::close(program_);
    std::filesystem::current_path(before_);
  }

  // What no program of ours does any more once it is confined. All of it works before.
  std::vector<Act> forbidden() const {
    return {
        {"make a file", [] { return ::open("new", O_WRONLY | O_CREAT, 0666); }},
        {"open a file for writing", [] { return ::open("mine", O_WRONLY); }},
        {"make a temporary file", [] { return ::open(".", O_TMPFILE | O_WRONLY, 0600); }},
        {"make a directory", [] { return ::mkdir("folder", 0777); }},
        {"make a link", [] { return ::link("mine", "link"); }},
        {"make a soft link", [] { return ::symlink("mine", "soft"); }},
        {"make a pipe with a name", [] { return ::mkfifo("pipe", 0666); }},
        {"shorten a file", [] { return ::truncate("mine", 0); }},
        {"change rights", [] { return ::chmod("mine", 0777); }},
        {"change the directory", [] { return ::chdir("other"); }},
        {"run a program", [] { return ::execl("/bin/true", "true", nullptr); }},
        {"run an open program",
         [file = program_] {
           std::string name = "true";
           char* arguments[] = {name.data(), nullptr};
           return ::fexecve(file, arguments, environ);
         }},
        {"fork", [] { return static_cast<int>(inChild([] {})); }},
        {"start a process by clone", [] { return static_cast<int>(::syscall(SYS_clone, SIGCHLD, 0, 0, 0, 0)); }},
        {"make a socket", [] { return ::socket(AF_INET, SOCK_STREAM, 0); }},
        {"make a local socket", [] { return ::socket(AF_UNIX, SOCK_STREAM, 0); }},
        {"make a pair of sockets",
         [] {
           int ends[2];
           return ::socketpair(AF_UNIX, SOCK_STREAM, 0, ends);
         }},
        {"trace", [] { return static_cast<int>(::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr)); }},
        {"signal its parent", [] { return ::kill(::getppid(), 0); }},
        {"signal by thread", [] { return static_cast<int>(::syscall(SYS_tgkill, ::getppid(), ::getppid(), 0)); }},
        {"make a file in memory", [] { return static_cast<int>(::syscall(SYS_memfd_create, "x", 0)); }},
        {"map memory to execute", [] { return mapped(PROT_READ | PROT_EXEC) == MAP_FAILED ? -1 : 0; }},
        {"make memory executable", [] { return ::mprotect(mapped(PROT_READ), 4096, PROT_READ | PROT_EXEC); }},
        {"become traceable", [] { return ::prctl(PR_SET_DUMPABLE, 1); }},
        {"duplicate a file", [] { return ::dup(STDERR_FILENO); }},
    };
  }

  TemporaryDirectory directory_;
  std::filesystem::path before_;
  int open_ = -1;
  int program_ = -1;
};

bool isRefused(int error) { return error == EPERM || error == EACCES; }

TEST_F(ConfinementTest, TheActsOfTheTestWorkWithoutIt) {
  for (const Act& act : forbidden()) {
    const int error = ended({}, act.run);
    EXPECT_FALSE(isRefused(error)) << act.name << ": " << std::strerror(error);
    for (const char* made : {"new", "folder", "link", "soft", "pipe"}) std::filesystem::remove(made);
  }
}

TEST_F(ConfinementTest, OpenFilesAloneAreLeftToTheWriterOfResults) {
  for (const Act& act : forbidden()) {
    EXPECT_TRUE(isRefused(ended([] { return confineToOpenFiles(); }, act.run))) << act.name;
  }
  EXPECT_TRUE(isRefused(ended([] { return confineToOpenFiles(); }, [] { return ::open("mine", O_RDONLY); })));
}

TEST_F(ConfinementTest, OneFileIsLeftToTheReaderOfStrangeOnes) {
  std::vector<Act> acts = forbidden();
  acts.push_back({"open a file for reading", [] { return ::open("mine", O_RDONLY); }});
  acts.push_back({"rename a file", [] { return std::rename("mine", "renamed"); }});
  acts.push_back({"remove a file", [] { return ::unlink("mine"); }});
  acts.push_back({"start a thread", [] {
                    try {
                      std::thread([] {}).join();
                      return 0;
                    } catch (const std::system_error& error) {
                      errno = error.code().value() == EAGAIN ? EPERM : error.code().value();
                      return -1;
                    }
                  }});
  for (const Act& act : acts) {
    EXPECT_TRUE(isRefused(ended([] { return confineToOneFile(); }, act.run))) << act.name;
  }
}

TEST_F(ConfinementTest, ResultsAreStillWrittenAndNamed) {
  const int file = open_;
  const std::vector<Act> acts = {
      {"write", [file] { return static_cast<int>(::write(file, "more", 4)); }},
      {"read",
       [file] {
         char byte = 0;
         return static_cast<int>(::pread(file, &byte, 1, 0));
       }},
      {"look at",
       [file] {
         struct stat status {};
         return ::fstat(file, &status) + ::stat("mine", &status);
       }},
      {"take memory", [] { return std::vector<char>(std::size_t{40} << 20U, 'x').back() == 'x' ? 0 : -1; }},
      {"start a thread",
       [] {
         int number = -1;
         std::thread([&number] { number = 0; }).join();
         return number;
       }},
      {"throw",
       [] {
         try {
           throw std::runtime_error("caught");
         } catch (const std::exception&) {
           return 0;
         }
       }},
      {"rename", [] { return std::rename("mine", "renamed") + std::rename("renamed", "mine"); }},
      {"remove", [] { return std::rename("mine", "removed") + ::unlink("removed"); }},
      {"close", [file] { return ::close(file); }},
  };
  for (const Act& act : acts) EXPECT_EQ(ended([] { return confineToOpenFiles(); }, act.run), 0) << act.name;
}

TEST_F(ConfinementTest, AbortStillEnds) {
  for (const Confine& confine : {Confine(confineToOpenFiles), Confine(confineToOneFile)}) {
    EXPECT_EQ(ended(confine, [] { return ::raise(SIGABRT); }), -SIGABRT);
  }
}

TEST_F(ConfinementTest, NamesOfOtherDirectoriesAreOutOfReach) {
  bool ofFiles = false;
  const int status = ended(
      [&] {
        const Confinement confinement = confineToOpenFiles();
        ofFiles = confinement.ofFiles;
        return confinement;
      },
      [&] {
        errno = ENOSYS;
        return ofFiles ? 0 : -1;
      });
  if (status != 0) GTEST_SKIP() << "this kernel has no Landlock";
  const std::vector<Act> acts = {{"remove elsewhere", [] { return ::unlink("../outside"); }},
                                 {"rename into", [] { return std::rename("mine", "../outside"); }}};
  std::filesystem::current_path("other");
  std::ofstream("mine") << "mine";
  std::ofstream("../outside") << "outside";
  for (const Act& act : acts) {
    EXPECT_TRUE(isRefused(ended([] { return confineToOpenFiles(); }, act.run))) << act.name;
    EXPECT_EQ(ended({}, act.run), 0) << act.name;
    std::ofstream("../outside") << "outside";
  }
}

TEST_F(ConfinementTest, OneFileMayBeWritten) {
  const Confine confine = [] { return confineToWriting("mine"); };
  EXPECT_EQ(ended(confine, [] { return ::open("mine", O_RDWR | O_TRUNC); }), 0);
  EXPECT_TRUE(isRefused(ended(confine, [] { return ::execl("/bin/true", "true", nullptr); })));
  EXPECT_TRUE(isRefused(ended(confine, [] { return ::socket(AF_UNIX, SOCK_STREAM, 0); })));
  EXPECT_TRUE(isRefused(ended(confine, [] { return ::unlink("mine"); })));
  if (!isRefused(ended([] { return confineToOneFile(); }, [] { return ::open("mine", O_RDONLY); }))) return;
  const int elsewhere = ended(
      [] {
        const Confinement confinement = confineToWriting("mine");
        if (!confinement.ofFiles) std::_Exit(EACCES);
        return confinement;
      },
      [] { return ::open("other/yours", O_RDONLY); });
  EXPECT_TRUE(isRefused(elsewhere));
}

}  // namespace
