// AssembleHeader on arbitrary UTF-16 under each encoding code 0 to 5 and a
// choice of code pages. Every line of an encoded value, with the field name
// in front, stays within 80 characters; and B or Q words in UTF-8 decode
// back to the text, unfolded, when it has no NUL and no lone surrogate.
#include <cstddef>
#include <cstdint>
#include <string>

#include "src/headers/header_charset.h"
#include "src/platform/codepage.h"

namespace {

const LONG kPages[] = {65001, 1252,  28591, 20127, 932, 50220, 936, 949,
                       20866, 65000, 52936, 54936, -1,  0,     1200};

bool HasNulOrLoneSurrogate(const pv::WString& text) {
  for (size_t i = 0; i < text.size(); ++i) {
    uint16_t unit = static_cast<uint16_t>(text[i]);
    if (unit == 0) return true;
    if (unit >= 0xDC00 && unit <= 0xDFFF) return true;
    if (unit >= 0xD800 && unit <= 0xDBFF) {
      if (i + 1 >= text.size()) return true;
      uint16_t next = static_cast<uint16_t>(text[i + 1]);
      if (next < 0xDC00 || next > 0xDFFF) return true;
      ++i;
    }
  }
  return false;
}

// Each line of "Name: value" is at most 80 characters.
void CheckLineLengths(size_t nameLength, const pv::WString& value) {
  size_t start = 0;
  size_t lead = nameLength + 2;
  for (;;) {
    size_t end = value.find(OLESTR("\r\n"), start);
    size_t length = (end == pv::WString::npos ? value.size() : end) - start;
    if (lead + length > 80) __builtin_trap();
    if (end == pv::WString::npos) return;
    start = end + 2;
    lead = 0;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace pv;
  if (size < 3) return 0;
  LONG encoding = data[0] % 6;
  LONG page = kPages[data[1] % (sizeof kPages / sizeof kPages[0])];
  size_t nameLength = data[2] % 90;
  WString text;
  for (size_t i = 3; i + 1 < size; i += 2) text.push_back(static_cast<OLECHAR>(data[i] | (data[i + 1] << 8)));

  ComPtr<HeaderCharset> charset;
  if (FAILED(MakeObject(&charset))) return 0;
  charset->SetHeaderCodePage(page);
  charset->SetDefaultEncoding(encoding);
  charset->SetHeaderNameLength(nameLength);
  WString encoded;
  if (FAILED(charset->Encode(text, &encoded))) __builtin_trap();
  LONG used = charset->defaultEncoding();
  bool wordsWritten = (used == kHeaderEncodingQ || used == kHeaderEncodingB) && !encoded.empty();
  if (wordsWritten) CheckLineLengths(nameLength, encoded);

  // The interface gives the same text.
  charset->SetDefaultEncoding(encoding);
  Bstr in(text);
  Bstr out;
  if (charset->AssembleHeader(in.get(), out.put()) != S_OK || out.view() != WStringView(encoded))
    __builtin_trap();

  if (page != 65001 || (used != kHeaderEncodingQ && used != kHeaderEncodingB) || HasNulOrLoneSurrogate(text))
    return 0;
  if (!encoded.empty() || text.empty()) {
    WString unfolded;
    for (size_t i = 0; i < encoded.size(); ++i) {
      if (encoded[i] == u'\r' && i + 1 < encoded.size() && encoded[i + 1] == u'\n') {
        ++i;
        continue;
      }
      unfolded.push_back(encoded[i]);
    }
    WString decoded;
    if (FAILED(charset->Decode(WideToAnsi(unfolded), &decoded))) __builtin_trap();
    if (decoded != text) __builtin_trap();
  }
  return 0;
}
