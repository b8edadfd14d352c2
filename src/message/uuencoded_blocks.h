// Finding uuencoded "begin" ... "end" blocks in plain message text.
#ifndef PARCELVANE_SRC_MESSAGE_UUENCODED_BLOCKS_H
#define PARCELVANE_SRC_MESSAGE_UUENCODED_BLOCKS_H

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace pv {

struct UuencodedBlock {
  std::string_view fileName;  // the name on the "begin" line (never empty)
  size_t dataOffset;          // the encoded lines, after the name's line break
  size_t dataLength;          // up to the grave accent of the end marker
};

struct UuencodedText {
  std::vector<UuencodedBlock> blocks;
  // The text around the blocks: what stood before each block, then the tail
  // after the last one, except that the tail is dropped when nothing stood
  // before the blocks (a text that begins with a block loses its tail).
  std::string text;
};

// Scans for blocks: the word "begin" anywhere (not only at a line start),
// one byte that is not looked at, three mode digits from 0 to 6, one more
// byte, blanks, the file name up to a blank or line break (an empty name
// moves 10 bytes on and tries again), the line break, and the data up to the
// eight-byte end marker grave accent, CR, LF, "end", CR, LF. A block without
// its end marker ends the scan. Returns false when no block was found.
bool FindUuencodedBlocks(std::string_view text, UuencodedText* out);

}  // namespace pv

#endif  // PARCELVANE_SRC_MESSAGE_UUENCODED_BLOCKS_H
