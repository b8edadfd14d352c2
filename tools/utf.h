// Conversions between UTF-8 (the tool's own text) and UTF-16 (the
// library's wide strings).
#ifndef PARCELVANE_TOOLS_UTF_H
#define PARCELVANE_TOOLS_UTF_H

#include <cstddef>
#include <string>
#include <string_view>

namespace pvtool {

using U16String = std::u16string;
using U16View = std::u16string_view;

// Invalid UTF-8 (stray continuation bytes, overlong forms, surrogates,
// truncated sequences) becomes one U+FFFD per offending byte.
U16String Utf8ToUtf16(std::string_view utf8);
// A lone surrogate becomes U+FFFD.
std::string Utf16ToUtf8(U16View utf16);

bool IsValidUtf8(std::string_view bytes);
// The number of code points of valid UTF-8 text (each invalid byte counts one).
size_t CodePointCount(std::string_view utf8);
// The longest prefix of `utf8` with at most `max_bytes` bytes that does not
// cut a multi-byte sequence.
std::string_view Utf8Prefix(std::string_view utf8, size_t max_bytes);
// The first `count` code points of `utf8`.
std::string_view Utf8FirstCodePoints(std::string_view utf8, size_t count);

// `utf8` made exactly `width` code points wide for a column: cut with a
// trailing "…" when longer, padded with spaces when shorter.
std::string FitColumn(std::string_view utf8, size_t width);
// `utf8` padded with spaces to at least `width` code points.
std::string PadRight(std::string_view utf8, size_t width);

// Text for a terminal line: control characters (which could move the
// cursor or change colours) become "?", a tab a space.
std::string TerminalSafe(std::string_view utf8);

}  // namespace pvtool

#endif  // PARCELVANE_TOOLS_UTF_H
