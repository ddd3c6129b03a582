// A limited program that does what it is told, right or wrong: `odd_program ... WHAT [ARGUMENT ...]`.

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <new>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "base/descriptor.h"
#include "base/file_error.h"
#include "base/limited_protocol.h"
#include "base/limited_work.h"

namespace {

using Arguments = std::span<char*>;

void sendAll(const std::string& message) {
  for (std::size_t sent = 0; sent < message.size();) {
    const ssize_t written = ::write(base::kLimitedPipe, message.data() + sent, message.size() - sent);
    if (written <= 0) return;
    sent += static_cast<std::size_t>(written);
  }
}

std::string limitLine(const std::string& name) {
  std::ifstream file("/proc/self/limits");
  std::string line;
  while (std::getline(file, line) && line.find(name) == std::string::npos) {
  }
  return line;
}

// The numbers of the files that are open beside the standard streams.
std::string openFiles() {
  std::string found;
  for (int file = 3; file < 200; ++file) {
    if (::fcntl(file, F_GETFD) >= 0) found += std::to_string(file) + " ";
  }
  return found;
}

std::string firstBytes() {
  std::vector<std::byte> bytes(5);
  const std::size_t count = base::readAt(base::kLimitedFile, 0, bytes).value_or(0);
  return {reinterpret_cast<const char*>(bytes.data()), count};
}

std::string keepBusy() {
  const auto start = std::chrono::steady_clock::now();
  while (std::chrono::steady_clock::now() - start < std::chrono::seconds(50)) {
  }
  return "late";
}

const std::map<std::string, std::string (*)(Arguments)> kDeeds = {
    {"answer", [](Arguments a) { return std::string(a[1]); }},
    {"nul", [](Arguments) { return std::string("seven\0teen", 10); }},
    {"long", [](Arguments a) { return std::string(std::strtoul(a[1], nullptr, 10), 'x'); }},
    {"file-error", [](Arguments a) -> std::string { throw base::FileError("", a[1], a[2]); }},
    {"error", [](Arguments) -> std::string { throw std::runtime_error("no idea"); }},
    {"number", [](Arguments) -> std::string { throw 3; }},
    {"abort", [](Arguments) -> std::string { std::abort(); }},
    {"segv",
     [](Arguments) -> std::string {
       ::kill(::getpid(), SIGSEGV);
       return "";
     }},
    {"exit", [](Arguments a) -> std::string { std::_Exit(std::atoi(a[1])); }},
    {"exit-with-handlers",
     [](Arguments) -> std::string {
       std::fputs("said by the program", stdout);
       std::exit(255);
     }},
    {"send",
     [](Arguments a) -> std::string {
       sendAll(a[1]);
       ::_exit(std::atoi(a[2]));
     }},
    {"send-much",
     [](Arguments) -> std::string {
       sendAll(std::string(std::size_t{8} << 20U, 'V'));
       ::_exit(0);
     }},
    {"send-on",
     [](Arguments) -> std::string {
       for (;;) {
         sendAll("V");
         ::usleep(100);
       }
     }},
    {"sleep",
     [](Arguments) -> std::string {
       ::sleep(60);
       return "";
     }},
    {"close-and-sleep",
     [](Arguments) -> std::string {
       ::close(base::kLimitedPipe);
       ::sleep(60);
       return "";
     }},
    {"busy", [](Arguments) { return keepBusy(); }},
    {"memory",
     [](Arguments) -> std::string {
       const std::vector<char> large(std::size_t{512} << 20U, 'x');
       return {large.back()};
     }},
    {"complain",
     [](Arguments) -> std::string {
       std::fputs("HDF5-DIAG: Error detected\n", stderr);
       std::fflush(stderr);
       return "";
     }},
    {"limit", [](Arguments a) { return limitLine(a[1]); }},
    {"open-files", [](Arguments) { return openFiles(); }},
    {"first-bytes", [](Arguments) { return firstBytes(); }},
};

}  // namespace

namespace {

// A request has the words of a command line.
std::string answerTo(std::string_view request) {
  std::vector<std::string> words;
  for (std::size_t begin = 0; begin <= request.size();) {
    const std::size_t end = std::min(request.find(' ', begin), request.size());
    words.emplace_back(request.substr(begin, end - begin));
    begin = end + 1;
  }
  std::vector<char*> arguments;
  for (std::string& word : words) arguments.push_back(word.data());
  return kDeeds.at(words.front())(arguments);
}

}  // namespace

int main(int argc, char** argv) {
  if (std::string_view(argv[argc - 1]) == "requests") return base::serveLimitedRequests(argc, argv, answerTo);
  return base::serveLimited(argc, argv, [](Arguments arguments) { return kDeeds.at(arguments.front())(arguments); });
}
