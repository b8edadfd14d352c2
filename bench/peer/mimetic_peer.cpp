// The three tasks through mimetic's own interface: a MimeEntity built from
// the message's bytes, its tree walked through body().parts(), leaves
// decoded with its base64 and quoted-printable codecs as their
// Content-Transfer-Encoding says, the subject and the From mailboxes read
// from the header. mimetic has no encoded-word decoder: its subject is the
// field's text as written.
#include "bench/peer/mimetic_peer.h"

#include <iterator>
#include <mimetic/mimetic.h>
#include <string>

namespace pv::bench {
namespace {

class MimeticPeer : public PeerLibrary {
 public:
  ~MimeticPeer() override { Release(); }
  const char* Name() const override { return "mimetic 0.9.8"; }
  void Prepare(const std::vector<std::string_view>& messages) override { messages_ = messages; }

  size_t Run(Task task) override {
    size_t tally = 0;
    for (std::string_view m : messages_) {
      mimetic::MimeEntity entity(m.data(), m.data() + m.size());
      switch (task) {
        case Task::kParse:
          tally += VisitTypes(entity);
          break;
        case Task::kDecode:
          tally += DecodeLeaves(entity);
          break;
        case Task::kHeaders:
          tally += ReadSenderAndSubject(entity);
          break;
      }
    }
    return tally;
  }

  void ParseAndHold() override {
    held_.reserve(messages_.size());
    for (std::string_view m : messages_)
      held_.push_back(new mimetic::MimeEntity(m.data(), m.data() + m.size()));
  }

  void Release() override {
    for (mimetic::MimeEntity* entity : held_) delete entity;
    held_.clear();
  }

 private:
  // Every entity, root first, with the walk's own stack.
  template <class Visit>
  static void ForEachEntity(mimetic::MimeEntity& root, Visit&& visit) {
    std::vector<mimetic::MimeEntity*> pending{&root};
    while (!pending.empty()) {
      mimetic::MimeEntity* entity = pending.back();
      pending.pop_back();
      mimetic::MimeEntityList& children = entity->body().parts();
      visit(*entity, children.size());
      for (auto it = children.rbegin(); it != children.rend(); ++it) pending.push_back(*it);
    }
  }

  static size_t VisitTypes(mimetic::MimeEntity& root) {
    size_t tally = 0;
    ForEachEntity(root, [&](mimetic::MimeEntity& entity, size_t) {
      const mimetic::ContentType& type = entity.header().contentType();
      ++tally;
      readSink = readSink + type.type().size() + type.subtype().size();
    });
    return tally;
  }

  static size_t DecodeLeaves(mimetic::MimeEntity& root) {
    size_t tally = 0;
    ForEachEntity(root, [&](mimetic::MimeEntity& entity, size_t children) {
      if (children > 0) return;
      const mimetic::Body& body = entity.body();
      const mimetic::istring& mechanism = entity.header().contentTransferEncoding().mechanism();
      // The codecs write a byte at a time: room for the whole body first,
      // as a careful user would make, spares them the string's regrowth.
      std::string decoded;
      decoded.reserve(body.size());
      if (mechanism == "base64") {
        mimetic::Base64::Decoder decoder;
        mimetic::decode(body.begin(), body.end(), decoder, std::back_inserter(decoded));
      } else if (mechanism == "quoted-printable") {
        mimetic::QP::Decoder decoder;
        mimetic::decode(body.begin(), body.end(), decoder, std::back_inserter(decoded));
      } else {
        decoded.assign(body.begin(), body.end());
      }
      tally += decoded.size();
    });
    return tally;
  }

  static size_t ReadSenderAndSubject(mimetic::MimeEntity& entity) {
    // Asking for a missing field would add it: look first.
    mimetic::Header& header = entity.header();
    size_t tally = header.hasField("Subject") ? header.subject().size() : 0;
    if (!header.hasField("From")) return tally;
    for (const mimetic::Mailbox& mailbox : header.from()) {
      tally += mailbox.label().size() + mailbox.mailbox().size() + 1 + mailbox.domain().size();
    }
    return tally;
  }

  std::vector<std::string_view> messages_;
  std::vector<mimetic::MimeEntity*> held_;
};

}  // namespace

std::unique_ptr<PeerLibrary> NewMimeticPeer() { return std::make_unique<MimeticPeer>(); }

}  // namespace pv::bench
