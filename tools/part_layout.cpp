#include "tools/part_layout.h"

#include <algorithm>
#include <cstring>
#include <unordered_map>
#include <utility>

namespace pvtool {
namespace {

// A delimiter line "--boundary" + CR LF, or a closing one "--boundary--"
// (whatever follows it), as the library reads them.
struct DelimiterLine {
  size_t start = 0;  // of the line
  size_t next = 0;   // the line after it
  bool closing = false;
};

// The boundaries of a tree as a trie, so that one walk along a line finds
// every boundary it starts with, however many boundaries there are.
class BoundaryTrie {
 public:
  explicit BoundaryTrie(const std::vector<LayoutPart>& parts) {
    for (size_t i = 0; i < parts.size(); ++i) {
      if (parts[i].boundary.empty()) continue;
      size_t node = 0;
      for (char c : parts[i].boundary) node = Child(node, c, true);
      if (ends_[node] < 0) ends_[node] = static_cast<int>(lines_.size()), lines_.emplace_back();
      owner_.emplace(parts[i].boundary, ends_[node]);
    }
  }

  bool empty() const { return lines_.empty(); }

  // Records the line [start, end) (its line break excluded) when it is a
  // delimiter of one boundary or closes one or more.
  void Scan(std::string_view message, size_t start, size_t end, size_t next) {
    const std::string_view text = message.substr(start + 2, end - start - 2);
    const bool crlf = !text.empty() && text.back() == '\r' && next > end;
    size_t node = 0;
    for (size_t i = 0; i < text.size(); ++i) {
      node = Child(node, text[i], false);
      if (node == kNone) return;
      const int id = ends_[node];
      if (id < 0) continue;
      if (text.compare(i + 1, 2, "--") == 0) lines_[static_cast<size_t>(id)].push_back({start, next, true});
      if (crlf && i + 2 == text.size()) lines_[static_cast<size_t>(id)].push_back({start, next, false});
    }
  }

  const std::vector<DelimiterLine>& LinesOf(const std::string& boundary) const {
    return lines_[owner_.at(boundary)];
  }

 private:
  static constexpr size_t kNone = static_cast<size_t>(-1);

  size_t Child(size_t node, char c, bool add) {
    const uint64_t key = static_cast<uint64_t>(node) << 8 | static_cast<unsigned char>(c);
    const auto found = edges_.find(key);
    if (found != edges_.end()) return found->second;
    if (!add) return kNone;
    ends_.push_back(-1);
    edges_.emplace(key, ends_.size() - 1);
    return ends_.size() - 1;
  }

  std::unordered_map<uint64_t, size_t> edges_;
  std::vector<int> ends_ = {-1};  // per node: the boundary ending there, or -1
  std::vector<std::vector<DelimiterLine>> lines_;
  std::unordered_map<std::string, size_t> owner_;
};

// One pass over the lines of `message`: the delimiter lines of every
// boundary, in order. A line counts only after a CR LF, as in the library.
BoundaryTrie IndexDelimiters(std::string_view message, const std::vector<LayoutPart>& parts) {
  BoundaryTrie trie(parts);
  if (trie.empty()) return trie;
  size_t start = 0;
  while (start < message.size()) {
    const void* lf = std::memchr(message.data() + start, '\n', message.size() - start);
    const size_t end =
        lf == nullptr ? message.size() : static_cast<size_t>(static_cast<const char*>(lf) - message.data());
    const size_t next = lf == nullptr ? end : end + 1;
    const bool after_crlf = start == 0 || (start >= 2 && message[start - 2] == '\r');
    if (after_crlf && end - start >= 3 && message[start] == '-' && message[start + 1] == '-') {
      trie.Scan(message, start, end, next);
    }
    start = next;
  }
  return trie;
}

// Where the body of the part in [start, end) begins: after the blank line
// that ends its header block.
size_t BodyStart(std::string_view message, size_t start, size_t end) {
  const std::string_view part = message.substr(start, end - start);
  if (part.compare(0, 2, "\r\n") == 0) return start + 2;
  const size_t blank = part.find("\r\n\r\n");
  return blank == std::string_view::npos ? end : start + blank + 4;
}

// The end of a part before the delimiter line at `line`: as in the
// library, a part keeps the line break before an ordinary delimiter and
// loses the one before the closing delimiter.
size_t EndBefore(std::string_view message, size_t start, const DelimiterLine& line) {
  if (!line.closing) return line.start;
  return line.start >= start + 2 && message.compare(line.start - 2, 2, "\r\n") == 0 ? line.start - 2
                                                                                    : line.start;
}

}  // namespace

std::vector<PartRegion> LayOutParts(std::string_view message, const std::vector<LayoutPart>& parts) {
  std::vector<PartRegion> regions(parts.size());
  if (parts.empty()) return regions;
  // after[i]: the index just past the subtree of part i.
  std::vector<size_t> after(parts.size());
  for (size_t i = parts.size(); i-- > 0;) {
    size_t j = i + 1;
    for (int c = 0; c < parts[i].children && j < parts.size(); ++c) j = after[j];
    after[i] = j;
  }
  const BoundaryTrie index = IndexDelimiters(message, parts);
  // The region of each part, headers included; set by its parent.
  std::vector<std::pair<size_t, size_t>> spans(parts.size(), {0, 0});
  std::vector<bool> placed(parts.size(), false);
  spans[0] = {0, message.size()};
  placed[0] = true;
  for (size_t i = 0; i < parts.size(); ++i) {
    if (!placed[i]) continue;
    const auto [start, end] = spans[i];
    const size_t body = BodyStart(message, start, end);
    PartRegion& region = regions[i];
    region.known = true;
    region.body_size = end - body;
    if (parts[i].boundary.empty()) continue;
    const std::vector<DelimiterLine>& lines = index.LinesOf(parts[i].boundary);
    auto line = std::lower_bound(lines.begin(), lines.end(), body,
                                 [](const DelimiterLine& l, size_t at) { return l.start < at; });
    std::vector<const DelimiterLine*> delimiters;
    const DelimiterLine* closing = nullptr;
    for (; line != lines.end() && line->start < end; ++line) {
      // A delimiter with no room for its line break before the end is the
      // last one, as good as a closing one.
      if (line->closing || line->start + 4 + parts[i].boundary.size() > end) {
        closing = &*line;
        break;
      }
      delimiters.push_back(&*line);
    }
    if (delimiters.empty()) continue;
    if (closing == nullptr) {
      region.unclosed = true;
      region.unshown = end - std::min(end, delimiters.back()->next);
    }
    size_t found = closing != nullptr ? delimiters.size() : delimiters.size() - 1;
    // An empty part before the closing delimiter is no part.
    if (closing != nullptr && closing->closing && closing->start == delimiters.back()->next) --found;
    // The parts between the delimiters; the library drops one whose header
    // no empty line ends (it begins with the delimiter's line break, so a
    // part opening with an empty line has an empty header).
    std::vector<std::pair<size_t, size_t>> chunks;
    for (size_t k = 0; k < found; ++k) {
      const size_t part_start = delimiters[k]->next;
      const DelimiterLine& next_line = k + 1 < delimiters.size() ? *delimiters[k + 1] : *closing;
      const size_t part_end = std::max(part_start, EndBefore(message, part_start, next_line));
      const std::string_view bytes = message.substr(part_start, part_end - part_start);
      if (bytes.compare(0, 2, "\r\n") != 0 && bytes.find("\r\n\r\n") == std::string_view::npos) {
        if (!bytes.empty()) {  // two delimiters in a row lose nothing
          ++region.headerless;
          region.headerless_bytes += bytes.size();
        }
        continue;
      }
      chunks.emplace_back(part_start, part_end);
    }
    if (chunks.size() != static_cast<size_t>(parts[i].children)) continue;
    size_t child = i + 1;
    for (size_t k = 0; k < chunks.size() && child < parts.size(); ++k, child = after[child]) {
      spans[child] = chunks[k];
      placed[child] = true;
    }
  }
  return regions;
}

}  // namespace pvtool
