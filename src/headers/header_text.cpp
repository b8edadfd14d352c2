#include "src/headers/header_text.h"

#include <cstring>
#include <vector>

#include "src/platform/strings.h"

namespace pv {

std::string UnfoldHeaderText(std::string_view text) {
  std::string out;
  out.reserve(text.size());
  size_t i = 0;
  while (i < text.size()) {
    size_t brk = text.find_first_of("\r\n", i);
    if (brk == std::string_view::npos) {
      out.append(text.substr(i));
      break;
    }
    out.append(text.substr(i, brk - i));
    i = brk;
    while (i < text.size() && IsLineBreakChar(text[i])) ++i;
    while (i < text.size() && IsBlank(text[i])) ++i;
    out.push_back(' ');
  }
  return out;
}

std::string FoldHeaderText(std::string_view text, size_t nameLength, FoldLineBreak lineBreaks) {
  constexpr long kLineWidth = 78;
  constexpr long kNone = -1;
  const long n = static_cast<long>(text.size());
  long width = kLineWidth - static_cast<long>(nameLength + 4);
  long column = 0;
  long breakAt = kNone;
  long preferred = kNone;
  bool inBrackets = false;
  std::vector<long> cuts;

  for (long i = 0; i < n; ++i, ++column) {
    char c = text[static_cast<size_t>(i)];
    bool check = false;
    if (IsLineBreakChar(c)) {
      breakAt = kNone;
      if (lineBreaks == FoldLineBreak::kForgetBothCandidates) preferred = kNone;
      column = -1;
      check = !inBrackets;
    } else if (c == '[') {
      inBrackets = true;
    } else if (c == ']') {
      inBrackets = false;
      check = true;
    } else if (inBrackets) {
      // no break inside brackets
    } else {
      if (column > 0) {
        if ((c == ';' || c == ')') && i + 1 < n) {
          // Step onto the next byte; a blank there is the preferred cut.
          ++i;
          ++column;
          c = text[static_cast<size_t>(i)];
          preferred = IsBlank(c) ? i : kNone;
        }
        if (IsBlank(c)) breakAt = i;
      }
      check = true;
    }
    if (!check || column < width || breakAt == kNone) continue;
    long cut = breakAt;
    if (preferred != kNone && preferred < breakAt && breakAt - preferred < width) cut = preferred;
    cuts.push_back(cut);
    // Walk on from the cut: its blank starts the next line and is not counted.
    i = cut;
    column = -1;
    breakAt = kNone;
    preferred = kNone;
    width = kLineWidth;
  }

  if (cuts.empty()) return std::string(text);
  std::string out;
  out.reserve(text.size() + 2 * cuts.size());
  size_t from = 0;
  for (long cut : cuts) {
    out.append(text.substr(from, static_cast<size_t>(cut) - from));
    out.append("\r\n");
    from = static_cast<size_t>(cut);
  }
  out.append(text.substr(from));
  return out;
}

ParameterSplit SplitParameters(std::string_view text) {
  std::string_view rest = TrimLeadingBlanks(text);
  size_t semicolon = rest.find(';');
  if (semicolon == std::string_view::npos) return {rest, std::string_view()};
  return {rest.substr(0, semicolon), rest.substr(semicolon)};
}

bool IsContentFieldName(std::string_view name) { return StartsWithIgnoreCaseAscii(name, "Content-"); }

std::string_view TrimLeadingBlanks(std::string_view text) {
  size_t i = 0;
  while (i < text.size() && IsBlank(text[i])) ++i;
  return text.substr(i);
}

bool StaysInField(std::string_view text) {
  for (size_t lf = text.find('\n'); lf != std::string_view::npos; lf = text.find('\n', lf + 1)) {
    if (lf + 1 >= text.size() || !IsBlank(text[lf + 1])) return false;
  }
  return true;
}

std::string_view TrimBlanks(std::string_view text) {
  text = TrimLeadingBlanks(text);
  size_t end = text.size();
  while (end > 0 && IsBlank(text[end - 1])) --end;
  return text.substr(0, end);
}

std::string_view TrimTrailingLineBreaks(std::string_view text) {
  size_t end = text.size();
  while (end > 0 && IsLineBreakChar(text[end - 1])) --end;
  return text.substr(0, end);
}

}  // namespace pv
