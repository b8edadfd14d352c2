#include "src/message/uuencoded_blocks.h"

#include "src/platform/byte_search.h"

namespace pv {
namespace {

constexpr std::string_view kBegin = "begin";
constexpr std::string_view kEndMarker = "`\r\nend\r\n";

bool IsModeDigit(char c) { return c >= '0' && c <= '6'; }
bool IsBlank(char c) { return c == ' ' || c == '\t'; }
bool EndsName(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

size_t SkipBlanks(std::string_view s, size_t i) {
  while (i < s.size() && IsBlank(s[i])) ++i;
  return i;
}

}  // namespace

bool FindUuencodedBlocks(std::string_view s, UuencodedText* out) {
  out->blocks.clear();
  out->text.clear();
  const size_t n = s.size();
  size_t resume = 0;
  size_t from = 0;
  for (;;) {
    size_t begin = s.find(kBegin, from);
    if (begin == std::string_view::npos || n - begin < 11) break;
    // The byte after "begin" is not looked at; the mode is three digits 0-6.
    size_t bad = begin + 6;
    while (bad < begin + 9 && IsModeDigit(s[bad])) ++bad;
    if (bad < begin + 9) {
      from = bad;
      continue;
    }
    // The name: after one more byte and any blanks, up to a blank or a line
    // break; an empty name moves 10 bytes on and is tried again.
    size_t nameStart = begin + 10;
    size_t nameEnd = nameStart;
    for (;;) {
      nameStart = SkipBlanks(s, nameStart);
      nameEnd = nameStart;
      while (nameEnd < n && !EndsName(s[nameEnd])) ++nameEnd;
      if (nameEnd > nameStart || nameStart >= n) break;
      nameStart += 10;
    }
    if (nameEnd == nameStart) break;  // reached the end without a name
    size_t data = nameEnd;
    while (data < n && (IsBlank(s[data]) || s[data] == '\r' || s[data] == '\n')) ++data;
    size_t marker = FindBytes(s, kEndMarker, data);
    if (marker == std::string_view::npos) break;
    out->blocks.push_back({s.substr(nameStart, nameEnd - nameStart), data, marker - data});
    out->text.append(s.substr(resume, begin - resume));
    resume = marker + kEndMarker.size();
    from = resume;
  }
  if (out->blocks.empty()) return false;
  if (!out->text.empty()) out->text.append(s.substr(resume));
  return true;
}

}  // namespace pv
