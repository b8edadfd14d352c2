// The charset database as data: the names and pages the platform's
// database answers for with its latest MIME charset list, then the names
// that the classes root's MIME database adds (euc-kr, windows-874, latin1,
// ...), as the lookup on Windows reads both. Aliases that neither knows
// (utf8, cp1252, ...) are deliberately absent.
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

// Names that only the classes root's MIME database lists, each with the
// internet encoding listed there, or for a name listed as an alias, the
// answer for the name it stands for. Consulted after kNames, so no name of
// kNames changes its answer. Sorted like kNames.
constexpr CharsetName kRegistryNames[] = {
    {"_autodetect_kr", 50949},
    {"_iso-2022-jp$esc", 50221},
    {"_iso-2022-jp$sio", 50222},
    {"ansi_x3.4-1968", 28591},  // as iso-8859-1
    {"ansi_x3.4-1986", 28591},  // as iso-8859-1
    {"arabic", 28596},          // as iso-8859-6
    {"asmo-708", 708},
    {"chinese", 936},                // as gb2312
    {"cn-gb", 936},                  // as gb2312
    {"cp1256", 1256},                // as windows-1256
    {"cp367", 28591},                // as iso-8859-1
    {"cp819", 28591},                // as iso-8859-1
    {"cp852", 852},                  // as ibm852
    {"csascii", 28591},              // as iso-8859-1
    {"csbig5", 950},                 // as big5
    {"cseuckr", 949},                // as ks_c_5601-1987
    {"cseucpkdfmtjapanese", 51932},  // as euc-jp
    {"csgb2312", 936},               // as gb2312
    {"csiso2022kr", 50225},          // as iso-2022-kr
    {"csiso58gb231280", 936},        // as gb2312
    {"csisolatin1", 1252},           // as windows-1252
    {"csisolatin2", 28592},          // as iso-8859-2
    {"csisolatin4", 28594},          // as iso-8859-4
    {"csisolatin5", 28599},          // as iso-8859-9
    {"csisolatinarabic", 28596},     // as iso-8859-6
    {"csisolatincyrillic", 28595},   // as iso-8859-5
    {"csisolatingreek", 28597},      // as iso-8859-7
    {"csisolatinhebrew", 28598},     // as iso-8859-8
    {"cskoi8r", 20866},              // as koi8-r
    {"csksc56011987", 949},          // as ks_c_5601-1987
    {"csshiftjis", 932},             // as shift_jis
    {"csunicode11utf7", 65000},      // as utf-7
    {"cswindows31j", 932},           // as shift_jis
    {"cyrillic", 28595},             // as iso-8859-5
    {"dos-720", 720},
    {"dos-874", 874},
    {"ecma-114", 28596},  // as iso-8859-6
    {"ecma-118", 28597},  // as iso-8859-7
    {"elot_928", 28597},  // as iso-8859-7
    {"euc-kr", 949},
    {"extended_unix_code_packed_format_for_japanese", 51932},  // as euc-jp
    {"gb_2312-80", 936},                                       // as gb2312
    {"greek", 28597},                                          // as iso-8859-7
    {"greek8", 28597},                                         // as iso-8859-7
    {"hebrew", 28598},                                         // as iso-8859-8
    {"ibm367", 28591},                                         // as iso-8859-1
    {"ibm819", 28591},                                         // as iso-8859-1
    {"ibm866", 866},
    {"iso-2022-kr", 50225},
    {"iso-8859-11", 874},          // as windows-874
    {"iso-8859-8 visual", 28598},  // as iso-8859-8
    {"iso-8859-8-i", 38598},
    {"iso-ir-100", 28591},        // as iso-8859-1
    {"iso-ir-101", 28592},        // as iso-8859-2
    {"iso-ir-110", 28594},        // as iso-8859-4
    {"iso-ir-111", 28594},        // as iso-8859-4
    {"iso-ir-126", 28597},        // as iso-8859-7
    {"iso-ir-127", 28596},        // as iso-8859-6
    {"iso-ir-138", 28598},        // as iso-8859-8
    {"iso-ir-144", 28595},        // as iso-8859-5
    {"iso-ir-148", 28599},        // as iso-8859-9
    {"iso-ir-149", 949},          // as ks_c_5601-1987
    {"iso-ir-58", 936},           // as gb2312
    {"iso-ir-6", 28591},          // as iso-8859-1
    {"iso646-us", 28591},         // as iso-8859-1
    {"iso8859-1", 28591},         // as iso-8859-1
    {"iso8859-2", 28592},         // as iso-8859-2
    {"iso_646.irv:1991", 28591},  // as iso-8859-1
    {"iso_8859-1", 28591},        // as iso-8859-1
    {"iso_8859-1:1987", 28591},   // as iso-8859-1
    {"iso_8859-2", 28592},        // as iso-8859-2
    {"iso_8859-2:1987", 28592},   // as iso-8859-2
    {"iso_8859-4", 28594},        // as iso-8859-4
    {"iso_8859-4:1988", 28594},   // as iso-8859-4
    {"iso_8859-5", 28595},        // as iso-8859-5
    {"iso_8859-5:1988", 28595},   // as iso-8859-5
    {"iso_8859-6", 28596},        // as iso-8859-6
    {"iso_8859-6:1987", 28596},   // as iso-8859-6
    {"iso_8859-7", 28597},        // as iso-8859-7
    {"iso_8859-7:1987", 28597},   // as iso-8859-7
    {"iso_8859-8", 28598},        // as iso-8859-8
    {"iso_8859-8:1988", 28598},   // as iso-8859-8
    {"iso_8859-9", 28599},        // as iso-8859-9
    {"iso_8859-9:1989", 28599},   // as iso-8859-9
    {"koi", 20866},               // as koi8-r
    {"koi8-ru", 21866},
    {"korean", 949},               // as ks_c_5601-1987
    {"ks_c_5601", 949},            // as ks_c_5601-1987
    {"ks_c_5601-1989", 949},       // as ks_c_5601-1987
    {"ksc5601", 949},              // as ks_c_5601-1987
    {"ksc_5601", 949},             // as ks_c_5601-1987
    {"l1", 1252},                  // as windows-1252
    {"l2", 28592},                 // as iso-8859-2
    {"l4", 28594},                 // as iso-8859-4
    {"l5", 28599},                 // as iso-8859-9
    {"latin1", 28591},             // as iso-8859-1
    {"latin2", 28592},             // as iso-8859-2
    {"latin4", 28594},             // as iso-8859-4
    {"latin5", 28599},             // as iso-8859-9
    {"logical", 1255},             // as windows-1255
    {"ms_kanji", 932},             // as shift_jis
    {"shift-jis", 932},            // as shift_jis
    {"unicode-1-1-utf-7", 65000},  // as utf-7
    {"unicode-1-1-utf-8", 65001},  // as utf-8
    {"unicode-2-0-utf-8", 65001},  // as utf-8
    {"unicodefffe", 1201},
    {"us", 28591},      // as iso-8859-1
    {"visual", 28598},  // as iso-8859-8
    {"windows-874", 874},
    {"x-ansi", 1252},                // as windows-1252
    {"x-cp1250", 1250},              // as windows-1250
    {"x-cp1251", 1251},              // as windows-1251
    {"x-euc", 51932},                // as euc-jp
    {"x-euc-jp", 51932},             // as euc-jp
    {"x-ms-cp932", 932},             // as shift_jis
    {"x-sjis", 932},                 // as shift_jis
    {"x-unicode-2-0-utf-7", 65000},  // as utf-7
    {"x-unicode-2-0-utf-8", 65001},  // as utf-8
    {"x-x-big5", 950},               // as big5
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

// The longest name the tables hold; longer names are unknown at once.
constexpr size_t kLongestName = 45;

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

const CharsetName* FindName(const CharsetName* begin, const CharsetName* end, std::string_view name) {
  const CharsetName* it = std::lower_bound(begin, end, name, [](const CharsetName& e, std::string_view n) {
    return CompareLowered(e.name, n) < 0;
  });
  return it == end || CompareLowered(it->name, name) != 0 ? nullptr : it;
}

}  // namespace

LONG CharsetToCodePageNumber(std::string_view name) {
  name = name.substr(0, name.find('\0'));
  if (name.empty() || name.size() > kLongestName) return -1;
  const CharsetName* found = FindName(CharsetNamesBegin(), CharsetNamesEnd(), name);
  if (found == nullptr) found = FindName(RegistryCharsetNamesBegin(), RegistryCharsetNamesEnd(), name);
  return found == nullptr ? -1 : found->codePage;
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
  const CodePageName* it =
      std::lower_bound(CodePageNamesBegin(), end, codePage,
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
const CharsetName* RegistryCharsetNamesBegin() { return kRegistryNames; }
const CharsetName* RegistryCharsetNamesEnd() {
  return kRegistryNames + sizeof kRegistryNames / sizeof kRegistryNames[0];
}
const CodePageName* CodePageNamesBegin() { return kPages; }
const CodePageName* CodePageNamesEnd() { return kPages + sizeof kPages / sizeof kPages[0]; }

}  // namespace pv
