// Round trips (decode(encode(x)) == x) on random bodies of many lengths,
// and the fast codecs against plain byte-at-a-time statements of the same
// rules on random, deliberately awkward inputs.
#include <random>
#include <string>
#include <vector>

#include "tests/mime/codec_test_util.h"
#include "tests/mime/transfer_reference.h"

namespace pv::test {
namespace {

using namespace std::string_literals;

// Every length up to a few lines, then a few larger ones.
std::vector<size_t> Lengths() {
  std::vector<size_t> lengths;
  for (size_t n = 1; n <= 400; ++n) lengths.push_back(n);
  for (size_t n : {1000u, 4095u, 4096u, 4097u, 65536u, 100001u}) lengths.push_back(n);
  return lengths;
}

// ------------------------------------------------------------------ round trips

TEST(TransferRoundTrip, Base64GivesEveryBodyBack) {
  std::mt19937 rng(1);
  for (size_t n : Lengths()) {
    std::string body = RandomBytes(rng, n);
    ASSERT_EQ(Base64Decoded(Base64Encoded(body)), body) << "length " << n;
  }
}

TEST(TransferRoundTrip, QuotedPrintableGivesEveryBodyBack) {
  std::mt19937 rng(2);
  for (size_t n : Lengths()) {
    std::string body = RandomBytes(rng, n);
    ASSERT_EQ(QuotedPrintableDecoded(QuotedPrintableEncoded(body)), body) << "length " << n;
  }
}

TEST(TransferRoundTrip, QuotedPrintableGivesTextWithBlanksAndLineBreaksBack) {
  std::mt19937 rng(3);
  for (size_t n : Lengths()) {
    std::string body = RandomBytes(rng, n, "ab .=\t\r\n");
    ASSERT_EQ(QuotedPrintableDecoded(QuotedPrintableEncoded(body)), body) << "length " << n;
  }
}

TEST(TransferRoundTrip, UuencodeGivesEveryBodyBackWhereTheFormatAllows) {
  std::mt19937 rng(4);
  size_t checked = 0;
  for (size_t n : Lengths()) {
    std::string body = RandomBytes(rng, n);
    if (!reference::UuencodeRoundTripHolds(body)) continue;
    std::string decoded;
    ASSERT_TRUE(UuDecoded(Uuencoded(body), &decoded)) << "length " << n;
    ASSERT_EQ(decoded, body) << "length " << n;
    ++checked;
  }
  EXPECT_GT(checked, 390u);
}

TEST(TransferRoundTrip, UuencodeDoesNotGiveAFourteenByteLastLineBack) {
  // Its count character "." is written twice and the second is read as data.
  std::string body = "fourteen bytes";
  std::string decoded;
  bool ok = UuDecoded(Uuencoded(body), &decoded);
  EXPECT_FALSE(ok && decoded == body);
}

TEST(TransferRoundTrip, UuencodeSkipsALastLineThatSpellsEnd) {
  // 37 bytes give the count "E"; these first two bytes give the characters
  // "N" and "D", so the line reads as an "end" line.
  std::string body = "\xBA\x41" + std::string(35, 'x');
  std::string encoded = Uuencoded(body);
  EXPECT_EQ(encoded.substr(13, 3), "END");
  std::string decoded = "x";
  EXPECT_TRUE(UuDecoded(encoded, &decoded));
  EXPECT_EQ(decoded, "");
}

TEST(TransferRoundTrip, UuencodeSkipsALastLineThatSpellsBegin) {
  // 34 bytes give the count "B" and these bytes "EGIN".
  std::string body = "\x96\x7A\x6E" + std::string(31, 'x');
  std::string encoded = Uuencoded(body);
  EXPECT_EQ(encoded.substr(13, 5), "BEGIN");
  std::string decoded = "x";
  EXPECT_TRUE(UuDecoded(encoded, &decoded));
  EXPECT_EQ(decoded, "");
}

// ------------------------------------------------------------------ against the plain statements

constexpr int kRandomInputs = 4000;

TEST(TransferCodecsAgreeWithPlainRules, Base64DecodeOnAwkwardInput) {
  std::mt19937 rng(5);
  const std::string alphabet = "QUJDab09+/=\r\n \0*\xFF"s;
  for (int i = 0; i < kRandomInputs; ++i) {
    std::string in = RandomBytes(rng, rng() % 200, alphabet);
    ASSERT_EQ(Base64Decoded(in), reference::DecodeBase64(in)) << "input " << i;
  }
}

TEST(TransferCodecsAgreeWithPlainRules, Base64DecodeOnMostlyCleanLines) {
  std::mt19937 rng(6);
  const std::string clean = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  for (int i = 0; i < kRandomInputs; ++i) {
    std::string in = RandomBytes(rng, rng() % 400, clean);
    // A few disturbances at random places.
    for (int k = rng() % 4; k > 0 && !in.empty(); --k) in[rng() % in.size()] = "=\r\n\0 "[rng() % 5];
    ASSERT_EQ(Base64Decoded(in), reference::DecodeBase64(in)) << "input " << i;
  }
}

TEST(TransferCodecsAgreeWithPlainRules, Base64DecodeWithEveryByteValueAtEveryPositionOfALongRun) {
  // Clean runs are decoded in blocks; every byte value at every place of a
  // block must end the bulk path exactly where the group rules say.
  const std::string clean = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string run = clean + clean.substr(0, 36);
  for (int value = 0; value < 256; ++value) {
    for (size_t at = 0; at < 70; ++at) {
      std::string in = run;
      in[at] = static_cast<char>(value);
      ASSERT_EQ(Base64Decoded(in), reference::DecodeBase64(in)) << "byte " << value << " at " << at;
    }
  }
}

TEST(TransferCodecsAgreeWithPlainRules, QuotedPrintableDecodeOnAwkwardInput) {
  std::mt19937 rng(7);
  const std::string alphabet = "===3DdaFfgX\r\n \t\0\xE9"s;
  for (int i = 0; i < kRandomInputs; ++i) {
    std::string in = RandomBytes(rng, rng() % 200, alphabet);
    ASSERT_EQ(QuotedPrintableDecoded(in), reference::DecodeQuotedPrintable(in)) << "input " << i;
  }
}

TEST(TransferCodecsAgreeWithPlainRules, UuencodeDecodeOnAwkwardInput) {
  std::mt19937 rng(8);
  const std::vector<std::string> pieces = {"begin 644 x", "BEGIN", "end", "END", "en",  "\r\n",
                                           "\n",          "\r",    "`",   "!",   "#",   "M",
                                           "0V%T",        "80``",  " ",   "z",   "\x1F"};
  for (int i = 0; i < kRandomInputs; ++i) {
    std::string in;
    for (int k = rng() % 24; k > 0; --k) in += pieces[rng() % pieces.size()];
    std::string expected;
    bool expectedOk = reference::DecodeUuencode(in, &expected);
    std::string actual;
    bool ok = UuDecoded(in, &actual);
    ASSERT_EQ(ok, expectedOk) << "input " << i;
    if (ok) {
      ASSERT_EQ(actual, expected) << "input " << i;
    }
  }
}

TEST(TransferCodecsAgreeWithPlainRules, EncodersOnRandomBodies) {
  std::mt19937 rng(9);
  for (int i = 0; i < 1000; ++i) {
    std::string body = RandomBytes(rng, 1 + rng() % 300, i % 2 ? std::string_view() : "ab \t\r\n.=");
    ASSERT_EQ(Base64Encoded(body), reference::EncodeBase64(body)) << "input " << i;
    ASSERT_EQ(QuotedPrintableEncoded(body), reference::EncodeQuotedPrintable(body)) << "input " << i;
    ASSERT_EQ(Uuencoded(body, "n.bin"), reference::EncodeUuencode(body, "n.bin")) << "input " << i;
  }
}

}  // namespace
}  // namespace pv::test
