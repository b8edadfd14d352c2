// Writing a part tree back into bytes: AssemblePartObject and the
// BodyObject getter. The whole tree goes into one output text, in one walk
// with a stack of its own; building each level's bytes from its children's
// would copy the innermost bytes once per level.
#include <algorithm>
#include <cstddef>
#include <cstring>
#include <map>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "src/data/data_access.h"
#include "src/headers/content_type_codes.h"
#include "src/headers/message_parameter.h"
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

// The delimiters of the multiparts whose children are being written, by
// length. A line break the writer adds where the input had none, or had a
// bare LF, must not complete a delimiter line of any of them: "D" CR LF is
// an ordinary delimiter wherever it stands, CR LF "D--" a closing one.
class OpenDelimiters {
 public:
  void Add(const std::string& delimiter) { ++byLength_[delimiter.size()][delimiter]; }

  void Remove(const std::string& delimiter) {
    auto sized = byLength_.find(delimiter.size());
    if (sized == byLength_.end()) return;
    auto entry = sized->second.find(delimiter);
    if (entry == sized->second.end()) return;
    if (--entry->second == 0) sized->second.erase(entry);
    if (sized->second.empty()) byLength_.erase(sized);
  }

  // Whether one of them ends at `end` and begins at or after `from`.
  bool EndsAt(std::string_view text, size_t from, size_t end) const {
    for (const auto& [length, delimiters] : byLength_) {
      if (end < from + length) break;
      if (delimiters.count(std::string(text.substr(end - length, length))) != 0) return true;
    }
    return false;
  }

  // Whether one of them followed by "--" begins at `at`.
  bool ClosingAt(std::string_view text, size_t at) const {
    for (const auto& [length, delimiters] : byLength_) {
      if (at + length + 2 > text.size()) break;
      if (text.compare(at + length, 2, "--") == 0 &&
          delimiters.count(std::string(text.substr(at, length))) != 0) {
        return true;
      }
    }
    return false;
  }

  bool empty() const { return byLength_.empty(); }

 private:
  std::map<size_t, std::unordered_map<std::string, size_t>> byLength_;
};

class PartTreeWriter {
 public:
  explicit PartTreeWriter(std::string* out) : out_(out) {}

  // A boundary the library generated must not occur in what it delimits,
  // or the output would read back as other parts: the tree is written, and
  // when such a boundary occurs in its children's bytes it is replaced by
  // the generator's next value and the tree written again. Boundaries that
  // came with the message or from the host stay as they are.
  HRESULT Write(MimePart* root, bool withHeaders, bool* hasBody) {
    const size_t base = out_->size();
    out_->reserve(base + EstimatedSize(root));
    for (int round = 0;; ++round) {
      generated_.clear();
      HRESULT hr = WriteOnce(root, withHeaders, hasBody);
      if (FAILED(hr)) return hr;
      if (round == kMaxRewrites || !ReplaceOccurringBoundaries(base)) return S_OK;
      out_->resize(base);
    }
  }

 private:
  // A multipart part whose children are being written.
  struct Frame {
    ComPtr<MimePart> part;
    PartListRef list;
    LONG count;
    LONG next;
    bool childWritten;
    // Whether the child just written was a multipart built from its own
    // children, so that its bytes end with its closing delimiter line.
    bool childClosed;
    // Where the child just written began in the output.
    size_t childStart;
    std::string delimiter;
    // The entry of `generated_` for this part's body, or -1.
    long generated;
  };

  // A body written between generated delimiters: [begin, end) of the
  // output, holding `count` + 1 delimiters of its own.
  struct GeneratedBody {
    FieldRef field;
    std::string boundary;
    size_t begin;
    size_t end;
    LONG count;
  };

  // Each rewrite replaces every generated boundary that occurs in its
  // children with one that occurs nowhere in the output, so the second
  // write is already clean; the bound only guards against the unforeseen.
  static constexpr int kMaxRewrites = 4;

  HRESULT WriteOnce(MimePart* root, bool withHeaders, bool* hasBody) {
    HRESULT hr = Enter(root, withHeaders, hasBody);
    if (FAILED(hr)) return hr;
    while (!frames_.empty()) {
      hr = Step();
      if (FAILED(hr)) return hr;
    }
    return S_OK;
  }

  // Every generated-format boundary that a "--" in the output [base, end)
  // introduces, with its positions in order. One pass over the output.
  std::unordered_map<std::string_view, std::vector<size_t>> GeneratedDelimiters(size_t base) const {
    std::unordered_map<std::string_view, std::vector<size_t>> found;
    const std::string_view text(*out_);
    const std::string pattern = "--" + std::string(kGeneratedBoundaryPrefix);
    for (size_t at = text.find(pattern, base); at != std::string_view::npos;
         at = text.find(pattern, at + 1)) {
      if (at + 2 + kGeneratedBoundaryLength > text.size()) break;
      found[text.substr(at + 2, kGeneratedBoundaryLength)].push_back(at);
    }
    return found;
  }

  // Gives every generated boundary that occurs in its children's bytes the
  // generator's next value that occurs nowhere in the output and is no
  // other part's. True when one was replaced.
  bool ReplaceOccurringBoundaries(size_t base) {
    if (generated_.empty()) return false;
    const auto found = GeneratedDelimiters(base);
    std::unordered_set<std::string> taken;
    for (const GeneratedBody& body : generated_) taken.insert(body.boundary);
    bool replaced = false;
    std::unordered_set<FieldAccess*> done;
    for (const GeneratedBody& body : generated_) {
      auto positions = found.find(body.boundary);
      if (positions == found.end() || done.count(body.field.access()) != 0) continue;
      const std::vector<size_t>& at = positions->second;
      auto first = std::lower_bound(at.begin(), at.end(), body.begin);
      auto last = std::lower_bound(at.begin(), at.end(), body.end);
      if (last - first <= static_cast<std::ptrdiff_t>(body.count) + 1) continue;  // its own delimiters only
      done.insert(body.field.access());
      std::string next;
      for (int draw = 0; draw < kMaxDraws; ++draw) {
        if (FAILED(body.field->RegenerateBoundary(&next))) break;
        if (found.count(next) == 0 && taken.count(next) == 0) break;
      }
      taken.insert(next);
      replaced = true;
    }
    return replaced;
  }
  static constexpr int kMaxDraws = 1024;

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
    FieldRef generatedBy;
    HRESULT hr = OpenMultipart(part, &count, &delimiter, &generatedBy);
    if (FAILED(hr)) return hr;
    if (withHeaders) WriteHeaders(part);
    if (delimiter.empty()) return S_OK;
    long generated = -1;
    if (generatedBy) {
      generated = static_cast<long>(generated_.size());
      generated_.push_back({generatedBy, delimiter.substr(2), out_->size(), 0, count});
    }
    out_->append(delimiter).append("\r\n");  // no preamble
    *hasBody = true;
    frames_.push_back(
        {ComPtr<MimePart>(part), part->partListHolder(), count, 0, false, false, 0, delimiter, generated});
    open_.Add(delimiter);
    onPath_.insert(part);
    return S_OK;
  }

  // The delimiter of a body built from the children, or none (empty) when
  // the part has no children, is not a multipart, or has no boundary even
  // after one was asked for. `generatedBy` receives the field when the
  // library generated its boundary (now or before) and may replace it.
  static HRESULT OpenMultipart(MimePart* part, LONG* count, std::string* delimiter, FieldRef* generatedBy) {
    *count = part->childCount();
    if (*count == 0) return S_OK;
    FieldListAccess& fields = part->fields();
    FieldRef type = fields.Find("Content-Type");
    LONG code = kTypeText;
    LONG subtype = 0;
    if (!type || !type->ContentCodes(&code, &subtype)) code = kTypeText;
    // Children of a part that is not a multipart are not written.
    if (code != kTypeMultipart) return S_OK;
    // The delimiters must be what the written field reads back as.
    std::string boundary = type->WrittenBoundary();
    if (boundary.empty()) {
      FieldRef field;
      HRESULT hr = fields.Create("Content-Type", &field);
      if (hr == E_OUTOFMEMORY) return hr;
      ComPtr<IEMSContentType> content;
      if (SUCCEEDED(hr) && SUCCEEDED(field.object().As(&content)) && content) {
        hr = content->CreateBoundary(0, nullptr);
        if (hr == E_OUTOFMEMORY) return hr;
        boundary = field->BoundaryText();
      }
      type = std::move(field);
    }
    if (boundary.empty()) return S_OK;
    *delimiter = "--" + boundary;
    if (type->HasGeneratedBoundary()) *generatedBy = std::move(type);
    return S_OK;
  }

  void WriteHeaders(MimePart* part) {
    std::string block;
    if (FAILED(part->fields().BlockText(&block))) block.clear();
    // The list ends every field with "\r\n"; this one makes the empty line.
    // An output that would begin with it alone gets the line break that no
    // field wrote: the header block ends at the first "\r\n\r\n".
    if (out_->empty() && block.empty()) out_->append("\r\n");
    const size_t from = out_->size();
    out_->append(block).append("\r\n");
    if (open_.empty()) return;
    KeepDelimitersOutOfHeaderBlock(from);
    // A later child's first field line that begins with a delimiter and
    // "--" would close a multipart after the line break of the delimiter
    // line before it (the input had lines the parse drops in between): an
    // empty line ended by a bare LF comes first, which the parse drops too.
    // A first child stays glued to its delimiter instead (see Step).
    if (frames_.back().next > 1 && open_.ClosingAt(*out_, from)) out_->insert(from, 1, '\n');
  }

  // The header block just written, from `from` to the end, inside the
  // bodies of open multiparts: each of its line breaks that would complete
  // a delimiter line (the input held a bare LF there, or blanks the field
  // lost) is written as a bare LF, which ends a field line as well. When the
  // last field's is one, the empty line that ends the block follows it as
  // CR LF CR LF, since only that ends a header block.
  void KeepDelimitersOutOfHeaderBlock(size_t from) {
    std::string& out = *out_;
    const size_t end = out.size() - 2;  // the line break of the empty line stays
    std::vector<size_t> bare;           // the CRs to leave out
    for (size_t at = from; at < end;) {
      const void* lf = std::memchr(out.data() + at, '\n', end - at);
      if (lf == nullptr) break;
      const size_t position = static_cast<size_t>(static_cast<const char*>(lf) - out.data());
      at = position + 1;
      if (position == from || out[position - 1] != '\r') continue;
      const size_t cr = position - 1;
      if (open_.EndsAt(out, from, cr) || open_.ClosingAt(out, position + 1)) bare.push_back(cr);
    }
    if (bare.empty()) return;
    const bool lastField = bare.back() + 2 == end;
    size_t write = bare.front();
    for (size_t i = 0; i < bare.size(); ++i) {
      const size_t next = i + 1 < bare.size() ? bare[i + 1] : out.size();
      std::memmove(&out[write], &out[bare[i] + 1], next - bare[i] - 1);
      write += next - bare[i] - 1;
    }
    out.resize(write);
    if (lastField) out.append("\r\n");
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
      PartListAccess* list = part->partListIfAny();
      if (list == nullptr) continue;
      const LONG count = list->Count();
      for (LONG i = 0; i < count; ++i) {
        PartRef child = list->At(i);
        MimePart* own = child ? child->OwnPart() : nullptr;
        if (own != nullptr && seen.insert(own).second) pending.push_back(own);
      }
    }
    return size;
  }

  // A first child whose bytes begin with the text of its delimiter (its
  // first header line glued to the opening delimiter, as the input had it)
  // follows the opening delimiter directly: after the line break written
  // there, that line would be a delimiter line of its own. Positions noted
  // inside the child move back with it.
  void JoinFirstChildToItsDelimiter(Frame& frame) {
    const std::string& delimiter = frame.delimiter;
    const size_t start = frame.childStart;
    if (start < 2 || out_->compare(start - 2, 2, "\r\n") != 0 ||
        (out_->compare(start, delimiter.size(), delimiter) != 0 && !open_.ClosingAt(*out_, start))) {
      return;
    }
    out_->erase(start - 2, 2);
    frame.childStart -= 2;
    for (GeneratedBody& body : generated_) {
      if (body.begin >= start) body.begin -= 2;
      if (body.end >= start) body.end -= 2;
    }
  }

  // Whether the child just written ends with the text of its delimiter or
  // of an enclosing multipart's.
  bool EndsWithDelimiter(const Frame& frame) const {
    return open_.EndsAt(*out_, frame.childStart, out_->size());
  }

  // One move of the walk: close the child just written, finish the part,
  // or start its next child.
  HRESULT Step() {
    Frame& frame = frames_.back();
    if (frame.childWritten) {
      if (frame.next == 1) JoinFirstChildToItsDelimiter(frame);
      // The parse keeps the line break before an ordinary delimiter in the
      // child but takes the one before the closing delimiter as the
      // delimiter's own: the last child gets one of its own, so that it
      // reads back with the bytes it was written with. A child that wrote
      // nothing, or a multipart child that ends with its own closing
      // delimiter, reads back the same without it.
      const bool last = frame.next >= frame.count;
      const bool ownBreak = last && !frame.childClosed && out_->size() > frame.childStart;
      if (EndsWithDelimiter(frame)) {
        // A line break after the child would make a delimiter line of its
        // end: the delimiter follows it directly (it need not start a line
        // to be read), and before the closing delimiter, which must, an
        // ordinary one comes first (the empty part it opens is no part).
        if (last) out_->append(frame.delimiter).append("\r\n");
      } else if (ownBreak || !EndsWithLineBreak(*out_)) {
        out_->append("\r\n");
      }
      out_->append(frame.delimiter);
      frame.childWritten = false;
    }
    if (frame.next >= frame.count) {
      out_->append("--\r\n");  // the closing delimiter line; no epilogue
      if (frame.generated >= 0) generated_[static_cast<size_t>(frame.generated)].end = out_->size();
      onPath_.erase(frame.part.get());
      open_.Remove(frame.delimiter);
      frames_.pop_back();
      if (!frames_.empty()) frames_.back().childClosed = true;
      return S_OK;
    }
    const LONG index = frame.next++;
    if (index > 0) out_->append("\r\n");
    frame.childWritten = true;
    frame.childClosed = false;
    frame.childStart = out_->size();
    PartRef child = frame.list->At(index);
    // `frame` may move from here on: Enter can grow the stack.
    if (!child) return S_OK;  // a missing child writes nothing; its delimiters stay
    MimePart* own = child->OwnPart();
    if (own == nullptr) {
      ComPtr<IEMSDataObject> assembled;
      if (SUCCEEDED(child.get()->AssemblePartObject(assembled.put())) && assembled)
        AppendBytesOf(assembled.get(), out_);
      return S_OK;
    }
    // A part that contains itself would be written without end: where it
    // recurs, it writes nothing.
    if (onPath_.count(own) != 0) return S_OK;
    bool hasBody = false;
    return Enter(own, true, &hasBody);
  }

  std::string* out_;
  std::vector<Frame> frames_;
  std::unordered_set<MimePart*> onPath_;
  std::vector<GeneratedBody> generated_;
  OpenDelimiters open_;
};

}  // namespace

HRESULT MimePart::WriteTo(bool withHeaders, std::string* out, bool* hasBody) {
  PartTreeWriter writer(out);
  return writer.Write(this, withHeaders, hasBody);
}

HRESULT MimePart::DoAssemblePartObject(IEMSDataObject** ppVal) {
  std::string text;
  bool hasBody = false;
  HRESULT hr = WriteTo(true, &text, &hasBody);
  if (FAILED(hr)) return hr;
  ComPtr<IEMSDataObject> assembled;
  hr = MakeDataObject(std::move(text), &assembled);
  if (FAILED(hr)) return hr;
  *ppVal = assembled.detach();
  return S_OK;
}

}  // namespace pv
