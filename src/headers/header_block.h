// Splitting a header block into the texts of its fields.
#ifndef PARCELVANE_SRC_HEADERS_HEADER_BLOCK_H
#define PARCELVANE_SRC_HEADERS_HEADER_BLOCK_H

#include <string_view>
#include <vector>

namespace pv {

// Walks a header block and returns the text of each field line, folded
// continuation lines included, in order. A line ends at a line feed (a CR
// before it stays in the text); a line whose name holds a blank before the
// colon, and any line without a colon, is dropped. The whole span is read:
// an empty line is dropped like any other line without a colon.
std::vector<std::string_view> SplitHeaderBlock(std::string_view block);

// The length of the header block of a span: the bytes before the first
// "\r\n\r\n", or npos when there is none.
size_t FindHeaderBlockEnd(std::string_view span);

}  // namespace pv

#endif  // PARCELVANE_SRC_HEADERS_HEADER_BLOCK_H
