// The command's mbox reader on any input: the same messages whatever the
// chunk size, never more bytes out than in.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "tools/mbox_reader.h"

namespace {

std::vector<pvtool::MboxMessage> ReadAll(const std::string& text, size_t chunk, bool* not_mbox) {
  size_t at = 0;
  pvtool::MboxReader reader(
      [&](char* buffer, size_t capacity) {
        const size_t n = capacity < text.size() - at ? capacity : text.size() - at;
        std::memcpy(buffer, text.data() + at, n);
        at += n;
        return n;
      },
      chunk);
  std::vector<pvtool::MboxMessage> messages;
  pvtool::MboxMessage message;
  while (reader.Next(&message)) messages.push_back(message);
  *not_mbox = reader.not_mbox();
  return messages;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const size_t chunk = 1 + data[0] % 13;
  const std::string text(reinterpret_cast<const char*>(data) + 1, size - 1);
  bool not_mbox_small = false, not_mbox_large = false;
  const auto small = ReadAll(text, chunk, &not_mbox_small);
  const auto large = ReadAll(text, 1 << 16, &not_mbox_large);
  if (not_mbox_small != not_mbox_large || small.size() != large.size()) std::abort();
  size_t total = 0;
  for (size_t i = 0; i < small.size(); ++i) {
    if (small[i].bytes != large[i].bytes || small[i].offset != large[i].offset) std::abort();
    if (small[i].offset >= text.size()) std::abort();
    total += small[i].bytes.size() + small[i].from_line.size();
  }
  if (total > text.size()) std::abort();
  return 0;
}
