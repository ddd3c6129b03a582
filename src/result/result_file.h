// The text files that the extraction leaves behind.
#pragma once

#include <ostream>
#include <streambuf>
#include <string>

// Collects characters until they are flushed, then writes them with one call, each line feed as the line end given.
// What could not be written is dropped.
class LineBuffer : public std::streambuf {
 public:
  // Creates the file or empties it.
  LineBuffer(const std::string& path, std::string lineEnd);
  // Writes to an open file, which is closed with it; a negative one is none.
  LineBuffer(int file, std::string lineEnd);
  LineBuffer(const LineBuffer&) = delete;
  LineBuffer& operator=(const LineBuffer&) = delete;
  ~LineBuffer() override { close(); }

  bool isOpen() const { return file_ >= 0; }
  // Writes what is left. False when that or the closing fails, or there was no file.
  bool close();

 protected:
  int_type overflow(int_type c) override;
  std::streamsize xsputn(const char* text, std::streamsize count) override;
  int sync() override;

 private:
  int file_;
  std::string lineEnd_;
  std::string collected_;
};

// A text file in the working directory with the line ends that the build was configured for. Opening it empties an
// existing file. Writers do not check for failures; close() tells of them.
class ResultFile : public std::ostream {
 public:
  explicit ResultFile(const std::string& path);
  // One that is open already, and closed with it. A negative number is no file.
  explicit ResultFile(int file);
  // Line ends other than those of the build.
  ResultFile(const std::string& path, const std::string& lineEnd);

  // Whether everything written has reached the file.
  bool close();

 private:
  void begin();

  LineBuffer lines_;
};
