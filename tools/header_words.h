// Header text that the compose command writes itself, so that text from a
// user is always data: RFC 2047 encoded words for display names, subjects
// and parameter values, and the RFC 2231 form for file names.
#ifndef PARCELVANE_TOOLS_HEADER_WORDS_H
#define PARCELVANE_TOOLS_HEADER_WORDS_H

#include <cstddef>
#include <string>
#include <string_view>

namespace pvtool {

// True when `text` can stand in a header as it is and read back
// unchanged: printable ASCII only, none of the characters in `forbidden`,
// no "=?" (it would be read as an encoded word), no blank at either end
// (the reader trims them), no two blanks in a row (folding joins them), at
// most `max_bytes` bytes.
bool IsPlainHeaderText(std::string_view text, std::string_view forbidden, size_t max_bytes);

// `utf8` (valid UTF-8) as base64 encoded words in UTF-8, each at most 72
// characters and holding whole characters only, joined by CR LF and a
// space (a fold). The first word fits a line of which `first_line_used`
// columns are taken. Empty text gives "".
std::string EncodedWords(std::string_view utf8, size_t first_line_used);

// `utf8` as an RFC 2231 extended parameter value: "utf-8''" and the text
// with every byte outside the attribute characters percent-encoded.
std::string ExtendedParameterValue(std::string_view utf8);

}  // namespace pvtool

#endif  // PARCELVANE_TOOLS_HEADER_WORDS_H
