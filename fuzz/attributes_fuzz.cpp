// Parameter lists of any bytes: ParseAttributes, then AssembleAttributes of
// the result; every entry's value is also read back and set again (its
// encoding and folding), and the list is cloned. The first byte picks the
// code page and encoding given to the entries; the rest is the text, read
// as ANSI bytes.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "src/headers/mime_attribute.h"
#include "src/headers/mime_attributes.h"
#include "src/platform/codepage.h"

namespace {

constexpr LONG kCodePages[] = {65001, 0, 28591, 1252, 932, 20866, 50220, -1};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace pv;
  if (size == 0) return 0;
  const uint8_t settings = data[0];
  std::string_view text(reinterpret_cast<const char*>(data + 1), size - 1);

  ComPtr<MimeAttributes> list;
  if (FAILED(MakeObject(&list))) return 0;
  Bstr input(AnsiToWide(text));
  list->ParseAttributes(input.get());
  Bstr assembled;
  list->AssembleAttributes(assembled.put());

  LONG count = 0;
  list->get_AttributesCount(&count);
  for (LONG i = 0; i < count; ++i) {
    ComPtr<IEMSMimeAttribute> attribute;
    if (FAILED(list->get_Attribute(i, attribute.put())) || !attribute) continue;
    Bstr decoded;
    attribute->get_DecodedValue(decoded.put());
    attribute->put_CodePage(kCodePages[settings & 7]);
    attribute->put_Encoding((settings >> 3) & 3);
    attribute->put_DecodedValue(decoded.get());
    Bstr raw;
    attribute->get_RawValue(raw.put());
    attribute->put_RawValue(raw.get());
  }
  Bstr again;
  list->AssembleAttributes(again.put());

  ComPtr<IEMSMimeAttributes> clone;
  if (SUCCEEDED(list->Clone(clone.put())) && clone) {
    Bstr cloned;
    clone->AssembleAttributes(cloned.put());
    list->AppendAttributes(clone.get());
  }
  std::string narrow;
  list->AppendAssembled(&narrow);
  return 0;
}
