#include "tools/utf.h"

#include <cstdint>

namespace pvtool {
namespace {

constexpr char32_t kReplacement = 0xFFFD;

// Decodes the sequence at the start of `s`. Returns the number of bytes it
// takes, or 0 when the first byte does not begin a valid sequence.
size_t DecodeOne(std::string_view s, char32_t* out) {
  const auto b0 = static_cast<unsigned char>(s[0]);
  if (b0 < 0x80) {
    *out = b0;
    return 1;
  }
  size_t length;
  char32_t cp;
  char32_t min;
  if (b0 >= 0xC2 && b0 <= 0xDF) {
    length = 2, cp = b0 & 0x1F, min = 0x80;
  } else if (b0 >= 0xE0 && b0 <= 0xEF) {
    length = 3, cp = b0 & 0x0F, min = 0x800;
  } else if (b0 >= 0xF0 && b0 <= 0xF4) {
    length = 4, cp = b0 & 0x07, min = 0x10000;
  } else {
    return 0;
  }
  if (s.size() < length) return 0;
  for (size_t i = 1; i < length; ++i) {
    const auto b = static_cast<unsigned char>(s[i]);
    if ((b & 0xC0) != 0x80) return 0;
    cp = (cp << 6) | (b & 0x3F);
  }
  if (cp < min || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return 0;
  *out = cp;
  return length;
}

void AppendUtf16(char32_t cp, U16String* out) {
  if (cp < 0x10000) {
    out->push_back(static_cast<char16_t>(cp));
    return;
  }
  cp -= 0x10000;
  out->push_back(static_cast<char16_t>(0xD800 + (cp >> 10)));
  out->push_back(static_cast<char16_t>(0xDC00 + (cp & 0x3FF)));
}

void AppendUtf8(char32_t cp, std::string* out) {
  if (cp < 0x80) {
    out->push_back(static_cast<char>(cp));
  } else if (cp < 0x800) {
    out->push_back(static_cast<char>(0xC0 | (cp >> 6)));
    out->push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else if (cp < 0x10000) {
    out->push_back(static_cast<char>(0xE0 | (cp >> 12)));
    out->push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else {
    out->push_back(static_cast<char>(0xF0 | (cp >> 18)));
    out->push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out->push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  }
}

bool IsHighSurrogate(char16_t u) { return u >= 0xD800 && u <= 0xDBFF; }
bool IsLowSurrogate(char16_t u) { return u >= 0xDC00 && u <= 0xDFFF; }

}  // namespace

U16String Utf8ToUtf16(std::string_view utf8) {
  U16String out;
  out.reserve(utf8.size());
  size_t i = 0;
  while (i < utf8.size()) {
    // Runs of ASCII are the common case: copy them without decoding.
    if (static_cast<unsigned char>(utf8[i]) < 0x80) {
      out.push_back(static_cast<char16_t>(utf8[i]));
      ++i;
      continue;
    }
    char32_t cp = 0;
    const size_t taken = DecodeOne(utf8.substr(i), &cp);
    if (taken == 0) {
      out.push_back(static_cast<char16_t>(kReplacement));
      ++i;
      continue;
    }
    AppendUtf16(cp, &out);
    i += taken;
  }
  return out;
}

std::string Utf16ToUtf8(U16View utf16) {
  std::string out;
  out.reserve(utf16.size());
  for (size_t i = 0; i < utf16.size(); ++i) {
    const char16_t u = utf16[i];
    if (IsHighSurrogate(u) && i + 1 < utf16.size() && IsLowSurrogate(utf16[i + 1])) {
      const char32_t cp = 0x10000 + ((static_cast<char32_t>(u) - 0xD800) << 10) + (utf16[i + 1] - 0xDC00);
      AppendUtf8(cp, &out);
      ++i;
      continue;
    }
    if (IsHighSurrogate(u) || IsLowSurrogate(u)) {
      AppendUtf8(kReplacement, &out);
      continue;
    }
    AppendUtf8(u, &out);
  }
  return out;
}

bool IsValidUtf8(std::string_view bytes) {
  size_t i = 0;
  while (i < bytes.size()) {
    char32_t cp = 0;
    const size_t taken = DecodeOne(bytes.substr(i), &cp);
    if (taken == 0) return false;
    i += taken;
  }
  return true;
}

size_t CodePointCount(std::string_view utf8) {
  size_t count = 0;
  size_t i = 0;
  while (i < utf8.size()) {
    char32_t cp = 0;
    const size_t taken = DecodeOne(utf8.substr(i), &cp);
    i += taken == 0 ? 1 : taken;
    ++count;
  }
  return count;
}

std::string_view Utf8Prefix(std::string_view utf8, size_t max_bytes) {
  if (utf8.size() <= max_bytes) return utf8;
  size_t end = max_bytes;
  // Step back over continuation bytes to the start of the cut sequence.
  while (end > 0 && (static_cast<unsigned char>(utf8[end]) & 0xC0) == 0x80) --end;
  return utf8.substr(0, end);
}

std::string_view Utf8FirstCodePoints(std::string_view utf8, size_t count) {
  size_t i = 0;
  while (i < utf8.size() && count > 0) {
    char32_t cp = 0;
    const size_t taken = DecodeOne(utf8.substr(i), &cp);
    i += taken == 0 ? 1 : taken;
    --count;
  }
  return utf8.substr(0, i);
}

std::string FitColumn(std::string_view utf8, size_t width) {
  const size_t count = CodePointCount(utf8);
  if (count <= width) return PadRight(utf8, width);
  if (width == 0) return std::string();
  return std::string(Utf8FirstCodePoints(utf8, width - 1)) + "\xE2\x80\xA6";
}

std::string PadRight(std::string_view utf8, size_t width) {
  std::string out(utf8);
  const size_t count = CodePointCount(utf8);
  if (count < width) out.append(width - count, ' ');
  return out;
}

std::string TerminalSafe(std::string_view utf8) {
  const U16String wide = Utf8ToUtf16(utf8);
  U16String safe;
  safe.reserve(wide.size());
  for (char16_t c : wide) {
    if (c == u'\t') {
      safe.push_back(u' ');
    } else if (c < 0x20 || c == 0x7F || (c >= 0x80 && c <= 0x9F)) {
      safe.push_back(u'?');
    } else {
      safe.push_back(c);
    }
  }
  return Utf16ToUtf8(safe);
}

}  // namespace pvtool
