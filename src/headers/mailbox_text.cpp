#include "src/headers/mailbox_text.h"

namespace pv {
namespace {

template <class Char>
bool IsTrimmed(Char c) {
  return c == Char(' ') || c == Char('\t') || c == Char('\r') || c == Char('\n');
}

template <class Char>
std::basic_string_view<Char> Trim(std::basic_string_view<Char> s) {
  size_t b = 0;
  size_t e = s.size();
  while (b < e && IsTrimmed(s[b])) ++b;
  while (e > b && IsTrimmed(s[e - 1])) --e;
  return s.substr(b, e - b);
}

// Leading blanks of the display name: by the low byte for wide text.
bool IsLeadingBlank(char c) { return c == ' ' || c == '\t'; }
bool IsLeadingBlank(OLECHAR c) {
  auto low = static_cast<unsigned char>(static_cast<uint16_t>(c) & 0xFF);
  return low == ' ' || low == '\t';
}

// The end of a quoted string starting after the opening quote at `from`:
// the next quote not preceded by a backslash, or the end.
template <class Char>
size_t ClosingQuote(std::basic_string_view<Char> s, size_t from) {
  for (size_t i = from; i < s.size(); ++i) {
    if (s[i] == Char('"') && s[i - 1] != Char('\\')) return i;
  }
  return s.size();
}

template <class Char>
MailboxParts<Char> Split(std::basic_string_view<Char> s) {
  std::basic_string<Char> name;
  std::basic_string<Char> address;
  size_t i = 0;
  const size_t n = s.size();
  while (i < n) {
    while (i < n && IsLeadingBlank(s[i])) ++i;
    if (i < n && s[i] == Char('"')) {
      size_t close = ClosingQuote(s, i + 1);
      name.append(s.substr(i + 1, close - i - 1));
      i = close + 1;
      continue;
    }
    while (i < n && s[i] != Char('<')) {
      if (s[i] != Char('\r') && s[i] != Char('\n')) name.push_back(s[i]);
      ++i;
    }
    if (i < n) {
      size_t close = s.find(Char('>'), i + 1);
      if (close == std::basic_string_view<Char>::npos) close = n;
      address.assign(s.substr(i + 1, close - i - 1));
    }
    break;
  }
  MailboxParts<Char> parts;
  parts.name.assign(Trim(std::basic_string_view<Char>(name)));
  parts.address.assign(Trim(std::basic_string_view<Char>(address)));
  if (parts.address.empty() && parts.name.find(Char('@')) != std::basic_string<Char>::npos) {
    parts.address.swap(parts.name);
  }
  return parts;
}

template <class Char>
std::vector<std::basic_string_view<Char>> SplitList(std::basic_string_view<Char> s) {
  using View = std::basic_string_view<Char>;
  std::vector<View> pieces;
  size_t start = 0;
  bool sawAt = false;
  const size_t n = s.size();
  for (size_t i = 0; i < n; ++i) {
    Char c = s[i];
    if (c == Char('"')) {
      i = ClosingQuote(s, i + 1);  // the quote itself is skipped too
    } else if (c == Char('<')) {
      size_t close = s.find(Char('>'), i + 1);
      i = close == View::npos ? n : close;
    } else if (c == Char('@')) {
      sawAt = true;
    } else if ((c == Char(',') || c == Char(';')) && sawAt) {
      pieces.push_back(s.substr(start, i - start));
      start = i + 1;
      sawAt = false;
    }
  }
  if (start < n) pieces.push_back(s.substr(start));
  return pieces;
}

}  // namespace

MailboxParts<char> SplitMailbox(std::string_view text) { return Split(text); }
MailboxParts<OLECHAR> SplitMailbox(WStringView text) { return Split(text); }

std::vector<WStringView> SplitMailboxList(WStringView text) { return SplitList(text); }
std::vector<std::string_view> SplitMailboxList(std::string_view text) { return SplitList(text); }

}  // namespace pv
