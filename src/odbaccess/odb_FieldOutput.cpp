#include "odbaccess/odb_FieldOutput.h"

#include <memory>
#include <utility>
#include <vector>

#include "odbaccess/field_storage.h"
#include "odbaccess/set_storage.h"

odb_String odb_FieldOutput::name() const { return storage_->plan().name(); }
odb_String odb_FieldOutput::description() const { return storage_->plan().description(); }
int odb_FieldOutput::type() const { return storage_->plan().info().type; }
bool odb_FieldOutput::hasEngineeringShear() const { return storage_->plan().info().engineeringShear; }
odb_Sequence<odb_String> odb_FieldOutput::componentLabels() const { return storage_->plan().componentLabels(); }
odb_Sequence<odb_InvariantEnum> odb_FieldOutput::validInvariants() const { return storage_->plan().validInvariants(); }

odb_detail::FieldContent& odb_FieldOutput::content() const {
  if (!content_) {
    content_ = std::make_shared<odb_detail::FieldContent>();
    content_->blocks = storage_->blocks();
  }
  return *content_;
}

const odb_SequenceFieldValue& odb_FieldOutput::values() const {
  odb_detail::FieldContent& content = this->content();
  if (!content.values) content.values.emplace(content.blocks);
  return *content.values;
}

const odb_SequenceFieldBulkData& odb_FieldOutput::bulkDataBlocks() const {
  odb_detail::FieldContent& content = this->content();
  if (!content.bulk) {
    content.bulk.emplace();
    for (const auto& block : content.blocks) content.bulk->append(odb_FieldBulkData(block));
  }
  return *content.bulk;
}

const odb_SequenceFieldLocation& odb_FieldOutput::locations() const {
  odb_detail::FieldContent& content = this->content();
  if (content.blocks.size() == 1) return content.blocks[0]->content()->plan().locationsOfIt();
  if (!content.locations) {
    std::vector<const odb_detail::BlockPlan*> plans;
    for (const auto& block : content.blocks) plans.push_back(&block->content()->plan());
    content.locations = odb_detail::locationsOf(plans);
  }
  return *content.locations;
}

odb_FieldOutput odb_FieldOutput::getSubset(const odb_Set& set) const {
  odb_detail::Blocks subset;
  if (set.storage()) {
    for (const auto& block : content().blocks) {
      if (auto rows = block->subset(set.storage())) subset.push_back(std::move(rows));
    }
  }
  return odb_FieldOutput(std::make_shared<const odb_detail::FieldStorage>(*storage_, std::move(subset)));
}
