#include "odbscan/object_info.h"

#include <fmt/core.h>

#include "odbstore/layout.h"

namespace odbscan {

namespace attributes = odbstore::attributes;

namespace {

std::vector<double> vectorOfLength(const h5::Object& object, const char* attribute, std::size_t length) {
  std::vector<double> numbers = object.doublesAttribute(attribute);
  if (!numbers.empty() && numbers.size() != length) {
    object.fail(fmt::format("the attribute \"{}\" must hold {} numbers", attribute, length));
  }
  return numbers;
}

}  // namespace

odbstore::LocationInfo readLocationInfo(const h5::Object& object) {
  const std::string word = object.stringAttribute(attributes::kPosition, "");
  const std::optional<odbstore::Position> position = odbstore::positionFromWord(word);
  if (!position) object.fail(fmt::format("the position \"{}\" is not known", word));
  return {object.stringAttribute(attributes::kInstance, ""), *position,
          object.stringAttribute(attributes::kElementType, ""), object.intAttribute(attributes::kSectionPoint, 0),
          object.stringAttribute(attributes::kSectionPointDescription, "")};
}

odbstore::StepInfo readStepInfo(const h5::Object& object) {
  return {object.stringAttribute(attributes::kDescription, ""), object.doubleAttribute(attributes::kMass, -1.0),
          vectorOfLength(object, attributes::kMassCenter, 3),
          vectorOfLength(object, attributes::kInertiaAboutCenter, 6),
          vectorOfLength(object, attributes::kInertiaAboutOrigin, 6)};
}

odbstore::FieldInfo readFieldInfo(const h5::Object& object) {
  if (!object.hasAttribute(attributes::kType)) object.fail("has no attribute \"type\"");
  return {object.stringAttribute(attributes::kDescription, ""), object.intAttribute(attributes::kType, 0),
          object.stringsAttribute(attributes::kComponentLabels), object.intsAttribute(attributes::kValidInvariants),
          object.intAttribute(attributes::kEngineeringShear, 0) != 0};
}

odbstore::HistoryRegionInfo readHistoryRegionInfo(const h5::Object& object) {
  return {object.stringAttribute(attributes::kDescription, ""),
          object.intAttribute(attributes::kNode, -1),
          object.intAttribute(attributes::kElement, -1),
          object.intAttribute(attributes::kIntegrationPoint, 0),
          object.intAttribute(attributes::kSectionPoint, 0),
          object.stringAttribute(attributes::kSectionPointDescription, ""),
          object.stringAttribute(attributes::kSet, "")};
}

}  // namespace odbscan
