// The mime.types parser on arbitrary bytes, then lookups of words taken
// from the same input: answers are printable ASCII and round-trip.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "src/platform/content_types_table.h"

namespace {

bool IsPrintableAscii(const pv::WString& s) {
  for (OLECHAR c : s) {
    if (c <= 0x20 || c >= 0x7F) return false;
  }
  return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace pv;
  std::string_view text(reinterpret_cast<const char*>(data), size);
  ContentTypeTable table = ContentTypeTable::Parse(text);

  // Look up every blank-separated word of the input, as an extension and as
  // a content type.
  size_t start = 0;
  while (start < text.size()) {
    size_t end = text.find_first_of(" \t\r\n", start);
    if (end == std::string_view::npos) end = text.size();
    if (end > start) {
      WString word(1, u'.');
      for (size_t i = start; i < end; ++i) word.push_back(static_cast<unsigned char>(text[i]));
      WString type;
      if (table.ContentTypeOf(word, &type)) {
        if (type.empty() || !IsPrintableAscii(type)) std::abort();
        WString extension;
        if (!table.ExtensionOf(type, &extension)) std::abort();  // a type with an extension has one to give
        if (extension.size() < 2 || extension[0] != u'.' || !IsPrintableAscii(extension)) std::abort();
      }
      WString extension;
      if (table.ExtensionOf(WStringView(word).substr(1), &extension)) {
        if (extension.size() < 2 || extension[0] != u'.' || !IsPrintableAscii(extension)) std::abort();
      }
    }
    start = end + 1;
  }
  return 0;
}
