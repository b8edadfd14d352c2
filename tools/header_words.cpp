#include "tools/header_words.h"

#include <algorithm>

#include "tools/utf.h"

namespace pvtool {
namespace {

constexpr std::string_view kWordStart = "=?utf-8?B?";
constexpr std::string_view kWordEnd = "?=";
constexpr size_t kLineWidth = 78;
// 45 bytes make 60 base64 characters: a word of 72, a folded line of 73.
constexpr size_t kMaxWordBytes = 45;

void AppendBase64(std::string_view bytes, std::string* out) {
  static constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  size_t i = 0;
  for (; i + 3 <= bytes.size(); i += 3) {
    const unsigned v = static_cast<unsigned char>(bytes[i]) << 16 |
                       static_cast<unsigned char>(bytes[i + 1]) << 8 |
                       static_cast<unsigned char>(bytes[i + 2]);
    out->push_back(kAlphabet[v >> 18]);
    out->push_back(kAlphabet[(v >> 12) & 63]);
    out->push_back(kAlphabet[(v >> 6) & 63]);
    out->push_back(kAlphabet[v & 63]);
  }
  if (i == bytes.size()) return;
  unsigned v = static_cast<unsigned char>(bytes[i]) << 16;
  if (i + 1 < bytes.size()) v |= static_cast<unsigned char>(bytes[i + 1]) << 8;
  out->push_back(kAlphabet[v >> 18]);
  out->push_back(kAlphabet[(v >> 12) & 63]);
  out->push_back(i + 1 < bytes.size() ? kAlphabet[(v >> 6) & 63] : '=');
  out->push_back('=');
}

// The whole characters at the start of `utf8` that fit `max_bytes`; at
// least one character, so that every word makes progress.
std::string_view NextChunk(std::string_view utf8, size_t max_bytes) {
  std::string_view chunk = Utf8Prefix(utf8, max_bytes);
  if (chunk.empty()) chunk = Utf8FirstCodePoints(utf8, 1);
  return chunk;
}

bool IsAttributeChar(unsigned char c) {
  if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9')) return true;
  return std::string_view("!#$&+-.^_`|~").find(static_cast<char>(c)) != std::string_view::npos;
}

}  // namespace

bool IsPlainHeaderText(std::string_view text, std::string_view forbidden, size_t max_bytes) {
  if (text.size() > max_bytes) return false;
  if (!text.empty() && (text.front() == ' ' || text.back() == ' ')) return false;
  if (text.find("=?") != std::string_view::npos || text.find("  ") != std::string_view::npos) return false;
  return std::all_of(text.begin(), text.end(), [&](char c) {
    return c >= 0x20 && c < 0x7F && forbidden.find(c) == std::string_view::npos;
  });
}

std::string EncodedWords(std::string_view utf8, size_t first_line_used) {
  const size_t overhead = kWordStart.size() + kWordEnd.size();
  // Base64 takes 3 bytes to 4 characters: what fits the rest of the line.
  const size_t room = first_line_used + overhead < kLineWidth ? kLineWidth - first_line_used - overhead : 0;
  size_t budget = std::min(kMaxWordBytes, room / 4 * 3);
  std::string out;
  out.reserve(utf8.size() * 2 + overhead);
  while (!utf8.empty()) {
    const std::string_view chunk = NextChunk(utf8, budget);
    if (!out.empty()) out += "\r\n ";
    out += kWordStart;
    AppendBase64(chunk, &out);
    out += kWordEnd;
    utf8.remove_prefix(chunk.size());
    budget = kMaxWordBytes;
  }
  return out;
}

std::string ExtendedParameterValue(std::string_view utf8) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  std::string out = "utf-8''";
  out.reserve(out.size() + utf8.size() * 3);
  for (const char c : utf8) {
    const auto byte = static_cast<unsigned char>(c);
    if (IsAttributeChar(byte)) {
      out.push_back(c);
    } else {
      out.push_back('%');
      out.push_back(kHex[byte >> 4]);
      out.push_back(kHex[byte & 15]);
    }
  }
  return out;
}

}  // namespace pvtool
