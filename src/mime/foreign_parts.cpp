// MIME parts and parts lists of another implementation, reached through
// their interfaces, and the choice between them and the library's own,
// made when a part or list is stored.
#include "src/mime/mime_part.h"
#include "src/mime/mime_parts.h"
#include "src/mime/part_access.h"
#include "src/platform/codepage.h"

namespace pv {
namespace {

class ForeignPart final : public PartAccess {
 public:
  explicit ForeignPart(IEMSMimePart* part) : part_(part) {}

  FieldRef FindField(std::string_view ansiName) override {
    Bstr wide(AnsiToWide(ansiName));
    ComPtr<IEMSMessageParameter> field;
    if (FAILED(part_->FindHeader(wide.get(), field.put()))) field = nullptr;
    return FieldRef(std::move(field));
  }

  MimePart* OwnPart() override { return nullptr; }

 private:
  IEMSMimePart* part_;  // held by the PartRef that owns this adapter
};

class ForeignPartList final : public PartListAccess {
 public:
  explicit ForeignPartList(IEMSMimeParts* list) : list_(list) {}

  LONG Count() override {
    LONG count = 0;
    if (FAILED(list_->get_PartsCount(&count)) || count < 0) return 0;
    return count;
  }

  PartRef At(LONG index) override {
    ComPtr<IEMSMimePart> part;
    list_->get_Part(index, part.put());
    return PartRef(std::move(part));
  }

  HRESULT Append(IEMSMimePart* part) override { return list_->AddPart(part); }
  HRESULT AppendOwn(MimePart* part) override { return list_->AddPart(part); }
  void Clear() override { list_->RemoveAll(); }
  void Reserve(size_t) override {}

 private:
  IEMSMimeParts* list_;  // held by the PartListRef that owns this adapter
};

}  // namespace

PartAccess* AccessTraits<PartAccess>::Own(IEMSMimePart* object) {
  return ImplOf<MimePart>(object).get();  // the holder keeps it alive
}

PartAccess* AccessTraits<PartAccess>::NewForeign(IEMSMimePart* object) { return new ForeignPart(object); }

PartListAccess* AccessTraits<PartListAccess>::Own(IEMSMimeParts* object) {
  return ImplOf<MimeParts>(object).get();
}

PartListAccess* AccessTraits<PartListAccess>::NewForeign(IEMSMimeParts* object) {
  return new ForeignPartList(object);
}

}  // namespace pv
