// Content types as numeric codes: the type and subtype tables, the
// classification of names by their first letter, the parse of a
// "Content-Type" value, the disposition token and the boundary format.
#ifndef PARCELVANE_SRC_HEADERS_CONTENT_TYPE_CODES_H
#define PARCELVANE_SRC_HEADERS_CONTENT_TYPE_CODES_H

#include <cstdint>
#include <string>
#include <string_view>

#include "parcelvane/platform.h"

namespace pv {

// Type codes.
enum : LONG {
  kTypeUnknown = -1,
  kTypeNone = 0,
  kTypeApplication = 1,
  kTypeAudio = 2,
  kTypeImage = 3,
  kTypeMessage = 4,
  kTypeMultipart = 5,
  kTypeText = 6,
  kTypeVideo = 7,
};

// Subtype codes (the ones the library itself uses by name).
enum : LONG {
  kSubtypeUnknown = -1,
  kSubtypeEmpty = 0,
  kSubtypeAlternative = 1,
  kSubtypeHtml = 8,
  kSubtypeMixed = 10,
  kSubtypePlain = 18,
  kSubtypeRfc822 = 22,
};

// The content-type and disposition state a header field carries.
struct ContentState {
  std::string typeName;
  std::string subtypeName;
  LONG subtypeCode = 0;
  LONG typeCode = 0;
  std::string dispositionType;

  // "%s/%s" of the two names.
  std::string ContentType() const { return typeName + "/" + subtypeName; }
  // Forgets the type: both codes -1, both names empty.
  void ResetContentType();
  // Classifies a content-type value: the type token is appended to the type
  // name and the subtype token to the subtype name (a reset first empties
  // them); without a "/" both become "unknown".
  void ParseContentTypeText(std::string_view text);
  // Codes set directly: the names follow from the tables.
  void SetTypeCode(LONG code);
  void SetSubtypeCode(LONG code);
  // Names set directly: the codes follow from the classification, and stay
  // as they were for a name that is not recognised.
  void SetTypeName(std::string_view name);
  void SetSubtypeName(std::string_view name);
  // The first token of a "Content-Disposition" value, leading blanks skipped.
  void ParseDispositionText(std::string_view text);
};

// The code of a type or subtype name, or `current` when the name is not
// recognised under its first letter. Only the table's own names are
// recognised, in the order tried under each letter, ignoring case.
LONG ClassifyTypeName(std::string_view name, LONG current);
LONG ClassifySubtypeName(std::string_view name, LONG current);

// The table's name for a code: type 0 is "", codes outside the tables are
// "unknown".
std::string_view TypeNameForCode(LONG code);
std::string_view SubtypeNameForCode(LONG code);

// Whether a byte ends a content-type token: blanks, the specials of
// addresses and of MIME, and bytes of 0x80 and above.
bool EndsContentToken(unsigned char c);

// A multipart boundary: "----=_NextPart_", the tens digit of `n` twice and
// its units digit, "_", the time's 4 lowest decimal digits lowest first, "_",
// its 9 lowest hexadecimal digits lowest first, ".", and the 9 lowest
// hexadecimal digits of the two random draws' product, lowest first.
std::string MakeBoundary(LONG n, int64_t seconds, int32_t firstDraw, int32_t secondDraw);
// How every boundary MakeBoundary gives begins, and its length.
constexpr std::string_view kGeneratedBoundaryPrefix = "----=_NextPart_";
constexpr size_t kGeneratedBoundaryLength = 43;

}  // namespace pv

#endif  // PARCELVANE_SRC_HEADERS_CONTENT_TYPE_CODES_H
