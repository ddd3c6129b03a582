// The sets that every field output is reduced over.
#pragma once

#include <vector>

#include "odbaccess/odb_api.h"

// A set as the walk comes to it: "ELEMENT_SET" or "NODE_SET", and the tag of its records, "__" + its name with that of
// its instance or part before it.
struct Region {
  odb_Set set;
  odb_String kind;
  odb_String tag;
};

// The sets of the assembly, then of every instance, then of every part, of each the element sets first. They are the
// same for all fields and frames, so they are looked up once.
class Regions {
 public:
  // The database is to live as long.
  explicit Regions(const odb_Odb& odb) : odb_(odb) {}

  // Calls visit(region) for each in order. The first time they are visited as they are found: where the sets of an
  // owner cannot be read, those before it have been visited when the odb_Exception comes.
  template <class Visit>
  void forEach(Visit&& visit) {
    if (isComplete_) {
      for (const Region& region : all_) visit(region);
    } else {
      find(visit);
    }
  }

 private:
  template <class Visit>
  void find(Visit& visit) {
    all_.clear();
    findOf(odb_.rootAssembly(), "__", visit);
    findOfAll(odb_.rootAssembly().instances(), visit);
    findOfAll(odb_.parts(), visit);
    isComplete_ = true;
  }

  // The sets of every instance or every part.
  template <class Entity, class Visit>
  void findOfAll(const odb_Repository<odb_String, Entity>& owners, Visit& visit) {
    cow_BtreeIterator<odb_String, Entity> at(owners);
    for (at.First(); !at.IsDone(); at.Next()) {
      odb_String tagHead("__");
      tagHead.append(at.CurrentValue().name());
      tagHead.append("_");
      findOf(at.CurrentValue(), tagHead, visit);
    }
  }

  template <class Visit>
  void findOf(const odb_DiscreteEntity& owner, const odb_String& tagHead, Visit& visit) {
    findAmong(owner.elementSets(false), "ELEMENT_SET", tagHead, visit);
    findAmong(owner.nodeSets(false), "NODE_SET", tagHead, visit);
  }

  template <class Visit>
  void findAmong(const odb_SetRepository& sets, const odb_String& kind, const odb_String& tagHead, Visit& visit) {
    cow_BtreeIterator<odb_String, odb_Set> at(sets);
    for (at.First(); !at.IsDone(); at.Next()) {
      odb_String tag = tagHead;
      tag.append(at.CurrentValue().name());
      all_.push_back({at.CurrentValue(), kind, tag});
      visit(all_.back());
    }
  }

  const odb_Odb& odb_;
  std::vector<Region> all_;
  bool isComplete_ = false;
};
