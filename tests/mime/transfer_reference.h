// Plain, byte-at-a-time statements of the transfer codecs' rules, written
// for clarity rather than speed. The tests and the fuzz targets compare the
// library's fast codecs against them on many inputs.
#ifndef PARCELVANE_TESTS_MIME_TRANSFER_REFERENCE_H
#define PARCELVANE_TESTS_MIME_TRANSFER_REFERENCE_H

#include <cctype>
#include <cstdint>
#include <string>
#include <string_view>

namespace pv::reference {

inline int Base64Value(unsigned char c) {
  if (c >= 'A' && c <= 'Z') return c - 'A';
  if (c >= 'a' && c <= 'z') return c - 'a' + 26;
  if (c >= '0' && c <= '9') return c - '0' + 52;
  if (c == '+') return 62;
  if (c == '/') return 63;
  return -1;
}

inline std::string DecodeBase64(std::string_view in) {
  std::string out;
  size_t i = 0;
  while (i < in.size()) {
    if (in[i] == '\0') break;  // a NUL where a group starts
    uint32_t bits = 0;
    int taken = 0;
    while (i < in.size() && taken < 4) {
      int v = Base64Value(static_cast<unsigned char>(in[i++]));
      if (v < 0) continue;
      bits = bits * 64 + static_cast<uint32_t>(v);
      ++taken;
    }
    int total = 6 * taken;
    for (int b = 0; b < total / 8; ++b)
      out.push_back(static_cast<char>((bits >> (total - 8 * (b + 1))) & 0xFF));
  }
  return out;
}

inline int HexValue(unsigned char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

inline std::string DecodeQuotedPrintable(std::string_view in) {
  enum { kLiteral, kFirst, kSecond } state = kLiteral;
  std::string out;
  unsigned char c1 = 0;
  for (char ch : in) {
    auto c = static_cast<unsigned char>(ch);
    switch (state) {
      case kLiteral:
        if (c == '=') {
          state = kFirst;
        } else {
          out.push_back(ch);
        }
        break;
      case kFirst:
        if (c == '\n') {
          state = kLiteral;
        } else {
          c1 = c;
          state = kSecond;
        }
        break;
      case kSecond:
        if (HexValue(c1) >= 0 && HexValue(c) >= 0) {
          out.push_back(static_cast<char>(HexValue(c1) * 16 + HexValue(c)));
        } else if (!(c1 == '\r' && c == '\n')) {
          out.push_back('=');
          out.push_back(static_cast<char>(c1));
          out.push_back(ch);
        }
        state = kLiteral;
        break;
    }
  }
  return out;
}

inline bool StartsWithIgnoringCase(std::string_view s, size_t at, std::string_view word) {
  if (s.size() - at < word.size()) return false;
  for (size_t i = 0; i < word.size(); ++i) {
    if (std::tolower(static_cast<unsigned char>(s[at + i])) != word[i]) return false;
  }
  return true;
}

// False for a failed decode; the work buffer holds as many bytes as the
// input, and writing past it fails.
inline bool DecodeUuencode(std::string_view in, std::string* out) {
  out->clear();
  size_t i = 0;
  bool skipping = false;
  while (i < in.size()) {
    char c = in[i];
    if (c == '\r' || c == '\n') {
      skipping = false;
      ++i;
      continue;
    }
    if (skipping) {
      ++i;
      continue;
    }
    size_t left = in.size() - i;
    if (left >= 5 && StartsWithIgnoringCase(in, i, "begin")) {
      skipping = true;
      continue;
    }
    if (left >= 3 && StartsWithIgnoringCase(in, i, "end")) {
      skipping = true;
      continue;
    }
    int count = (static_cast<unsigned char>(c) - 32) & 63;
    ++i;
    int done = 0;
    while (done < count) {
      int v[4];
      for (int& value : v) {
        if (i >= in.size()) {
          value = 0;
          continue;
        }
        unsigned char g = static_cast<unsigned char>(in[i++]);
        if (g == '\r' || g == '\n') return false;
        value = (g - 32) & 63;
      }
      unsigned char bytes[3] = {
          static_cast<unsigned char>((v[0] << 2) | ((v[1] >> 4) & 3)),
          static_cast<unsigned char>(((v[1] & 15) << 4) | ((v[2] >> 2) & 15)),
          static_cast<unsigned char>(((v[2] << 6) | v[3]) & 0xFF),
      };
      for (int b = 0; b < 3 && done < count; ++b, ++done) {
        if (out->size() == in.size()) return false;  // the work buffer is full
        out->push_back(static_cast<char>(bytes[b]));
      }
    }
  }
  return true;
}

inline std::string EncodeBase64(std::string_view in) {
  static const char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  size_t groups = in.size() / 3;
  std::string out;
  size_t g = 0;
  for (size_t pass = 0; pass < groups * 4 / 76 + 1; ++pass) {
    for (int k = 0; k < 19 && g < groups; ++k, ++g) {
      uint32_t bits = (static_cast<unsigned char>(in[3 * g]) << 16) |
                      (static_cast<unsigned char>(in[3 * g + 1]) << 8) |
                      static_cast<unsigned char>(in[3 * g + 2]);
      for (int s = 18; s >= 0; s -= 6) out.push_back(kAlphabet[(bits >> s) & 63]);
    }
    out += "\r\n";
  }
  if (!out.empty()) out.resize(out.size() - 2);
  size_t rest = in.size() % 3;
  if (rest != 0) {
    uint32_t bits = static_cast<unsigned char>(in[3 * groups]) << 16;
    if (rest == 2) bits |= static_cast<unsigned char>(in[3 * groups + 1]) << 8;
    out.push_back(kAlphabet[(bits >> 18) & 63]);
    out.push_back(kAlphabet[(bits >> 12) & 63]);
    out.push_back(rest == 2 ? kAlphabet[(bits >> 6) & 63] : '=');
    out.push_back('=');
  }
  return out;
}

inline std::string EncodeQuotedPrintable(std::string_view in) {
  static const char kHex[] = "0123456789ABCDEF";
  std::string out;
  int column = 0;
  for (char ch : in) {
    auto c = static_cast<unsigned char>(ch);
    bool asItself = (c >= 33 && c <= 60) || (c >= 62 && c <= 126) || (c == '.' && column == 0) ||
                    ((c == ' ' || c == '\t') && column < 64);
    if (asItself) {
      out.push_back(ch);
      column += 1;
    } else {
      out.push_back('=');
      out.push_back(kHex[c >> 4]);
      out.push_back(kHex[c & 15]);
      column += 3;
    }
    if (column >= 65) {
      out += "=\r\n";
      column = 0;
    }
  }
  return out;
}

inline char UuChar(int v) { return static_cast<char>(v == 0 ? '`' : v + 32); }

inline std::string EncodeUuencode(std::string_view in, std::string_view name) {
  std::string out = "begin 644 " + std::string(name.substr(0, name.find('\0'))) + "\r\n";
  for (size_t start = 0; start < in.size(); start += 45) {
    size_t n = in.size() - start < 45 ? in.size() - start : 45;
    char count = UuChar(static_cast<int>(n));
    out.push_back(count);
    if (count == '.') out.push_back(count);
    for (size_t g = 0; g < n; g += 3) {
      unsigned char b[3];
      for (size_t k = 0; k < 3; ++k) {
        size_t at = start + g + k;
        b[k] = at < in.size() ? static_cast<unsigned char>(in[at]) : ' ';
      }
      out.push_back(UuChar(b[0] >> 2));
      out.push_back(UuChar(((b[0] & 3) << 4) | (b[1] >> 4)));
      out.push_back(UuChar(((b[1] & 15) << 2) | (b[2] >> 6)));
      out.push_back(UuChar(b[2] & 63));
    }
    out += "\r\n";
  }
  out += "`\r\nend\r\n";
  return out;
}

// Whether decoding the uuencoding of `body` gives `body` back. It does not
// when the last line has 14 bytes (its count character "." is written twice,
// so the decoder reads the second one as data), nor when a shorter last
// line's count character and first characters spell "begin" (a 34-byte
// line, count "B") or "end" (a 37-byte line, count "E"): the decoder skips
// such a line. Full 45-byte lines (count "M") always come back.
inline bool UuencodeRoundTripHolds(std::string_view body) {
  size_t last = body.size() % 45;
  if (last == 14) return false;
  if (last != 34 && last != 37) return true;
  std::string line = EncodeUuencode(body.substr(body.size() - last), "");
  size_t at = line.find("\r\n") + 2;
  return !StartsWithIgnoringCase(line, at, "begin") && !StartsWithIgnoringCase(line, at, "end");
}

}  // namespace pv::reference

#endif  // PARCELVANE_TESTS_MIME_TRANSFER_REFERENCE_H
