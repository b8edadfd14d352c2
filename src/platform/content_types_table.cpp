// The mime.types parser: pure logic, the same on every platform.
#include "src/platform/content_types_table.h"

#include <cstdio>

namespace pv {
namespace {

// Where a content type lists several extensions, the one Windows users
// know (and the registry answers) rather than the file's first.
struct Preference {
  std::string_view type;
  std::string_view extension;
};
constexpr Preference kPreferredExtensions[] = {
    {"application/msword", "doc"},
    {"application/pdf", "pdf"},
    {"application/postscript", "ps"},
    {"application/vnd.ms-excel", "xls"},
    {"application/vnd.ms-powerpoint", "ppt"},
    {"application/xml", "xml"},
    {"application/zip", "zip"},
    {"audio/mpeg", "mp3"},
    {"image/gif", "gif"},
    {"image/jpeg", "jpg"},
    {"image/png", "png"},
    {"image/tiff", "tif"},
    {"message/rfc822", "eml"},
    {"text/html", "htm"},
    {"text/javascript", "js"},
    {"text/plain", "txt"},
    {"text/xml", "xml"},
    {"video/quicktime", "mov"},
};

std::string_view PreferredExtension(std::string_view lowerType) {
  for (const Preference& p : kPreferredExtensions) {
    if (p.type == lowerType) return p.extension;
  }
  return std::string_view();
}

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f'; }

// Words are printable ASCII; anything else makes a word unusable, so that
// every answer is plain text whatever bytes the file holds.
bool IsPrintableAscii(std::string_view word) {
  for (char c : word) {
    auto u = static_cast<unsigned char>(c);
    if (u <= 0x20 || u >= 0x7F) return false;
  }
  return true;
}

// The blank-separated words of one line, up to a word that starts with "#".
class Words {
 public:
  explicit Words(std::string_view line) : rest_(line) {}
  bool Next(std::string_view* word) {
    size_t start = 0;
    while (start < rest_.size() && IsBlank(rest_[start])) ++start;
    if (start == rest_.size() || rest_[start] == '#') return false;
    size_t end = start;
    while (end < rest_.size() && !IsBlank(rest_[end])) ++end;
    *word = rest_.substr(start, end - start);
    rest_.remove_prefix(end);
    return true;
  }

 private:
  std::string_view rest_;
};

std::string LowerAscii(std::string_view s) {
  std::string lower(s);
  for (char& c : lower) c = ToLowerAscii(c);
  return lower;
}

WStringView UpToNul(WStringView s) {
  size_t end = s.find(OLECHAR(0));
  return end == WStringView::npos ? s : s.substr(0, end);
}

// The lower-case key for wide text; false when it holds a character no key
// can hold.
bool KeyOf(WStringView text, std::string* key) {
  key->clear();
  key->reserve(text.size());
  for (OLECHAR c : text) {
    if (c <= 0x20 || c >= 0x7F) return false;
    key->push_back(ToLowerAscii(static_cast<char>(c)));
  }
  return !key->empty();
}

bool ReadWholeFile(const char* path, std::string* text) {
  std::FILE* file = std::fopen(path, "rb");
  if (file == nullptr) return false;
  char buffer[16384];
  bool ok = true;
  size_t n;
  while ((n = std::fread(buffer, 1, sizeof buffer, file)) > 0) {
    if (text->size() + n > ContentTypeTable::kMaxFileSize) {
      ok = false;
      break;
    }
    text->append(buffer, n);
  }
  if (std::ferror(file)) ok = false;  // a directory, for one
  std::fclose(file);
  return ok;
}

}  // namespace

ContentTypeTable ContentTypeTable::Parse(std::string_view text) {
  ContentTypeTable table;
  while (!text.empty()) {
    size_t end = text.find('\n');
    table.AddLine(text.substr(0, end));
    if (end == std::string_view::npos) break;
    text.remove_prefix(end + 1);
  }
  return table;
}

ContentTypeTable ContentTypeTable::Load(const char* path) {
  std::string text;
  if (path == nullptr || !ReadWholeFile(path, &text)) return ContentTypeTable();
  return Parse(text);
}

void ContentTypeTable::AddLine(std::string_view line) {
  Words words(line);
  std::string_view type;
  if (!words.Next(&type) || !IsPrintableAscii(type) || type.find('/') == std::string_view::npos) return;
  std::string typeKey = LowerAscii(type);
  std::string_view preferred = PreferredExtension(typeKey);
  TypeEntry* entry = nullptr;
  std::string_view extension;
  while (words.Next(&extension)) {
    if (!IsPrintableAscii(extension)) continue;
    typeByExtension_.try_emplace(LowerAscii(extension), type);
    if (entry == nullptr) entry = &extensionByType_[typeKey];
    bool isPreferred = !preferred.empty() && EqualsIgnoreCaseAscii(extension, preferred);
    if (entry->extension.empty() || (isPreferred && !entry->preferred)) {
      entry->extension.assign(extension);
      entry->preferred = isPreferred;
    }
  }
}

bool ContentTypeTable::ContentTypeOf(WStringView extension, WString* contentType) const {
  extension = UpToNul(extension);
  if (extension.size() < 2 || extension[0] != u'.') return false;
  std::string key;
  if (!KeyOf(extension.substr(1), &key)) return false;
  auto it = typeByExtension_.find(key);
  if (it == typeByExtension_.end()) return false;
  *contentType = WidenAscii(it->second);
  return true;
}

bool ContentTypeTable::ExtensionOf(WStringView contentType, WString* extension) const {
  std::string key;
  if (!KeyOf(UpToNul(contentType), &key)) return false;
  auto it = extensionByType_.find(key);
  if (it == extensionByType_.end()) return false;
  *extension = WidenAscii("." + it->second.extension);
  return true;
}

}  // namespace pv
