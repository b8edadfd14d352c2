// MimeCharClass: character-class flags for the ASCII range, shared by the
// header, parameter, mailbox, content-type and message parsers. Bytes of
// 0x80 and above belong to no class.
#ifndef PARCELVANE_SRC_HEADERS_MIME_CHAR_CLASS_H
#define PARCELVANE_SRC_HEADERS_MIME_CHAR_CLASS_H

#include <cstdint>

namespace pv {

enum MimeCharFlag : uint16_t {
  kCharControl = 0x001,         // 0x00..0x1F and 0x7F
  kCharLetter = 0x002,          // A..Z, a..z
  kCharDigit = 0x004,           // 0..9
  kCharWhiteSpace = 0x008,      // space and tab only
  kCharAlphanumeric = 0x010,    // letters and digits
  kCharPunctuation = 0x020,     // printable, neither alphanumeric nor space
  kCharAddressSpecial = 0x040,  // " ( ) , . : ; < = > @ [ \ ]   ("=" included)
  kCharMimeSpecial = 0x080,     // " ( ) , / : ; < = > ? [ \ ]   ("@" excluded)
  kCharHexDigit = 0x100,        // 0..9 and upper-case A..F only
  kCharLineBreak = 0x200,       // CR and LF
};

extern const uint16_t kMimeCharClass[128];

// Whether byte `c` has any of `flags`.
inline bool HasCharClass(unsigned char c, uint16_t flags) {
  return c < 0x80 && (kMimeCharClass[c] & flags) != 0;
}
// The same for a wide character (only the ASCII range has classes).
inline bool HasCharClassWide(uint32_t c, uint16_t flags) {
  return c < 0x80 && (kMimeCharClass[c] & flags) != 0;
}

}  // namespace pv

#endif  // PARCELVANE_SRC_HEADERS_MIME_CHAR_CLASS_H
