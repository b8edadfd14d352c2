#include "src/message_core.h"

#include <pybind11/stl.h>

#include <cstring>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "src/com_error.h"
#include "src/dispatch_object.h"
#include "src/python_bytes.h"
#include "src/variant_convert.h"
#include "tools/exit_codes.h"
#include "tools/line_ends.h"
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

// The library reads raw 8-bit header text in a single-byte page; the
// command repairs what was raw UTF-8 (see RepairRawUtf8). Text that came
// from encoded words or a declared charset is exact and is left alone, so
// that every value composed reads back unchanged.
bool HasEightBit(const pvtool::U16String& text) {
  for (char16_t c : text) {
    if (c >= 0x80) return true;
  }
  return false;
}

std::string Readable(const Bstr& text, bool repair) {
  return repair ? pvtool::DisplayText(text) : text.utf8();
}

std::string FirstOccurrence(const std::string& joined) { return joined.substr(0, joined.find("\r\n\r\n")); }

constexpr LONG kSubtypePlain = 18;
constexpr LONG kSubtypeHtml = 8;

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

// A decoded parameter of one of a part's fields.
bool FindParameter(IEMSMimePart* part, const char* field_name, const char* name, std::string* value) {
  Ref<IEMSMimeAttribute> attribute = pvtool::FindPartParameter(part, field_name, name);
  if (!attribute) return false;
  Bstr raw, text;
  attribute->get_RawValue(raw.put());
  attribute->get_DecodedValue(text.put());
  *value = Readable(text, HasEightBit(raw.wide()));
  return true;
}

py::object WrapInterface(IUnknown* object) {
  IDispatch* dispatch = nullptr;
  if (object == nullptr ||
      FAILED(object->QueryInterface(IID_IDispatch, reinterpret_cast<void**>(&dispatch)))) {
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
    if (FAILED(part_->FindHeader(Bstr("Content-Transfer-Encoding").get(), encoding.put())) || !encoding)
      return "";
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
    const bool named =
        children_ == 0 && (FindParameter(part_.get(), "Content-Disposition", "filename", &name) ||
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

  py::object text() { return PythonText(Text(part_.get(), depth_ > 0)); }

  // The decoded text of a part: raw UTF-8 repaired only when no charset is
  // declared. Inside a multipart, the line break before the next delimiter
  // line belongs to the delimiter, not to a text that is not base64.
  static std::string Text(IEMSMimePart* part, bool in_multipart) {
    Bstr body;
    if (FAILED(part->get_DecodedBody(body.put()))) return "";
    std::string charset;
    std::string text = Readable(body, !FindParameter(part, "Content-Type", "charset", &charset));
    if (in_multipart && text.size() >= 2 && text.compare(text.size() - 2, 2, "\r\n") == 0) {
      Ref<IEMSMessageParameter> encoding;
      std::string name;
      if (SUCCEEDED(part->FindHeader(Bstr("Content-Transfer-Encoding").get(), encoding.put())) && encoding) {
        Bstr value;
        encoding->get_DecodedData(value.put());
        name = Lower(pvtool::UnfoldValue(value.utf8()));
      }
      if (name != "base64") text.resize(text.size() - 2);
    }
    return text;
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
    pvtool::ForEachField(list.get(), [&](IEMSMessageParameter* field) {
      Bstr name, value;
      field->get_Name(name.put());
      field->get_UnfoldedData(value.put());
      lines.emplace_back(name.utf8(), pvtool::DisplayText(value));
    });
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
  explicit MessageCore(Ref<IEMSMessageParser> message) : view_(std::move(message)) { CountCreated(); }
  ~MessageCore() { CountDropped(); }
  MessageCore(const MessageCore&) = delete;
  MessageCore& operator=(const MessageCore&) = delete;

  // Prepares the input as the command does and parses it without a copy
  // where it allows: the message refers to the bytes of an immutable input,
  // or to the converted text when line ends had to change.
  static MessageCore* Parse(py::handle data, bool crlf) {
    std::shared_ptr<const void> owner;
    std::string_view input;
    if (std::shared_ptr<const PythonBytes> held = PythonBytes::HoldImmutable(data)) {
      input = held->view();
      owner = held;
    } else {
      // A mutable buffer may change after the call: the message keeps a copy.
      py::bytes copy = py::reinterpret_steal<py::bytes>(PyBytes_FromObject(data.ptr()));
      if (!copy) throw py::error_already_set();
      std::shared_ptr<const PythonBytes> held_copy = PythonBytes::HoldImmutable(copy);
      input = held_copy->view();
      owner = held_copy;
    }
    pvtool::LoadOptions options;
    options.crlf = crlf;
    auto converted = std::make_shared<std::string>();
    try {
      const std::string_view prepared = pvtool::PrepareMessageView(input, options, "input", converted.get());
      if (!converted->empty() && prepared.data() >= converted->data() &&
          prepared.data() <= converted->data() + converted->size()) {
        owner = converted;  // the view is into the converted text
      }
      return new MessageCore(pvtool::ParseMessageOver(prepared, std::move(owner)));
    } catch (const pvtool::ToolError& error) {
      throw py::value_error(error.what());
    }
  }

  py::str subject() const {
    Bstr subject;
    view_.get()->get_Subject(subject.put());
    return PythonText(FirstOccurrence(Readable(subject, RawHasEightBit("Subject"))));
  }

  // The sender as the library gives it, unless From holds a group: then
  // the group's first member, or for an empty group its name.
  std::pair<std::string, std::string> sender() const {
    const std::vector<pvtool::AddressInfo> from = Addresses("From");
    if (!pvtool::HasGroup(from)) {
      const bool repair = RawHasEightBit("From");
      Bstr name, address;
      view_.get()->get_SenderName(name.put());
      view_.get()->get_SenderEmail(address.put());
      return {Readable(name, repair), Readable(address, repair)};
    }
    if (from[0].mailboxes.empty()) return {from[0].group_name, std::string()};
    return {from[0].mailboxes[0].name, from[0].mailboxes[0].address};
  }

  py::object addresses(const std::string& field) const { return AddressEntries(Addresses(field.c_str())); }

  // The entries of an address field: the field is split by the command's
  // rules, groups included, and each mailbox read by the library.
  std::vector<pvtool::AddressInfo> Addresses(const char* field_name) const {
    std::vector<pvtool::AddressInfo> entries;
    Ref<IEMSHeaderMailboxes> list;
    if (FAILED(PvCreateInstance(CLSID_EMSHeaderMailboxes, nullptr, IID_IEMSHeaderMailboxes,
                                reinterpret_cast<void**>(list.put())))) {
      return entries;
    }
    const bool repair = RawHasEightBit(field_name);
    auto read = [&](const std::string& piece, pvtool::MailboxInfo* mailbox) {
      Bstr name, address;
      if (FAILED(list->ParseMailboxes(Bstr(piece).get(), 1))) return false;
      list->get_MailboxName(0, name.put());
      list->get_MailboxAddress(0, address.put());
      mailbox->name = Readable(name, repair);
      mailbox->address = Readable(address, repair);
      return !mailbox->name.empty() || !mailbox->address.empty();
    };
    for (const pvtool::AddressPieces& pieces :
         pvtool::SplitAddressList(pvtool::UnfoldValue(RawField(field_name)))) {
      pvtool::AddressInfo entry;
      entry.group = pieces.group;
      if (pieces.group) {
        // A group name is a phrase: read it as the name of a mailbox.
        pvtool::MailboxInfo named;
        if (read(pieces.group_name + " <group@invalid>", &named)) entry.group_name = named.name;
        if (entry.group_name.empty()) entry.group_name = pieces.group_name;
      }
      for (const std::string& piece : pieces.members) {
        pvtool::MailboxInfo mailbox;
        if (read(piece, &mailbox)) entry.mailboxes.push_back(std::move(mailbox));
      }
      if (entry.group || !entry.mailboxes.empty()) entries.push_back(std::move(entry));
    }
    return entries;
  }

  std::string RawField(const char* name) const {
    Bstr value;
    view_.get()->get_HeaderString(Bstr(name).get(), value.put());
    return value.utf8();
  }

  bool RawHasEightBit(const char* name) const {
    Bstr value;
    view_.get()->get_HeaderString(Bstr(name).get(), value.put());
    return HasEightBit(value.wide());
  }

  std::string field(const std::string& name) const {
    return pvtool::UnfoldValue(view_.DecodedField(name.c_str()));
  }
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
        if (SUCCEEDED(children->get_Part(i, child.put())) && child)
          stack.emplace_back(std::move(child), depth + 1);
      }
      list.append(
          py::cast(new PartCore(std::move(part), depth, count), py::return_value_policy::take_ownership));
    }
    return list;
  }

  py::bytes plain_body() const {
    Ref<IEMSDataObject> body;
    if (FAILED(view_.get()->get_BodyObject(body.put())) || !body) return py::bytes("");
    return SpanBytes(body.get());
  }

  py::object text() const { return Body(kSubtypePlain); }
  py::object html() const { return Body(kSubtypeHtml); }

  // The text or HTML body: the first part of that subtype, as the
  // library's TextBody and HTMLBody find it; a plain message's body is
  // its text.
  py::object Body(LONG subtype) const {
    IEMSMessageParser* m = view_.get();
    if (!view_.IsMime()) {
      if (subtype != kSubtypePlain) return py::none();
      std::string utf8;
      if (!view_.TextBody(&utf8)) return py::none();
      return PythonText(utf8);
    }
    Ref<IEMSMimePart> part;
    if (FAILED(m->FindPartBySubType(subtype, part.put())) || !part) return py::none();
    Ref<IEMSMimePart> root;
    Ref<IEMSMimeParts> children;
    LONG count = 0;
    if (m->get_MimePart(root.put()) == S_OK && root && SUCCEEDED(root->get_MimeParts(children.put())) &&
        children) {
      children->get_PartsCount(&count);
    }
    return PythonText(PartCore::Text(part.get(), count > 0));
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
      .def_static("parse", &MessageCore::Parse, py::arg("data"), py::arg("crlf") = true,
                  py::return_value_policy::take_ownership)
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
  module.def(
      "prepare",
      [](py::buffer data, bool crlf) {
        // The bytes parse() hands to the library: what the command prepares.
        py::buffer_info info = data.request();
        const std::string_view input(static_cast<const char*>(info.ptr),
                                     static_cast<size_t>(info.size * info.itemsize));
        pvtool::LoadOptions options;
        options.crlf = crlf;
        std::string converted;
        try {
          return py::bytes(std::string(pvtool::PrepareMessageView(input, options, "input", &converted)));
        } catch (const pvtool::ToolError& error) {
          throw py::value_error(error.what());
        }
      },
      py::arg("data"), py::arg("crlf") = true);
  module.def("display_text", [](py::object text) {
    // The library's text made ready for display, as the command shows it.
    BSTR wide = NewBstr(text);
    Bstr owned;
    *owned.put() = wide;
    return pvtool::DisplayText(owned);
  });
}

}  // namespace pvpy
