#include "inspect/field_shapes.h"

#include <algorithm>

#include "result/configuration_keywords.h"

namespace inspect {

namespace {

using odbstore::FieldType;
using odbstore::StoredBlock;

// Vectors with components, and tensors, are read in single precision alone. Of the full kind only where components are
// wanted.
bool endsExtraction(const StoredBlock& block, const Components& components, const ExtractionSwitches& switches) {
  if (!block.isDouble() || !switches.computeValues) return false;
  const auto type = FieldType{block.type()};
  if (type == FieldType::vector) return switches.fieldComponents;
  if (!odbstore::isTensorType(type)) return false;
  const bool areRead = type != FieldType::tensor3dFull || switches.fieldComponents;
  return areRead && std::any_of(std::begin(components.present), std::end(components.present), [](bool p) { return p; });
}

}  // namespace

FieldShape::FieldShape(const odbstore::StoredField& field, int frame, const ExtractionSwitches& switches, SetRows& rows)
    : info_(field.infoIn(frame)), isFirstBlockMeant_(!switches.computeValues), rows_(&rows) {
  std::vector<const StoredBlock*> there;
  for (const StoredBlock& block : field.blocks) {
    exists_.push_back(block.existsIn(frame));
    if (exists_.back()) there.push_back(&block);
  }
  isTaken_ = wantsFieldOutput(switches, info_->description);
  if (!isTaken_) return;
  Components ofLabels;
  ofLabels.addEndings(info_->componentLabels);
  if (switches.computeValues) {
    Components ofBlocks;
    for (const StoredBlock* block : there) {
      if (odbstore::isTensorType(block->type())) ofBlocks.addExact(block->componentLabels());
    }
    constexpr int kNoType = 0;
    const int type = there.empty() ? kNoType : there.back()->type();
    ofWholeModel_ = endingsOf(type, ofBlocks, Reduction::wholeModel, switches);
  } else if (!there.empty()) {
    ofWholeModel_ = endingsOf(there.front()->type(), ofLabels, Reduction::listing, switches);
  }
  if (!switches.fieldSets && !switches.tensorInvariants) return;
  if (switches.tensorInvariants && field.name == "S") {
    invariants_ = invariantEndings(info_->validInvariants, switches);
  }
  for (const StoredBlock* block : there) addBlock(*block, ofLabels, switches);
}

void FieldShape::addBlock(const StoredBlock& block, const Components& components, const ExtractionSwitches& switches) {
  const auto known = std::find(types_.begin(), types_.end(), block.type());
  blocks_.push_back({rows_->add(block.location()), static_cast<std::size_t>(known - types_.begin()),
                     endsExtraction(block, components, switches)});
  if (known != types_.end()) return;
  types_.push_back(block.type());
  std::vector<Ending> endings =
      endingsOf(block.type(), components, switches.computeValues ? Reduction::set : Reduction::listing, switches);
  endings.insert(switches.computeValues ? endings.end() : endings.begin(), invariants_.begin(), invariants_.end());
  ofSets_.push_back(std::move(endings));
}

bool FieldShape::fits(const odbstore::StoredField& field, int frame) const {
  for (std::size_t i = 0; i < field.blocks.size(); ++i) {
    if (field.blocks[i].existsIn(frame) != exists_[i]) return false;
  }
  const std::shared_ptr<const odbstore::FieldInfo> info = field.infoIn(frame);
  return info == info_ || *info == *info_;
}

const std::vector<Ending>& FieldShape::ofSet(std::size_t set) const {
  static const std::vector<Ending> none;
  const auto isMet = [&](const Block& block) { return rows_->touch(set, block.location); };
  if (isFirstBlockMeant_) {
    const auto first = std::find_if(blocks_.begin(), blocks_.end(), isMet);
    return first == blocks_.end() ? none : ofSets_[first->endings];
  }
  const auto last = std::find_if(blocks_.rbegin(), blocks_.rend(), isMet);
  return last == blocks_.rend() ? none : ofSets_[last->endings];
}

bool FieldShape::endsAt(std::size_t set) const {
  return std::any_of(blocks_.begin(), blocks_.end(),
                     [&](const Block& block) { return block.endsRun && rows_->touch(set, block.location); });
}

const FieldShape::OverSets& FieldShape::overSets(const std::vector<ModelSet>& sets) const {
  if (overSets_) return *overSets_;
  overSets_.emplace();
  for (std::size_t set = 0; !blocks_.empty() && set < sets.size(); ++set) {
    if (sets[set].isLeftOut) continue;
    if (endsAt(set)) {
      overSets_->end = set;
      break;
    }
    overSets_->records += ofSet(set).size();
  }
  return *overSets_;
}

const FieldShape& FieldShapes::in(int frame) {
  if (last_ < shapes_.size() && shapes_[last_]->fits(*field_, frame)) return *shapes_[last_];
  const auto found =
      std::find_if(shapes_.begin(), shapes_.end(), [&](const auto& s) { return s->fits(*field_, frame); });
  last_ = static_cast<std::size_t>(found - shapes_.begin());
  if (found == shapes_.end()) shapes_.push_back(std::make_unique<FieldShape>(*field_, frame, *switches_, *rows_));
  return *shapes_[last_];
}

}  // namespace inspect
