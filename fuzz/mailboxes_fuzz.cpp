// Address lists of any text: ParseMailboxes, then AssembleMailboxes and
// DecodedMailboxes. The first byte picks the list's code page and
// encoding, whether names are decoded, and whether the rest is read as
// ANSI bytes or as UTF-16 units (which reaches the wide split's low-byte
// blank test and characters outside the ANSI page). ANSI bytes are also
// handed to the narrow parse, which must give what the wide one gives.
#include <cstddef>
#include <cstdlib>
#include <cstdint>
#include <string_view>

#include "src/headers/header_mailboxes.h"
#include "src/platform/codepage.h"

namespace {

constexpr LONG kCodePages[] = {0, 65001, 28591, 932, 20866, 50220, 1251, -1};

pv::WString TextOf(const uint8_t* data, size_t size, bool utf16) {
  if (!utf16) return pv::AnsiToWide(std::string_view(reinterpret_cast<const char*>(data), size));
  pv::WString text;
  for (size_t i = 0; i + 1 < size; i += 2) text.push_back(static_cast<OLECHAR>(data[i] | (data[i + 1] << 8)));
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace pv;
  if (size == 0) return 0;
  const uint8_t settings = data[0];

  ComPtr<HeaderMailboxes> list;
  if (FAILED(MakeObject(&list))) return 0;
  list->put_DefaultCodePage(kCodePages[settings & 7]);
  list->put_DefaultEncoding((settings >> 3) & 3);
  Bstr input(TextOf(data + 1, size - 1, (settings & 0x40) != 0));
  list->ParseMailboxes(input.get(), (settings & 0x80) != 0 ? 1 : 0);

  Bstr assembled;
  list->AssembleMailboxes(assembled.put());
  Bstr decoded;
  list->get_DecodedMailboxes(decoded.put());

  if ((settings & 0x40) == 0) {
    ComPtr<HeaderMailboxes> narrow;
    if (FAILED(MakeObject(&narrow))) return 0;
    narrow->put_DefaultCodePage(kCodePages[settings & 7]);
    narrow->put_DefaultEncoding((settings >> 3) & 3);
    narrow->ParseAnsi(std::string_view(reinterpret_cast<const char*>(data + 1), size - 1),
                      (settings & 0x80) != 0);
    Bstr narrowAssembled;
    narrow->AssembleMailboxes(narrowAssembled.put());
    Bstr narrowDecoded;
    narrow->get_DecodedMailboxes(narrowDecoded.put());
    if (View(narrowAssembled.get()) != View(assembled.get()) ||
        View(narrowDecoded.get()) != View(decoded.get())) {
      std::abort();
    }
  }

  // The wire form parses again.
  ComPtr<HeaderMailboxes> again;
  if (FAILED(MakeObject(&again))) return 0;
  again->ParseMailboxes(assembled.get(), 1);
  Bstr reassembled;
  again->AssembleMailboxes(reassembled.put());
  return 0;
}
