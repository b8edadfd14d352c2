// Splitting address text: one mailbox into its display name and address,
// and an address list into the pieces that hold one mailbox each.
#ifndef PARCELVANE_SRC_HEADERS_MAILBOX_TEXT_H
#define PARCELVANE_SRC_HEADERS_MAILBOX_TEXT_H

#include <string>
#include <string_view>
#include <vector>

#include "src/platform/strings.h"

namespace pv {

template <class Char>
struct MailboxParts {
  std::basic_string<Char> name;
  std::basic_string<Char> address;
};

// Splits one mailbox: quoted display names are joined (a backslash stays as
// it is, nothing is unescaped), an unquoted name runs to "<", the address
// runs from "<" to ">" (or the end), both are trimmed of blanks and line
// breaks, and a name holding "@" with no address becomes the address.
// Comments are not recognised; text after ">" is ignored.
MailboxParts<char> SplitMailbox(std::string_view text);
// The same walk on wide text. Leading blanks are recognised by the low byte
// of each character only, so U+0120 is skipped like a space.
MailboxParts<OLECHAR> SplitMailbox(WStringView text);

// Cuts an address list into pieces: "," or ";" ends a piece only after an
// "@" outside quotes and angle brackets; quoted strings and "<...>" are
// stepped over whole. The open piece at the end is always handed on. The
// narrow walk gives the same pieces as the wide one only where every byte
// is one character (AnsiKeepsEveryByte): elsewhere a trail byte may look
// like a delimiter.
std::vector<WStringView> SplitMailboxList(WStringView text);
std::vector<std::string_view> SplitMailboxList(std::string_view text);

}  // namespace pv

#endif  // PARCELVANE_SRC_HEADERS_MAILBOX_TEXT_H
