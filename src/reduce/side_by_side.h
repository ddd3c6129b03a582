// Independent pieces of work on two processors.
#pragma once

#include <cstddef>
#include <functional>
#include <vector>

// Collects pieces of work that neither need each other nor throw, and does them together.
class SideBySide {
 public:
  // A piece that goes over so many values.
  void add(std::size_t values, std::function<void()> job);

  // Does all of them, on this thread and on a second one, where the machine has another processor and the values are
  // worth it. Returns when all are done.
  void run() const;

 private:
  std::vector<std::function<void()>> jobs_;
  std::size_t values_ = 0;
};
