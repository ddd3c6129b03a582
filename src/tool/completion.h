// The protocol between a shell and a program for completion.
//
// The shell runs the command with `--complete INDEX WORD...`: the words of the line after the command's name, without
// their quotes, and which of them is being typed, from 0; it is the number of words where that one is still empty and
// not among them. The answer's first line says which names of files the shell itself adds: "file" (all), "directory" or
// "nothing". Each further line is a candidate for the word; for an option with "=", for the part after that.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tool {

// What a shell offers for a value.
enum class Completes { nothing, file, directory, words, computed };

struct CompletionRequest {
  std::vector<std::string> words;
  std::size_t at = 0;  // at most the number of words

  // What has been typed of the word so far.
  std::string start() const { return at < words.size() ? words[at] : std::string(); }
};

struct Completion {
  std::vector<std::string> words;
  Completes files = Completes::nothing;  // or file, or directory
};

// The arguments after `--complete`; nothing if they do not begin with an index that fits.
std::optional<CompletionRequest> completionRequestFrom(const std::vector<std::string>& arguments);

// The answer. A candidate with a line break is left out.
std::string textOf(const Completion& completion);

// For programs that read files to answer: ends the process with status 1 two seconds from now, since nobody waits
// longer for a suggestion.
void endAfterPatience();

}  // namespace tool
