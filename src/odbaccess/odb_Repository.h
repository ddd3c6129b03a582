// The named collections of the database.
//
//     odb_FieldOutputRepository& fields = frame.fieldOutputs();
//     odb_FieldOutputRepositoryIT it(fields);
//     for (it.first(); !it.isDone(); it.next()) use(fields[it.currentKey()]);
//     if (fields.ConstFind("S") == nullptr) ...  // looks without an exception
#pragma once

#include <utility>
#include <vector>

#include "odbaccess/cow_Btree.h"
#include "odbaccess/odb_Exception.h"
#include "odbaccess/odb_String.h"

// An ordered map from name to database object: iterates by name (bytes ascending), looks up
// without inserting.
template <class K, class V>
class odb_Repository : public cow_Btree<K, V> {
 public:
  using cow_Btree<K, V>::cow_Btree;

  // Throws odb_Exception, naming the key, when the repository does not hold it.
  void CheckKey(const K& key) const {
    if (this->ConstFind(key) == nullptr) odb_throwMissingKey(key);
  }

  // The object of that name, good while a copy of this repository lives; an absent one is an odb_Exception.
  V& operator[](const K& key) const {
    CheckKey(key);
    return *this->Find(key);
  }
  V& get(const K& key) const { return (*this)[key]; }
};

// Walks the keys of a repository: `for (it.first(); !it.isDone(); it.next()) use(it.currentKey());`
template <class V>
class odb_RepositoryIT {
 public:
  explicit odb_RepositoryIT(const odb_Repository<odb_String, V>& repository) : nodes_(repository) {}

  // It stands at the first key when it is made; currentKey() only while isDone() is false.
  void first() { nodes_.First(); }
  void next() { nodes_.Next(); }
  bool isDone() const { return nodes_.IsDone(); }
  const odb_String& currentKey() const { return nodes_.CurrentKey(); }

 private:
  cow_BtreeIterator<odb_String, V> nodes_;
};
