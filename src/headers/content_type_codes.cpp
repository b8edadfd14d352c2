#include "src/headers/content_type_codes.h"

#include "src/headers/mime_char_class.h"
#include "src/platform/strings.h"

namespace pv {
namespace {

constexpr std::string_view kTypeNames[] = {"",        "application", "audio", "image",
                                           "message", "multipart",   "text",  "video"};

constexpr std::string_view kSubtypeNames[] = {
    "empty",    "alternative",  "basic",    "mac-binhex40", "digest", "enriched",     "external-body",
    "gif",      "html",         "jpeg",     "mixed",        "mpeg",   "ms-rtf",       "ms-tnef",
    "msword",   "octet-stream", "parallel", "partial",      "plain",  "postscript",   "related",
    "richtext", "rfc822",       "signed",   "x-vcard",      "wav",    "x-pkcs7-mime", "x-pkcs7-signature"};

struct Candidate {
  std::string_view name;
  LONG code;
};

// The names tried under each first letter, in order. "mac-binhex40" sits
// under B and "x-vcard" under V, so neither is ever recognised by name.
const Candidate* SubtypeCandidates(char upper, size_t* count) {
  static const Candidate a[] = {{"alternative", 1}};
  static const Candidate b[] = {{"basic", 2}, {"mac-binhex40", 3}};
  static const Candidate d[] = {{"digest", 4}};
  static const Candidate e[] = {{"enriched", 5}, {"external-body", 6}};
  static const Candidate g[] = {{"gif", 7}};
  static const Candidate h[] = {{"html", 8}};
  static const Candidate j[] = {{"jpeg", 9}};
  static const Candidate m[] = {{"mixed", 10}, {"mpeg", 11}, {"ms-rtf", 12}, {"ms-tnef", 13}, {"msword", 14}};
  static const Candidate o[] = {{"octet-stream", 15}};
  static const Candidate p[] = {{"parallel", 16}, {"partial", 17}, {"plain", 18}, {"postscript", 19}};
  static const Candidate r[] = {{"related", 20}, {"richtext", 21}, {"rfc822", 22}};
  static const Candidate s[] = {{"signed", 23}};
  static const Candidate u[] = {{"unknown", -1}};
  static const Candidate v[] = {{"x-vcard", 24}};
  static const Candidate w[] = {{"wav", 25}};
  static const Candidate x[] = {{"x-pkcs7-mime", 26}, {"x-pkcs7-signature", 27}};
#define PV_CASE(letter, list)              \
  case letter:                             \
    *count = sizeof list / sizeof list[0]; \
    return list;
  switch (upper) {
    PV_CASE('A', a)
    PV_CASE('B', b)
    PV_CASE('D', d)
    PV_CASE('E', e)
    PV_CASE('G', g)
    PV_CASE('H', h)
    PV_CASE('J', j)
    PV_CASE('M', m)
    PV_CASE('O', o)
    PV_CASE('P', p)
    PV_CASE('R', r)
    PV_CASE('S', s)
    PV_CASE('U', u)
    PV_CASE('V', v)
    PV_CASE('W', w)
    PV_CASE('X', x)
    default:
      *count = 0;
      return nullptr;
  }
#undef PV_CASE
}

// Collects a token into `out` (appending) and returns what follows it.
std::string_view TakeToken(std::string_view text, std::string* out) {
  size_t end = 0;
  while (end < text.size() && !EndsContentToken(static_cast<unsigned char>(text[end]))) ++end;
  out->append(text.substr(0, end));
  return text.substr(end);
}

std::string_view SkipBlanks(std::string_view text) {
  size_t i = 0;
  while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) ++i;
  return text.substr(i);
}

}  // namespace

bool EndsContentToken(unsigned char c) {
  return c >= 0x80 || HasCharClass(c, kCharWhiteSpace | kCharAddressSpecial | kCharMimeSpecial);
}

LONG ClassifyTypeName(std::string_view name, LONG current) {
  if (name.empty()) return kTypeUnknown;
  auto is = [&](std::string_view candidate) { return EqualsIgnoreCaseAscii(name, candidate); };
  switch (ToUpperAscii(name[0])) {
    case 'A':
      if (is("audio")) return kTypeAudio;
      if (is("application")) return kTypeApplication;
      return current;
    case 'I':
      return is("image") ? kTypeImage : current;
    case 'M':
      if (is("message")) return kTypeMessage;
      if (is("multipart")) return kTypeMultipart;
      return current;
    case 'T':
      return is("text") ? kTypeText : current;
    case 'V':
      return is("video") ? kTypeVideo : current;
    case 'U':
      return is("unknown") ? kTypeUnknown : current;
    default:
      return kTypeUnknown;
  }
}

LONG ClassifySubtypeName(std::string_view name, LONG current) {
  if (name.empty()) return current;
  size_t count = 0;
  const Candidate* candidates = SubtypeCandidates(ToUpperAscii(name[0]), &count);
  for (size_t i = 0; i < count; ++i) {
    if (EqualsIgnoreCaseAscii(name, candidates[i].name)) return candidates[i].code;
  }
  return current;
}

std::string_view TypeNameForCode(LONG code) {
  if (code < 0 || code > kTypeVideo) return "unknown";
  return kTypeNames[code];
}

std::string_view SubtypeNameForCode(LONG code) {
  if (code < 0 || code > 27) return "unknown";
  return kSubtypeNames[code];
}

void ContentState::ResetContentType() {
  typeCode = kTypeUnknown;
  subtypeCode = kSubtypeUnknown;
  typeName.clear();
  subtypeName.clear();
}

void ContentState::ParseContentTypeText(std::string_view text) {
  std::string_view rest = TakeToken(SkipBlanks(text), &typeName);
  if (rest.empty() || rest[0] != '/') {
    SetTypeName("unknown");
    SetSubtypeName("unknown");
    return;
  }
  TakeToken(SkipBlanks(rest.substr(1)), &subtypeName);
  typeCode = ClassifyTypeName(typeName, typeCode);
  if (subtypeName.empty()) subtypeName = "unknown";
  subtypeCode = ClassifySubtypeName(subtypeName, subtypeCode);
}

void ContentState::SetTypeCode(LONG code) {
  typeCode = code;
  typeName = std::string(TypeNameForCode(code));
}

void ContentState::SetSubtypeCode(LONG code) {
  subtypeCode = code;
  subtypeName = std::string(SubtypeNameForCode(code));
}

void ContentState::SetTypeName(std::string_view name) {
  typeName = std::string(name);
  typeCode = ClassifyTypeName(typeName, typeCode);
}

void ContentState::SetSubtypeName(std::string_view name) {
  subtypeName = std::string(name);
  subtypeCode = ClassifySubtypeName(subtypeName, subtypeCode);
}

void ContentState::ParseDispositionText(std::string_view text) {
  dispositionType.clear();
  TakeToken(SkipBlanks(text), &dispositionType);
}

std::string MakeBoundary(LONG n, int64_t seconds, int32_t firstDraw, int32_t secondDraw) {
  static const char kDigits[] = "0123456789ABCDEF";
  // Digits of a negative n are taken by magnitude, so the index stays in the table.
  auto digit = [](LONG value) { return kDigits[value < 0 ? -value : value]; };
  std::string b(kGeneratedBoundaryPrefix);
  b.push_back(digit((n / 10) % 10));
  b.push_back(digit((n / 10) % 10));
  b.push_back(digit(n % 10));
  b.push_back('_');
  uint64_t t = static_cast<uint64_t>(seconds);
  uint64_t decimal = seconds < 0 ? static_cast<uint64_t>(-(seconds + 1)) + 1 : t;
  for (int i = 0; i < 4; ++i, decimal /= 10) b.push_back(kDigits[decimal % 10]);
  b.push_back('_');
  for (int i = 0; i < 9; ++i, t >>= 4) b.push_back(kDigits[t & 15]);
  b.push_back('.');
  // The product is a 32-bit signed number widened with its sign.
  int32_t product =
      static_cast<int32_t>(static_cast<uint32_t>(firstDraw) * static_cast<uint32_t>(secondDraw));
  uint64_t r = static_cast<uint64_t>(static_cast<int64_t>(product));
  for (int i = 0; i < 9; ++i, r >>= 4) b.push_back(kDigits[r & 15]);
  return b;
}

}  // namespace pv
