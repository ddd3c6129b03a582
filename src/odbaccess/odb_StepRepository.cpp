#include "odbaccess/odb_StepRepository.h"

#include <map>
#include <utility>

odb_StepRepository::odb_StepRepository(const std::vector<odb_Step>& stepsInOrder) {
  std::map<odb_String, odb_Step> steps;
  for (const odb_Step& step : stepsInOrder) {
    order_.push_back(step.name());
    steps.emplace(step.name(), step);
  }
  steps_ = odb_Repository<odb_String, odb_Step>(std::move(steps));
}
