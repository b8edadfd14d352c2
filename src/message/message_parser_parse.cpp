// Parsing a message: the header block, the split of its "Content-" fields
// to the root part, the body, and the conversion of uuencoded blocks in
// plain text into MIME attachments.
#include <set>
#include <vector>

#include "src/data/data_object.h"
#include "src/headers/content_type_codes.h"
#include "src/headers/message_parameters.h"
#include "src/message/message_parser.h"
#include "src/message/message_parser_util.h"
#include "src/message/uuencoded_blocks.h"
#include "src/platform/codepage.h"
#include "src/com/class_instance.h"

namespace pv {
namespace {

constexpr std::string_view kHeaderEnd = "\r\n\r\n";
constexpr std::string_view kMimeFieldPrefix = "Content-";

bool IsMimeFieldName(WStringView name) {
  static const WString prefix = WidenAscii(kMimeFieldPrefix);
  return StartsWithIgnoreCaseAscii(name, prefix);
}

struct NameLess {
  bool operator()(const WString& a, const WString& b) const { return CompareIgnoreCaseAscii(a, b) < 0; }
};
using NameSet = std::set<WString, NameLess>;

// Every entry's name, read through the interface (empty entries and entries
// without a name give no name).
std::vector<WString> FieldNames(IEMSMessageParameters* list) {
  std::vector<WString> names;
  LONG count = 0;
  list->get_ParamCount(&count);
  for (LONG i = 0; i < count; ++i) {
    ComPtr<IEMSMessageParameter> field;
    Bstr name;
    list->get_Parameter(i, field.put());
    if (field && SUCCEEDED(field->get_Name(name.put())) && !name.is_null()) names.emplace_back(name.view());
  }
  return names;
}

// One part of the tree walk of ConvertUuencodedInTree: a part's child list,
// the child being looked at, and whether anything below changed.
struct TreeFrame {
  ComPtr<IEMSMimeParts> children;
  LONG count = 0;
  LONG next = 0;
  ComPtr<IEMSMimePart> child;
  bool changed = false;
};

TreeFrame OpenFrame(IEMSMimePart* part) {
  TreeFrame frame;
  if (SUCCEEDED(part->get_MimeParts(frame.children.put())) && frame.children) {
    frame.children->get_PartsCount(&frame.count);
  }
  return frame;
}

}  // namespace

// ---------------------------------------------------------------- parse
HRESULT MessageParser::DoParse() {
  if (parsed_) return S_OK;
  if (!stored_) return E_POINTER;
  return ParseObject(stored_.get());
}

HRESULT MessageParser::PutFullMessage(BSTR newVal) {
  if (newVal == nullptr) return E_FAIL;
  ComPtr<IEMSDataObject> data;
  if (FAILED(DataObjectFromText(View(newVal), &data)) || !data) return E_FAIL;
  return ParseObject(data.get());
}

// A conversion of uuencoded blocks is followed by an assembly of the new
// structure and a parse of the result, which starts over on the assembled
// object (so it resets the message again) and may itself convert what the
// first conversion exposed; the status of those later parses is dropped.
// They run one after another in this loop rather than as nested calls, and
// after kMaxConversionRounds conversions the parse keeps what it has: text
// crafted so that every conversion exposes a new block would otherwise cost
// one assembly and parse of the whole message per block.
HRESULT MessageParser::DoParseObject(IEMSDataObject* pObject) {
  if (pObject == nullptr) return E_POINTER;
  ComPtr<IEMSDataObject> keep(pObject);
  bool converted = false;
  HRESULT hr = ParseOnce(pObject, true, &converted);
  if (FAILED(hr)) return hr;
  for (int rounds = 1; converted; ++rounds) {
    ComPtr<IEMSDataObject> assembled;
    AssembleObject(assembled.put());
    if (!assembled) break;
    converted = false;
    ParseOnce(assembled.get(), rounds < kMaxConversionRounds, &converted);
  }
  parsed_ = 1;
  return S_OK;
}

HRESULT MessageParser::ParseOnce(IEMSDataObject* object, bool convert, bool* converted) {
  *converted = false;
  if (object != stored_.get()) {
    InitNew();
    stored_ = ComPtr<IEMSDataObject>(object);
  } else if (parsed_) {
    return S_OK;
  }
  plainBody_ = nullptr;
  root_ = nullptr;
  headers_.get()->RemoveAll();

  DataBytes bytes;
  if (FAILED(ReadDataBytes(object, &bytes)) || bytes.data() == nullptr) return E_FAIL;
  std::string_view span = bytes.Span();
  // Only CR LF CR LF ends the header block; without it all is header.
  size_t separator = span.find(kHeaderEnd);
  size_t headerLength = separator == std::string_view::npos ? span.size() : separator;
  // The header block is read through a clone of the object; the library's
  // own object is read in place (its clone could only fail for memory).
  if (!bytes.fromOwnObject || !ParseOwnHeaderBlock(span.substr(0, headerLength))) {
    if (headerLength > 0) {
      ComPtr<IEMSDataObject> block;
      HRESULT hr = object->Clone(block.put());
      if (FAILED(hr)) return hr;
      if (!block) return E_FAIL;
      block->put_Length(static_cast<ULONG>(headerLength));
      headers_.get()->ParseParametersObject(block.get());
    }
    SplitMimeHeaders();
  }

  if (separator != std::string_view::npos && separator + kHeaderEnd.size() < span.size()) {
    size_t bodyStart = separator + kHeaderEnd.size();
    ComPtr<IEMSDataObject> body;
    if (SUCCEEDED(CloneDataSpan(object, static_cast<ULONG>(bytes.position + bodyStart),
                                static_cast<ULONG>(span.size() - bodyStart), &body))) {
      if (root_) {
        root_.get()->put_DefaultCodePage(defaultCodePage_);
        root_.get()->put_DefaultEncoding(defaultEncoding_);
        root_.get()->put_BodyObject(body.get());
      } else {
        plainBody_ = body;
      }
    }
  }

  if (!convert) return S_OK;
  if (!plainBody_) {
    *converted = ConvertUuencodedInTree(root_.get(), true);
    return S_OK;
  }
  ComPtr<IEMSMimeParts> parts;
  if (!ConvertUuencodedBlocks(plainBody_.get(), &parts)) return S_OK;
  HRESULT hr = MakeMixedRoot(parts.get());
  if (FAILED(hr)) return hr;
  *converted = true;
  return S_OK;
}

HRESULT MessageParser::MakeMixedRoot(IEMSMimeParts* parts) {
  ComPtr<IEMSMessageParameter> version;
  Bstr versionName = FixedName("MIME-Version");
  if (SUCCEEDED(headers_.get()->CreateParameter(versionName.get(), version.put())) && version) {
    Bstr one = FixedName("1.0");
    version->put_UnfoldedData(one.get());
  }
  ComPtr<IEMSMimePart> root;
  HRESULT hr = CreateClassInstance(CLSID_EMSMimePart, &root);
  if (FAILED(hr)) return hr;
  if (ComPtr<IEMSContentType> type = CreateContentType(root.get(), "multipart/mixed")) {
    type->CreateBoundary(0, nullptr);
  }
  root->put_MimeParts(parts);
  plainBody_ = nullptr;
  root_.Reset(root);
  return S_OK;
}

// ---------------------------------------------------------------- header split
void MessageParser::SplitMimeHeaders() {
  ComPtr<IEMSMessageParameters> mime;
  if (FAILED(CreateClassInstance(CLSID_EMSMessageParameters, &mime))) return;
  LONG count = 0;
  headers_.get()->get_ParamCount(&count);
  for (LONG i = 0; i < count; ++i) {
    ComPtr<IEMSMessageParameter> field;
    Bstr name;
    headers_.get()->get_Parameter(i, field.put());
    if (!field || FAILED(field->get_Name(name.put()))) continue;
    // The name must start with the prefix: "X-Content-..." stays.
    if (IsMimeFieldName(name.view())) mime->AddParameter(field.get());  // the same field, not a copy
  }
  LONG mimeCount = 0;
  mime->get_ParamCount(&mimeCount);
  if (mimeCount == 0) return;
  if (!root_) {
    ComPtr<IEMSMimePart> root;
    if (FAILED(CreateClassInstance(CLSID_EMSMimePart, &root))) return;
    root_.Reset(std::move(root));
  }
  root_.get()->put_Headers(mime.get());
  RemoveMimeNames(mime.get());
}

// The library's own list: the block is parsed straight into the message's
// list and the root part's. The root part is made first, so that without
// it nothing changes from the general way.
bool MessageParser::ParseOwnHeaderBlock(std::string_view block) {
  MessageParameters* own = headers_->OwnList();
  if (own == nullptr) return false;
  ComPtr<IEMSMessageParameters> made;
  if (FAILED(CreateClassInstance(CLSID_EMSMessageParameters, &made))) return false;
  FieldListRef mime(made);
  MessageParameters* ownMime = mime->OwnList();
  ComPtr<IEMSMimePart> root;
  if (ownMime == nullptr || FAILED(CreateClassInstance(CLSID_EMSMimePart, &root))) return false;
  own->ParseBlockSplitting(block, kMimeFieldPrefix, ownMime);
  if (ownMime->count() == 0) return true;
  root_.Reset(root);
  root_.get()->put_Headers(mime.get());
  return true;
}

// RemoveByName once per name, as written, costs a rebuild of the list's
// name index per name: quadratic for a block of many "Content-" fields. On
// the library's own list, when every entry is present and is the one its
// name finds (always so after a parse), those removals take exactly the
// entries carrying the names, so the kept entries are put back in one pass.
void MessageParser::RemoveMimeNames(IEMSMessageParameters* mimeList) {
  std::vector<WString> names = FieldNames(mimeList);
  if (headers_->OwnList() != nullptr) {
    NameSet removing(names.begin(), names.end());
    std::vector<ComPtr<IEMSMessageParameter>> kept;
    bool consistent = true;
    LONG count = 0;
    headers_.get()->get_ParamCount(&count);
    for (LONG i = 0; i < count && consistent; ++i) {
      ComPtr<IEMSMessageParameter> field;
      ComPtr<IEMSMessageParameter> indexed;
      Bstr name;
      headers_.get()->get_Parameter(i, field.put());
      consistent = field && SUCCEEDED(field->get_Name(name.put())) && !name.is_null() &&
                   SUCCEEDED(headers_.get()->FindParameter(name.get(), indexed.put())) && indexed == field;
      if (consistent && removing.count(WString(name.view())) == 0) kept.push_back(field);
    }
    if (consistent) {
      headers_.get()->RemoveAll();
      for (const ComPtr<IEMSMessageParameter>& field : kept) headers_.get()->AddParameter(field.get());
      return;
    }
  }
  for (const WString& name : names) {
    Bstr wide(name);
    headers_.get()->RemoveByName(wide.get());
  }
}

// ---------------------------------------------------------------- uuencoded blocks
// The scan comes first, so that text without blocks costs no objects. Any
// part that cannot be made stops the conversion: the body then stays as it
// was rather than losing a block.
bool MessageParser::ConvertUuencodedBlocks(IEMSDataObject* text, ComPtr<IEMSMimeParts>* parts) {
  DataBytes bytes;
  std::string_view span = SpanOf(text, &bytes);
  UuencodedText found;
  if (!FindUuencodedBlocks(span, &found)) return false;

  ComPtr<IEMSMimeParts> list;
  ComPtr<IEMSMimePart> textPart;
  if (FAILED(CreateClassInstance(CLSID_EMSMimeParts, &list)) ||
      FAILED(CreateClassInstance(CLSID_EMSMimePart, &textPart))) {
    return false;
  }
  textPart->put_DefaultCodePage(defaultCodePage_);
  textPart->put_DefaultEncoding(defaultEncoding_);
  list->AddPart(textPart.get());

  Bstr contentType = FixedName("Content-Type");
  Bstr transferEncoding = FixedName("Content-Transfer-Encoding");
  Bstr disposition = FixedName("Content-Disposition");
  Bstr uuencode = FixedName("x-uuencode");
  Bstr attachment = FixedName("attachment");
  for (const UuencodedBlock& block : found.blocks) {
    ComPtr<IEMSDataObject> data;
    ComPtr<IEMSMimePart> part;
    if (FAILED(CloneDataSpan(text, static_cast<ULONG>(bytes.position + block.dataOffset),
                             static_cast<ULONG>(block.dataLength), &data)) ||
        FAILED(CreateClassInstance(CLSID_EMSMimePart, &part))) {
      return false;
    }
    part->put_BodyObject(data.get());
    part->put_IsAttachPart(1);
    ComPtr<IEMSMessageParameter> field;
    part->CreateHeader(contentType.get(), field.put());  // given no value
    field = nullptr;
    part->CreateHeader(transferEncoding.get(), field.put());
    if (field) field->put_RawData(uuencode.get());
    field = nullptr;
    part->CreateHeader(disposition.get(), field.put());
    ComPtr<IEMSContentDisposition> state;
    if (field && SUCCEEDED(field->QueryInterface(IID_IEMSContentDisposition, state.put_void())) && state) {
      Bstr name(AnsiToWide(block.fileName));
      state->put_DispositionType(attachment.get());
      state->put_FileName(name.get());
    }
    list->AddPart(part.get());
  }
  LONG count = 0;
  list->get_PartsCount(&count);
  if (count < 2) return false;

  CreateContentType(textPart.get(), "text/plain");
  ComPtr<IEMSDataObject> textData;
  if (FAILED(MakeDataObject(std::move(found.text), &textData))) return false;
  textPart->put_BodyObject(textData.get());
  *parts = list;
  return true;
}

// Depth first with an explicit stack: a child's own subtree is converted
// before the child itself is looked at, as a recursive walk would, and the
// attachments a text child yields go to the end of its parent's list, past
// the count taken when the parent was opened, so they are not walked.
bool MessageParser::ConvertUuencodedInTree(IEMSMimePart* part, bool isRoot) {
  if (part == nullptr) return false;
  // A text child that holds blocks is replaced by its text part.
  auto convertChild = [this](TreeFrame& frame) {
    LONG type = 0;
    if (FAILED(frame.child->get_MimeType(&type)) || type != kTypeText) return false;
    ComPtr<IEMSDataObject> body;
    ComPtr<IEMSMimeParts> produced;
    frame.child->get_BodyObject(body.put());
    if (!ConvertUuencodedBlocks(body.get(), &produced)) return false;
    ComPtr<IEMSMimePart> textPart;
    produced->get_Part(0, textPart.put());
    if (textPart) frame.children->put_Part(frame.next, textPart.get());
    produced->RemovePart(0);
    frame.children->AppendParts(produced.get());
    return true;
  };

  std::vector<TreeFrame> stack;
  stack.push_back(OpenFrame(part));
  const LONG rootChildren = stack.back().count;
  bool answer = false;
  bool returning = false;
  while (!stack.empty()) {
    TreeFrame& top = stack.back();
    if (returning) {
      returning = false;
      if (answer || convertChild(top)) top.changed = true;
      ++top.next;
    }
    if (top.next < top.count) {
      top.child = nullptr;
      top.children->get_Part(top.next, top.child.put());
      if (!top.child) {  // an empty entry answers no and has no type
        ++top.next;
        continue;
      }
      TreeFrame opened = OpenFrame(top.child.get());
      stack.push_back(std::move(opened));
      continue;
    }
    answer = top.changed;
    stack.pop_back();
    returning = true;
  }

  // A root without children would scan the message's plain body. The parse
  // asks only when there is no plain body, so a single-part MIME message is
  // never scanned.
  if (!isRoot || rootChildren != 0 || !plainBody_) return answer;
  ComPtr<IEMSMimeParts> produced;
  if (!ConvertUuencodedBlocks(plainBody_.get(), &produced)) return answer;
  ComPtr<IEMSMessageParameter> field;
  Bstr versionName = FixedName("MIME-Version");
  if (SUCCEEDED(headers_.get()->CreateParameter(versionName.get(), field.put())) && field) {
    Bstr one = FixedName("1.0");
    field->put_UnfoldedData(one.get());
  }
  field = nullptr;
  Bstr typeName = FixedName("Content-Type");
  ComPtr<IEMSContentType> state;
  if (SUCCEEDED(headers_.get()->CreateParameter(typeName.get(), field.put())) && field &&
      SUCCEEDED(field->QueryInterface(IID_IEMSContentType, state.put_void())) && state) {
    Bstr mixed = FixedName("multipart/mixed");
    state->put_ContentType(mixed.get());
    state->CreateBoundary(0, nullptr);
  }
  ComPtr<IEMSMimeParts> rootParts;
  if (SUCCEEDED(part->get_MimeParts(rootParts.put())) && rootParts) rootParts->AppendParts(produced.get());
  return true;
}

}  // namespace pv
