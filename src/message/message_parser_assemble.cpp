// Writing the message back out: its own header fields, then either "\r\n"
// and the plain body, or the root part's assembly (which continues the
// header block with the part's "Content-" fields and writes the blank line
// itself). The output is rebuilt from the objects every time; the parsed
// buffer is never reused, so every change shows.
#include "src/message/message_parser.h"
#include "src/message/message_parser_util.h"
#include "src/mime/mime_part.h"
#include "src/platform/codepage.h"

namespace pv {

void MessageParser::AssembleBytes(std::string* out) {
  if (FAILED(headers_->BlockText(out))) out->clear();
  if (plainBody_) {
    DataBytes bytes;
    std::string_view body = SpanOf(plainBody_.get(), &bytes);
    out->reserve(out->size() + 4 + body.size());
    // The blank line after the header block; without any field before it,
    // the output begins with "\r\n\r\n" so that it reads back as no fields.
    if (out->empty()) out->append("\r\n");
    out->append("\r\n").append(body);
    return;
  }
  if (!root_) return;
  // The library's own part writes its assembly straight after the header
  // text, so that assembling holds one copy of the message rather than two.
  if (MimePart* own = root_->OwnPart()) {
    size_t headerEnd = out->size();
    bool hasBody = false;
    if (FAILED(own->WriteTo(true, out, &hasBody))) out->resize(headerEnd);  // as if no object came back
    return;
  }
  ComPtr<IEMSDataObject> part;
  root_.get()->AssemblePartObject(part.put());
  DataBytes bytes;
  out->append(SpanOf(part.get(), &bytes));
}

HRESULT MessageParser::DoAssembleObject(IEMSDataObject** ppVal) {
  std::string bytes;
  AssembleBytes(&bytes);
  ComPtr<IEMSDataObject> result;
  HRESULT hr = MakeDataObject(std::move(bytes), &result);
  if (FAILED(hr)) return hr;
  *ppVal = result.detach();
  return S_OK;
}

HRESULT MessageParser::GetFullMessage(BSTR* pVal) {
  ComPtr<IEMSDataObject> assembled;
  AssembleObject(assembled.put());
  if (!assembled) return E_FAIL;
  DataBytes bytes;
  return ReturnCodePageText(kCodePageAnsi, SpanOf(assembled.get(), &bytes), pVal);
}

}  // namespace pv
