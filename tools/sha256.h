// SHA-256 of a byte string, for the attachment digests of parcelvane index.
#ifndef PARCELVANE_TOOLS_SHA256_H
#define PARCELVANE_TOOLS_SHA256_H

#include <string>
#include <string_view>

namespace pvtool {

// The digest as 64 lower-case hexadecimal digits.
std::string Sha256Hex(std::string_view bytes);

}  // namespace pvtool

#endif  // PARCELVANE_TOOLS_SHA256_H
