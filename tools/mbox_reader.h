// Reads the messages of an mbox file one after another, in one pass and
// without holding the whole file.
//
// A message starts at a line beginning with "From " that opens the file or
// follows an empty line; that separator line is not part of the message,
// and neither is the empty line before the next separator. A body line
// quoted as ">From " (any number of ">") loses one ">".
#ifndef PARCELVANE_TOOLS_MBOX_READER_H
#define PARCELVANE_TOOLS_MBOX_READER_H

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace pvtool {

struct MboxMessage {
  std::string bytes;      // the message, line ends as stored
  std::string from_line;  // the separator line, without its line end
  uint64_t offset = 0;    // where the separator line starts in the file
};

class MboxReader {
 public:
  // `read` fills up to `capacity` bytes and returns how many; 0 at the end.
  using ReadFunction = std::function<size_t(char* buffer, size_t capacity)>;

  explicit MboxReader(ReadFunction read, size_t chunk_size = 1 << 20);

  // The next message; false at the end of the input, or at once when the
  // input does not start with a separator line (then not_mbox() is true).
  bool Next(MboxMessage* message);

  bool not_mbox() const { return not_mbox_; }
  // Bytes consumed from the input so far.
  uint64_t bytes_read() const { return bytes_read_; }

 private:
  // The next line with its line end, or false at the end of the input.
  bool NextLine(std::string_view* line);
  bool Refill();
  void StartMessage(std::string_view from_line, uint64_t offset);

  ReadFunction read_;
  size_t chunk_size_;
  std::string buffer_;
  size_t consumed_ = 0;  // bytes of buffer_ already handed out as lines
  size_t scanned_ = 0;   // bytes of buffer_ known to hold no LF past consumed_
  bool at_end_ = false;
  uint64_t bytes_read_ = 0;
  uint64_t line_offset_ = 0;  // file offset of the next line

  bool started_ = false;
  bool not_mbox_ = false;
  bool previous_line_empty_ = true;
  MboxMessage current_;
  // A separator found while finishing the previous message.
  bool have_pending_separator_ = false;
  std::string pending_from_line_;
  uint64_t pending_offset_ = 0;
};

// True when `line` (with or without its line end) begins with "From ".
bool IsSeparatorLine(std::string_view line);

}  // namespace pvtool

#endif  // PARCELVANE_TOOLS_MBOX_READER_H
