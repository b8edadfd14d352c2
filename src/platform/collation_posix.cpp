// Locale-aware comparison off Windows: an ICU collator (root order, tertiary
// strength, as en-US uses) tailored to the platform's word sort, plus the
// platform's tie-breaks. Names that are pure ASCII, nearly all of them, take
// a table-driven path that gives the collator's answers without it.
#include <unicode/coll.h>
#include <unicode/tblcoll.h>

#include <climits>
#include <cstdint>
#include <memory>
#include <string>

#include "src/platform/collation.h"

namespace pv {
namespace {

// The platform sorts the other punctuation in this order, all of it before
// digits and letters (ICU's root order differs: "_" before ".", for one).
constexpr char16_t kPunctuationOrder[] = u" !\"#$%&()*,./:;?@[\\]^_`{|}~+<=>";

// The word sort ignores hyphen and apostrophe so that "coop" and "co-op"
// stay together; they only break ties (IgnoredTieBreak).
std::u16string TailoringRules() {
  std::u16string rules = u"&[before 1]0";
  for (const char16_t* p = kPunctuationOrder; *p != 0; ++p) {
    rules += u" < '";
    rules += *p;
    rules += u'\'';
  }
  rules += u" &[last tertiary ignorable] = '-' = ''";
  return rules;
}

// Opened once and never destroyed, so that threads still comparing at exit
// keep a valid prototype to clone from. Null when ICU cannot build it (ICU
// objects answer exhausted memory with null, not an exception).
const icu::Collator* Prototype() {
  static const icu::Collator* const prototype = [] {
    UErrorCode status = U_ZERO_ERROR;
    std::u16string rules = TailoringRules();
    auto* collator =
        new icu::RuleBasedCollator(icu::UnicodeString(rules.data(), static_cast<int32_t>(rules.size())),
                                   icu::Collator::TERTIARY, status);
    if (collator != nullptr && U_FAILURE(status)) {
      delete collator;
      collator = nullptr;
    }
    return collator;
  }();
  return prototype;
}

// A collator must not be used by two threads at once: each thread compares
// with its own clone of the prototype.
icu::Collator* ThreadCollator() {
  thread_local std::unique_ptr<icu::Collator> clone;
  if (!clone) {
    const icu::Collator* prototype = Prototype();
    if (prototype == nullptr) return nullptr;
    clone.reset(prototype->clone());  // null when memory is exhausted: retried next time
  }
  return clone.get();
}

// ---------------------------------------------------------------- ASCII
// The collator's weights for ASCII, one key per character: the primary
// weight shifted left by one, plus 1 for an upper-case letter. Key 0 is
// what the collator ignores (the C0 controls other than TAB..CR, DEL,
// hyphen and apostrophe); then come the white-space controls, the
// punctuation in kPunctuationOrder, digits, and letters without regard to
// case. ASCII has no accents, so two strings whose primaries agree differ
// at most in case.
class AsciiKeys {
 public:
  constexpr AsciiKeys() {
    uint16_t primary = 1;
    for (int c = 0x09; c <= 0x0D; ++c) key_[c] = Key(primary++, false);
    for (const char16_t* p = kPunctuationOrder; *p != 0; ++p) key_[*p] = Key(primary++, false);
    for (int c = '0'; c <= '9'; ++c) key_[c] = Key(primary++, false);
    for (int c = 'a'; c <= 'z'; ++c) {
      key_[c] = Key(primary, false);
      key_[c - 'a' + 'A'] = Key(primary++, true);
    }
  }
  constexpr uint16_t operator[](OLECHAR c) const { return key_[c]; }

 private:
  static constexpr uint16_t Key(uint16_t primary, bool upper) {
    return static_cast<uint16_t>((primary << 1) | (upper ? 1 : 0));
  }
  uint16_t key_[128] = {};
};
constexpr AsciiKeys kAsciiKeys;

bool IsAscii(WStringView s) {
  OLECHAR any = 0;
  for (OLECHAR c : s) any |= c;
  return any < 0x80;
}

// The collator's answer for two ASCII strings: the first primary
// difference, else the first case difference (lower case first).
int CollateAscii(WStringView a, WStringView b) {
  size_t i = 0;
  size_t j = 0;
  int caseOrder = 0;
  for (;;) {
    uint16_t ka = 0;
    uint16_t kb = 0;
    while (i < a.size() && (ka = kAsciiKeys[a[i]]) == 0) ++i;
    while (j < b.size() && (kb = kAsciiKeys[b[j]]) == 0) ++j;
    bool aDone = i == a.size();
    bool bDone = j == b.size();
    if (aDone || bDone) return aDone == bDone ? caseOrder : (aDone ? -1 : 1);
    if ((ka ^ kb) > 1) return ka < kb ? -1 : 1;  // the primaries differ
    if (caseOrder == 0 && ka != kb) caseOrder = ka < kb ? -1 : 1;
    ++i;
    ++j;
  }
}

// ---------------------------------------------------------------- tie-breaks
int Sign(int r) { return r < 0 ? -1 : (r > 0 ? 1 : 0); }

// Hyphen and apostrophe, in the order the tie-break ranks them; 0 for
// every other character.
int IgnoredRank(OLECHAR c) {
  if (c == u'\'') return 1;
  if (c == u'-') return 2;
  return 0;
}

// Among strings that are otherwise equal, the one with fewer ignored
// characters sorts first ("ab" < "a-b"); then an earlier one sorts first,
// then an apostrophe before a hyphen.
int IgnoredTieBreak(WStringView a, WStringView b) {
  size_t i = 0;
  size_t j = 0;
  for (;;) {
    while (i < a.size() && IgnoredRank(a[i]) == 0) ++i;
    while (j < b.size() && IgnoredRank(b[j]) == 0) ++j;
    bool aDone = i == a.size();
    bool bDone = j == b.size();
    if (aDone || bDone) return aDone == bDone ? 0 : (aDone ? -1 : 1);
    if (i != j) return i < j ? -1 : 1;
    int r = IgnoredRank(a[i]) - IgnoredRank(b[j]);
    if (r != 0) return Sign(r);
    ++i;
    ++j;
  }
}

int Collate(icu::Collator* collator, WStringView a, WStringView b) {
  if (collator == nullptr || a.size() > INT32_MAX || b.size() > INT32_MAX) return 0;
  static constexpr char16_t kEmpty[] = u"";
  UErrorCode status = U_ZERO_ERROR;
  UCollationResult r =
      collator->compare(a.empty() ? kEmpty : a.data(), static_cast<int32_t>(a.size()),
                        b.empty() ? kEmpty : b.data(), static_cast<int32_t>(b.size()), status);
  if (U_FAILURE(status)) return 0;
  return r == UCOL_LESS ? -1 : (r == UCOL_GREATER ? 1 : 0);
}

}  // namespace

int CompareLocale(WStringView a, WStringView b) {
  if (a == b) return 0;
  int r = (IsAscii(a) && IsAscii(b)) ? CollateAscii(a, b) : Collate(ThreadCollator(), a, b);
  if (r != 0) return r;
  r = IgnoredTieBreak(a, b);
  if (r != 0) return r;
  return Sign(a.compare(b));
}

}  // namespace pv
