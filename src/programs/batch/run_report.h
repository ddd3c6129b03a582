// What a runner has to say, in words and as JSON.
#pragma once

#include <string>

#include "batch/run/runner.h"

namespace batch {

// "1234 of 5000, 3 failed, 163 a second, 23 s left".
std::string progressText(const Progress& progress, double seconds);

// "runs/17.odb: time limit: took longer than 30 s (results/17-.../log)", for a failure and another try; else empty.
// `log` is what leads to the log.
std::string lineOf(const Event& event, const std::string& log);

// The sum at the end, a line for each reason after it.
std::string summaryText(const Progress& progress, double seconds, bool isInterrupted);

// One object, without the line's end. Bytes of names that are not UTF-8 become U+FFFD.
std::string jsonOf(const Event& event);
std::string jsonOfStart(const std::string& directory, std::size_t inputs);
std::string jsonOfJobs(const std::string& array, const std::string& collector, std::size_t tasks);
std::string jsonOfEnd(const Progress& progress, double seconds, bool isInterrupted);

}  // namespace batch
