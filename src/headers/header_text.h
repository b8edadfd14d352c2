// Text operations on header values: unfolding, folding at 78 columns, and
// the split of a "Content-" value into its value and its parameters.
#ifndef PARCELVANE_SRC_HEADERS_HEADER_TEXT_H
#define PARCELVANE_SRC_HEADERS_HEADER_TEXT_H

#include <cstddef>
#include <string>
#include <string_view>

namespace pv {

// Each run of CR and LF bytes, with the spaces and tabs right after it,
// becomes one space; a run at the very end still yields its space.
std::string UnfoldHeaderText(std::string_view text);

// How a fold treats a line break already in the text: header fields forget
// only the plain break candidate there, parameter values forget both.
enum class FoldLineBreak { kKeepPreferredCandidate, kForgetBothCandidates };

// Folds text into lines of at most 78 columns (the first line shortened by
// `nameLength` + 4 for the field name, colon and blank), cutting in front of
// a space or tab, which begins the next line; cuts are joined with "\r\n".
// A blank after ";" or ")" is the preferred cut; nothing is cut between "["
// and "]"; a line without a blank is never cut.
std::string FoldHeaderText(std::string_view text, size_t nameLength,
                           FoldLineBreak lineBreaks = FoldLineBreak::kKeepPreferredCandidate);

// The value of a "Content-" field, split at its first ";": leading blanks
// skipped, the value up to the ";" (trailing blanks kept), and the rest
// from the ";" on (empty when there is none).
struct ParameterSplit {
  std::string_view value;
  std::string_view parameters;
};
ParameterSplit SplitParameters(std::string_view text);

// Whether a field name begins with "Content-" (ASCII case folding).
bool IsContentFieldName(std::string_view name);

// Whether text stays within one header field when written: a line feed
// ends a field unless a blank follows it (a fold).
bool StaysInField(std::string_view text);

// Trimming helpers on narrow text.
inline bool IsBlank(char c) { return c == ' ' || c == '\t'; }
inline bool IsLineBreakChar(char c) { return c == '\r' || c == '\n'; }
std::string_view TrimBlanks(std::string_view text);
std::string_view TrimLeadingBlanks(std::string_view text);
std::string_view TrimTrailingLineBreaks(std::string_view text);

}  // namespace pv

#endif  // PARCELVANE_SRC_HEADERS_HEADER_TEXT_H
