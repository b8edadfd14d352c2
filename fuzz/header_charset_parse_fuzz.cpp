// ParseHeader on arbitrary bytes. The first byte picks the object's default
// code page (the page of text outside words and of words whose charset is
// unknown); the rest is the header text, given both as the interface's wide
// string and as narrow text to the library's own entry point.
#include <cstddef>
#include <cstdint>
#include <string>

#include "src/headers/header_charset.h"
#include "src/platform/codepage.h"

namespace {

const LONG kDefaultPages[] = {1252,  65001, 0,     -5,    932, 50220, 1200,
                              20866, 936,   65000, 52936, 1,   28591, 99999};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace pv;
  if (size == 0) return 0;
  LONG page = kDefaultPages[data[0] % (sizeof kDefaultPages / sizeof kDefaultPages[0])];
  std::string text(reinterpret_cast<const char*>(data + 1), size - 1);

  ComPtr<HeaderCharset> charset;
  if (FAILED(MakeObject(&charset))) return 0;
  charset->SetDefaultCodePage(page);
  WString decoded;
  if (FAILED(charset->Decode(text, &decoded))) __builtin_trap();

  // The interface: the wide text is converted to the ANSI page first.
  charset->SetDefaultCodePage(page);
  Bstr in(AnsiToWide(text));
  Bstr out;
  if (charset->ParseHeader(in.get(), out.put()) != S_OK || out.is_null()) __builtin_trap();
  LONG value = 0;
  charset->get_HeaderCodePage(&value);
  charset->get_DefaultEncoding(&value);
  return 0;
}
