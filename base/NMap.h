#pragma once

#include <functional>
#include <unordered_map>

// The hash map of the system. Find returns a pointer (null when absent) so
// that a lookup never inserts, unlike operator[].
template <typename K, typename V, typename Hash = std::hash<K>, typename Eq = std::equal_to<K>>
class NMap : public std::unordered_map<K, V, Hash, Eq> {
 public:
  using Base = std::unordered_map<K, V, Hash, Eq>;
  using Base::Base;

  template <typename Key>
  V* Find(const Key& key) {
    auto it = this->find(key);
    return it == this->end() ? nullptr : &it->second;
  }
  template <typename Key>
  const V* Find(const Key& key) const {
    auto it = this->find(key);
    return it == this->end() ? nullptr : &it->second;
  }
};
