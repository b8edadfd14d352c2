// The three tasks through parcelvane's interfaces, as a host writes them:
// a message object parses a data object; the part tree is walked through
// IEMSMimePart / IEMSMimeParts, each part's "Content-Type" field read
// through IEMSContentType; leaves are decoded through DecodedBinary; the
// subject and the sender mailboxes come from the message object.
#include "bench/peer/parcelvane_peer.h"

#include <string>
#include <utility>

#include "parcelvane/parcelvane.h"
#include "src/com/com_ptr.h"
#include "src/platform/strings.h"

namespace pv::bench {
namespace {

template <class T>
using Ref = ComPtr<T>;
using Text = Bstr;

size_t LengthOf(const Bstr& text) { return text.view().size(); }

class ParcelvanePeer : public PeerLibrary {
 public:
  explicit ParcelvanePeer(DataEntry entry) : entry_(entry) {}
  ~ParcelvanePeer() override {
    Release();
    DropArrays();
  }

  const char* Name() const override {
    return entry_ == DataEntry::kOver ? "parcelvane (zero-copy entry)" : "parcelvane (CreateDataArray)";
  }

  // The copying entry takes a byte array: the host builds those before
  // the timed runs, as a host that keeps its mail in such arrays would.
  void Prepare(const std::vector<std::string_view>& messages) override {
    DropArrays();
    messages_ = messages;
    if (entry_ == DataEntry::kDataArray) {
      for (std::string_view m : messages_) arrays_.push_back(NewArray(m));
    }
  }

  size_t Run(Task task) override {
    size_t tally = 0;
    for (size_t i = 0; i < messages_.size(); ++i) {
      Ref<IEMSMessageParser> message = Parse(i);
      if (!message) continue;
      switch (task) {
        case Task::kParse:
          tally += VisitTypes(message.get());
          break;
        case Task::kDecode:
          tally += DecodeLeaves(message.get());
          break;
        case Task::kHeaders:
          tally += ReadSenderAndSubject(message.get());
          break;
      }
    }
    return tally;
  }

  // Held messages keep what the parse made; the copying entry's arrays are
  // the host's and are dropped as soon as the library has its copy.
  void ParseAndHold() override {
    held_.reserve(messages_.size());
    for (size_t i = 0; i < messages_.size(); ++i) {
      if (entry_ == DataEntry::kDataArray) {
        SAFEARRAY* array = NewArray(messages_[i]);
        held_.push_back(ParseArray(array));
        SafeArrayDestroy(array);
      } else {
        held_.push_back(Parse(i));
      }
    }
  }

  void Release() override { held_.clear(); }

 private:
  static SAFEARRAY* NewArray(std::string_view bytes) {
    SAFEARRAY* array = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
    void* data = nullptr;
    if (array != nullptr && SUCCEEDED(SafeArrayAccessData(array, &data))) {
      if (!bytes.empty()) std::char_traits<char>::copy(static_cast<char*>(data), bytes.data(), bytes.size());
      SafeArrayUnaccessData(array);
    }
    return array;
  }

  void DropArrays() {
    for (SAFEARRAY* array : arrays_) SafeArrayDestroy(array);
    arrays_.clear();
  }

  static Ref<IEMSMessageParser> NewMessage() {
    Ref<IEMSMessageParser> message;
    PvCreateInstance(CLSID_EMSMessageParser, nullptr, IID_IEMSMessageParser, message.put_void());
    return message;
  }

  static Ref<IEMSMessageParser> ParseData(IEMSDataObject* data) {
    Ref<IEMSMessageParser> message = NewMessage();
    if (message && data != nullptr) message->ParseObject(data);
    return message;
  }

  static Ref<IEMSMessageParser> ParseArray(SAFEARRAY* array) {
    Ref<IEMSDataObject> data;
    PvCreateInstance(CLSID_EMSDataObject, nullptr, IID_IEMSDataObject, data.put_void());
    if (!data) return {};
    VARIANT v;
    VariantInit(&v);
    V_VT(&v) = VT_ARRAY | VT_UI1;
    V_ARRAY(&v) = array;
    data->CreateDataArray(v, 0);  // the variant does not own the array: no VariantClear
    return ParseData(data.get());
  }

  Ref<IEMSMessageParser> Parse(size_t i) const {
    if (entry_ == DataEntry::kDataArray) return ParseArray(arrays_[i]);
    Ref<IEMSDataObject> data;
    std::string_view m = messages_[i];
    PvCreateDataObjectOver(m.data(), static_cast<ULONG>(m.size()), nullptr, nullptr, data.put());
    return ParseData(data.get());
  }

  // Every part of the tree, root first; the walk keeps its own stack so
  // that a deep tree does not deepen the call stack.
  template <class Visit>
  static void ForEachPart(IEMSMessageParser* message, Visit&& visit) {
    std::vector<Ref<IEMSMimePart>> pending;
    Ref<IEMSMimePart> root;
    if (FAILED(message->get_MimePart(root.put())) || !root) return;
    pending.push_back(std::move(root));
    while (!pending.empty()) {
      Ref<IEMSMimePart> part = std::move(pending.back());
      pending.pop_back();
      Ref<IEMSMimeParts> children;
      LONG count = 0;
      if (SUCCEEDED(part->get_MimeParts(children.put())) && children) children->get_PartsCount(&count);
      visit(part.get(), count);
      for (LONG c = count - 1; c >= 0; --c) {
        Ref<IEMSMimePart> child;
        if (SUCCEEDED(children->get_Part(c, child.put())) && child) pending.push_back(std::move(child));
      }
    }
  }

  static size_t VisitTypes(IEMSMessageParser* message) {
    static const Text kContentType{WStringView(u"Content-Type")};
    size_t tally = 0;
    ForEachPart(message, [&](IEMSMimePart* part, LONG) {
      ++tally;
      Ref<IEMSMessageParameter> field;
      if (FAILED(part->FindHeader(kContentType.get(), field.put())) || !field) return;
      Ref<IEMSContentType> content;
      if (FAILED(field->QueryInterface(IID_IEMSContentType, content.put_void())) || !content) return;
      Text type;
      Text subtype;
      content->get_MimeTypeName(type.put());
      content->get_MimeSubTypeName(subtype.put());
      readSink = readSink + LengthOf(type) + LengthOf(subtype);
    });
    return tally;
  }

  // A message without a MIME structure has no part tree: its one body is
  // its leaf, and it has no transfer encoding to undo.
  static size_t DecodeLeaves(IEMSMessageParser* message) {
    size_t tally = 0;
    bool sawPart = false;
    ForEachPart(message, [&](IEMSMimePart* part, LONG children) {
      sawPart = true;
      if (children > 0) return;
      Ref<IEMSDataObject> decoded;
      ULONG length = 0;
      if (part->get_DecodedBinary(decoded.put()) == S_OK && decoded) decoded->get_Length(&length);
      tally += length;
    });
    if (!sawPart) {
      Ref<IEMSDataObject> body;
      ULONG length = 0;
      if (SUCCEEDED(message->get_BodyObject(body.put())) && body) body->get_Length(&length);
      tally += length;
    }
    return tally;
  }

  static size_t ReadSenderAndSubject(IEMSMessageParser* message) {
    static const Text kFrom{WStringView(u"From")};
    Text subject;
    message->get_Subject(subject.put());
    size_t tally = LengthOf(subject);
    Ref<IEMSMessageParameter> field;
    if (FAILED(message->FindHeader(kFrom.get(), field.put())) || !field) return tally;
    Ref<IEMSHeaderMailboxes> mailboxes;
    if (FAILED(field->get_HeaderMailboxes(mailboxes.put())) || !mailboxes) return tally;
    LONG count = 0;
    mailboxes->get_Count(&count);
    for (LONG i = 0; i < count; ++i) {
      Text name;
      Text address;
      mailboxes->get_MailboxName(i, name.put());
      mailboxes->get_MailboxAddress(i, address.put());
      tally += LengthOf(name) + LengthOf(address);
    }
    return tally;
  }

  DataEntry entry_;
  std::vector<std::string_view> messages_;
  std::vector<SAFEARRAY*> arrays_;
  std::vector<Ref<IEMSMessageParser>> held_;
};

}  // namespace

std::unique_ptr<PeerLibrary> NewParcelvanePeer(DataEntry entry) {
  return std::make_unique<ParcelvanePeer>(entry);
}

}  // namespace pv::bench
