#include "src/headers/header_block.h"

#include <cstring>

namespace pv {

std::vector<std::string_view> SplitHeaderBlock(std::string_view block) {
  constexpr size_t kNone = std::string_view::npos;
  std::vector<std::string_view> fields;
  size_t start = kNone;
  size_t colon = kNone;
  bool nameStillPossible = true;
  const size_t n = block.size();
  for (size_t i = 0; i < n; ++i) {
    char c = block[i];
    if (start == kNone) start = i;
    if (c == ':' && colon == kNone && nameStillPossible) {
      colon = i;
    } else if ((c == ' ' || c == '\t') && colon == kNone) {
      nameStillPossible = false;  // "Subject : x" is not a field line
    } else if (c == '\n') {
      if (colon == kNone) {
        start = kNone;  // a line without a colon is dropped
        nameStillPossible = true;
        continue;
      }
      bool folded = i - start > 1 && (i + 1 == n || block[i + 1] == ' ' || block[i + 1] == '\t');
      if (folded) {
        nameStillPossible = true;
        continue;
      }
      fields.push_back(block.substr(start, i - start));
      start = kNone;
      colon = kNone;
      nameStillPossible = true;
    }
    if (start == kNone) continue;  // the next byte starts a line
    // Skip the bytes that change nothing: once the colon is known only line
    // feeds matter; before it, colons and blanks matter too.
    size_t next = i + 1;
    if (colon != kNone) {
      const void* lf = next < n ? std::memchr(block.data() + next, '\n', n - next) : nullptr;
      next = lf == nullptr ? n : static_cast<size_t>(static_cast<const char*>(lf) - block.data());
    } else {
      while (next < n && block[next] != '\n' && block[next] != ':' && block[next] != ' ' &&
             block[next] != '\t') {
        ++next;
      }
    }
    i = next - 1;
  }
  if (colon != kNone) fields.push_back(block.substr(start));
  return fields;
}

size_t FindHeaderBlockEnd(std::string_view span) {
  if (span.size() < 4) return std::string_view::npos;
  const char* base = span.data();
  const char* end = base + span.size();
  const char* p = base;
  while (p + 4 <= end) {
    const void* cr = std::memchr(p, '\r', static_cast<size_t>(end - p) - 3);
    if (cr == nullptr) break;
    p = static_cast<const char*>(cr);
    if (std::memcmp(p, "\r\n\r\n", 4) == 0) return static_cast<size_t>(p - base);
    ++p;
  }
  return std::string_view::npos;
}

}  // namespace pv
