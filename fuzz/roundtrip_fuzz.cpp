// The round-trip invariant on any bytes, at message level (ParseObject,
// AssembleObject) and at part level (ParsePartObject, AssemblePartObject):
// with A1 = assemble(parse(x)) and A2 = assemble(parse(A1)), A2 equals A1
// byte for byte, and parse(A1) has the same part tree, header fields,
// attachment flags and decoded leaf bytes as parse(x). What the parse
// itself drops (preamble, epilogue, an unterminated last part, ...) is not
// in parse(x) to begin with, so it is not compared.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>

#include "tests/roundtrip/roundtrip_invariant.h"

namespace {

void Report(const char* level, const std::string& failure) {
  if (failure.empty()) return;
  std::fprintf(stderr, "roundtrip_fuzz: %s level: %s\n", level, failure.c_str());
  std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view x(reinterpret_cast<const char*>(data), size);
  Report("message", pv::roundtrip::CheckMessage(x));
  Report("part", pv::roundtrip::CheckPart(x));
  return 0;
}
