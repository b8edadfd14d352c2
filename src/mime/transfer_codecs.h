// Transfer encodings of part bodies: the encoding codes, the
// "Content-Transfer-Encoding" values that name them, and the base64,
// quoted-printable and uuencode codecs as pure functions over bytes.
//
// The decoders are tolerant in fixed, deliberate ways (stray characters,
// padding and broken escapes pass through as described at each function);
// the part decoder and encoder classes call these functions and add the
// data-object and header handling around them.
//
// The functions that build a std::string may throw std::bad_alloc; callers
// at the interface run them inside Guard().
#ifndef PARCELVANE_SRC_MIME_TRANSFER_CODECS_H
#define PARCELVANE_SRC_MIME_TRANSFER_CODECS_H

#include <cstddef>
#include <string>
#include <string_view>

#include "src/platform/strings.h"

namespace pv {

// Transfer-encoding codes, as every DefaultEncoding-style property holds them.
enum TransferEncoding : LONG {
  kTransferNone = 0,             // no encoding: "7bit" or "8bit" by content
  kTransferQuotedPrintable = 1,  // "quoted-printable"
  kTransferBase64 = 2,           // "base64"
  kTransferAutomatic = 3,        // chosen from the share of 7-bit bytes
  kTransferUuencode = 4,         // written as "x-uuencode"
};

// ------------------------------------------------------------------ codes and field values

// The code a "Content-Transfer-Encoding" value is decoded with. The value is
// compared whole, ignoring ASCII case: "base64" 2, "quoted-printable" 1,
// "uuencode" and "x-uuencode" 4, anything else (surrounding blanks
// included) 0.
TransferEncoding TransferEncodingOfField(std::string_view value);
TransferEncoding TransferEncodingOfField(WStringView value);

// The percentage of bytes below 128, rounded down; 100 for an empty body.
int SevenBitShare(std::string_view body);

// What the automatic code stands for at a given 7-bit share: base64 below
// 60, quoted-printable from 60 to 99, no encoding at 100.
TransferEncoding ChooseTransferEncoding(int sevenBitShare);

// The field value written for `code` after encoding a body with the given
// 7-bit share: "7bit" (share 100) or "8bit" for code 0, "quoted-printable",
// "base64", "x-uuencode", and for code 3 the value of the code it chooses.
// Empty for a code outside 0 to 4.
std::string_view TransferEncodingFieldValue(LONG code, int sevenBitShare);

// ------------------------------------------------------------------ decoders
// Each writes into `out`, which must have room for in.size() bytes (no
// decoder ever produces more bytes than its input has), and returns the
// number of bytes produced. Nothing past that count is meaningful.

// Base64 in groups of four valid characters ("A"-"Z", "a"-"z", "0"-"9",
// "+", "/"). Every other byte, "=" included, is skipped without ending the
// group, so padding does not end the data. A group of k valid characters
// yields floor(6k/8) bytes (one character alone yields none). A NUL byte
// where a group would start ends the input.
size_t DecodeBase64(std::string_view in, char* out);
// The same without the vector path that DecodeBase64 takes on processors
// with AVX2: what every other processor runs. For tests.
size_t DecodeBase64Portable(std::string_view in, char* out);

// Quoted-printable: "=" and two hexadecimal digits of either case give one
// byte; "=\n" and "=\r\n" are soft line breaks; any other escape is kept as
// its three bytes ("=XY" stays "=XY"); "=" or "=" and one byte at the very
// end are dropped. Everything else is copied as it stands.
size_t DecodeQuotedPrintable(std::string_view in, char* out);

// Uuencode, line by line. A line starting with "begin" (with at least five
// bytes left) or "end", in any case, is skipped; every other line is a data
// line whose first character gives its byte count. Fails (returns false)
// when a line break interrupts a four-character group, or when the counts
// would produce more bytes than `out` has room for. On success *produced is
// the sum of the data lines' counts.
bool DecodeUuencode(std::string_view in, char* out, size_t* produced);

// The whole decode of a body for a decoding code. Codes 1, 2 and 4 decode
// into a buffer of the body's length and fail when nothing was produced (or
// uuencode fails); any other code copies the body and always succeeds.
bool DecodeTransferBody(TransferEncoding code, std::string_view body, std::string* out);

// ------------------------------------------------------------------ encoders
// Each replaces *out with the encoded body. They fail when the encoded size
// would exceed the 32-bit signed range; base64 and quoted-printable also fail
// on an empty body (their output would be empty).

// Base64 with lines of 76 characters, each full line followed by "\r\n"
// (also the last one when the full groups end exactly at a line's end); a
// final group of one or two bytes is padded with "=" and follows directly.
bool EncodeBase64(std::string_view body, std::string* out);

// Quoted-printable as one logical line: bytes 33-60 and 62-126 as
// themselves, blanks and tabs as themselves below column 64, everything else
// (line breaks included) as "=XX"; a soft break "=\r\n" whenever the column
// reaches 65.
bool EncodeQuotedPrintable(std::string_view body, std::string* out);

// Uuencode: "begin 644 <name>\r\n", lines of up to 45 bytes (count
// character, groups of four characters, "\r\n"), then "`\r\nend\r\n". The
// name is written as the narrow bytes given, up to its first NUL.
bool EncodeUuencode(std::string_view body, std::string_view name, std::string* out);

// The whole encode of a body for a concrete code (0, 1, 2 or 4; resolve code
// 3 with ChooseTransferEncoding first). Code 0 copies the body; any other
// code fails.
bool EncodeTransferBody(TransferEncoding code, std::string_view body, std::string_view name,
                        std::string* out);

}  // namespace pv

#endif  // PARCELVANE_SRC_MIME_TRANSFER_CODECS_H
