// The multipart split of every body of one parsed buffer, in time linear in
// the buffer even when multiparts are nested without limit.
//
// Split() gives exactly what SplitMultipartBody gives for the same body, as
// absolute positions in the buffer. Cutting each nested body on its own
// would read the bytes of a part nested n levels deep n times over. Here
// only the first delimiter of a body is searched for directly (those
// searches cover disjoint stretches of the buffer); every later delimiter
// comes from an index of the delimiter lines of the whole buffer, built
// once per delimiter length as soon as direct searches for that length
// have read more than twice the buffer.
#ifndef PARCELVANE_SRC_MIME_MULTIPART_SPLITTER_H
#define PARCELVANE_SRC_MIME_MULTIPART_SPLITTER_H

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "src/mime/multipart_split.h"

namespace pv {

class MultipartSplitter {
 public:
  // How later delimiters are found. kAdaptive is the library's choice; the
  // other two exist so that tests can check both ways against each other.
  enum class Mode { kAdaptive, kScanOnly, kIndexOnly };

  // `text` is the whole buffer; every body given to Split() lies within
  // [regionBegin, regionEnd), which the index covers.
  MultipartSplitter(std::string_view text, size_t regionBegin, size_t regionEnd, Mode mode = Mode::kAdaptive);

  // The children of the body [begin, end) with delimiter "--" + boundary:
  // SplitMultipartBody(text.substr(begin, end - begin), boundary) with each
  // offset moved by `begin`.
  std::vector<ChildSpan> Split(size_t begin, size_t end, std::string_view boundary,
                               bool* foundDelimiter = nullptr);

  // How many delimiter lengths have an index (for tests and benchmarks).
  size_t index_count() const { return indexes_.size(); }

 private:
  enum class Kind : uint8_t { kNone, kOrdinary, kClosing, kLast };
  struct Found {
    size_t position;
    Kind kind;
  };
  // A delimiter line of the buffer: a "--" that starts a line and is
  // followed by "--" further on (closing), or that ends right before a
  // "\r\n" (ordinary), without a line break in between.
  struct Candidate {
    size_t position;
    Kind kind;
  };
  // Candidates of one length, by the hash of their bytes.
  using LengthIndex = std::unordered_map<uint64_t, std::vector<Candidate>>;

  struct Delimiter;

  // The next delimiter at or after `start` in the body [begin, end).
  Found NextByScan(const Delimiter& d, size_t begin, size_t end, size_t start);
  Found NextByIndex(const Delimiter& d, const LengthIndex& index, size_t begin, size_t end,
                    size_t start) const;
  const LengthIndex* IndexFor(const Delimiter& d);
  LengthIndex BuildIndex(size_t length) const;
  bool HasNoLineBreak(size_t begin, size_t end) const;

  std::string_view text_;
  size_t regionBegin_;
  size_t regionEnd_;
  Mode mode_;
  uint64_t base_;
  // Bytes read by direct searches for later delimiters, per length.
  std::unordered_map<size_t, uint64_t> scanned_;
  std::unordered_map<size_t, LengthIndex> indexes_;
};

}  // namespace pv

#endif  // PARCELVANE_SRC_MIME_MULTIPART_SPLITTER_H
