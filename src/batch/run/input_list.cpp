#include "batch/run/input_list.h"

#include <fmt/core.h>
#include <glob.h>

#include <algorithm>
#include <filesystem>
#include <unordered_map>
#include <utility>

#include "batch/state/input_id.h"

namespace batch {

namespace {

bool isPattern(const std::string& name) {
  std::error_code ignored;
  return name.find_first_of("*?[") != std::string::npos && !std::filesystem::exists(name, ignored);
}

std::vector<std::string> matchesOf(const std::string& pattern) {
  glob_t found{};
  const int status = ::glob(pattern.c_str(), 0, nullptr, &found);
  std::vector<std::string> names;
  for (std::size_t i = 0; status == 0 && i < found.gl_pathc; ++i) names.emplace_back(found.gl_pathv[i]);
  ::globfree(&found);
  if (names.empty()) throw InputListError(fmt::format("{}: no file matches", pattern));
  return names;
}

class InputList {
 public:
  void add(const std::string& name) {
    std::error_code ignored;
    if (std::filesystem::is_directory(name, ignored)) {
      throw InputListError(fmt::format("{}: is a directory; name the files in it, as {}/*.odb", name, name));
    }
    if (name.find('\n') != std::string::npos) throw InputListError("a name with a line break cannot be in a list");
    std::string path = std::filesystem::absolute(name).lexically_normal().string();
    std::string id = inputId(path);
    const auto [known, isNew] = pathOf_.emplace(id, path);
    if (isNew) {
      inputs_.push_back({std::move(path), std::move(id)});
    } else if (known->second != path) {
      throw InputListError(fmt::format("{} and {} would have one directory, {}", known->second, path, id));
    }
  }

  std::vector<BatchInput> take() { return std::move(inputs_); }

 private:
  std::vector<BatchInput> inputs_;
  std::unordered_map<std::string, std::string> pathOf_;
};

}  // namespace

std::vector<std::string> namesIn(const std::string& text) {
  std::vector<std::string> names;
  for (std::size_t begin = 0; begin < text.size();) {
    const std::size_t end = std::min(text.find('\n', begin), text.size());
    std::string name = text.substr(begin, end - begin);
    if (!name.empty() && name.back() == '\r') name.pop_back();
    if (!name.empty()) names.push_back(std::move(name));
    begin = end + 1;
  }
  return names;
}

std::vector<BatchInput> inputsNamed(const std::vector<std::string>& names) {
  InputList list;
  for (const std::string& name : names) {
    if (!isPattern(name)) {
      list.add(name);
      continue;
    }
    for (const std::string& match : matchesOf(name)) list.add(match);
  }
  return list.take();
}

std::vector<BatchInput> sliceOf(const std::vector<BatchInput>& inputs, std::size_t index, std::size_t size) {
  std::vector<BatchInput> slice;
  for (std::size_t i = index; i < inputs.size(); i += size) slice.push_back(inputs[i]);
  return slice;
}

}  // namespace batch
