// The reference splitter: a plain scan of one body for its delimiter lines,
// which the library's splitter (one buffer, shared indexes) must match.
#ifndef PARCELVANE_TESTS_MIME_MULTIPART_REFERENCE_H
#define PARCELVANE_TESTS_MIME_MULTIPART_REFERENCE_H

#include <cstddef>
#include <string_view>
#include <vector>

#include "src/mime/multipart_splitter.h"

namespace pv {

// Finds the children of a multipart body with delimiter "--" + boundary.
// The preamble before the first delimiter and the epilogue after the
// closing one are dropped. A child starts right after its delimiter (so it
// begins with the delimiter line's line break) and ends at the next
// delimiter: before an ordinary one ("--b\r\n"), before the line break of a
// closing one ("\r\n--b--"), or at a delimiter too close to the end to be
// followed by two bytes. Any other occurrence ("--b  ") is no delimiter.
// The bytes after the last delimiter never become a child, so a body
// without a recognised closing delimiter loses its last part. Children of
// length 0 are left out. `foundDelimiter` tells whether the delimiter
// occurs at all.
std::vector<ChildSpan> SplitMultipartBody(std::string_view body, std::string_view boundary,
                                          bool* foundDelimiter = nullptr);

}  // namespace pv

#endif  // PARCELVANE_TESTS_MIME_MULTIPART_REFERENCE_H
