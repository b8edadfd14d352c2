// Composing for parcelvane.Message: the command's way of writing a message
// (every value from the caller stays data: display names and the subject as
// encoded words whenever their plain form would not read back the same,
// file names as RFC 2231 values), with a content type per attachment.
// The Python side has refused line breaks and malformed addresses.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "src/com_error.h"
#include "tools/com.h"
#include "tools/compose_parts.h"
#include "tools/exit_codes.h"
#include "tools/line_ends.h"

namespace py = pybind11;
using pvtool::Bstr;
using pvtool::Ref;

namespace pvpy {
namespace {

constexpr LONG kUtf8 = 65001;
constexpr LONG kBase64 = 2;

void Check(HRESULT hr, const char* operation) {
  if (FAILED(hr)) ThrowComError(hr, operation);
}

using Addresses = pvtool::AddressList;

std::string ComposeBytes(const py::dict& r) {
  Ref<IEMSMessageParser> message;
  Check(PvCreateInstance(CLSID_EMSMessageParser, nullptr, IID_IEMSMessageParser,
                         reinterpret_cast<void**>(message.put())),
        "EMSMessageParser (creating)");
  IEMSMessageParser* m = message.get();
  m->put_DefaultCodePage(kUtf8);
  m->InitNew();
  m->put_TextCodePage(kUtf8);
  m->put_HtmlCodePage(kUtf8);

  const std::string date = r["date"].cast<std::string>();
  if (!date.empty())
    Check(m->put_HeaderString(Bstr("Date").get(), Bstr(date).get()), "EMSMessageParser.HeaderString");
  pvtool::AddMailboxes(m, "From", r["sender"].cast<Addresses>());
  pvtool::AddMailboxes(m, "To", r["to"].cast<Addresses>());
  pvtool::AddMailboxes(m, "Cc", r["cc"].cast<Addresses>());
  const std::string subject = r["subject"].cast<std::string>();
  if (!subject.empty()) pvtool::SetSubject(m, subject);
  for (const auto& [name, value] : r["headers"].cast<Addresses>()) {
    Check(m->put_HeaderString(Bstr(name).get(), Bstr(value).get()), "EMSMessageParser.HeaderString");
  }
  // Base64 keeps every text exact: the line break before a delimiter line
  // stays out of the decoded text (the library's quoted-printable and 7bit
  // bodies cannot tell a text's last line break from the delimiter's).
  m->put_TextEncoding(kBase64);
  m->put_HtmlEncoding(kBase64);
  if (!r["text"].is_none()) {
    Check(m->put_TextBody(Bstr(pvtool::BareLfToCrLf(r["text"].cast<std::string>())).get()),
          "EMSMessageParser.TextBody");
  }
  if (!r["html"].is_none()) {
    Check(m->put_HTMLBody(Bstr(pvtool::BareLfToCrLf(r["html"].cast<std::string>())).get()),
          "EMSMessageParser.HTMLBody");
  }
  for (py::handle item : r["attachments"]) {
    py::tuple attachment = py::reinterpret_borrow<py::tuple>(item);
    pvtool::AddAttachment(m, attachment[0].cast<std::string>(), attachment[1].cast<std::string>(),
                          attachment[2].cast<std::string>());
  }
  pvtool::EnsureMimeVersion(m);
  Ref<IEMSDataObject> data;
  Check(m->AssembleObject(data.put()), "EMSMessageParser.AssembleObject");
  return pvtool::SpanBytes(data.get());
}

}  // namespace

py::bytes Compose(const py::dict& r) {
  try {
    return py::bytes(ComposeBytes(r));
  } catch (const pvtool::ToolError& error) {
    // A step the shared composing code took failed in the library.
    ThrowComError(E_FAIL, "parcelvane.Message", error.what());
  }
}

}  // namespace pvpy
