// The round-trip invariant over generated messages: random trees of
// multipart/mixed, alternative and related parts and message/rfc822
// entities, with text bodies with and without a final line break, trailing
// blanks and lines that look like delimiters; base64, quoted-printable and
// uuencoded leaves; encoded words and RFC 2231 parameters; address groups.
// The generator is seeded, so every run checks the same messages.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/roundtrip/roundtrip_invariant.h"

namespace pv::roundtrip {
namespace {

// A small generator of our own: the same numbers on every platform.
class Random {
 public:
  explicit Random(uint64_t seed) : state_(seed * 0x9E3779B97F4A7C15ull + 1) {}
  uint32_t Next() {
    state_ ^= state_ << 13;
    state_ ^= state_ >> 7;
    state_ ^= state_ << 17;
    return static_cast<uint32_t>(state_ >> 11);
  }
  size_t Below(size_t n) { return n == 0 ? 0 : Next() % n; }
  bool Chance(unsigned percent) { return Below(100) < percent; }
  template <class T>
  const T& Pick(const std::vector<T>& items) {
    return items[Below(items.size())];
  }

 private:
  uint64_t state_;
};

const std::vector<std::string> kWords = {"alpha",
                                         "beta",
                                         "Gr\xC3\xBC\xC3\x9F"
                                         "e",
                                         "caf\xC3\xA9",
                                         "x",
                                         "report",
                                         "--",
                                         "=",
                                         "begin",
                                         "end",
                                         "=?",
                                         "?=",
                                         "\t",
                                         "  ",
                                         "----=_NextPart_000"};

class MessageMaker {
 public:
  explicit MessageMaker(uint64_t seed) : r_(seed) {}

  std::string Message() {
    std::string out;
    out += "From: " + Address() + "\r\n";
    out += "To: " + AddressList() + "\r\n";
    if (r_.Chance(50)) out += "Cc: " + AddressList() + "\r\n";
    out += "Subject: " + Subject() + "\r\n";
    out += "Date: Tue, 1 Jul 2025 10:52:37 +0200\r\n";
    if (r_.Chance(30)) out += "X-Folded: first\r\n\tsecond line\r\n";
    out += "MIME-Version: 1.0\r\n";
    out += Entity(0);
    return out;
  }

 private:
  std::string Address() {
    switch (r_.Below(4)) {
      case 0:
        return "a" + std::to_string(r_.Below(100)) + "@example.com";
      case 1:
        return "\"Jones, Chris\" <chris@example.org>";
      case 2:
        return "=?utf-8?Q?J=C3=BCrgen?= <jm@example.org>";
      default:
        return "Anna (work) <anna@example.net>";
    }
  }

  std::string AddressList() {
    switch (r_.Below(4)) {
      case 0:
        return "undisclosed-recipients:;";
      case 1:
        return "A Group: " + Address() + ", " + Address() + ";";
      case 2:
        return Address() + ", Empty:;, " + Address();
      default:
        return Address();
    }
  }

  std::string Subject() {
    switch (r_.Below(4)) {
      case 0:
        return "=?utf-8?B?R3LDvMOfZSBhdXMgS8O2bG4=?=";
      case 1:
        return "=?iso-8859-1?Q?caf=E9?= and =?utf-8?Q?more?=";
      case 2:
        return "plain words\r\n continued";
      default:
        return Line(6);
    }
  }

  std::string Line(size_t words) {
    std::string line;
    for (size_t i = 0, n = 1 + r_.Below(words); i < n; ++i) {
      if (i > 0) line += ' ';
      line += r_.Pick(kWords);
    }
    return line;
  }

  // Text lines: some end in blanks, some look like delimiter lines of the
  // enclosing multiparts; the final line break is there or not.
  std::string Text() {
    std::string text;
    for (size_t i = 0, n = r_.Below(6); i < n; ++i) {
      switch (r_.Below(8)) {
        case 0:
          text += Line(5) + "   \r\n";
          break;
        case 1:
          if (!boundaries_.empty())
            text += "--" + r_.Pick(boundaries_) + (r_.Chance(50) ? "  \r\n" : "x\r\n");
          break;
        case 2:
          text += "\r\n";
          break;
        default:
          text += Line(8) + "\r\n";
      }
    }
    if (r_.Chance(40)) text += Line(4);  // no final line break
    if (r_.Chance(15)) text += " ";
    return text;
  }

  std::string QuotedPrintable() {
    std::string text = "caf=C3=A9 soft=\r\nbreak =3D equals\r\n";
    if (r_.Chance(50)) text += "ends in a space ";
    if (r_.Chance(50)) text += "\r\n";
    return text;
  }

  std::string Base64() {
    static const char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (size_t line = 0, n = 1 + r_.Below(3); line < n; ++line) {
      for (size_t i = 0, m = 4 * (1 + r_.Below(15)); i < m; ++i) text += kAlphabet[r_.Below(64)];
      if (line + 1 < n || r_.Chance(70)) text += "\r\n";
    }
    return text;
  }

  std::string Uuencoded(bool withText) {
    std::string block = "begin 644 file" + std::to_string(r_.Below(10)) + ".bin\r\n#86)C\r\n`\r\nend\r\n";
    if (!withText) return block;
    return Line(4) + "\r\n" + block + (r_.Chance(50) ? Line(3) + "\r\n" : std::string());
  }

  std::string FileNameParameter() {
    switch (r_.Below(4)) {
      case 0:
        return "; name*=utf-8''r%C3%A9sum%C3%A9%3B1.pdf";
      case 1:
        return "; name=\"=?utf-8?Q?Bericht_f=C3=BCr_Q3.pdf?=\"";
      case 2:
        return "; name*=iso-8859-1'en'caf%E9.txt; x-extra=\"a b\"";
      default:
        return "";
    }
  }

  std::string Disposition() {
    switch (r_.Below(3)) {
      case 0:
        return "Content-Disposition: attachment; filename*=utf-8''na%C3%AFve.txt\r\n";
      case 1:
        return "Content-Disposition: inline; filename=\"a;b.txt\"\r\n";
      default:
        return "";
    }
  }

  // One entity: its Content- fields, the empty line, its body.
  std::string Entity(int depth) {
    const size_t kind = depth >= 4 ? 5 + r_.Below(5) : r_.Below(10);
    if (kind < 3) return Multipart(depth, kind == 0 ? "mixed" : kind == 1 ? "alternative" : "related");
    if (kind < 5) {
      std::string inner = "Subject: inner " + std::to_string(depth) + "\r\nTo: " + AddressList() + "\r\n";
      return "Content-Type: message/rfc822\r\n\r\n" + inner + Entity(depth + 1);
    }
    switch (kind) {
      case 5:
        return "Content-Type: text/plain; charset=utf-8\r\n" + Disposition() + "\r\n" + Text();
      case 6:
        return "Content-Type: text/plain; charset=utf-8\r\nContent-Transfer-Encoding: "
               "quoted-printable\r\n\r\n" +
               QuotedPrintable();
      case 7:
        return "Content-Type: application/octet-stream" + FileNameParameter() +
               "\r\nContent-Transfer-Encoding: base64\r\n" + Disposition() + "\r\n" + Base64();
      case 8:
        return "Content-Type: application/octet-stream\r\nContent-Transfer-Encoding: x-uuencode\r\n"
               "Content-Disposition: attachment; filename=\"f.bin\"\r\n\r\n" +
               Uuencoded(false);
      default:
        return "Content-Type: text/plain\r\n\r\n" + Uuencoded(true);
    }
  }

  std::string Multipart(int depth, const char* subtype) {
    std::string boundary = "b" + std::to_string(depth) + "_" + std::to_string(r_.Below(1000));
    if (r_.Chance(10)) boundary = "=_" + boundary + "=";
    std::string out = std::string("Content-Type: multipart/") + subtype + ";";
    out += r_.Chance(30) ? "\r\n\tboundary=\"" + boundary + "\"" : " boundary=" + boundary;
    if (r_.Chance(20)) out += "; type=\"text/html\"";
    out += "\r\n\r\n";
    if (r_.Chance(30)) out += "This is a preamble.\r\n";
    boundaries_.push_back(boundary);
    for (size_t i = 0, n = 1 + r_.Below(4); i < n; ++i)
      out += "--" + boundary + "\r\n" + Entity(depth + 1) + "\r\n";
    boundaries_.pop_back();
    out += "--" + boundary + "--";
    if (r_.Chance(50)) out += "\r\n";
    if (r_.Chance(20)) out += "an epilogue\r\n";
    return out;
  }

  Random r_;
  std::vector<std::string> boundaries_;
};

TEST(RoundTripProperty, GeneratedMessagesReadBackAsTheyWereWritten) {
  constexpr uint64_t kMessages = 4000;
  size_t multiparts = 0;
  for (uint64_t seed = 1; seed <= kMessages; ++seed) {
    const std::string x = MessageMaker(seed).Message();
    std::string a1;
    std::string failure = CheckMessage(x, &a1);
    ASSERT_EQ(failure, "") << "seed " << seed << "\nx:\n" << Shown(x, 4000);
    failure = CheckPart(x);
    ASSERT_EQ(failure, "") << "seed " << seed << " (part level)\nx:\n" << Shown(x, 4000);
    if (a1.find("multipart/") != std::string::npos) ++multiparts;
  }
  // The generator reaches the shapes it is meant to.
  EXPECT_GT(multiparts, kMessages / 4);
}

TEST(RoundTripProperty, TheGeneratorIsReproducible) {
  EXPECT_EQ(MessageMaker(7).Message(), MessageMaker(7).Message());
  EXPECT_NE(MessageMaker(7).Message(), MessageMaker(8).Message());
}

}  // namespace
}  // namespace pv::roundtrip
