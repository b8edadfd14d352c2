// GUIDs as registry text: "{F43DBF87-A05E-4D95-88A1-354ADBAE7295}".
#ifndef PARCELVANE_SRC_COM_GUID_TEXT_H
#define PARCELVANE_SRC_COM_GUID_TEXT_H

#include <string>
#include <string_view>

#include "parcelvane/platform.h"

namespace pv {

// Upper-case hexadecimal in braces, as the platform writes class identifiers.
std::string GuidText(const GUID& guid);
// Reads that form back (either case); false when the text is not one.
bool ParseGuidText(std::string_view text, GUID* guid);

}  // namespace pv

#endif  // PARCELVANE_SRC_COM_GUID_TEXT_H
