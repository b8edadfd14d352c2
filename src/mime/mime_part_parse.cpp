#include "src/mime/mime_part_parse.h"

#include "src/headers/content_type_codes.h"
#include "src/headers/header_block.h"
#include "src/headers/message_parameters.h"
#include "src/mime/mime_part.h"
#include "src/mime/mime_part_fields.h"
#include "src/mime/mime_parts.h"

namespace pv {
namespace {

std::string_view BufferOf(const DataBytes& bytes) {
  if (bytes.data() == nullptr) return std::string_view();
  return std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size());
}

size_t SpanBeginOf(const DataBytes& bytes) {
  if (bytes.data() == nullptr) return 0;
  return static_cast<size_t>(bytes.Span().data() - reinterpret_cast<const char*>(bytes.data()));
}

bool IsAttachmentType(LONG code) {
  return code == kTypeApplication || code == kTypeAudio || code == kTypeImage || code == kTypeMessage ||
         code == kTypeVideo;
}

// The header block of a part the parser made itself: its list is the
// library's own, so the bytes go to it without a data object in between.
void ParseHeaderBlock(MimePart* part, std::string_view block) {
  if (MessageParameters* own = part->fields().OwnList()) own->ParseBlock(block);  // status ignored
}

}  // namespace

PartTreeParser::PartTreeParser(IEMSDataObject* rootObject, const DataBytes& root)
    : rootObject_(rootObject),
      root_(root),
      text_(BufferOf(root)),
      spanBegin_(SpanBeginOf(root)),
      spanEnd_(spanBegin_ + root.Span().size()),
      splitter_(text_, spanBegin_, spanEnd_) {
  if (root.fromOwnObject) ownStore_ = root.store;
}

HRESULT PartTreeParser::ParseRoot(MimePart* part) {
  const size_t headerLength = FindHeaderBlockEnd(text_.substr(spanBegin_, spanEnd_ - spanBegin_));
  if (headerLength == std::string_view::npos) return E_FAIL;
  if (headerLength != 0) {
    // The header list reads a clone whose Length selects the block.
    ComPtr<IEMSDataObject> block;
    HRESULT hr = rootObject_->Clone(block.put());
    if (FAILED(hr)) return hr;
    if (!block) return E_FAIL;
    block->put_Length(static_cast<ULONG>(headerLength));
    part->headers()->ParseParametersObject(block.get());  // status ignored
  }
  const size_t bodyBegin = spanBegin_ + headerLength + 4;
  if (bodyBegin < spanEnd_) {
    ComPtr<IEMSDataObject> body;
    HRESULT hr = CloneDataSpan(rootObject_, static_cast<ULONG>(bodyBegin),
                               static_cast<ULONG>(spanEnd_ - bodyBegin), &body);
    if (FAILED(hr)) return hr;
    part->SetBody(body);
    StoreBody(part, body.get(), bodyBegin, spanEnd_);
  }
  RunSplits();
  return S_OK;
}

void PartTreeParser::StoreRootBody(MimePart* part) {
  StoreBody(part, rootObject_, spanBegin_, spanEnd_);
  RunSplits();
}

void PartTreeParser::StoreBody(MimePart* part, IEMSDataObject* body, size_t begin, size_t end) {
  FieldListAccess& list = part->fields();
  FieldRef type = list.Find("Content-Type");
  if (!type) return;
  LONG code = kTypeText;
  LONG subtype = 0;
  if (!type->ContentCodes(&code, &subtype)) code = kTypeText;
  // Message entities are attachments too: they are never parsed into parts.
  if (IsAttachmentType(code)) part->SetAttachFlag();
  if (part->attachFlag() == 0 && IsAttachmentDisposition(list.Find("Content-Disposition"))) {
    part->SetAttachFlag();
  }
  if (code != kTypeMultipart) return;
  std::string boundary = type->BoundaryText();
  if (boundary.empty()) return;
  jobs_.push_back({ComPtr<MimePart>(part), ComPtr<IEMSDataObject>(body), begin, end, std::move(boundary)});
}

// Each part's children depend only on its own bytes and fields, so the
// order in which queued splits run does not show: every child list comes
// out in the order of its body, with the same children dropped, as when
// each child is split before its next sibling is made.
void PartTreeParser::RunSplits() {
  while (!jobs_.empty()) {
    SplitJob job = std::move(jobs_.back());
    jobs_.pop_back();
    Split(job);
  }
}

void PartTreeParser::Split(SplitJob& job) {
  bool found = false;
  std::vector<ChildSpan> spans = splitter_.Split(job.begin, job.end, job.boundary, &found);
  if (!found) return;  // the body stays, without children
  job.part->partList().Reserve(spans.size());
  for (const ChildSpan& span : spans) {
    ComPtr<MimePart> child;
    if (FAILED(MakeObject(&child))) break;
    child->InheritDefaults(*job.part.get());
    ChildResult result = ParseChild(child.get(), job.body.get(), span.offset, span.offset + span.length);
    if (result == ChildResult::kCloneFailed) break;
    if (result == ChildResult::kParsed) job.part->partList().AppendOwn(child.get());
  }
  // A split multipart keeps no body: its preamble and epilogue are gone.
  if (job.part->partList().Count() > 0) job.part->SetBody(nullptr);
}

// ParsePartObject of a new child on the span [begin, end): the same steps
// as for the root, without the clone of the whole span that the child would
// only read.
PartTreeParser::ChildResult PartTreeParser::ParseChild(MimePart* child, IEMSDataObject* parentBody,
                                                       size_t begin, size_t end) {
  const size_t headerLength = FindHeaderBlockEnd(text_.substr(begin, end - begin));
  if (headerLength == std::string_view::npos) return ChildResult::kDropped;
  if (headerLength != 0) ParseHeaderBlock(child, text_.substr(begin, headerLength));
  const size_t bodyBegin = begin + headerLength + 4;
  if (bodyBegin < end) {
    ComPtr<IEMSDataObject> body;
    if (FAILED(CloneSpan(parentBody, bodyBegin, end, &body))) return ChildResult::kCloneFailed;
    child->SetBody(body);
    StoreBody(child, body.get(), bodyBegin, end);
  }
  return ChildResult::kParsed;
}

HRESULT PartTreeParser::CloneSpan(IEMSDataObject* source, size_t begin, size_t end,
                                  ComPtr<IEMSDataObject>* out) {
  if (!ownStore_)
    return CloneDataSpan(source, static_cast<ULONG>(begin), static_cast<ULONG>(end - begin), out);
  ComPtr<DataObject> clone;
  HRESULT hr = MakeObject(&clone);
  if (FAILED(hr)) return hr;
  clone->SetStore(ownStore_);
  clone->SetPosition(static_cast<ULONG>(begin));
  clone->SetLength(static_cast<ULONG>(end - begin));
  *out = ComPtr<IEMSDataObject>(clone.get());
  return S_OK;
}

}  // namespace pv
