// Parses any bytes as a part (the first byte chooses what the searches look
// for; the rest is the part), then checks the tree
// against a plain statement of the parse (header block to the first
// "\r\n\r\n", each multipart body cut by SplitMultipartBody, children that
// cannot be parsed dropped), assembles it and parses the assembly again,
// finds every part's parent, searches by subtype and content type, and
// decodes every leaf, comparing with the transfer decoders.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "parcelvane/parcelvane.h"
#include "src/data/data_access.h"
#include "src/headers/content_type_codes.h"
#include "src/headers/header_block.h"
#include "src/headers/message_parameter.h"
#include "src/headers/message_parameters.h"
#include "src/mime/mime_part.h"
#include "tests/mime/multipart_reference.h"
#include "src/mime/transfer_codecs.h"

namespace {

using pv::Bstr;
using pv::ComPtr;

void Check(bool condition, const char* what) {
  if (!condition) {
    std::fprintf(stderr, "mime_part_fuzz: %s\n", what);
    std::abort();
  }
}

std::string Bytes(IEMSDataObject* object) {
  pv::DataBytes bytes;
  if (object == nullptr || FAILED(pv::ReadDataBytes(object, &bytes))) return std::string();
  return std::string(bytes.Span());
}

ComPtr<IEMSDataObject> DataOf(std::string_view bytes) {
  ComPtr<IEMSDataObject> data;
  Check(SUCCEEDED(pv::MakeDataObject(std::string(bytes), &data)), "data object");
  return data;
}

// ---------------------------------------------------------------- the plain statement
// One part as the plain statement builds it: its own body (or none) and its
// children. Built with a stack of its own, so deep inputs are fine here too.
struct Node {
  bool hasBody = false;
  std::string body;
  std::vector<std::unique_ptr<Node>> children;
};

// What the header block says about a part: its type code, boundary, and
// whether its disposition is an attachment.
struct Classification {
  bool hasType = false;
  LONG type = pv::kTypeText;
  std::string boundary;
};

Classification Classify(std::string_view block) {
  Classification c;
  ComPtr<pv::MessageParameters> list;
  Check(SUCCEEDED(pv::MakeObject(&list)), "header list");
  list->ParseBlock(block);
  pv::FieldRef field = list->Find("Content-Type");
  if (!field) return c;
  c.hasType = true;
  pv::MessageParameter* own = field->OwnField();
  c.type = own->content().typeCode;
  if (FAILED(own->BoundaryNarrow(&c.boundary))) c.boundary.clear();
  return c;
}

// The parse of `span`, or null when it cannot be parsed.
std::unique_ptr<Node> Reference(std::string_view span) {
  struct Pending {
    Node* node;
    std::string_view span;
  };
  auto parseOne = [](std::string_view s, std::vector<Pending>* queue) -> std::unique_ptr<Node> {
    size_t h = pv::FindHeaderBlockEnd(s);
    if (h == std::string_view::npos) return nullptr;
    auto node = std::make_unique<Node>();
    if (h + 4 < s.size()) {
      node->hasBody = true;
      node->body = std::string(s.substr(h + 4));
      queue->push_back({node.get(), s});
    }
    return node;
  };
  std::vector<Pending> queue;
  std::unique_ptr<Node> root = parseOne(span, &queue);
  while (!queue.empty()) {
    Pending p = queue.back();
    queue.pop_back();
    size_t h = pv::FindHeaderBlockEnd(p.span);
    Classification c = Classify(p.span.substr(0, h));
    if (!c.hasType || c.type != pv::kTypeMultipart || c.boundary.empty()) continue;
    std::string_view body = p.span.substr(h + 4);
    bool found = false;
    for (pv::ChildSpan child : pv::SplitMultipartBody(body, c.boundary, &found)) {
      std::unique_ptr<Node> node = parseOne(body.substr(child.offset, child.length), &queue);
      if (node) p.node->children.push_back(std::move(node));
    }
    if (found && !p.node->children.empty()) {
      p.node->hasBody = false;
      p.node->body.clear();
    }
  }
  return root;
}

// ---------------------------------------------------------------- the tree
ComPtr<IEMSMimePart> ChildAt(IEMSMimePart* part, LONG index) {
  ComPtr<IEMSMimeParts> parts;
  part->get_MimeParts(parts.put());
  ComPtr<IEMSMimePart> child;
  parts->get_Part(index, child.put());
  return child;
}

LONG ChildCount(IEMSMimePart* part) {
  ComPtr<IEMSMimeParts> parts;
  part->get_MimeParts(parts.put());
  LONG count = 0;
  parts->get_PartsCount(&count);
  return count;
}

// Every part of the tree with its parent (null for the root), in pre-order.
std::vector<std::pair<ComPtr<IEMSMimePart>, ComPtr<IEMSMimePart>>> AllParts(IEMSMimePart* root) {
  std::vector<std::pair<ComPtr<IEMSMimePart>, ComPtr<IEMSMimePart>>> all;
  std::vector<std::pair<ComPtr<IEMSMimePart>, ComPtr<IEMSMimePart>>> stack;
  stack.emplace_back(ComPtr<IEMSMimePart>(root), nullptr);
  while (!stack.empty()) {
    auto entry = stack.back();
    stack.pop_back();
    all.push_back(entry);
    for (LONG i = ChildCount(entry.first.get()); i-- > 0;)
      stack.emplace_back(ChildAt(entry.first.get(), i), entry.first);
  }
  return all;
}

void CheckAgainstReference(IEMSMimePart* root, const Node* reference) {
  std::vector<std::pair<ComPtr<IEMSMimePart>, const Node*>> stack;
  stack.emplace_back(ComPtr<IEMSMimePart>(root), reference);
  while (!stack.empty()) {
    auto [part, node] = stack.back();
    stack.pop_back();
    IEMSDataObject* body = pv::ImplOf<pv::MimePart>(part.get())->body();
    Check((body != nullptr) == node->hasBody, "body held as stated");
    if (body != nullptr) Check(Bytes(body) == node->body, "body bytes as stated");
    Check(ChildCount(part.get()) == static_cast<LONG>(node->children.size()), "children as stated");
    for (size_t i = 0; i < node->children.size(); ++i) {
      stack.emplace_back(ChildAt(part.get(), static_cast<LONG>(i)), node->children[i].get());
    }
  }
}

// The decoded body a leaf must give: the transfer decoders on its bytes.
void CheckDecodedLeaf(IEMSMimePart* part) {
  IEMSDataObject* body = pv::ImplOf<pv::MimePart>(part)->body();
  ComPtr<IEMSDataObject> decoded;
  HRESULT hr = part->get_DecodedBinary(decoded.put());
  if (body == nullptr) {
    Check(hr == S_FALSE && !decoded, "no body decodes to nothing");
    return;
  }
  ComPtr<IEMSMessageParameter> field;
  Bstr name(pv::WidenAscii("Content-Transfer-Encoding"));
  part->FindHeader(name.get(), field.put());
  pv::TransferEncoding code = pv::kTransferNone;
  if (field) {
    Bstr value;
    field->get_UnfoldedData(value.put());
    code = pv::TransferEncodingOfField(value.view());
  }
  std::string expected;
  bool ok = pv::DecodeTransferBody(code, Bytes(body), &expected);
  Check(ok == (hr == S_OK), "decode status");
  if (ok) Check(Bytes(decoded.get()) == expected, "decoded bytes");
}

void Exercise(uint8_t selector, std::string_view bytes) {
  ComPtr<IEMSMimePart> root;
  Check(SUCCEEDED(PvCreateInstance(CLSID_EMSMimePart, nullptr, IID_IEMSMimePart, root.put_void())), "part");
  HRESULT hr = root->ParsePartObject(DataOf(bytes).get());
  std::unique_ptr<Node> reference = Reference(bytes);
  Check((hr == S_OK) == (reference != nullptr), "parse status");
  if (hr != S_OK) {
    Check(hr == E_FAIL, "parse failure is E_FAIL");
    return;
  }
  CheckAgainstReference(root.get(), reference.get());

  auto all = AllParts(root.get());
  for (auto& [part, parent] : all) {
    if (parent) {
      ComPtr<IEMSMimePart> found;
      Check(root->FindParentPart(part.get(), found.put()) == S_OK && found == parent, "parent found");
    }
    if (ChildCount(part.get()) == 0) CheckDecodedLeaf(part.get());
    Bstr text;
    part->get_AttachName(text.put());
    Bstr decoded;
    part->get_DecodedBody(decoded.put());
  }
  ComPtr<IEMSMimePart> bySubtype;
  hr = root->FindPartBySubType(static_cast<LONG>(selector % 30) - 1, bySubtype.put());
  Check(hr == S_OK || hr == E_FAIL, "search status");

  ComPtr<IEMSDataObject> assembled;
  Check(root->AssemblePartObject(assembled.put()) == S_OK && assembled, "assembly");
  std::string text = Bytes(assembled.get());
  ComPtr<IEMSMimePart> again;
  Check(SUCCEEDED(PvCreateInstance(CLSID_EMSMimePart, nullptr, IID_IEMSMimePart, again.put_void())), "part");
  hr = again->ParsePartObject(assembled.get());
  Check((hr == S_OK) == (text.find("\r\n\r\n") != std::string::npos), "assembly parses as far as it can");

  ComPtr<IEMSMimePart> byType;
  Bstr type(pv::WidenAscii(selector & 1 ? "text/html" : "multipart/mixed"));
  hr = root->FindPart(type.get(), -1, byType.put());
  Check(hr == S_OK || hr == E_FAIL, "find status");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  Exercise(data[0], std::string_view(reinterpret_cast<const char*>(data) + 1, size - 1));
  return 0;
}
