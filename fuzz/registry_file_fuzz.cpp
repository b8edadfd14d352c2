// The text-file registry on arbitrary bytes: reading never fails unsafely,
// a file that reads writes back in a form that reads to the same text, and
// the registry's GUID text reads back the GUID it came from.
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "src/platform/reg_file.h"
#include "src/com/guid_text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  std::string_view text(reinterpret_cast<const char*>(data), size);

  pv::RegFile file;
  std::string error;
  if (file.Parse(text, &error)) {
    std::string written = file.Serialize();
    pv::RegFile again;
    if (!again.Parse(written, &error)) std::abort();
    if (again.Serialize() != written) std::abort();
    for (const std::string& key : file.KeyPaths()) {
      if (!again.HasKey(key)) std::abort();
    }
    // Changing a key of what was read keeps the file readable.
    if (!file.empty()) {
      std::string first = file.KeyPaths().front();
      file.SetString(first + "\\sub", std::string(text.substr(0, 16)), std::string(text.substr(0, 64)));
      file.DeleteTree(first + "\\sub");
      if (!again.Parse(file.Serialize(), &error)) std::abort();
    }
  } else if (error.empty()) {
    std::abort();
  }

  GUID guid;
  if (pv::ParseGuidText(text, &guid)) {
    GUID back;
    if (!pv::ParseGuidText(pv::GuidText(guid), &back) || !IsEqualGUID(guid, back)) std::abort();
  }
  return 0;
}
