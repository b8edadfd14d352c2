// Parsing a span of one buffer into a part tree: the header block up to the
// first "\r\n\r\n", the body as a span of the same buffer, the
// classification of the part, and the multipart split into children, each
// parsed the same way. The split of every nested body waits on a work list
// instead of a call per level.
#ifndef PARCELVANE_SRC_MIME_MIME_PART_PARSE_H
#define PARCELVANE_SRC_MIME_MIME_PART_PARSE_H

#include <string>
#include <string_view>
#include <vector>

#include "src/data/data_access.h"
#include "src/data/data_object.h"
#include "src/mime/multipart_splitter.h"

namespace pv {

class MimePart;

class PartTreeParser {
 public:
  // `root` is the data object the whole parse reads (directly for the
  // library's own objects, as a copy read once for others); every body and
  // child of the tree is a span of it.
  PartTreeParser(IEMSDataObject* rootObject, const DataBytes& root);

  // ParsePartObject on `part`, whose body, headers and children have been
  // emptied, with the root object itself: S_OK, E_FAIL when there is no
  // "\r\n\r\n" in the span, or the failure of a clone.
  HRESULT ParseRoot(MimePart* part);

  // The body store of `part`, which already holds the root object as its
  // body: classification, then the split of a multipart body.
  void StoreRootBody(MimePart* part);

 private:
  struct SplitJob {
    ComPtr<MimePart> part;
    ComPtr<IEMSDataObject> body;  // what the children's bodies are cloned from
    size_t begin;
    size_t end;
    std::string boundary;
  };
  enum class ChildResult { kParsed, kDropped, kCloneFailed };

  // Classifies the part by its fields and queues the split of a multipart
  // body [begin, end).
  void StoreBody(MimePart* part, IEMSDataObject* body, size_t begin, size_t end);
  void RunSplits();
  void Split(SplitJob& job);
  ChildResult ParseChild(MimePart* child, IEMSDataObject* parentBody, size_t begin, size_t end);
  // A clone of `source` selecting [begin, end) of the buffer.
  HRESULT CloneSpan(IEMSDataObject* source, size_t begin, size_t end, ComPtr<IEMSDataObject>* out);

  IEMSDataObject* rootObject_;
  DataBytes root_;
  std::string_view text_;
  size_t spanBegin_;
  size_t spanEnd_;
  // The root's store when the root is the library's own data object: every
  // body is then made directly on it.
  std::shared_ptr<const ByteStore> ownStore_;
  MultipartSplitter splitter_;
  std::vector<SplitJob> jobs_;
};

}  // namespace pv

#endif  // PARCELVANE_SRC_MIME_MIME_PART_PARSE_H
