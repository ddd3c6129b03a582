// What lets a caller trust the completion marker: one writer at a time, no marker but beside a complete result.
#pragma once

#include <string>

// Keeps other runs out of a result file, from before it is emptied until its marker is written. Opens the file, making
// it where there is none, and changes nothing in it.
class ResultLock {
 public:
  explicit ResultLock(const std::string& path);
  ~ResultLock();
  ResultLock(const ResultLock&) = delete;
  ResultLock& operator=(const ResultLock&) = delete;

  // Whether the file can be written at all.
  bool isOpen() const { return file_ >= 0; }
  // Whether another run is writing it. Always false on file systems without locks, and for what is no regular file.
  bool isElsewhere() const { return isElsewhere_; }
  // Whether the path still leads to the file that was opened.
  bool isInPlace() const;

 private:
  std::string path_;
  int file_;
  bool isElsewhere_ = false;
};

// Removes the marker of an earlier run. False when it is still there, with the reason in errno.
bool removeMarker(const std::string& path);

// Writes the marker; it appears complete or not at all. False when it does not, with the reason in errno.
bool writeMarker(const std::string& path);
