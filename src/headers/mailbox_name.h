// A mailbox's display name between its wire form and text, and the wire
// form of a whole mailbox. The single mailbox and the mailbox list both
// read and write names through these.
#ifndef PARCELVANE_SRC_HEADERS_MAILBOX_NAME_H
#define PARCELVANE_SRC_HEADERS_MAILBOX_NAME_H

#include <string>
#include <string_view>

#include "src/platform/strings.h"

namespace pv {

// Decodes a display name in wire form (encoded words, other bytes in the
// default page) under `*codePage` and `*encoding`, and leaves there the page
// and encoding of its last encoded word, so that the name is written back in
// the charset and encoding it came in. An empty name decodes to nothing and
// changes neither. S_OK, or the failure to make the charset object.
HRESULT DecodeMailboxName(std::string_view encoded, LONG* codePage, LONG* encoding, WString* name);

// Encodes a display name as for a From field, whatever field the mailbox is
// in. An empty name encodes to nothing.
HRESULT EncodeMailboxName(WStringView name, LONG codePage, LONG encoding, std::string* encoded);

// "\"name\" <address>", or the address alone when the encoded name is empty.
// The name is always quoted and nothing inside it is escaped.
void AppendMailboxWireForm(std::string_view encodedName, std::string_view address, std::string* out);

}  // namespace pv

#endif  // PARCELVANE_SRC_HEADERS_MAILBOX_NAME_H
