#include "tests/mime/multipart_reference.h"

#include <string>

#include "src/platform/byte_search.h"

namespace pv {
namespace {

enum class DelimiterKind { kNone, kOrdinary, kClosing, kLast };

DelimiterKind Classify(std::string_view body, size_t q, size_t length) {
  if (q + length + 2 > body.size()) return DelimiterKind::kLast;
  if (body.compare(q + length, 2, "\r\n") == 0) return DelimiterKind::kOrdinary;
  if (q >= 2 && body.compare(q - 2, 2, "\r\n") == 0 && body.compare(q + length, 2, "--") == 0) {
    return DelimiterKind::kClosing;
  }
  return DelimiterKind::kNone;
}

}  // namespace

std::vector<ChildSpan> SplitMultipartBody(std::string_view body, std::string_view boundary,
                                          bool* foundDelimiter) {
  std::vector<ChildSpan> children;
  if (foundDelimiter != nullptr) *foundDelimiter = false;
  if (boundary.empty()) return children;
  const BytePattern delimiter("--" + std::string(boundary));
  const size_t length = delimiter.needle().size();
  // One pass over every occurrence keeps the split linear in the body.
  BytePattern::Occurrences occurrences(delimiter, body);

  size_t current = occurrences.Next();
  if (current == std::string_view::npos) return children;
  if (foundDelimiter != nullptr) *foundDelimiter = true;

  for (;;) {
    const size_t start = current + length;
    DelimiterKind kind = DelimiterKind::kNone;
    size_t next = 0;
    do {
      next = occurrences.Next();
      if (next == std::string_view::npos) return children;  // the rest is lost
      if (next < start) continue;                           // overlaps the current delimiter
      kind = Classify(body, next, length);
    } while (kind == DelimiterKind::kNone);
    size_t end = kind == DelimiterKind::kClosing ? next - 2 : next;
    // A boundary that itself ends in a line break can make the closing
    // delimiter's line break overlap the child's start: such a child is empty.
    if (end > start) children.push_back({start, end - start});
    if (kind != DelimiterKind::kOrdinary) return children;
    current = next;
  }
}

}  // namespace pv
