#include "verify/place_names.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <charconv>
#include <numeric>
#include <span>

#include "odbstore/names.h"

namespace verify {

namespace {

using Words = std::vector<std::string>;

// A step of the layout's paths: a word that stands there as it is, or "*" for a name.
bool matches(const Words& path, std::initializer_list<std::string_view> pattern) {
  if (path.size() != pattern.size()) return false;
  std::size_t i = 0;
  for (const std::string_view word : pattern) {
    if (word != "*" && word != path[i]) return false;
    ++i;
  }
  return true;
}

// The names between the slashes, as users know them.
Words wordsOf(std::string_view path) {
  Words words;
  for (std::size_t at = 1; at <= path.size();) {
    const std::size_t slash = std::min(path.find('/', at), path.size());
    words.push_back(odbstore::nameFromLink(std::string(path.substr(at, slash - at))));
    at = slash + 1;
  }
  return words;
}

std::string kindOfSet(const std::string& word) { return word == "elementSets" ? "element set" : "node set"; }

bool holdsSets(const std::string& word) { return word == "elementSets" || word == "nodeSets"; }

std::string describeInStep(const Words& path) {
  const std::string step = fmt::format("step \"{}\"", path[1]);
  if (matches(path, {"steps", "*", "frames", "*"})) return fmt::format("{}, {} of its frames", step, path[3]);
  if (matches(path, {"steps", "*", "fields", "*", "frames"})) {
    return fmt::format("{}, field \"{}\", its list of frames", step, path[3]);
  }
  if (matches(path, {"steps", "*", "fields", "*", "blocks", "*", "data"})) {
    return fmt::format("{}, field \"{}\", block {}", step, path[3], path[5]);
  }
  if (matches(path, {"steps", "*", "fields", "*", "blocks", "*", "frames"})) {
    return fmt::format("{}, field \"{}\", block {}, its list of frames", step, path[3], path[5]);
  }
  if (matches(path, {"steps", "*", "history", "*", "outputs", "*"})) {
    return fmt::format("{}, history region \"{}\", output \"{}\"", step, path[3], path[5]);
  }
  return {};
}

std::string describeInModel(const Words& path) {
  if (matches(path, {"assembly", "*", "*", "*"}) && holdsSets(path[1])) {
    return fmt::format("{} \"{}\" in instance \"{}\"", kindOfSet(path[1]), path[2], path[3]);
  }
  if (matches(path, {"assembly", "instances", "*", "*", "*"}) && holdsSets(path[3])) {
    return fmt::format("instance \"{}\", {} \"{}\"", path[2], kindOfSet(path[3]), path[4]);
  }
  if (matches(path, {"parts", "*", "*", "*"}) && holdsSets(path[2])) {
    return fmt::format("part \"{}\", {} \"{}\"", path[1], kindOfSet(path[2]), path[3]);
  }
  if (matches(path, {"assembly", "instances", "*", "mesh", "nodes", "*"})) {
    return fmt::format("instance \"{}\", {} of the mesh's nodes", path[2], path[5]);
  }
  if (matches(path, {"assembly", "instances", "*", "mesh", "elements", "*", "*"})) {
    return fmt::format("instance \"{}\", {} of the mesh's elements \"{}\"", path[2], path[6], path[5]);
  }
  if (matches(path, {"assembly", "sector", "symmetryAxis"})) return "symmetry axis";
  if (matches(path, {"locations", "*", "*"})) return fmt::format("location \"{}\", {}", path[1], path[2]);
  return {};
}

}  // namespace

std::optional<BlockPlace> blockOfRows(std::string_view path) {
  const Words words = wordsOf(path);
  if (!matches(words, {"steps", "*", "fields", "*", "blocks", "*", "data"})) return std::nullopt;
  BlockPlace place{words[1], words[3], 0};
  const char* const end = words[5].data() + words[5].size();
  const auto [stop, error] = std::from_chars(words[5].data(), end, place.block);
  if (error != std::errc() || stop != end || place.block < 0) return std::nullopt;
  return place;
}

std::string describePlace(std::string_view path) {
  const Words words = wordsOf(path);
  const std::string place = !words.empty() && words[0] == "steps" ? describeInStep(words) : describeInModel(words);
  return place.empty() ? std::string(path) : place;
}

std::string describeFrames(const std::vector<int>& frames) {
  constexpr std::size_t kMost = 10;
  if (frames.size() == 1) return fmt::format("frame {}", frames.front());
  std::vector<int> run(frames.size());
  std::iota(run.begin(), run.end(), frames.empty() ? 0 : frames.front());
  if (frames.size() > 2 && frames == run) return fmt::format("frames {}..{}", frames.front(), frames.back());
  const std::span shown = std::span(frames).first(std::min(kMost, frames.size()));
  const std::string more = shown.size() < frames.size() ? fmt::format(" and {} more", frames.size() - kMost) : "";
  return fmt::format("frames {}{}", fmt::join(shown, ", "), more);
}

}  // namespace verify
