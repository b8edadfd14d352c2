#include "src/platform/byte_search.h"

#include <cstring>

namespace pv {

BytePattern::BytePattern(std::string_view needle) : needle_(needle), fail_(needle.size(), 0) {
  for (size_t i = 1, k = 0; i < needle_.size(); ++i) {
    while (k > 0 && needle_[i] != needle_[k]) k = fail_[k - 1];
    if (needle_[i] == needle_[k]) ++k;
    fail_[i] = k;
  }
}

size_t BytePattern::Occurrences::Next() {
  const std::string& needle = pattern_.needle_;
  const size_t m = needle.size();
  const size_t n = haystack_.size();
  if (m == 0) return pos_ <= n ? pos_++ : std::string_view::npos;
  while (pos_ < n) {
    if (matched_ == 0) {
      // Nothing pending: jump to the next byte that can start a match.
      const void* hit = std::memchr(haystack_.data() + pos_, needle[0], n - pos_);
      if (hit == nullptr) {
        pos_ = n;
        break;
      }
      pos_ = static_cast<size_t>(static_cast<const char*>(hit) - haystack_.data());
    }
    char c = haystack_[pos_++];
    while (matched_ > 0 && c != needle[matched_]) matched_ = pattern_.fail_[matched_ - 1];
    if (c == needle[matched_]) ++matched_;
    if (matched_ == m) {
      matched_ = pattern_.fail_[m - 1];  // keep going for overlapping matches
      return pos_ - m;
    }
  }
  return std::string_view::npos;
}

size_t FindBytes(std::string_view haystack, std::string_view needle, size_t from) {
  if (from > haystack.size()) return std::string_view::npos;
  BytePattern pattern(needle);
  BytePattern::Occurrences occurrences(pattern, haystack, from);
  return occurrences.Next();
}

}  // namespace pv
