#include "tools/mbox_reader.h"

#include <cstring>
#include <utility>

namespace pvtool {
namespace {

bool IsEmptyLine(std::string_view line) { return line == "\n" || line == "\r\n"; }

std::string_view WithoutLineEnd(std::string_view line) {
  if (!line.empty() && line.back() == '\n') line.remove_suffix(1);
  if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
  return line;
}

// Removes the last line of `bytes`, known to be an empty line.
void DropLastEmptyLine(std::string* bytes) {
  const size_t drop = (bytes->size() >= 2 && bytes->compare(bytes->size() - 2, 2, "\r\n") == 0) ? 2 : 1;
  bytes->resize(bytes->size() >= drop ? bytes->size() - drop : 0);
}

// Appends a body line, taking one ">" off a quoted separator line.
void AppendUnquoted(std::string_view line, std::string* out) {
  if (!line.empty() && line[0] == '>') {
    const size_t quotes = line.find_first_not_of('>');
    if (quotes != std::string_view::npos && IsSeparatorLine(line.substr(quotes))) line.remove_prefix(1);
  }
  out->append(line.data(), line.size());
}

}  // namespace

bool IsSeparatorLine(std::string_view line) { return line.substr(0, 5) == "From "; }

MboxReader::MboxReader(ReadFunction read, size_t chunk_size)
    : read_(std::move(read)), chunk_size_(chunk_size == 0 ? 1 : chunk_size) {}

bool MboxReader::Refill() {
  if (at_end_) return false;
  if (consumed_ > 0) {
    buffer_.erase(0, consumed_);
    scanned_ -= consumed_;
    consumed_ = 0;
  }
  const size_t old_size = buffer_.size();
  buffer_.resize(old_size + chunk_size_);
  const size_t got = read_(&buffer_[old_size], chunk_size_);
  buffer_.resize(old_size + got);
  bytes_read_ += got;
  if (got == 0) at_end_ = true;
  return got > 0;
}

bool MboxReader::NextLine(std::string_view* line) {
  for (;;) {
    if (scanned_ < buffer_.size()) {
      const void* hit = std::memchr(buffer_.data() + scanned_, '\n', buffer_.size() - scanned_);
      if (hit != nullptr) {
        const size_t end = static_cast<size_t>(static_cast<const char*>(hit) - buffer_.data()) + 1;
        *line = std::string_view(buffer_.data() + consumed_, end - consumed_);
        line_offset_ += line->size();
        consumed_ = scanned_ = end;
        return true;
      }
      scanned_ = buffer_.size();
    }
    if (Refill()) continue;
    if (consumed_ == buffer_.size()) return false;
    // The last line has no line end.
    *line = std::string_view(buffer_.data() + consumed_, buffer_.size() - consumed_);
    line_offset_ += line->size();
    consumed_ = scanned_ = buffer_.size();
    return true;
  }
}

void MboxReader::StartMessage(std::string_view from_line, uint64_t offset) {
  current_ = MboxMessage();
  current_.from_line.assign(WithoutLineEnd(from_line));
  current_.offset = offset;
  previous_line_empty_ = false;
}

bool MboxReader::Next(MboxMessage* message) {
  if (not_mbox_) return false;
  if (!started_) {
    started_ = true;
    const uint64_t offset = line_offset_;
    std::string_view line;
    if (!NextLine(&line)) return false;
    if (!IsSeparatorLine(line)) {
      not_mbox_ = true;
      return false;
    }
    StartMessage(line, offset);
  } else if (have_pending_separator_) {
    have_pending_separator_ = false;
    StartMessage(pending_from_line_, pending_offset_);
  } else {
    return false;
  }

  for (;;) {
    const uint64_t offset = line_offset_;
    std::string_view line;
    if (!NextLine(&line)) break;
    if (previous_line_empty_ && IsSeparatorLine(line)) {
      pending_from_line_.assign(line.data(), line.size());
      pending_offset_ = offset;
      have_pending_separator_ = true;
      break;
    }
    previous_line_empty_ = IsEmptyLine(line);
    AppendUnquoted(line, &current_.bytes);
  }
  // The empty line that ends every message in the file is the file's, not
  // the message's.
  if (previous_line_empty_) DropLastEmptyLine(&current_.bytes);
  *message = std::move(current_);
  current_ = MboxMessage();
  return true;
}

}  // namespace pvtool
