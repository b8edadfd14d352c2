// Where the multiparts of a parsed message stand in the bytes it was
// parsed from. The library keeps no span for a multipart (asking it for a
// multipart's body assembles the whole subtree again, so walking a deep
// tree that way is quadratic), and it drops the last part of a multipart
// with no closing delimiter, and a part whose header no empty line ends,
// without a word. The tool finds both itself:
// one pass over the message collects the delimiter lines of every boundary
// the tree declares, and each multipart's region, its parts' regions and
// whether it closes then follow by binary search. Linear in the message
// and in the tree, whatever its depth.
#ifndef PARCELVANE_TOOLS_PART_LAYOUT_H
#define PARCELVANE_TOOLS_PART_LAYOUT_H

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace pvtool {

// One part of the parsed tree, depth first, children in order.
struct LayoutPart {
  int children = 0;      // as the library parsed them
  std::string boundary;  // for a multipart; "" otherwise
};

struct PartRegion {
  bool known = false;      // the part was found in the message
  uint64_t body_size = 0;  // its body as it stands in the message
  bool unclosed = false;   // a multipart with delimiters but no closing one
  uint64_t unshown = 0;    // then: the bytes after its last delimiter line
  // Parts of a multipart that the library dropped because no empty line
  // ends their header, and their bytes.
  int headerless = 0;
  uint64_t headerless_bytes = 0;
};

// The regions of `parts` (the first is the whole message) in `message`.
// A part is known when every multipart above it split into as many parts
// as the library found; the others are left unknown.
std::vector<PartRegion> LayOutParts(std::string_view message, const std::vector<LayoutPart>& parts);

}  // namespace pvtool

#endif  // PARCELVANE_TOOLS_PART_LAYOUT_H
