#include "tools/safe_name.h"

#include <array>
#include <cctype>

#include "tools/utf.h"

namespace pvtool {
namespace {

bool IsForbiddenAscii(char32_t c) {
  if (c < 0x20 || c == 0x7F) return true;
  switch (c) {
    case '/':
    case '\\':
    case '<':
    case '>':
    case ':':
    case '"':
    case '|':
    case '?':
    case '*':
      return true;
    default:
      return false;
  }
}

// C1 controls, and the invisible marks that reorder or hide text
// ("report\u202Efdp.exe" shows as "reportexe.pdf").
bool IsForbiddenOther(char32_t c) {
  if (c >= 0x80 && c <= 0x9F) return true;
  if (c == 0x200E || c == 0x200F || c == 0x061C || c == 0xFEFF) return true;
  if (c >= 0x202A && c <= 0x202E) return true;
  if (c >= 0x2066 && c <= 0x2069) return true;
  return false;
}

// Replaces each forbidden character of `name` by "_", working on code
// points so that no multi-byte character is split.
std::string ReplaceForbidden(std::string_view name) {
  const U16String wide = Utf8ToUtf16(name);
  U16String clean;
  clean.reserve(wide.size());
  for (size_t i = 0; i < wide.size(); ++i) {
    char32_t c = wide[i];
    if (c >= 0xD800 && c <= 0xDBFF && i + 1 < wide.size()) {
      clean.push_back(wide[i]);
      clean.push_back(wide[++i]);
      continue;
    }
    clean.push_back(IsForbiddenAscii(c) || IsForbiddenOther(c) ? u'_' : wide[i]);
  }
  return Utf16ToUtf8(clean);
}

bool IsBlank(char c) { return c == ' ' || c == '\t'; }

std::string TrimEnds(std::string name) {
  size_t start = 0;
  while (start < name.size() && IsBlank(name[start])) ++start;
  name.erase(0, start);
  while (!name.empty() && (IsBlank(name.back()) || name.back() == '.')) name.pop_back();
  for (size_t i = 0; i < name.size() && name[i] == '.'; ++i) name[i] = '_';
  return name;
}

bool EqualsIgnoringCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i) {
    if (std::toupper(static_cast<unsigned char>(a[i])) != std::toupper(static_cast<unsigned char>(b[i]))) {
      return false;
    }
  }
  return true;
}

bool IsDeviceName(std::string_view name) {
  // Windows ignores everything from the first dot, and trailing blanks.
  std::string_view base = name.substr(0, name.find('.'));
  while (!base.empty() && IsBlank(base.back())) base.remove_suffix(1);
  static constexpr std::array<std::string_view, 6> kPlain = {"CON", "PRN", "AUX", "NUL", "CONIN$", "CONOUT$"};
  for (std::string_view device : kPlain) {
    if (EqualsIgnoringCase(base, device)) return true;
  }
  if (base.size() == 4 &&
      (EqualsIgnoringCase(base.substr(0, 3), "COM") || EqualsIgnoringCase(base.substr(0, 3), "LPT"))) {
    return std::isdigit(static_cast<unsigned char>(base[3])) != 0;
  }
  return false;
}

// Where the extension of `name` starts (at its dot), or npos. A dot that
// opens the name does not start an extension.
size_t ExtensionStart(std::string_view name) {
  const size_t dot = name.rfind('.');
  if (dot == std::string_view::npos || dot == 0) return std::string_view::npos;
  return dot;
}

// Cuts to the limit, then drops the blanks and dots the cut left at the end.
std::string CutToLimit(const std::string& name) {
  if (name.size() <= kMaxSafeNameBytes) return name;
  constexpr size_t kMaxKeptExtension = 16;
  const size_t dot = ExtensionStart(name);
  std::string_view extension;
  if (dot != std::string_view::npos && name.size() - dot <= kMaxKeptExtension) {
    extension = std::string_view(name).substr(dot);
  }
  const std::string_view stem = Utf8Prefix(std::string_view(name).substr(0, name.size() - extension.size()),
                                           kMaxSafeNameBytes - extension.size());
  return TrimEnds(std::string(stem) + std::string(extension));
}

}  // namespace

std::string SafeFileName(std::string_view name) {
  std::string safe = TrimEnds(ReplaceForbidden(name));
  safe = CutToLimit(safe);
  if (safe.empty()) return "attachment";
  if (!IsDeviceName(safe)) return safe;
  // The prefix can push a name over the limit; cutting it again keeps the
  // "_" in front, so the result is no device name and stays the same when
  // made safe a second time.
  safe.insert(0, "_");
  return CutToLimit(safe);
}

std::string NumberedName(std::string_view name, unsigned number) {
  const size_t dot = ExtensionStart(name);
  const std::string suffix = "-" + std::to_string(number);
  if (dot == std::string_view::npos) return std::string(name) + suffix;
  return std::string(name.substr(0, dot)) + suffix + std::string(name.substr(dot));
}

std::string RunNames::Next(const std::string& name, unsigned* number) {
  unsigned& next = next_number_[name];
  for (;;) {
    const unsigned current = next++;
    std::string candidate = current == 0 ? name : NumberedName(name, current);
    if (used_.count(candidate) != 0) continue;
    if (number != nullptr) *number = current;
    return candidate;
  }
}

}  // namespace pvtool
