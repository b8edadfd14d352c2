#include "src/mime/multipart_splitter.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <random>
#include <string>

#include "src/platform/byte_search.h"

namespace pv {
namespace {

// Polynomial hashing modulo the Mersenne prime 2^61 - 1, with a base drawn
// once per process so that no input can be built to collide on purpose.
// Every hit is compared byte for byte before it is used, so a collision
// costs time, never a wrong answer.
constexpr uint64_t kModulus = (uint64_t{1} << 61) - 1;

uint64_t MultiplyMod(uint64_t a, uint64_t b) {
  unsigned __int128 product = static_cast<unsigned __int128>(a) * b;
  uint64_t sum = static_cast<uint64_t>(product & kModulus) + static_cast<uint64_t>(product >> 61);
  return sum >= kModulus ? sum - kModulus : sum;
}

uint64_t HashBytes(std::string_view bytes, uint64_t base) {
  uint64_t hash = 0;
  for (unsigned char c : bytes) {
    hash = MultiplyMod(hash, base) + c + 1;
    if (hash >= kModulus) hash -= kModulus;
  }
  return hash;
}

uint64_t ProcessHashBase() {
  static const uint64_t base = [] {
    std::random_device device;
    uint64_t seed = (uint64_t{device()} << 32) ^ device();
    seed ^= static_cast<uint64_t>(std::chrono::steady_clock::now().time_since_epoch().count());
    seed ^= reinterpret_cast<uintptr_t>(&seed);
    std::mt19937_64 mix(seed);
    return 256 + mix() % (kModulus - 512);
  }();
  return base;
}

bool IsDash(const char* p) { return p[0] == '-' && p[1] == '-'; }

}  // namespace

struct MultipartSplitter::Delimiter {
  explicit Delimiter(std::string_view boundary, uint64_t base)
      : bytes("--" + std::string(boundary)),
        pattern(bytes),
        hash(HashBytes(bytes, base)),
        hasLineBreak(bytes.find_first_of("\r\n") != std::string::npos) {}

  size_t size() const { return bytes.size(); }

  std::string bytes;
  BytePattern pattern;
  uint64_t hash;
  // The index holds delimiter lines only; a delimiter with a line break of
  // its own is always searched for directly.
  bool hasLineBreak;
};

MultipartSplitter::MultipartSplitter(std::string_view text, size_t regionBegin, size_t regionEnd, Mode mode)
    : text_(text),
      regionBegin_(std::min(regionBegin, text.size())),
      regionEnd_(std::min(std::max(regionBegin, regionEnd), text.size())),
      mode_(mode),
      base_(ProcessHashBase()) {}

std::vector<ChildSpan> MultipartSplitter::Split(size_t begin, size_t end, std::string_view boundary,
                                                bool* foundDelimiter) {
  std::vector<ChildSpan> children;
  if (foundDelimiter != nullptr) *foundDelimiter = false;
  if (boundary.empty() || begin >= end) return children;
  const Delimiter delimiter(boundary, base_);
  const size_t length = delimiter.size();

  // The preamble may hold anything: the first delimiter is any occurrence.
  const std::string_view body = text_.substr(begin, end - begin);
  size_t first = BytePattern::Occurrences(delimiter.pattern, body).Next();
  if (first == std::string_view::npos) return children;
  if (foundDelimiter != nullptr) *foundDelimiter = true;

  size_t current = begin + first;
  for (;;) {
    const size_t start = current + length;
    const LengthIndex* index = IndexFor(delimiter);
    Found next = index != nullptr ? NextByIndex(delimiter, *index, begin, end, start)
                                  : NextByScan(delimiter, begin, end, start);
    if (next.kind == Kind::kNone) return children;  // the rest is lost
    size_t childEnd = next.kind == Kind::kClosing ? next.position - 2 : next.position;
    // A boundary that itself ends in a line break can make the closing
    // delimiter's line break overlap the child's start: such a child is empty.
    if (childEnd > start) children.push_back({start, childEnd - start});
    if (next.kind != Kind::kOrdinary) return children;
    current = next.position;
  }
}

// Every occurrence from `start` on, classified as SplitMultipartBody does:
// too close to the end to be followed by two bytes, followed by "\r\n", or
// preceded by "\r\n" and followed by "--"; any other occurrence is passed.
MultipartSplitter::Found MultipartSplitter::NextByScan(const Delimiter& d, size_t begin, size_t end,
                                                       size_t start) {
  const size_t length = d.size();
  const std::string_view body = text_.substr(begin, end - begin);
  BytePattern::Occurrences occurrences(d.pattern, body, start - begin);
  Found found{0, Kind::kNone};
  for (;;) {
    size_t q = occurrences.Next();
    if (q == std::string_view::npos) break;
    q += begin;
    if (q + length + 2 > end) {
      found = {q, Kind::kLast};
    } else if (text_.compare(q + length, 2, "\r\n") == 0) {
      found = {q, Kind::kOrdinary};
    } else if (q >= begin + 2 && text_.compare(q - 2, 2, "\r\n") == 0 &&
               text_.compare(q + length, 2, "--") == 0) {
      found = {q, Kind::kClosing};
    } else {
      continue;
    }
    break;
  }
  size_t reached = found.kind == Kind::kNone ? end : std::min(end, found.position + length);
  scanned_[length] += reached > start ? reached - start : 0;
  return found;
}

// The index holds every ordinary and closing delimiter line of the region;
// the body's own bounds are checked here. Occurrences too close to the end
// of the body (the last delimiter) can only be at two places, checked
// directly.
MultipartSplitter::Found MultipartSplitter::NextByIndex(const Delimiter& d, const LengthIndex& index,
                                                        size_t begin, size_t end, size_t start) const {
  const size_t length = d.size();
  auto matches = [&](size_t q) { return std::memcmp(text_.data() + q, d.bytes.data(), length) == 0; };
  auto bucket = index.find(d.hash);
  if (bucket != index.end()) {
    const std::vector<Candidate>& candidates = bucket->second;
    auto it = std::lower_bound(candidates.begin(), candidates.end(), start,
                               [](const Candidate& c, size_t position) { return c.position < position; });
    for (; it != candidates.end(); ++it) {
      const size_t q = it->position;
      if (q + length + 2 > end) break;
      if (it->kind == Kind::kClosing && q < begin + 2) continue;  // its line break lies before the body
      if (matches(q)) return {q, it->kind};
    }
  }
  for (size_t fromEnd : {length + 1, length}) {
    if (end < fromEnd) continue;
    const size_t q = end - fromEnd;
    if (q >= start && matches(q)) return {q, Kind::kLast};
  }
  return {0, Kind::kNone};
}

const MultipartSplitter::LengthIndex* MultipartSplitter::IndexFor(const Delimiter& d) {
  if (d.hasLineBreak || mode_ == Mode::kScanOnly) return nullptr;
  auto built = indexes_.find(d.size());
  if (built != indexes_.end()) return &built->second;
  if (mode_ == Mode::kAdaptive) {
    // Building reads the region once: worth it only when direct searches
    // for this length have already read it twice.
    const uint64_t region = regionEnd_ - regionBegin_;
    auto scanned = scanned_.find(d.size());
    if (scanned == scanned_.end() || scanned->second <= 2 * region + 65536) return nullptr;
  }
  return &indexes_.emplace(d.size(), BuildIndex(d.size())).first->second;
}

// One pass over the region's line breaks. The bytes hashed for one line lie
// within that line, so the pass reads every byte a bounded number of times.
MultipartSplitter::LengthIndex MultipartSplitter::BuildIndex(size_t length) const {
  LengthIndex index;
  const char* t = text_.data();
  auto add = [&](size_t position, Kind kind) {
    index[HashBytes(text_.substr(position, length), base_)].push_back({position, kind});
  };
  size_t from = regionBegin_;
  while (from < regionEnd_) {
    const void* hit = std::memchr(t + from, '\n', regionEnd_ - from);
    if (hit == nullptr) break;
    const size_t lf = static_cast<size_t>(static_cast<const char*>(hit) - t);
    from = lf + 1;
    if (lf == regionBegin_ || t[lf - 1] != '\r') continue;
    const size_t cr = lf - 1;
    // Ordinary: the delimiter ends the line.
    if (cr >= regionBegin_ + length) {
      const size_t q = cr - length;
      if (IsDash(t + q) && HasNoLineBreak(q, cr)) add(q, Kind::kOrdinary);
    }
    // Closing: the delimiter starts the next line and "--" follows it.
    const size_t q = lf + 1;
    if (q + length + 2 <= regionEnd_ && IsDash(t + q) && IsDash(t + q + length) &&
        HasNoLineBreak(q, q + length)) {
      add(q, Kind::kClosing);
    }
  }
  return index;
}

bool MultipartSplitter::HasNoLineBreak(size_t begin, size_t end) const {
  const char* t = text_.data() + begin;
  return std::memchr(t, '\r', end - begin) == nullptr && std::memchr(t, '\n', end - begin) == nullptr;
}

}  // namespace pv
