// An ordered map with shared storage, and the iterator that walks it in key order.
//
//     cow_BtreeIterator<odb_String, odb_Set> it(sets);
//     for (; !it.IsDone(); it.Next()) use(it.CurrentKey(), it.CurrentValue());
#pragma once

#include <map>
#include <memory>
#include <utility>

// Copies share their nodes; only what a map is made of puts nodes into it.
template <class K, class V>
class cow_Btree {
 public:
  cow_Btree() = default;
  explicit cow_Btree(std::map<K, V> nodes) : nodes_(std::make_shared<std::map<K, V>>(std::move(nodes))) {}

  // Number of nodes.
  int size() const { return nodes_ ? static_cast<int>(nodes_->size()) : 0; }

  // The value of `key`, or null when it is absent; nothing is inserted. Good while a copy of this map lives.
  const V* ConstFind(const K& key) const { return lookUp(key); }
  V* Find(const K& key) const { return lookUp(key); }

 private:
  template <class, class>
  friend class cow_BtreeIterator;

  V* lookUp(const K& key) const {
    if (!nodes_) return nullptr;
    const auto node = nodes_->find(key);
    return node == nodes_->end() ? nullptr : &node->second;
  }

  std::shared_ptr<std::map<K, V>> nodes_;
};

// Walks a map, keys ascending. It shares the map's storage, so the map itself may go.
// Starts at the first node.
template <class K, class V>
class cow_BtreeIterator {
 public:
  explicit cow_BtreeIterator(const cow_Btree<K, V>& tree)
      : nodes_(tree.nodes_ ? tree.nodes_ : std::make_shared<std::map<K, V>>()), at_(nodes_->begin()) {}

  // Back to the first node; on to the next, only while IsDone() is false.
  void First() { at_ = nodes_->begin(); }
  void Next() { ++at_; }
  bool IsDone() const { return at_ == nodes_->end(); }

  // The node under the iterator; only while IsDone() is false.
  const K& CurrentKey() const { return at_->first; }
  const V& CurrentValue() const { return at_->second; }

 private:
  std::shared_ptr<std::map<K, V>> nodes_;
  typename std::map<K, V>::const_iterator at_;
};
