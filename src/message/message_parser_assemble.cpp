// Writing the message back out: its own header fields, then either "\r\n"
// and the plain body, or the root part's assembly (which continues the
// header block with the part's "Content-" fields and writes the blank line
// itself). The output is rebuilt from the objects every time; the parsed
// buffer is never reused, so every change shows.
#include "src/message/message_parser.h"
#include "src/message/message_parser_util.h"
#include "src/platform/codepage.h"

namespace pv {

void MessageParser::AssembleBytes(std::string* out) {
  Bstr headerText;
  headers_->AssembleParameters(headerText.put());
  std::string headers = WideToAnsi(headerText.view());
  headerText.reset();

  DataBytes bodyBytes;
  std::string_view body;
  ComPtr<IEMSDataObject> partOutput;
  if (plainBody_) {
    body = SpanOf(plainBody_.get(), &bodyBytes);
  } else if (root_) {
    root_->AssemblePartObject(partOutput.put());
    body = SpanOf(partOutput.get(), &bodyBytes);
  }
  out->clear();
  out->reserve(headers.size() + 2 + body.size());
  out->append(headers);
  if (plainBody_) out->append("\r\n");  // the blank line after the header block
  out->append(body);
}

HRESULT MessageParser::AssembleObject(IEMSDataObject** ppVal) {
  if (ppVal == nullptr) return E_POINTER;
  return Guard([&] {
    std::string bytes;
    AssembleBytes(&bytes);
    ComPtr<IEMSDataObject> result;
    HRESULT hr = MakeDataObject(std::move(bytes), &result);
    if (FAILED(hr)) return hr;
    *ppVal = result.detach();
    return S_OK;
  });
}

HRESULT MessageParser::get_FullMessage(BSTR* pVal) {
  if (pVal == nullptr) return E_POINTER;
  return Guard([&] {
    ComPtr<IEMSDataObject> assembled;
    AssembleObject(assembled.put());
    if (!assembled) return E_FAIL;
    DataBytes bytes;
    return ReturnCodePageText(kCodePageAnsi, SpanOf(assembled.get(), &bytes), pVal);
  });
}

}  // namespace pv
