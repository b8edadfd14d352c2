#include "tools/part_layout.h"

#include <algorithm>
#include <cstring>
#include <unordered_map>

namespace pvtool {
namespace {

// A line "--boundary" or "--boundary--".
struct DelimiterLine {
  size_t start = 0;  // of the line
  size_t next = 0;   // the line after it
  bool closing = false;
};

using DelimiterIndex = std::unordered_map<std::string_view, std::vector<DelimiterLine>>;

// One pass over the lines of `message`: the delimiter lines of each of
// `boundaries`, in order.
DelimiterIndex IndexDelimiters(std::string_view message, const std::vector<LayoutPart>& parts) {
  DelimiterIndex index;
  size_t longest = 0;
  for (const LayoutPart& part : parts) {
    if (part.boundary.empty()) continue;
    index.emplace(part.boundary, std::vector<DelimiterLine>());
    longest = std::max(longest, part.boundary.size());
  }
  if (index.empty()) return index;
  size_t start = 0;
  while (start < message.size()) {
    const void* lf = std::memchr(message.data() + start, '\n', message.size() - start);
    const size_t end = lf == nullptr ? message.size() : static_cast<size_t>(static_cast<const char*>(lf) - message.data());
    const size_t next = lf == nullptr ? end : end + 1;
    if (end - start >= 2 && message[start] == '-' && message[start + 1] == '-') {
      std::string_view text = message.substr(start + 2, end - start - 2);
      // Blanks after a boundary make no delimiter, as in the library.
      if (!text.empty() && text.back() == '\r') text.remove_suffix(1);
      if (text.size() <= longest + 2) {
        const bool closing = text.size() >= 2 && text.substr(text.size() - 2) == "--" &&
                             index.count(text.substr(0, text.size() - 2)) != 0;
        const auto found = index.find(closing ? text.substr(0, text.size() - 2) : text);
        if (found != index.end()) found->second.push_back({start, next, closing});
      }
    }
    start = next;
  }
  return index;
}

// Where the body of the part in [start, end) begins: after the blank line
// that ends its header block.
size_t BodyStart(std::string_view message, size_t start, size_t end) {
  const std::string_view part = message.substr(start, end - start);
  if (part.compare(0, 2, "\r\n") == 0) return start + 2;
  const size_t blank = part.find("\r\n\r\n");
  return blank == std::string_view::npos ? end : start + blank + 4;
}

// The end of a part before the delimiter line at `line`: the line break
// before a delimiter belongs to it.
size_t EndBefore(std::string_view message, size_t start, size_t line) {
  return line >= start + 2 && message.compare(line - 2, 2, "\r\n") == 0 ? line - 2 : line;
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
  const DelimiterIndex index = IndexDelimiters(message, parts);
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
    const std::vector<DelimiterLine>& lines = index.at(parts[i].boundary);
    auto line = std::lower_bound(lines.begin(), lines.end(), body,
                                 [](const DelimiterLine& l, size_t at) { return l.start < at; });
    std::vector<const DelimiterLine*> delimiters;
    const DelimiterLine* closing = nullptr;
    for (; line != lines.end() && line->start < end; ++line) {
      if (line->closing) {
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
    const size_t found = closing != nullptr ? delimiters.size() : delimiters.size() - 1;
    if (found != static_cast<size_t>(parts[i].children)) continue;
    size_t child = i + 1;
    for (size_t k = 0; k < found && child < parts.size(); ++k, child = after[child]) {
      const size_t part_start = delimiters[k]->next;
      const size_t next_line = k + 1 < delimiters.size() ? delimiters[k + 1]->start : closing->start;
      spans[child] = {part_start, std::max(part_start, EndBefore(message, part_start, next_line))};
      placed[child] = true;
    }
  }
  return regions;
}

}  // namespace pvtool
