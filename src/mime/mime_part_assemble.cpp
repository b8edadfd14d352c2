// Writing a part tree back into bytes: AssemblePartObject and the
// BodyObject getter. The whole tree goes into one output text, in one walk
// with a stack of its own; building each level's bytes from its children's
// would copy the innermost bytes once per level.
#include <string>
#include <unordered_set>
#include <vector>

#include "src/data/data_access.h"
#include "src/headers/content_type_codes.h"
#include "src/mime/mime_part.h"
#include "src/mime/mime_part_fields.h"
#include "src/mime/mime_parts.h"

namespace pv {
namespace {

bool EndsWithLineBreak(const std::string& text) {
  return text.size() >= 2 && text[text.size() - 2] == '\r' && text.back() == '\n';
}

void AppendBytesOf(IEMSDataObject* object, std::string* out) {
  DataBytes bytes;
  if (SUCCEEDED(ReadDataBytes(object, &bytes))) out->append(bytes.Span());
}

class PartTreeWriter {
 public:
  explicit PartTreeWriter(std::string* out) : out_(out) {}

  HRESULT Write(MimePart* root, bool withHeaders, bool* hasBody) {
    out_->reserve(out_->size() + EstimatedSize(root));
    HRESULT hr = Enter(root, withHeaders, hasBody);
    if (FAILED(hr)) return hr;
    while (!frames_.empty()) {
      hr = Step();
      if (FAILED(hr)) return hr;
    }
    return S_OK;
  }

 private:
  // A multipart part whose children are being written.
  struct Frame {
    ComPtr<MimePart> part;
    ComPtr<IEMSMimeParts> list;
    LONG count;
    LONG next;
    bool childWritten;
    std::string delimiter;
  };

  // Writes the part's header block (when asked), then its stored body, or
  // the first delimiter line of a body built from its children, whose
  // writing then continues from the stack.
  //
  // The boundary is generated before the header block is written, so the
  // block already carries the boundary its body uses. The children are
  // written after the block; nothing they do while being written can change
  // their parent's block, so it reads as it would after them.
  HRESULT Enter(MimePart* part, bool withHeaders, bool* hasBody) {
    *hasBody = false;
    if (IEMSDataObject* body = part->body()) {
      if (withHeaders) WriteHeaders(part);
      AppendBytesOf(body, out_);
      *hasBody = true;
      return S_OK;
    }
    LONG count = 0;
    std::string delimiter;
    HRESULT hr = OpenMultipart(part, &count, &delimiter);
    if (FAILED(hr)) return hr;
    if (withHeaders) WriteHeaders(part);
    if (delimiter.empty()) return S_OK;
    out_->append(delimiter).append("\r\n");  // no preamble
    *hasBody = true;
    frames_.push_back({ComPtr<MimePart>(part), ComPtr<IEMSMimeParts>(part->parts()), count, 0, false, delimiter});
    onPath_.insert(part);
    return S_OK;
  }

  // The delimiter of a body built from the children, or none (empty) when
  // the part has no children, is not a multipart, or has no boundary even
  // after one was asked for.
  static HRESULT OpenMultipart(MimePart* part, LONG* count, std::string* delimiter) {
    *count = PartsCountOf(part->parts());
    if (*count == 0) return S_OK;
    ComPtr<IEMSMessageParameter> type = FieldByName(part->headers(), "Content-Type");
    LONG code = kTypeText;
    LONG subtype = 0;
    if (!type || !FieldContentCodes(type.get(), &code, &subtype)) code = kTypeText;
    // Children of a part that is not a multipart are not written.
    if (code != kTypeMultipart) return S_OK;
    std::string boundary = BoundaryOf(type.get());
    if (boundary.empty()) {
      ComPtr<IEMSMessageParameter> field;
      HRESULT hr = CreateField(part->headers(), "Content-Type", &field);
      if (hr == E_OUTOFMEMORY) return hr;
      ComPtr<IEMSContentType> content;
      if (SUCCEEDED(hr) && SUCCEEDED(field.As(&content)) && content) {
        hr = content->CreateBoundary(0, nullptr);
        if (hr == E_OUTOFMEMORY) return hr;
        boundary = BoundaryOf(field.get());
      }
    }
    if (!boundary.empty()) *delimiter = "--" + boundary;
    return S_OK;
  }

  void WriteHeaders(MimePart* part) {
    std::string block;
    if (FAILED(HeaderBlockText(part->headers(), &block))) block.clear();
    // The list ends every field with "\r\n"; this one makes the empty line.
    out_->append(block).append("\r\n");
  }

  // Roughly what the tree writes: its bodies, and room for the header block
  // and delimiters of every part. Reserving it up front spares the output
  // its growth, which for a large message costs more than the writing.
  static size_t EstimatedSize(MimePart* root) {
    constexpr size_t kPerPart = 256;
    size_t size = 0;
    std::vector<MimePart*> pending{root};
    std::unordered_set<MimePart*> seen{root};
    while (!pending.empty()) {
      MimePart* part = pending.back();
      pending.pop_back();
      size += kPerPart;
      if (IEMSDataObject* body = part->body()) {
        ULONG length = 0;
        body->get_Length(&length);
        size += length;
        continue;
      }
      ComPtr<MimeParts> list = ImplOf<MimeParts>(part->parts());
      if (!list) continue;
      for (size_t i = 0; i < list->size(); ++i) {
        ComPtr<MimePart> child = ImplOf<MimePart>(list->at(i));
        if (child && seen.insert(child.get()).second) pending.push_back(child.get());
      }
    }
    return size;
  }

  // One move of the walk: close the child just written, finish the part,
  // or start its next child.
  HRESULT Step() {
    Frame& frame = frames_.back();
    if (frame.childWritten) {
      if (!EndsWithLineBreak(*out_)) out_->append("\r\n");
      out_->append(frame.delimiter);
      frame.childWritten = false;
    }
    if (frame.next >= frame.count) {
      out_->append("--\r\n");  // the closing delimiter line; no epilogue
      onPath_.erase(frame.part.get());
      frames_.pop_back();
      return S_OK;
    }
    const LONG index = frame.next++;
    if (index > 0) out_->append("\r\n");
    frame.childWritten = true;
    ComPtr<IEMSMimePart> child = PartOf(frame.list.get(), index);
    // `frame` may move from here on: Enter can grow the stack.
    if (!child) return S_OK;  // a missing child writes nothing; its delimiters stay
    ComPtr<MimePart> own = ImplOf<MimePart>(child.get());
    if (!own) {
      ComPtr<IEMSDataObject> assembled;
      if (SUCCEEDED(child->AssemblePartObject(assembled.put())) && assembled) AppendBytesOf(assembled.get(), out_);
      return S_OK;
    }
    // A part that contains itself would be written without end: where it
    // recurs, it writes nothing.
    if (onPath_.count(own.get()) != 0) return S_OK;
    bool hasBody = false;
    return Enter(own.get(), true, &hasBody);
  }

  std::string* out_;
  std::vector<Frame> frames_;
  std::unordered_set<MimePart*> onPath_;
};

}  // namespace

HRESULT MimePart::WriteTo(bool withHeaders, std::string* out, bool* hasBody) {
  PartTreeWriter writer(out);
  return writer.Write(this, withHeaders, hasBody);
}

HRESULT MimePart::AssemblePartObject(IEMSDataObject** ppVal) {
  if (ppVal == nullptr) return E_POINTER;
  return Guard([&] {
    std::string text;
    bool hasBody = false;
    HRESULT hr = WriteTo(true, &text, &hasBody);
    if (FAILED(hr)) return hr;
    ComPtr<IEMSDataObject> assembled;
    hr = MakeDataObject(std::move(text), &assembled);
    if (FAILED(hr)) return hr;
    *ppVal = assembled.detach();
    return S_OK;
  });
}

}  // namespace pv
