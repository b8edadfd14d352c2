#include "tools/line_ends.h"

#include <cstring>

namespace pvtool {
namespace {

// The next LF at or after `from`, or npos.
size_t NextLf(std::string_view text, size_t from) {
  if (from >= text.size()) return std::string_view::npos;
  const void* hit = std::memchr(text.data() + from, '\n', text.size() - from);
  if (hit == nullptr) return std::string_view::npos;
  return static_cast<size_t>(static_cast<const char*>(hit) - text.data());
}

bool FollowsCr(std::string_view text, size_t lf) { return lf > 0 && text[lf - 1] == '\r'; }

}  // namespace

std::string BareLfToCrLf(std::string_view text) {
  std::string out;
  out.reserve(text.size() + text.size() / 32);
  size_t copied = 0;
  for (size_t lf = NextLf(text, 0); lf != std::string_view::npos; lf = NextLf(text, lf + 1)) {
    if (FollowsCr(text, lf)) continue;
    out.append(text.data() + copied, lf - copied);
    out.append("\r\n", 2);
    copied = lf + 1;
  }
  out.append(text.data() + copied, text.size() - copied);
  return out;
}

bool HasBareLf(std::string_view text) {
  for (size_t lf = NextLf(text, 0); lf != std::string_view::npos; lf = NextLf(text, lf + 1)) {
    if (!FollowsCr(text, lf)) return true;
  }
  return false;
}

std::string CrLfToLf(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  size_t copied = 0;
  for (size_t lf = NextLf(text, 0); lf != std::string_view::npos; lf = NextLf(text, lf + 1)) {
    if (!FollowsCr(text, lf)) continue;
    out.append(text.data() + copied, lf - 1 - copied);
    out.push_back('\n');
    copied = lf + 1;
  }
  out.append(text.data() + copied, text.size() - copied);
  return out;
}

}  // namespace pvtool
