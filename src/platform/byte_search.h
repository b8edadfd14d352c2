// Substring search over bytes in guaranteed linear time: a hostile needle
// and haystack (long, periodic boundaries in a body of dashes) cannot make
// it quadratic. Knuth-Morris-Pratt, with memchr skipping to the needle's
// first byte whenever no partial match is pending.
#ifndef PARCELVANE_SRC_PLATFORM_BYTE_SEARCH_H
#define PARCELVANE_SRC_PLATFORM_BYTE_SEARCH_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace pv {

class BytePattern {
 public:
  explicit BytePattern(std::string_view needle);

  const std::string& needle() const { return needle_; }

  // Every occurrence in a haystack, in increasing order, overlapping ones
  // included; each byte of the haystack is examined a bounded number of times.
  class Occurrences {
   public:
    Occurrences(const BytePattern& pattern, std::string_view haystack, size_t from = 0)
        : pattern_(pattern), haystack_(haystack), pos_(from) {}
    // The next occurrence, or npos when there is none.
    size_t Next();

   private:
    const BytePattern& pattern_;
    std::string_view haystack_;
    size_t pos_;
    size_t matched_ = 0;
  };

 private:
  std::string needle_;
  std::vector<size_t> fail_;
};

// The first occurrence of `needle` in `haystack` at or after `from`, or npos.
// An empty needle is found at `from` (when `from` is within the haystack).
size_t FindBytes(std::string_view haystack, std::string_view needle, size_t from = 0);

}  // namespace pv

#endif  // PARCELVANE_SRC_PLATFORM_BYTE_SEARCH_H
