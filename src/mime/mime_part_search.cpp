// Header access by name, the searches of the part tree and the conversion
// of a part into a multipart container. The searches visit children in
// list order, depth first, and stop at the first success; they share one
// walk on an explicit stack instead of calling themselves once per level.
#include <climits>
#include <cstdint>
#include <unordered_set>
#include <vector>

#include "src/headers/content_type_codes.h"
#include "src/headers/message_parameters.h"
#include "src/mime/mime_part.h"
#include "src/mime/mime_part_fields.h"
#include "src/mime/mime_parts.h"

namespace pv {
namespace {

// A part whose children a search is going through.
struct SearchFrame {
  ComPtr<MimePart> part;
  PartListRef list;
  LONG count;
  LONG next;
  int64_t level;  // FindPart only
};

SearchFrame FrameOf(MimePart* part, int64_t level = 0) {
  const PartListRef& list = part->partListHolder();
  return {ComPtr<MimePart>(part), list, list->Count(), 0, level};
}

// The parts on the way from the search's start to the part being visited:
// a part found again among its own descendants is passed over, since
// searching it again would never end.
class Path {
 public:
  bool Contains(MimePart* part) const { return parts_.count(part) != 0; }
  void Enter(MimePart* part) { parts_.insert(part); }
  void Leave(MimePart* part) { parts_.erase(part); }

 private:
  std::unordered_set<MimePart*> parts_;
};

LONG ClampLevel(int64_t level) { return level < INT32_MIN ? INT32_MIN : static_cast<LONG>(level); }

enum class Visit { kFound, kFailed, kDescend };

// The walk the three searches share: the descendants of `root`, children in
// list order, depth first, on an explicit stack. For each child the search
// first says whether the child itself answers from where it stands
// (`Matches`, writing the answer); a part of another implementation is then
// asked to search its own subtree (`AskForeign`); the library's own part is
// visited (`VisitPart`): found, passed over, or descended into. The first
// answer ends the walk.
template <class Search>
HRESULT SearchDescendants(MimePart* root, int64_t rootLevel, Search& search, IEMSMimePart** ppPart) {
  Path path;
  std::vector<SearchFrame> stack;
  stack.push_back(FrameOf(root, rootLevel));
  path.Enter(root);
  while (!stack.empty()) {
    SearchFrame& frame = stack.back();
    if (frame.next >= frame.count) {
      path.Leave(frame.part.get());
      stack.pop_back();
      continue;
    }
    const int64_t childLevel = frame.level - 1;  // a negative level never reaches 0
    PartRef child = frame.list->At(frame.next++);
    if (!child) continue;
    ComPtr<IEMSMimePart> found;
    if (search.Matches(frame.part.get(), child.get(), &found)) {
      *ppPart = found.detach();
      return S_OK;
    }
    MimePart* own = child->OwnPart();
    if (own == nullptr) {
      if (search.AskForeign(child.get(), childLevel, &found) && found) {
        *ppPart = found.detach();
        return S_OK;
      }
      continue;
    }
    if (path.Contains(own)) continue;
    Visit visit = search.VisitPart(own, childLevel);
    if (visit == Visit::kFound) {
      *ppPart = own;
      own->AddRef();
      return S_OK;
    }
    if (visit == Visit::kDescend) {
      stack.push_back(FrameOf(own, childLevel));
      path.Enter(own);
    }
  }
  return E_FAIL;
}

// The part's own step, shared by the searches that may answer with the
// part they start from.
template <class Search>
HRESULT SearchFromPart(MimePart* part, int64_t level, Search& search, IEMSMimePart** ppPart) {
  Visit first = search.VisitPart(part, level);
  if (first == Visit::kFound) {
    *ppPart = part;
    part->AddRef();
    return S_OK;
  }
  if (first == Visit::kFailed) return E_FAIL;
  return SearchDescendants(part, level, search, ppPart);
}

}  // namespace

HRESULT MimePart::DoCreateHeader(BSTR bszName, IEMSMessageParameter** ppVal) {
  if (bszName == nullptr) return E_POINTER;
  return headers_.get()->CreateParameter(bszName, ppVal);
}

HRESULT MimePart::DoFindHeader(BSTR bszName, IEMSMessageParameter** ppVal) {
  if (bszName == nullptr) return E_POINTER;
  return headers_.get()->FindParameter(bszName, ppVal);
}

// Only direct children are compared; grandchildren are not searched.
HRESULT MimePart::DoRemovePart(IEMSMimePart* pPart) {
  if (pPart == nullptr) return E_POINTER;
  PartListAccess& list = partList();
  const LONG count = list.Count();
  if (count == 0) return E_FAIL;
  for (LONG i = 0; i < count; ++i) {
    if (list.At(i).get() != pPart) continue;
    parts()->RemovePart(i);  // status ignored
    return S_OK;
  }
  return E_FAIL;
}

// ---------------------------------------------------------------- FindPart
namespace {

// The part's own step: its "Content-Type" field takes the content type
// asked for (a deliberate change of the part), and the part answers when
// two readings of the field's codes agree, which they do for any field that
// keeps what it was given.
Visit VisitForFindPart(MimePart* part, BSTR contentType, int64_t level) {
  ComPtr<IEMSMessageParameter> field = part->fields().Find("Content-Type").object();
  if (!field) return Visit::kFailed;
  ComPtr<IEMSContentType> content;
  if (SUCCEEDED(field.As(&content)) && content) {
    content->ParseContentType(contentType);  // resets the type, then reads the text
    LONG type1 = 0, subtype1 = 0, type2 = 0, subtype2 = 0;
    bool read = SUCCEEDED(content->get_MimeType(&type1)) && SUCCEEDED(content->get_MimeSubType(&subtype1)) &&
                SUCCEEDED(content->get_MimeType(&type2)) && SUCCEEDED(content->get_MimeSubType(&subtype2));
    if (read && type1 == type2 && subtype1 == subtype2) return Visit::kFound;
  }
  return level != 0 ? Visit::kDescend : Visit::kFailed;
}

struct ContentTypeSearch {
  BSTR contentType;
  bool Matches(MimePart*, IEMSMimePart*, ComPtr<IEMSMimePart>*) { return false; }
  bool AskForeign(IEMSMimePart* child, int64_t level, ComPtr<IEMSMimePart>* found) {
    return SUCCEEDED(child->FindPart(contentType, ClampLevel(level), found->put()));
  }
  Visit VisitPart(MimePart* part, int64_t level) { return VisitForFindPart(part, contentType, level); }
};

}  // namespace

HRESULT MimePart::DoFindPart(BSTR bszCntType, LONG nLevel, IEMSMimePart** ppPart) {
  if (bszCntType == nullptr) return E_POINTER;
  ContentTypeSearch search{bszCntType};
  return SearchFromPart(this, nLevel, search, ppPart);
}

// ---------------------------------------------------------------- FindParentPart
namespace {

// Answers with the part whose list holds the child looked for.
struct ParentSearch {
  IEMSMimePart* target;
  bool Matches(MimePart* parent, IEMSMimePart* child, ComPtr<IEMSMimePart>* found) {
    if (child != target) return false;
    *found = ComPtr<IEMSMimePart>(parent);
    return true;
  }
  bool AskForeign(IEMSMimePart* child, int64_t, ComPtr<IEMSMimePart>* found) {
    return SUCCEEDED(child->FindParentPart(target, found->put()));
  }
  Visit VisitPart(MimePart*, int64_t) { return Visit::kDescend; }
};

}  // namespace

// The root is never its own parent.
HRESULT MimePart::DoFindParentPart(IEMSMimePart* pPart, IEMSMimePart** ppPart) {
  if (pPart == nullptr) return E_POINTER;
  ParentSearch search{pPart};
  return SearchDescendants(this, 0, search, ppPart);
}

// ---------------------------------------------------------------- FindPartBySubType
namespace {

// A leaf answers when its subtype is the one asked for and it is not marked
// as an attachment; a multipart part never answers itself.
Visit VisitForSubType(MimePart* part, LONG subtypeAsked) {
  LONG type = kTypeText;
  LONG subtype = kSubtypePlain;
  PartContentCodes(part->fields(), &type, &subtype);
  if (type == kTypeMultipart) return Visit::kDescend;
  if (type < kTypeUnknown || type > kTypeVideo || type == kTypeNone) return Visit::kFailed;
  if (subtype != subtypeAsked) return Visit::kFailed;
  if (IsAttachmentDisposition(part->fields().Find("Content-Disposition"))) return Visit::kFailed;
  return Visit::kFound;
}

struct SubtypeSearch {
  LONG subtype;
  bool Matches(MimePart*, IEMSMimePart*, ComPtr<IEMSMimePart>*) { return false; }
  bool AskForeign(IEMSMimePart* child, int64_t, ComPtr<IEMSMimePart>* found) {
    return SUCCEEDED(child->FindPartBySubType(subtype, found->put()));
  }
  Visit VisitPart(MimePart* part, int64_t) { return VisitForSubType(part, subtype); }
};

}  // namespace

HRESULT MimePart::DoFindPartBySubType(LONG nSubType, IEMSMimePart** ppPart) {
  SubtypeSearch search{nSubType};
  return SearchFromPart(this, 0, search, ppPart);
}

// ---------------------------------------------------------------- ConvertToMultipart
// The part's whole header list (every field, message-level ones included)
// moves to the new only child, with the body or the children; the part
// keeps a new list with nothing but a multipart "Content-Type".
HRESULT MimePart::DoConvertToMultipart(LONG nSubType) {
  if (headers_->Count() == 0) return E_FAIL;
  LONG type = kTypeText;
  LONG subtype = kSubtypePlain;
  PartContentCodes(fields(), &type, &subtype);
  if (type == kTypeMultipart && subtype == nSubType) return S_OK;

  ComPtr<MimePart> child;
  HRESULT hr = MakeObject(&child);
  if (FAILED(hr)) return hr;
  ComPtr<MessageParameters> headers;
  hr = MakeObject(&headers);
  if (FAILED(hr)) return hr;

  child->InheritDefaults(*this);
  child->put_Headers(headers_.get());
  if (body_) {
    child->put_BodyObject(body_.get());
  } else {
    child->parts()->AppendParts(parts());
  }

  headers_.ResetOwn(ComPtr<IEMSMessageParameters>(headers.get()), headers.get());
  ComPtr<IEMSMessageParameter> field;
  hr = CreateField(fields(), "Content-Type", &field);
  if (FAILED(hr)) return hr;
  ComPtr<IEMSContentType> content;
  hr = field.As(&content);
  if (FAILED(hr)) return hr;
  content->put_MimeType(kTypeMultipart);
  content->put_MimeSubType(nSubType);
  content->CreateBoundary(0, nullptr);

  partList().Clear();
  partList().AppendOwn(child.get());
  body_ = nullptr;
  return S_OK;
}

}  // namespace pv
