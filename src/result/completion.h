// What lets a caller trust the completion marker: one writer at a time, no marker but beside a complete result.
#pragma once

#include <string>

// Keeps other runs out of a directory, from before the marker of an earlier run is removed until this one's is written.
// The lock is on the directory itself (flock), where no reader of the results meets it, and goes with the process. One
// that another run has is waited for half a second.
class DirectoryLock {
 public:
  explicit DirectoryLock(const char* directory);
  ~DirectoryLock();
  DirectoryLock(const DirectoryLock&) = delete;
  DirectoryLock& operator=(const DirectoryLock&) = delete;

  // Whether another run has it. Always false on file systems without locks, and for a directory that cannot be read.
  bool isElsewhere() const { return isElsewhere_; }

 private:
  int directory_;
  bool isElsewhere_;
};

// Where the result file stands. Opens it, making it where there is none, and changes nothing in it; without waiting,
// should it be a pipe that nobody reads.
class ResultPlace {
 public:
  explicit ResultPlace(const std::string& path);
  ~ResultPlace();
  ResultPlace(const ResultPlace&) = delete;
  ResultPlace& operator=(const ResultPlace&) = delete;

  // Whether the file can be written at all.
  bool isOpen() const { return file_ >= 0; }
  // Whether the path still leads to the file that was opened.
  bool isInPlace() const;

 private:
  std::string path_;
  int file_;
};

// Removes the marker of an earlier run. False when it is still there, with the reason in errno.
bool removeMarker(const char* path);

// Writes the marker; it appears complete or not at all. False when it does not, with the reason in errno.
bool writeMarker(const std::string& path);
