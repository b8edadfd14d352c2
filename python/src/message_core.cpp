#include "src/message_core.h"

#include <pybind11/stl.h>

#include <string>
#include <utility>
#include <vector>

#include "src/com_error.h"
#include "src/dispatch_object.h"
#include "src/variant_convert.h"
#include "tools/exit_codes.h"
#include "tools/mail_text.h"
#include "tools/message_view.h"

namespace py = pybind11;
using pvtool::Bstr;
using pvtool::Ref;

namespace pvpy {
namespace {

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

// Text for Python: line ends as Python text writes them.
py::str PythonText(const std::string& utf8) {
  std::string text;
  text.reserve(utf8.size());
  for (size_t i = 0; i < utf8.size(); ++i) {
    if (utf8[i] == '\r' && i + 1 < utf8.size() && utf8[i + 1] == '\n') continue;
    text += utf8[i];
  }
  return py::str(py::reinterpret_steal<py::object>(
      PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "surrogateescape")));
}


// A decoded parameter of one of a part's fields; names compare
// case-sensitively, as in the library.
bool FindParameter(IEMSMimePart* part, const char* field_name, const char* name, std::string* value) {
  Ref<IEMSMessageParameter> field;
  if (FAILED(part->FindHeader(Bstr(field_name).get(), field.put())) || !field) return false;
  Ref<IEMSMimeAttributes> attributes;
  if (FAILED(field->get_Attributes(attributes.put())) || !attributes) return false;
  LONG count = 0;
  attributes->get_AttributesCount(&count);
  for (LONG i = 0; i < count; ++i) {
    Ref<IEMSMimeAttribute> attribute;
    if (FAILED(attributes->get_Attribute(i, attribute.put())) || !attribute) continue;
    Bstr attribute_name;
    attribute->get_Name(attribute_name.put());
    if (attribute_name.utf8() != name) continue;
    Bstr text;
    attribute->get_DecodedValue(text.put());
    *value = pvtool::DisplayText(text);
    return true;
  }
  return false;
}

py::object WrapInterface(IUnknown* object) {
  IDispatch* dispatch = nullptr;
  if (object == nullptr || FAILED(object->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(&dispatch)))) {
    return py::none();
  }
  return WrapObject(dispatch);
}

class PartCore {
 public:
  PartCore(Ref<IEMSMimePart> part, int depth, int children)
      : part_(std::move(part)), depth_(depth), children_(children) {
    CountCreated();
  }
  ~PartCore() { CountDropped(); }
  PartCore(const PartCore&) = delete;
  PartCore& operator=(const PartCore&) = delete;

  int depth() const { return depth_; }
  int children() const { return children_; }

  const std::string& content_type() {
    if (!have_type_) {
      Bstr type;
      part_->get_MimeContentTypeString(type.put());
      content_type_ = type.get() == nullptr || type.wide().empty() ? "text/plain" : Lower(type.utf8());
      have_type_ = true;
    }
    return content_type_;
  }

  std::string transfer_encoding() {
    Ref<IEMSMessageParameter> encoding;
    if (FAILED(part_->FindHeader(Bstr("Content-Transfer-Encoding").get(), encoding.put())) || !encoding) return "";
    Bstr value;
    encoding->get_DecodedData(value.put());
    return Lower(pvtool::UnfoldValue(value.utf8()));
  }

  py::object filename() {
    std::string name;
    if (FindParameter(part_.get(), "Content-Disposition", "filename", &name) ||
        FindParameter(part_.get(), "Content-Type", "name", &name)) {
      return py::str(name);
    }
    return py::none();
  }

  // The command's rule: flagged by the library, or a leaf with a file
  // name, an x-uuencode leaf or a leaf whose type is not text.
  bool is_attachment() {
    pvtool::PartInfo info;
    info.children = children_;
    info.content_type = content_type();
    info.transfer_encoding = transfer_encoding();
    LONG flag = 0;
    part_->get_IsAttachPart(&flag);
    std::string name;
    const bool named = children_ == 0 && (FindParameter(part_.get(), "Content-Disposition", "filename", &name) ||
                                          FindParameter(part_.get(), "Content-Type", "name", &name));
    return pvtool::IsAttachment(info, flag != 0, named);
  }

  py::str attach_name() {
    Bstr name;
    part_->get_AttachName(name.put());
    return py::str(pvtool::DisplayText(name));
  }

  py::bytes decoded() {
    if (children_ > 0) return py::bytes("");
    Ref<IEMSDataObject> data;
    if (part_->get_DecodedBinary(data.put()) != S_OK || !data) return py::bytes("");
    return SpanBytes(data.get());
  }

  py::object text() {
    Bstr body;
    if (FAILED(part_->get_DecodedBody(body.put()))) return py::str("");
    return PythonText(pvtool::DisplayText(body));
  }

  py::bytes raw_body() {
    Ref<IEMSDataObject> body;
    if (FAILED(part_->get_BodyObject(body.put())) || !body) return py::bytes("");
    return SpanBytes(body.get());
  }

  std::vector<std::pair<std::string, std::string>> headers() {
    std::vector<std::pair<std::string, std::string>> lines;
    Ref<IEMSMessageParameters> list;
    if (FAILED(part_->get_Headers(list.put())) || !list) return lines;
    LONG count = 0;
    list->get_ParamCount(&count);
    for (LONG i = 0; i < count; ++i) {
      Ref<IEMSMessageParameter> field;
      if (FAILED(list->get_Parameter(i, field.put())) || !field) continue;
      Bstr name, value;
      field->get_Name(name.put());
      field->get_UnfoldedData(value.put());
      lines.emplace_back(name.utf8(), pvtool::DisplayText(value));
    }
    return lines;
  }

  py::object dispatch() { return WrapInterface(part_.get()); }

 private:
  Ref<IEMSMimePart> part_;
  int depth_;
  int children_;
  bool have_type_ = false;
  std::string content_type_;
};

py::object AddressEntries(const std::vector<pvtool::AddressInfo>& entries) {
  py::list list;
  for (const pvtool::AddressInfo& entry : entries) {
    py::list members;
    for (const pvtool::MailboxInfo& m : entry.mailboxes) members.append(py::make_tuple(m.name, m.address));
    list.append(py::make_tuple(entry.group, entry.group_name, members));
  }
  return std::move(list);
}

class MessageCore {
 public:
  MessageCore(Ref<IEMSMessageParser> message, std::string bytes)
      : view_(std::move(message), std::move(bytes)) {
    CountCreated();
  }
  ~MessageCore() { CountDropped(); }
  MessageCore(const MessageCore&) = delete;
  MessageCore& operator=(const MessageCore&) = delete;

  static MessageCore* Parse(py::buffer data, bool crlf) {
    py::buffer_info info = data.request();
    std::string bytes(static_cast<const char*>(info.ptr), static_cast<size_t>(info.size * info.itemsize));
    try {
      pvtool::LoadOptions options;
      options.crlf = crlf;
      std::string prepared = pvtool::PrepareMessageBytes(std::move(bytes), options, "input");
      Ref<IEMSMessageParser> message = pvtool::ParseMessage(prepared);
      return new MessageCore(std::move(message), std::move(prepared));
    } catch (const pvtool::ToolError& error) {
      throw py::value_error(error.what());
    }
  }

  py::str subject() const { return PythonText(view_.Subject()); }
  std::pair<std::string, std::string> sender() const {
    const pvtool::MailboxInfo sender = view_.Sender();
    return {sender.name, sender.address};
  }
  py::object addresses(const std::string& field) const { return AddressEntries(view_.Addresses(field.c_str())); }
  std::string field(const std::string& name) const { return pvtool::UnfoldValue(view_.DecodedField(name.c_str())); }
  std::vector<std::pair<std::string, std::string>> headers() const {
    std::vector<std::pair<std::string, std::string>> lines;
    for (pvtool::HeaderLine& line : view_.AllHeaders(false)) {
      lines.emplace_back(std::move(line.name), std::move(line.value));
    }
    return lines;
  }
  bool is_mime() const { return view_.IsMime(); }

  // Every part, depth first, children in order (the command's order).
  py::list parts() const {
    py::list list;
    Ref<IEMSMimePart> root;
    if (view_.get()->get_MimePart(root.put()) != S_OK || !root) return list;
    std::vector<std::pair<Ref<IEMSMimePart>, int>> stack;
    stack.emplace_back(std::move(root), 0);
    while (!stack.empty()) {
      auto [part, depth] = std::move(stack.back());
      stack.pop_back();
      Ref<IEMSMimeParts> children;
      LONG count = 0;
      if (SUCCEEDED(part->get_MimeParts(children.put())) && children) children->get_PartsCount(&count);
      for (LONG i = count - 1; i >= 0; --i) {
        Ref<IEMSMimePart> child;
        if (SUCCEEDED(children->get_Part(i, child.put())) && child) stack.emplace_back(std::move(child), depth + 1);
      }
      list.append(py::cast(new PartCore(std::move(part), depth, count), py::return_value_policy::take_ownership));
    }
    return list;
  }

  py::bytes plain_body() const {
    Ref<IEMSDataObject> body;
    if (FAILED(view_.get()->get_BodyObject(body.put())) || !body) return py::bytes("");
    return SpanBytes(body.get());
  }

  py::object text() const {
    std::string utf8;
    if (!view_.TextBody(&utf8)) return py::none();
    return PythonText(utf8);
  }
  py::object html() const {
    std::string utf8;
    if (!view_.HtmlBody(&utf8)) return py::none();
    return PythonText(utf8);
  }
  py::bytes assemble() const {
    Ref<IEMSDataObject> data;
    const HRESULT hr = view_.get()->AssembleObject(data.put());
    if (FAILED(hr)) ThrowComError(hr, "EMSMessageParser.AssembleObject");
    return SpanBytes(data.get());
  }
  py::object dispatch() const { return WrapInterface(view_.get()); }

 private:
  pvtool::MessageView view_;
};

}  // namespace

py::bytes Compose(const py::dict& request);

void DefineMessageCore(py::module_& module) {
  py::class_<PartCore>(module, "PartCore")
      .def_property_readonly("depth", &PartCore::depth)
      .def_property_readonly("children", &PartCore::children)
      .def_property_readonly("content_type", &PartCore::content_type)
      .def_property_readonly("transfer_encoding", &PartCore::transfer_encoding)
      .def_property_readonly("filename", &PartCore::filename)
      .def_property_readonly("is_attachment", &PartCore::is_attachment)
      .def_property_readonly("attach_name", &PartCore::attach_name)
      .def("decoded", &PartCore::decoded)
      .def("text", &PartCore::text)
      .def("raw_body", &PartCore::raw_body)
      .def("headers", &PartCore::headers)
      .def("dispatch", &PartCore::dispatch);
  py::class_<MessageCore>(module, "MessageCore")
      .def_static("parse", &MessageCore::Parse, py::arg("data"), py::arg("crlf") = true)
      .def("subject", &MessageCore::subject)
      .def("sender", &MessageCore::sender)
      .def("addresses", &MessageCore::addresses)
      .def("field", &MessageCore::field)
      .def("headers", &MessageCore::headers)
      .def("is_mime", &MessageCore::is_mime)
      .def("parts", &MessageCore::parts)
      .def("plain_body", &MessageCore::plain_body)
      .def("text", &MessageCore::text)
      .def("html", &MessageCore::html)
      .def("assemble", &MessageCore::assemble)
      .def("dispatch", &MessageCore::dispatch);
  module.def("compose", &Compose, py::arg("request"));
  module.def("display_text", [](py::object text) {
    // The library's text made ready for display, as the command shows it.
    BSTR wide = NewBstr(text);
    Bstr owned;
    *owned.put() = wide;
    return pvtool::DisplayText(owned);
  });
}

}  // namespace pvpy
