#include "tools/mail_text.h"

#include <array>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <vector>

namespace pvtool {
namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

std::string_view Trim(std::string_view s) {
  while (!s.empty() && IsBlank(s.front())) s.remove_prefix(1);
  while (!s.empty() && IsBlank(s.back())) s.remove_suffix(1);
  return s;
}

bool AllDigits(std::string_view s) {
  if (s.empty()) return false;
  for (char c : s) {
    if (!std::isdigit(static_cast<unsigned char>(c))) return false;
  }
  return true;
}

int ToInt(std::string_view digits) {
  int value = 0;
  for (char c : digits) value = value * 10 + (c - '0');
  return value;
}

constexpr std::array<const char*, 12> kMonths = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                 "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
constexpr std::array<const char*, 7> kWeekdays = {"Thu", "Fri", "Sat", "Sun", "Mon", "Tue", "Wed"};

int MonthNumber(std::string_view token) {
  if (token.size() < 3) return 0;
  for (size_t m = 0; m < kMonths.size(); ++m) {
    bool same = true;
    for (size_t i = 0; i < 3; ++i) {
      same = same && std::tolower(static_cast<unsigned char>(token[i])) ==
                         std::tolower(static_cast<unsigned char>(kMonths[m][i]));
    }
    if (same) return static_cast<int>(m) + 1;
  }
  return 0;
}

std::vector<std::string_view> Tokens(std::string_view s) {
  std::vector<std::string_view> tokens;
  size_t i = 0;
  while (i < s.size() && tokens.size() < 8) {
    while (i < s.size() && (IsBlank(s[i]) || s[i] == ',')) ++i;
    const size_t start = i;
    while (i < s.size() && !IsBlank(s[i]) && s[i] != ',') ++i;
    if (i > start) tokens.push_back(s.substr(start, i - start));
  }
  return tokens;
}

// "10:52" or "10:52:37": hours, minutes and seconds (0 when absent).
bool ParseTime(std::string_view token, int* hours, int* minutes, int* seconds) {
  if (token.size() < 5 || token[2] != ':') return false;
  if (!AllDigits(token.substr(0, 2)) || !AllDigits(token.substr(3, 2))) return false;
  *hours = ToInt(token.substr(0, 2));
  *minutes = ToInt(token.substr(3, 2));
  *seconds = 0;
  if (token.size() == 8 && token[5] == ':' && AllDigits(token.substr(6, 2)))
    *seconds = ToInt(token.substr(6, 2));
  return *hours < 24 && *minutes < 60 && *seconds < 61;
}

// "+0200", "-0430", "GMT", "UT", "UTC" or "Z": minutes east of UTC.
bool ParseZone(std::string_view token, int* minutes) {
  if (token == "GMT" || token == "UT" || token == "UTC" || token == "Z") {
    *minutes = 0;
    return true;
  }
  if (token.size() != 5 || (token[0] != '+' && token[0] != '-') || !AllDigits(token.substr(1))) return false;
  const int hours = ToInt(token.substr(1, 2)), mins = ToInt(token.substr(3, 2));
  if (hours > 23 || mins > 59) return false;
  *minutes = (token[0] == '-' ? -1 : 1) * (hours * 60 + mins);
  return true;
}

struct DateFields {
  int year = 0, month = 0, day = 0, hours = 0, minutes = 0, seconds = 0;
  bool has_zone = false;
  int zone_minutes = 0;
};

// "Tue, 1 Jul 2003 10:52:37 +0200", the weekday and the zone optional.
bool ParseDate(const std::string& text, DateFields* d) {
  std::vector<std::string_view> tokens = Tokens(text);
  size_t t = 0;
  if (t < tokens.size() && !tokens[t].empty() && std::isalpha(static_cast<unsigned char>(tokens[t][0]))) ++t;
  if (tokens.size() < t + 4) return false;
  const std::string_view day = tokens[t], month = tokens[t + 1], year = tokens[t + 2];
  d->month = MonthNumber(month);
  if (!AllDigits(day) || day.size() > 2 || d->month == 0 || !AllDigits(year) ||
      (year.size() != 2 && year.size() != 4) ||
      !ParseTime(tokens[t + 3], &d->hours, &d->minutes, &d->seconds)) {
    return false;
  }
  d->day = ToInt(day);
  d->year = ToInt(year);
  if (year.size() == 2) d->year += d->year < 50 ? 2000 : 1900;
  d->has_zone = tokens.size() > t + 4 && ParseZone(tokens[t + 4], &d->zone_minutes);
  return true;
}

// ---------------------------------------------------------------- single-byte page
// The characters that the library's single-byte page gives bytes 0x80 to
// 0x9F (undefined bytes map to the control character of the same value).
constexpr std::array<char16_t, 32> kHighControls = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

// The byte of a non-ASCII character in the single-byte page, or -1. A
// character from U+0080 to U+00FF is its own byte: text declared as
// ISO-8859-1 reads bytes 0x80 to 0x9F as those control characters.
int SingleByteOf(char16_t c) {
  if (c >= 0x80 && c <= 0xFF) return c;
  for (size_t i = 0; i < kHighControls.size(); ++i) {
    if (kHighControls[i] == c) return static_cast<int>(0x80 + i);
  }
  return -1;
}

// Whether the text before a colon can name a group: a phrase, so no "@"
// (an obsolete route "@a:b@c") and no encoded word left open ("=?utf-8?q?
// at 10:08" is text that happens to hold a colon).
bool IsGroupName(std::string_view text) {
  if (text.find('@') != std::string_view::npos) return false;
  const size_t open = text.rfind("=?");
  return open == std::string_view::npos || text.find("?=", open + 2) != std::string_view::npos;
}

}  // namespace

std::string UnfoldValue(std::string_view raw) {
  std::string out;
  out.reserve(raw.size());
  size_t i = 0;
  while (i < raw.size()) {
    if (raw[i] == '\r' || raw[i] == '\n') {
      while (i < raw.size() && IsBlank(raw[i])) ++i;
      out.push_back(' ');
      continue;
    }
    out.push_back(raw[i++]);
  }
  return std::string(Trim(out));
}

std::string ShortDate(std::string_view raw) {
  const std::string text = UnfoldValue(raw);
  DateFields d;
  if (!ParseDate(text, &d)) return text;
  char out[32];
  std::snprintf(out, sizeof out, "%04d-%02d-%02d %02d:%02d", d.year, d.month, d.day, d.hours, d.minutes);
  return out;
}

std::string IsoDate(std::string_view raw) {
  const std::string text = UnfoldValue(raw);
  DateFields d;
  if (!ParseDate(text, &d)) return text;
  char out[40];
  int n = std::snprintf(out, sizeof out, "%04d-%02d-%02dT%02d:%02d:%02d", d.year, d.month, d.day, d.hours,
                        d.minutes, d.seconds);
  if (d.has_zone) {
    const int zone = d.zone_minutes < 0 ? -d.zone_minutes : d.zone_minutes;
    std::snprintf(out + n, sizeof out - static_cast<size_t>(n), "%c%02d:%02d", d.zone_minutes < 0 ? '-' : '+',
                  zone / 60, zone % 60);
  }
  return out;
}

std::string HeaderDate(int64_t seconds) {
  int64_t days = seconds / 86400;
  int64_t rest = seconds % 86400;
  if (rest < 0) rest += 86400, --days;
  const size_t weekday = static_cast<size_t>(((days % 7) + 7) % 7);  // 1970-01-01 was a Thursday
  // Civil date from a day count.
  const int64_t z = days + 719468;
  const int64_t era = (z >= 0 ? z : z - 146096) / 146097;
  const int64_t doe = z - era * 146097;
  const int64_t yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const int64_t doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const int64_t mp = (5 * doy + 2) / 153;
  const int64_t day = doy - (153 * mp + 2) / 5 + 1;
  const int64_t month = mp < 10 ? mp + 3 : mp - 9;
  const int64_t year = yoe + era * 400 + (month <= 2 ? 1 : 0);
  char out[48];
  std::snprintf(out, sizeof out, "%s, %02d %s %04d %02d:%02d:%02d +0000", kWeekdays[weekday],
                static_cast<int>(day), kMonths[static_cast<size_t>(month - 1)], static_cast<int>(year),
                static_cast<int>(rest / 3600), static_cast<int>(rest / 60 % 60), static_cast<int>(rest % 60));
  return out;
}

Address SplitAddress(std::string_view text) {
  text = Trim(text);
  Address result;
  const size_t open = text.rfind('<');
  if (open == std::string_view::npos || text.empty() || text.back() != '>') {
    result.address = std::string(text);
    return result;
  }
  result.address = std::string(Trim(text.substr(open + 1, text.size() - open - 2)));
  std::string_view name = Trim(text.substr(0, open));
  if (name.size() >= 2 && name.front() == '"' && name.back() == '"') {
    name = name.substr(1, name.size() - 2);
    for (size_t i = 0; i < name.size(); ++i) {
      if (name[i] == '\\' && i + 1 < name.size()) ++i;
      result.name.push_back(name[i]);
    }
    return result;
  }
  result.name = std::string(name);
  return result;
}

std::vector<AddressPieces> SplitAddressList(std::string_view value) {
  std::vector<AddressPieces> entries;
  bool in_group = false;
  size_t start = 0;
  auto take = [&](size_t end) {
    const std::string_view piece = Trim(value.substr(start, end - start));
    start = end + 1;
    if (piece.empty()) return;
    if (!in_group) entries.emplace_back();
    entries.back().members.emplace_back(piece);
  };
  int comments = 0;
  bool quoted = false, angle = false;
  for (size_t i = 0; i < value.size(); ++i) {
    const char c = value[i];
    if (c == '\\' && (quoted || comments > 0)) {
      ++i;
    } else if (quoted) {
      quoted = c != '"';
    } else if (comments > 0) {
      comments += c == '(' ? 1 : c == ')' ? -1 : 0;
    } else if (angle) {
      angle = c != '>';
    } else if (c == '"') {
      quoted = true;
    } else if (c == '(') {
      comments = 1;
    } else if (c == '<') {
      angle = true;
    } else if (c == ':' && !in_group && IsGroupName(value.substr(start, i - start))) {
      AddressPieces group;
      group.group = true;
      group.group_name = std::string(Trim(value.substr(start, i - start)));
      entries.push_back(std::move(group));
      in_group = true;
      start = i + 1;
    } else if (c == ',') {
      take(i);
    } else if (c == ';') {
      take(i);
      in_group = false;
    }
  }
  if (start <= value.size()) take(value.size());
  return entries;
}

U16String RepairRawUtf8(U16View text) {
  U16String out;
  out.reserve(text.size());
  size_t i = 0;
  while (i < text.size()) {
    if (SingleByteOf(text[i]) < 0) {
      out.push_back(text[i++]);
      continue;
    }
    std::string bytes;
    const size_t start = i;
    for (int b; i < text.size() && (b = SingleByteOf(text[i])) >= 0; ++i)
      bytes.push_back(static_cast<char>(b));
    if (IsValidUtf8(bytes)) {
      out += Utf8ToUtf16(bytes);
    } else {
      out.append(text.substr(start, i - start));
    }
  }
  return out;
}

std::string NotAMessageReason(std::string_view bytes) {
  if (bytes.empty()) return "is empty";
  const size_t line_end = bytes.find('\n');
  const std::string_view first = bytes.substr(0, line_end);
  size_t i = 0;
  while (i < first.size() && first[i] > ' ' && first[i] < 0x7F && first[i] != ':') ++i;
  const size_t name_length = i;
  while (i < first.size() && (first[i] == ' ' || first[i] == '\t')) ++i;
  if (name_length == 0 || i >= first.size() || first[i] != ':') return "does not begin with a header field";
  size_t header_end = bytes.find("\n\n");
  const size_t crlf_end = bytes.find("\n\r\n");
  if (crlf_end < header_end) header_end = crlf_end;
  if (header_end == std::string_view::npos) header_end = bytes.size();
  if (std::memchr(bytes.data(), '\0', header_end) != nullptr) return "holds a zero byte in its header";
  return std::string();
}

size_t LeadingBlankBytes(std::string_view bytes) {
  size_t skipped = 0;
  for (;;) {
    size_t i = skipped;
    while (i < bytes.size() && (bytes[i] == ' ' || bytes[i] == '\t')) ++i;
    if (i < bytes.size() && bytes[i] == '\r' && i + 1 < bytes.size() && bytes[i + 1] == '\n') ++i;
    if (i < bytes.size() && bytes[i] == '\n') {
      skipped = i + 1;
      continue;
    }
    // A first line with text: its indentation goes only when the rest
    // reads as a header field.
    if (i > skipped && i < bytes.size() &&
        NotAMessageReason(bytes.substr(i, bytes.find('\n', i) - i)).empty()) {
      return i;
    }
    return skipped;
  }
}

std::string GroupedNumber(uint64_t value) {
  std::string digits = std::to_string(value);
  for (size_t i = digits.size(); i > 3; i -= 3) digits.insert(i - 3, 1, ',');
  return digits;
}

}  // namespace pvtool
