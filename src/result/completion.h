// What lets a caller trust the completion marker: one writer at a time, no marker but beside a complete result.
#pragma once

#include <sys/types.h>

#include <string>

#include "result/result_file.h"

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

// The marker of a run. Its file is made under a temporary name, the path and ".tmp", while files can still be made, and
// gets its line and its name when the results are complete: it appears complete or not at all. What has no name by then
// is removed.
class Marker {
 public:
  // Failures show in publish().
  explicit Marker(std::string path);
  ~Marker();
  Marker(const Marker&) = delete;
  Marker& operator=(const Marker&) = delete;

  // Once. False when the marker does not appear, with the reason in errno.
  bool publish();

 private:
  bool isInPlace() const;

  std::string path_;
  std::string temporary_;
  int descriptor_;  // of the temporary file, or negative
  int reason_;      // why there is none
  ResultFile file_;
  dev_t device_ = 0;  // with the number: which file it is
  ino_t number_ = 0;
  bool isNamed_ = false;
};
