// The system's content-type database: the content type registered for a
// file extension, and the extension registered for a content type.
//
// On Windows these are the registry's answers under HKEY_CLASSES_ROOT (the
// value "Content Type" of the extension's key; the value "Extension" of
// "MIME\Database\Content Type\<type>"). Elsewhere they come from a
// mime.types file (ContentTypeTable): the path in the environment variable
// PARCELVANE_MIME_TYPES when it is set and not empty, otherwise
// /etc/mime.types, read once on first use; with no readable file every
// lookup answers nothing.
#ifndef PARCELVANE_SRC_PLATFORM_CONTENT_TYPES_H
#define PARCELVANE_SRC_PLATFORM_CONTENT_TYPES_H

#include "src/platform/strings.h"

namespace pv {

// The content type registered for `extension`, given with its leading "."
// (".pdf") and matched without regard to case. False, leaving
// `contentType` alone, when none is registered.
bool ContentTypeOfExtension(WStringView extension, WString* contentType);

// The extension, with its leading ".", registered for `contentType`
// (matched without regard to case): ".jpg" for "image/jpeg". False, leaving
// `extension` alone, when none is registered.
bool ExtensionOfContentType(WStringView contentType, WString* extension);

}  // namespace pv

#endif  // PARCELVANE_SRC_PLATFORM_CONTENT_TYPES_H
