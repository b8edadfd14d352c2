// The charset database as data: the names and pages the platform's
// database answers for with its latest MIME charset list. Aliases that it
// does not resolve (latin1, utf8, cp1252, ...) are deliberately absent.
#include "src/platform/charset_table.h"

#include <algorithm>
#include <cstdint>

namespace pv {
namespace {

// Sorted by name (lower case, byte order) for binary search.
constexpr CharsetName kNames[] = {
    {"_autodetect", 50932},
    {"_autodetect_chs", 50936},
    {"_autodetect_cht", 50950},
    {"ascii", 20127},
    {"big5", 950},
    {"cp856", 856},
    {"cp866", 866},
    {"cp875", 875},
    {"csiso2022jp", 50221},
    {"dos-862", 862},
    {"euc-jp", 51932},
    {"gb18030", 54936},
    {"gb2312", 936},
    {"gbk", 936},
    {"hz-gb-2312", 52936},
    {"ibm-thai", 874},
    {"ibm037", 37},
    {"ibm1006", 1006},
    {"ibm1026", 1026},
    {"ibm424", 424},
    {"ibm437", 437},
    {"ibm500", 500},
    {"ibm737", 737},
    {"ibm775", 775},
    {"ibm850", 850},
    {"ibm852", 852},
    {"ibm855", 855},
    {"ibm857", 857},
    {"ibm860", 860},
    {"ibm861", 861},
    {"ibm863", 863},
    {"ibm864", 864},
    {"ibm865", 865},
    {"ibm869", 869},
    {"iso-2022-jp", 50220},
    {"iso-8859-1", 28591},
    {"iso-8859-13", 28603},
    {"iso-8859-15", 28605},
    {"iso-8859-2", 28592},
    {"iso-8859-3", 28593},
    {"iso-8859-4", 28594},
    {"iso-8859-5", 28595},
    {"iso-8859-6", 28596},
    {"iso-8859-7", 28597},
    {"iso-8859-8", 28598},
    {"iso-8859-9", 28599},
    {"koi8-r", 20866},
    {"koi8-u", 21866},
    {"ks_c_5601-1987", 949},
    {"macintosh", 10000},
    {"shift_jis", 932},
    {"unicode", 1200},
    {"us-ascii", 20127},
    {"utf-7", 65000},
    {"utf-8", 65001},
    {"windows-1250", 1250},
    {"windows-1251", 1251},
    {"windows-1252", 1252},
    {"windows-1253", 1253},
    {"windows-1254", 1254},
    {"windows-1255", 1255},
    {"windows-1256", 1256},
    {"windows-1257", 1257},
    {"windows-1258", 1258},
    {"x-chinese-cns", 20000},
    {"x-cp20936", 20936},
    {"x-mac-ce", 10029},
    {"x-mac-cyrillic", 10007},
    {"x-mac-greek", 10006},
    {"x-mac-icelandic", 10079},
    {"x-mac-japanese", 10001},
    {"x-mac-turkish", 10081},
};

// Sorted by code page. Some pages share a name; 932 is named for headers
// by its mail form, iso-2022-jp.
constexpr CodePageName kPages[] = {
    {37, "ibm037"},
    {424, "ibm424"},
    {437, "ibm437"},
    {500, "ibm500"},
    {737, "ibm737"},
    {775, "ibm775"},
    {850, "ibm850"},
    {852, "ibm852"},
    {855, "ibm855"},
    {856, "cp856"},
    {857, "ibm857"},
    {860, "ibm860"},
    {861, "ibm861"},
    {862, "dos-862"},
    {863, "ibm863"},
    {864, "ibm864"},
    {865, "ibm865"},
    {866, "cp866"},
    {869, "ibm869"},
    {874, "ibm-thai"},
    {875, "cp875"},
    {932, "iso-2022-jp"},
    {936, "gb2312"},
    {949, "ks_c_5601-1987"},
    {950, "big5"},
    {1006, "ibm1006"},
    {1026, "ibm1026"},
    {1200, "unicode"},
    {1250, "windows-1250"},
    {1251, "windows-1251"},
    {1252, "windows-1252"},
    {1253, "windows-1253"},
    {1254, "windows-1254"},
    {1255, "windows-1255"},
    {1256, "windows-1256"},
    {1257, "windows-1257"},
    {1258, "windows-1258"},
    {10000, "macintosh"},
    {10001, "x-mac-japanese"},
    {10006, "x-mac-greek"},
    {10007, "x-mac-cyrillic"},
    {10029, "x-mac-ce"},
    {10079, "x-mac-icelandic"},
    {10081, "x-mac-turkish"},
    {20000, "x-Chinese-CNS"},
    {20127, "us-ascii"},
    {20866, "koi8-r"},
    {20932, "EUC-JP"},
    {20936, "x-cp20936"},
    {21866, "koi8-u"},
    {28591, "iso-8859-1"},
    {28592, "iso-8859-2"},
    {28593, "iso-8859-3"},
    {28594, "iso-8859-4"},
    {28595, "iso-8859-5"},
    {28596, "iso-8859-6"},
    {28597, "iso-8859-7"},
    {28598, "iso-8859-8"},
    {28599, "iso-8859-9"},
    {28603, "iso-8859-13"},
    {28605, "iso-8859-15"},
    {50220, "iso-2022-jp"},
    {50221, "iso-2022-jp"},
    {50222, "iso-2022-jp"},
    {50932, "_autodetect"},
    {50936, "_autodetect_chs"},
    {50950, "_autodetect_cht"},
    {51932, "euc-jp"},
    {52936, "hz-gb-2312"},
    {54936, "GB18030"},
    {65000, "utf-7"},
    {65001, "utf-8"},
};

// The longest name the table holds; longer names are unknown at once.
constexpr size_t kLongestName = 15;

int CompareLowered(std::string_view a, std::string_view b) {
  size_t n = std::min(a.size(), b.size());
  for (size_t i = 0; i < n; ++i) {
    unsigned char x = static_cast<unsigned char>(ToLowerAscii(a[i]));
    unsigned char y = static_cast<unsigned char>(ToLowerAscii(b[i]));
    if (x != y) return x < y ? -1 : 1;
  }
  if (a.size() == b.size()) return 0;
  return a.size() < b.size() ? -1 : 1;
}

}  // namespace

LONG CharsetToCodePageNumber(std::string_view name) {
  name = name.substr(0, name.find('\0'));
  if (name.empty() || name.size() > kLongestName) return -1;
  const CharsetName* end = CharsetNamesEnd();
  const CharsetName* it =
      std::lower_bound(CharsetNamesBegin(), end, name,
                       [](const CharsetName& e, std::string_view n) { return CompareLowered(e.name, n) < 0; });
  if (it == end || CompareLowered(it->name, name) != 0) return -1;
  return it->codePage;
}

LONG CharsetToCodePageNumber(WStringView name) {
  name = name.substr(0, name.find(OLECHAR(0)));
  if (name.empty() || name.size() > kLongestName) return -1;
  char narrow[kLongestName];
  for (size_t i = 0; i < name.size(); ++i) {
    // The table holds ASCII names only: anything else is unknown.
    if (static_cast<uint16_t>(name[i]) >= 0x80) return -1;
    narrow[i] = static_cast<char>(name[i]);
  }
  return CharsetToCodePageNumber(std::string_view(narrow, name.size()));
}

std::string_view CodePageToHeaderCharset(LONG codePage) {
  const CodePageName* end = CodePageNamesEnd();
  const CodePageName* it = std::lower_bound(CodePageNamesBegin(), end, codePage,
                                            [](const CodePageName& e, LONG page) { return e.codePage < page; });
  if (it == end || it->codePage != codePage) return std::string_view();
  return it->headerName;
}

bool IsStatefulCodePage(LONG codePage) {
  switch (codePage) {
    case 50220:
    case 50221:
    case 50222:
    case 50225:
    case 50227:
    case 50229:
    case 52936:
    case 65000:
      return true;
    default:
      return false;
  }
}

const CharsetName* CharsetNamesBegin() { return kNames; }
const CharsetName* CharsetNamesEnd() { return kNames + sizeof kNames / sizeof kNames[0]; }
const CodePageName* CodePageNamesBegin() { return kPages; }
const CodePageName* CodePageNamesEnd() { return kPages + sizeof kPages / sizeof kPages[0]; }

}  // namespace pv
