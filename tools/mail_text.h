// Small pieces of mail text handled by the tool itself: dates, the
// "Name <address>" form of command-line addresses, raw 8-bit text shown as
// UTF-8, and the check that an input looks like a message at all.
#ifndef PARCELVANE_TOOLS_MAIL_TEXT_H
#define PARCELVANE_TOOLS_MAIL_TEXT_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "tools/utf.h"

namespace pvtool {

// "Tue, 1 Jul 2003 10:52:37 +0200" gives "2003-07-01 10:52" (the time as
// written, in the sender's zone). Text that is not such a date is
// returned unfolded and trimmed.
std::string ShortDate(std::string_view raw);

// "Tue, 1 Jul 2003 10:52:37 +0200" gives "2003-07-01T10:52:37+02:00" (ISO
// 8601; without the offset when the zone is missing or a name other than
// GMT, UT or UTC). Text that is not such a date is returned unfolded and
// trimmed.
std::string IsoDate(std::string_view raw);

// The date of `seconds` since 1970 in UTC in the header form,
// "Tue, 01 Jul 2003 08:52:37 +0000".
std::string HeaderDate(int64_t seconds);

struct Address {
  std::string name;
  std::string address;
};
// "Jürgen Müller <jm@example.org>", "\"Müller, J.\" <jm@example.org>" or
// "jm@example.org".
Address SplitAddress(std::string_view text);

// One entry of an address field: a mailbox (one member, no group), or a
// group "name: a, b;" with its members (none for "name:;").
struct AddressPieces {
  bool group = false;
  std::string group_name;            // trimmed, as written
  std::vector<std::string> members;  // each trimmed, as written
};

// The entries of an address field value, split at the commas and
// semicolons that stand outside quoted strings, angle brackets and
// comments; a colon there opens a group, which the next semicolon closes,
// when the text before it can be a group's name (no "@", no encoded word
// left open).
// Blanks around each piece are trimmed and empty pieces dropped.
// "Joe <j@x>, \"Ann, B.\" <a@y>" gives the mailboxes "Joe <j@x>" and
// "\"Ann, B.\" <a@y>"; "Team: a@x, b@y;" one group of two members.
std::vector<AddressPieces> SplitAddressList(std::string_view value);

// Header values and bodies without a declared charset are often raw
// UTF-8; read in a single-byte page they show as "Ã¼". Each
// run of non-ASCII characters whose single-byte form is valid UTF-8 is
// read again as UTF-8; any other text is returned unchanged.
U16String RepairRawUtf8(U16View text);

// Unfolds a raw header value: line breaks with the blanks after them
// become one space; leading and trailing blanks go.
std::string UnfoldValue(std::string_view raw);

// Why `bytes` cannot be a message ("" when it can): it is empty, or its
// first line is not a header field, or its header block holds a zero byte.
std::string NotAMessageReason(std::string_view bytes);

// How many bytes open `bytes` before its header block: blank lines and
// lines of blanks, and the indentation of a first line that is a header
// field once its leading blanks are gone. An indented first line that is
// not a header field is kept, so that the input is refused as it stands.
size_t LeadingBlankBytes(std::string_view bytes);

// 1234567 gives "1,234,567".
std::string GroupedNumber(uint64_t value);

}  // namespace pvtool

#endif  // PARCELVANE_TOOLS_MAIL_TEXT_H
