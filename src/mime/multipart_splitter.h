// The multipart split of every body of one parsed buffer, in time linear in
// the buffer even when multiparts are nested without limit.
//
// Split() gives what a plain scan of each body on its own gives (the tests
// hold it to one), as absolute positions in the buffer. Cutting each nested body on its own
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

namespace pv {

// One child's bytes, as an offset into the body and a length.
struct ChildSpan {
  size_t offset;
  size_t length;
};

class MultipartSplitter {
 public:
  // How later delimiters are found. kAdaptive is the library's choice; the
  // other two exist so that tests can check both ways against each other.
  enum class Mode { kAdaptive, kScanOnly, kIndexOnly };

  // `text` is the whole buffer; every body given to Split() lies within
  // [regionBegin, regionEnd), which the index covers.
  MultipartSplitter(std::string_view text, size_t regionBegin, size_t regionEnd, Mode mode = Mode::kAdaptive);

  // The children of the body [begin, end) with delimiter "--" + boundary,
  // offsets into `text`. The preamble before the first delimiter and the
  // epilogue after the closing one are dropped. A child starts right after
  // its delimiter (so it begins with the delimiter line's line break) and
  // ends at the next delimiter: before an ordinary one ("--b\r\n"), before
  // the line break of a closing one ("\r\n--b--"), or at a delimiter too
  // close to the end to be followed by two bytes. Any other occurrence
  // ("--b  ") is no delimiter. The bytes after the last delimiter never
  // become a child, so a body without a recognised closing delimiter loses
  // its last part. Children of length 0 are left out. `foundDelimiter`
  // tells whether the delimiter occurs at all.
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
