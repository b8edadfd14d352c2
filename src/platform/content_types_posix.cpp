// The content-type database off Windows: a mime.types file, read once.
#include <cstdlib>

#include "src/platform/content_types.h"
#include "src/platform/content_types_table.h"

namespace pv {
namespace {

constexpr char kSystemMimeTypes[] = "/etc/mime.types";

const char* MimeTypesPath() {
  const char* path = std::getenv("PARCELVANE_MIME_TYPES");
  return (path != nullptr && *path != '\0') ? path : kSystemMimeTypes;
}

const ContentTypeTable& SystemTable() {
  static const ContentTypeTable table = ContentTypeTable::Load(MimeTypesPath());
  return table;
}

}  // namespace

bool ContentTypeOfExtension(WStringView extension, WString* contentType) {
  return SystemTable().ContentTypeOf(extension, contentType);
}

bool ExtensionOfContentType(WStringView contentType, WString* extension) {
  return SystemTable().ExtensionOf(contentType, extension);
}

}  // namespace pv
