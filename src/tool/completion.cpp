#include "tool/completion.h"

#include <unistd.h>

#include <charconv>
#include <csignal>

namespace tool {

namespace {

constexpr unsigned kPatience = 2;  // seconds

}  // namespace

std::optional<CompletionRequest> completionRequestFrom(const std::vector<std::string>& arguments) {
  if (arguments.empty()) return std::nullopt;
  const std::string& index = arguments.front();
  CompletionRequest request{{arguments.begin() + 1, arguments.end()}, 0};
  const auto [end, error] = std::from_chars(index.data(), index.data() + index.size(), request.at);
  const bool isIndex = error == std::errc() && end == index.data() + index.size() && request.at <= request.words.size();
  return isIndex ? std::optional(request) : std::nullopt;
}

std::string textOf(const Completion& completion) {
  std::string text = "nothing\n";
  if (completion.files == Completes::file) text = "file\n";
  if (completion.files == Completes::directory) text = "directory\n";
  for (const std::string& word : completion.words) {
    if (word.find('\n') == std::string::npos) text += word + "\n";
  }
  return text;
}

void endAfterPatience() {
  std::signal(SIGALRM, [](int) { ::_exit(1); });
  ::alarm(kPatience);
}

}  // namespace tool
