// The charset database: charset names to code pages and code pages to the
// charset names written in mail headers. Kept as data compiled into the
// library and used on every platform, so that both builds answer alike.
#ifndef PARCELVANE_SRC_PLATFORM_CHARSET_TABLE_H
#define PARCELVANE_SRC_PLATFORM_CHARSET_TABLE_H

#include <cstddef>
#include <string_view>

#include "parcelvane/platform.h"
#include "src/platform/strings.h"

namespace pv {

// One name the database resolves, with its internet-encoding code page.
struct CharsetName {
  std::string_view name;  // lower case
  LONG codePage;
};

// One code page the database knows, with its header charset name.
struct CodePageName {
  LONG codePage;
  std::string_view headerName;
};

// The internet-encoding code page of a charset name, matched without
// regard to ASCII case, or -1 when the database does not know the name.
// The name is read up to its first NUL, as the database receives it.
LONG CharsetToCodePageNumber(std::string_view name);
LONG CharsetToCodePageNumber(WStringView name);

// The charset name recommended for mail headers in a code page, or ""
// when the page is unknown.
std::string_view CodePageToHeaderCharset(LONG codePage);

// Whether text in a code page shifts state (ISO-2022 escapes, HZ, UTF-7),
// so that the bytes of a text are not the sum of those of its characters.
bool IsStatefulCodePage(LONG codePage);

// Every entry, in lookup order (for tests and tools).
const CharsetName* CharsetNamesBegin();
const CharsetName* CharsetNamesEnd();
// The names only the classes root's MIME database lists, with their answers.
const CharsetName* RegistryCharsetNamesBegin();
const CharsetName* RegistryCharsetNamesEnd();
const CodePageName* CodePageNamesBegin();
const CodePageName* CodePageNamesEnd();

}  // namespace pv

#endif  // PARCELVANE_SRC_PLATFORM_CHARSET_TABLE_H
