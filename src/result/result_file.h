// The text files that the extraction leaves behind.
#pragma once

#include <fstream>
#include <streambuf>
#include <string>

// Passes characters on to another buffer, each line feed as the line end given.
class LineEndBuffer : public std::streambuf {
 public:
  LineEndBuffer(std::streambuf& target, std::string lineEnd) : target_(target), lineEnd_(std::move(lineEnd)) {}

 protected:
  int_type overflow(int_type c) override;
  std::streamsize xsputn(const char* text, std::streamsize count) override;
  int sync() override { return target_.pubsync(); }

 private:
  std::streambuf& target_;
  std::string lineEnd_;
};

// A text file in the working directory, with the number format of results and the line ends that the build was
// configured for. Opening it empties an existing file. Writers do not check for failures; close() tells of them.
class ResultFile : public std::ostream {
 public:
  explicit ResultFile(const std::string& path);
  // Line ends other than those of the build.
  ResultFile(const std::string& path, const std::string& lineEnd);

  // Whether everything written has reached the file.
  bool close();

 private:
  std::filebuf file_;
  LineEndBuffer lines_;
};
