#include "export/frame_choice.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

#include "odbstore/database_file.h"

namespace vtk_export {

namespace {

using odbstore::FrameInfo;
using odbstore::StoredStep;

std::optional<int> numberFrom(std::string_view text) {
  int number = 0;
  const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (failure != std::errc() || end != text.data() + text.size() || text.empty()) return std::nullopt;
  return number;
}

std::string asInRecords(std::string name) {
  std::replace_if(
      name.begin(), name.end(), [](char c) { return c == '-' || c == ' '; }, '_');
  return name;
}

// The places of the steps named, ascending.
std::vector<std::size_t> placesOf(const odbstore::Reader& reader, const std::vector<std::string>& wanted) {
  const std::vector<std::string> names = reader.steps();
  std::vector<bool> isTaken(names.size(), wanted.empty());
  for (const std::string& text : wanted) {
    bool isThere = false;
    for (std::size_t i = 0; i < names.size(); ++i) {
      if (names[i] != text && asInRecords(names[i]) != text) continue;
      isTaken[i] = isThere = true;
    }
    const std::optional<int> number = numberFrom(text);
    if (!isThere && number && *number >= 1 && static_cast<std::size_t>(*number) <= names.size()) {
      isTaken[static_cast<std::size_t>(*number) - 1] = isThere = true;
    }
    if (!isThere) {
      throw odbstore::StoreError(reader.file()->name(), "",
                                 fmt::format("there is no step {}; steps: {}", text, fmt::join(names, ", ")));
    }
  }
  std::vector<std::size_t> places;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (isTaken[i]) places.push_back(i);
  }
  return places;
}

bool isChosen(const FrameRange& range, int place, int count, int number) {
  switch (range.kind) {
    case FrameRange::Kind::all:
      return true;
    case FrameRange::Kind::first:
      return place == 0;
    case FrameRange::Kind::last:
      return place == count - 1;
    case FrameRange::Kind::range:
      return number >= range.from && number <= range.to;
  }
  return false;
}

bool haveStepTimes(const std::vector<FrameInfo>& frames) {
  return std::all_of(frames.begin(), frames.end(),
                     [](const FrameInfo& frame) { return frame.description.find("Step Time") != std::string::npos; });
}

template <class Value>
bool ascend(const std::vector<ChosenFrame>& frames, Value value) {
  return std::adjacent_find(frames.begin(), frames.end(), [&](const ChosenFrame& a, const ChosenFrame& b) {
           return !(value(a) < value(b));
         }) == frames.end();
}

}  // namespace

std::optional<FrameRange> frameRangeFrom(std::string_view text) {
  using Kind = FrameRange::Kind;
  if (text == "all") return FrameRange{Kind::all};
  if (text == "first") return FrameRange{Kind::first};
  if (text == "last") return FrameRange{Kind::last};
  const std::size_t dash = text.find('-', 1);
  const std::optional<int> from = numberFrom(text.substr(0, dash));
  const std::optional<int> to = dash == std::string_view::npos ? from : numberFrom(text.substr(dash + 1));
  if (!from || !to || *to < *from) return std::nullopt;
  return FrameRange{Kind::range, *from, *to};
}

std::vector<ChosenFrame> chooseFrames(const odbstore::Reader& reader, const std::vector<std::string>& steps,
                                      const FrameRange& range) {
  const std::vector<std::string> names = reader.steps();
  const std::vector<std::size_t> places = placesOf(reader, steps);
  std::vector<ChosenFrame> chosen;
  bool haveTimes = true;
  double begin = 0.0;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const std::shared_ptr<const StoredStep> step = reader.step(names[i]);
    const std::vector<FrameInfo> frames = step->frames();
    haveTimes = haveTimes && haveStepTimes(frames);
    if (std::binary_search(places.begin(), places.end(), i)) {
      for (int f = 0; f < static_cast<int>(frames.size()); ++f) {
        const FrameInfo& info = frames[static_cast<std::size_t>(f)];
        if (isChosen(range, f, static_cast<int>(frames.size()), info.incrementNumber))
          chosen.push_back({step, f, info, begin + info.value});
      }
    }
    if (!frames.empty()) begin += frames.back().value;
  }
  if (chosen.empty()) throw odbstore::StoreError(reader.file()->name(), "", "there are no such frames");
  if (haveTimes && ascend(chosen, [](const ChosenFrame& frame) { return frame.time; })) return chosen;
  const bool isByValue = ascend(chosen, [](const ChosenFrame& frame) { return frame.info.value; });
  for (std::size_t i = 0; i < chosen.size(); ++i) {
    chosen[i].time = isByValue ? chosen[i].info.value : static_cast<double>(i);
  }
  return chosen;
}

}  // namespace vtk_export
