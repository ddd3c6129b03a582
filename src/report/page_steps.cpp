#include "report/page_steps.h"

#include <map>
#include <nlohmann/json.hpp>

namespace report {

namespace {

Json stepJson(const odbstore::StoredStep& step) {
  const odbstore::StepInfo info = step.info();
  Json json = {{"name", step.name()}, {"description", info.description}};
  if (info.mass >= 0) json["mass"] = info.mass;
  if (!info.massCenter.empty()) json["massCenter"] = info.massCenter;
  if (!info.inertiaAboutCenter.empty()) json["inertiaAboutCenter"] = info.inertiaAboutCenter;
  if (!info.inertiaAboutOrigin.empty()) json["inertiaAboutOrigin"] = info.inertiaAboutOrigin;
  json["frames"] = Json::array();
  for (const odbstore::FrameInfo& frame : step.frames())
    json["frames"].push_back(
        {{"number", frame.incrementNumber}, {"value", frame.value}, {"description", frame.description}});
  return json;
}

struct Histories {
  Json list = Json::array();
  std::vector<float> values;
  std::vector<float> abscissae;
  std::map<std::vector<float>, std::size_t> shared;  // abscissae, and where they start
  std::size_t leftOut = 0;
};

// The first number of each sample; counts where samples are values alone.
std::vector<float> abscissaeOf(const odbstore::HistorySamples& samples) {
  std::vector<float> abscissae;
  const auto width = static_cast<std::size_t>(samples.width);
  for (std::size_t i = 0; i < static_cast<std::size_t>(samples.samples); ++i)
    abscissae.push_back(width > 1 ? samples.numbers[i * width] : static_cast<float>(i));
  return abscissae;
}

void addHistory(Histories& all, const odbstore::HistorySamples& samples, Json entry, std::size_t most) {
  if (samples.samples == 0 || samples.width == 0) return;
  std::vector<float> abscissae = abscissaeOf(samples);
  const std::size_t count = abscissae.size();
  if ((all.values.size() + all.abscissae.size() + 2 * count) * sizeof(float) > most) {
    ++all.leftOut;
    return;
  }
  const auto [known, isNew] = all.shared.try_emplace(std::move(abscissae), all.abscissae.size());
  if (isNew) all.abscissae.insert(all.abscissae.end(), known->first.begin(), known->first.end());
  entry["first"] = all.values.size();
  entry["samples"] = count;
  entry["x"] = known->second;
  const auto width = static_cast<std::size_t>(samples.width);
  for (std::size_t i = 0; i < count; ++i) all.values.push_back(samples.numbers[i * width + width - 1]);
  all.list.push_back(std::move(entry));
}

}  // namespace

Json stepsPart(const odbstore::Reader& reader) {
  Json part = Json::array();
  for (const std::string& name : reader.steps()) part.push_back(stepJson(*reader.step(name)));
  return part;
}

Json historiesPart(const odbstore::Reader& reader, std::size_t most, PageData& data, std::size_t& leftOut) {
  Histories all;
  const std::vector<std::string> steps = reader.steps();
  for (std::size_t s = 0; s < steps.size(); ++s) {
    const std::shared_ptr<const odbstore::StoredStep> step = reader.step(steps[s]);
    for (const std::string& region : step->historyRegions()) {
      for (const std::string& output : step->historyRegion(region).outputs)
        addHistory(all, step->historySamples(region, output), {{"step", s}, {"region", region}, {"output", output}},
                   most);
    }
  }
  leftOut = all.leftOut;
  return {{"list", std::move(all.list)},
          {"values", data.add(pack(std::span<const float>(all.values), 1))},
          {"abscissae", data.add(pack(std::span<const float>(all.abscissae), 1))}};
}

}  // namespace report
