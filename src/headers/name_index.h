// The name index of a header list: position by key, the first entry of a
// key winning. Most lists hold a handful of fields, so a short list is
// searched in place; a long one (a hostile block of thousands of fields)
// gets a hash table, so that every lookup stays O(1).
#ifndef PARCELVANE_SRC_HEADERS_NAME_INDEX_H
#define PARCELVANE_SRC_HEADERS_NAME_INDEX_H

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

#include "src/platform/strings.h"

namespace pv {

// A header name's index key. Names compare with ASCII case folding: ASCII
// units stay single bytes, folded to lower case; every other unit becomes
// three bytes of 0x80 and above, so keys of different names never meet and
// folding touches nothing but ASCII.
std::string HeaderNameKey(WStringView name);
// The key of a narrow name in the ANSI code page: the name as it is,
// folded, when it is ASCII (as header names are), which every page keeps.
std::string HeaderNameKey(std::string_view ansiName);

class NameIndex {
 public:
  static constexpr size_t kNotFound = static_cast<size_t>(-1);

  size_t Find(const std::string& key) const {
    if (table_) {
      auto found = table_->find(key);
      return found == table_->end() ? kNotFound : found->second;
    }
    for (const auto& entry : short_) {
      if (entry.first == key) return entry.second;
    }
    return kNotFound;
  }

  // Adds the key at `position` unless the key is there already.
  void Add(std::string key, size_t position) {
    if (table_) {
      table_->emplace(std::move(key), position);
      return;
    }
    if (Find(key) != kNotFound) return;
    short_.emplace_back(std::move(key), position);
    if (short_.size() > kShortLimit) {
      table_ = std::make_unique<std::unordered_map<std::string, size_t>>();
      table_->reserve(short_.size() * 2);
      for (auto& entry : short_) table_->emplace(std::move(entry.first), entry.second);
      short_.clear();
      short_.shrink_to_fit();
    }
  }

  void Clear() {
    short_.clear();
    table_.reset();
  }

 private:
  static constexpr size_t kShortLimit = 16;
  std::vector<std::pair<std::string, size_t>> short_;
  std::unique_ptr<std::unordered_map<std::string, size_t>> table_;
};

}  // namespace pv

#endif  // PARCELVANE_SRC_HEADERS_NAME_INDEX_H
