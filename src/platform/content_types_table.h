// A content-type database read from a mime.types file: each line names a
// content type followed by the extensions (without ".") that stand for it,
// separated by blanks; "#" starts a comment. The system's database off
// Windows (content_types.h), and usable on its own, for instance by tests.
#ifndef PARCELVANE_SRC_PLATFORM_CONTENT_TYPES_TABLE_H
#define PARCELVANE_SRC_PLATFORM_CONTENT_TYPES_TABLE_H

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>

#include "src/platform/strings.h"

namespace pv {

class ContentTypeTable {
 public:
  // Files larger than this are not databases; they are not read.
  static constexpr size_t kMaxFileSize = 16u << 20;

  // Parses mime.types text. Lines whose first word is not a content type
  // (has no "/") are skipped. When an extension is listed twice, its first
  // content type counts. A content type answers the extension Windows users
  // know when it lists it (".jpg" for image/jpeg, ".htm" for text/html),
  // otherwise the first one it lists.
  static ContentTypeTable Parse(std::string_view text);

  // Reads and parses the file at `path`; an empty table when the file is
  // absent, unreadable or larger than kMaxFileSize.
  static ContentTypeTable Load(const char* path);

  // The lookups of content_types.h, on this table.
  bool ContentTypeOf(WStringView extension, WString* contentType) const;
  bool ExtensionOf(WStringView contentType, WString* extension) const;

  size_t extension_count() const { return typeByExtension_.size(); }
  size_t type_count() const { return extensionByType_.size(); }

 private:
  struct TypeEntry {
    std::string extension;   // as listed, without "."
    bool preferred = false;  // the extension Windows users know
  };

  void AddLine(std::string_view line);

  // Keys are lower case; values are kept as the file spells them.
  std::unordered_map<std::string, std::string> typeByExtension_;
  std::unordered_map<std::string, TypeEntry> extensionByType_;
};

}  // namespace pv

#endif  // PARCELVANE_SRC_PLATFORM_CONTENT_TYPES_TABLE_H
