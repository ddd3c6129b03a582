#include "traversal/process_frame.h"

#include <iostream>

#include "reduce/process_field_output.h"
#include "result/extraction_switches.h"
#include "result/indentation.h"
#include "result/progress.h"

namespace {

// What one field output of one frame needs on its way to the dispatch.
struct FieldVisit {
  const odb_Frame& frame;
  const odb_FieldOutput& field;
  std::ostream& out;
  const odb_String& stepName;
  const odb_String& indent;
  int depth;

  void operator()(const odb_FieldOutput& region, const odb_String& kind, const odb_String& tag) const {
    processFieldOutput(region, out, stepName, frame.incrementNumber(), kind, tag, indent, depth);
  }
};

void visitSets(const FieldVisit& visit, const odb_SetRepository& sets, const odb_String& kind,
               const odb_String& tagHead) {
  cow_BtreeIterator<odb_String, odb_Set> at(sets);
  for (at.First(); !at.IsDone(); at.Next()) {
    odb_String tag = tagHead;
    tag.append(at.CurrentValue().name());
    visit(visit.field.getSubset(at.CurrentValue()), kind, tag);
  }
}

void visitSetsOf(const FieldVisit& visit, const odb_DiscreteEntity& owner, const odb_String& tagHead) {
  visitSets(visit, owner.elementSets(false), "ELEMENT_SET", tagHead);
  visitSets(visit, owner.nodeSets(false), "NODE_SET", tagHead);
}

// The sets of every instance or every part.
template <class Entity>
void visitSetsOfAll(const FieldVisit& visit, const odb_Repository<odb_String, Entity>& owners) {
  cow_BtreeIterator<odb_String, Entity> at(owners);
  for (at.First(); !at.IsDone(); at.Next()) {
    odb_String tagHead("__");
    tagHead.append(at.CurrentValue().name());
    tagHead.append("_");
    visitSetsOf(visit, at.CurrentValue(), tagHead);
  }
}

}  // namespace

void processFrame(const odb_Odb& odb, const odb_Frame& frame, std::ostream& out, const odb_String& stepName,
                  const odb_String& indent, int depth) {
  std::cout << "Processing Frame: " << shownInProgress(frame.description()) << std::endl;
  if (depth <= 0) return;
  static DeeperIndentation deeper;
  const odb_String wholeModel("ALL");
  cow_BtreeIterator<odb_String, odb_FieldOutput> at(frame.fieldOutputs());
  for (at.First(); !at.IsDone(); at.Next()) {
    // A copy, so that what the field reads goes before the next one comes.
    const odb_FieldOutput field = at.CurrentValue();
    const FieldVisit visit{frame, field, out, stepName, deeper.of(indent), depth - 1};
    visit(field, wholeModel, odb_String());
    if (!extractionSwitches().fieldSets && !extractionSwitches().tensorInvariants) continue;
    visitSetsOf(visit, odb.rootAssembly(), "__");
    visitSetsOfAll(visit, odb.rootAssembly().instances());
    visitSetsOfAll(visit, odb.parts());
  }
}
