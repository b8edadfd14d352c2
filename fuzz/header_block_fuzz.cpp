// Parses any bytes as a header block from a data object, assembles the
// list and parses the assembled bytes again. Every field whose name does
// not begin with "Content-" must assemble to well-formed lines (each line
// feed followed by a blank). When every field does, what must survive the
// second parse is the number of fields and their names, and for fields
// whose name does not begin with "Content-" their raw values and decoded
// text; a block without "Content-" fields then assembles to the same bytes
// the second time. ("Content-" fields write their parameters as the
// parameter list assembles them, which may hold line breaks of their own.)
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "src/data/data_access.h"
#include "src/headers/header_text.h"
#include "src/headers/message_parameter.h"
#include "src/headers/message_parameters.h"

namespace {

struct FieldSummary {
  std::string name;
  std::vector<std::string> values;
  pv::WString decoded;
  bool content = false;
  bool wellFormed = false;
};

// Whether every line of an assembled field either continues the one
// before it (it starts with a blank) or is the next occurrence of the field.
bool IsWellFormed(const std::string& text, const std::string& name) {
  for (size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 1)) {
    if (at + 1 == text.size() || text[at + 1] == ' ' || text[at + 1] == '\t') continue;
    if (text.compare(at + 1, name.size() + 1, name + ":") != 0) return false;
  }
  return true;
}

std::vector<FieldSummary> Summarize(pv::MessageParameters* list) {
  std::vector<FieldSummary> fields;
  for (size_t i = 0; i < list->count(); ++i) {
    pv::MessageParameter* field = list->at(i) ? list->at(i)->OwnField() : nullptr;
    if (field == nullptr) std::abort();  // every field of a parse is the library's own
    FieldSummary summary;
    summary.name = field->name();
    summary.values = field->values();
    summary.decoded = field->decodedText();
    summary.content = pv::IsContentFieldName(summary.name);
    std::string assembled;
    if (FAILED(field->AssembleHeaderNarrow(&assembled))) std::abort();
    summary.wellFormed = IsWellFormed(assembled, summary.name);
    fields.push_back(std::move(summary));
  }
  return fields;
}

void Check(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "round trip broken: %s\n", what);
  std::abort();
}

// Parses the data object's span into a new list.
pv::ComPtr<pv::MessageParameters> Parse(IEMSDataObject* data) {
  pv::ComPtr<pv::MessageParameters> list;
  if (FAILED(pv::MakeObject(&list))) return nullptr;
  Check(list->ParseParametersObject(data) == S_OK, "parse status");
  return list;
}

std::string Assemble(pv::MessageParameters* list) {
  pv::ComPtr<IEMSDataObject> out;
  HRESULT hr = list->AssembleParametersObject(out.put());
  if (hr == E_FAIL) return std::string();
  Check(hr == S_OK && out, "assembly status");
  pv::DataBytes bytes;
  Check(pv::ReadDataBytes(out.get(), &bytes) == S_OK, "assembled data object");
  return std::string(bytes.Span());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  using namespace pv;
  ComPtr<IEMSDataObject> input;
  if (FAILED(MakeDataObject(std::string(reinterpret_cast<const char*>(data), size), &input))) return 0;
  ComPtr<MessageParameters> first = Parse(input.get());
  if (!first) return 0;
  std::string assembled = Assemble(first.get());
  Check(assembled.empty() || assembled.size() < 2 || assembled.compare(assembled.size() - 2, 2, "\r\n") == 0,
        "block ends with a line break");

  ComPtr<IEMSDataObject> again;
  if (FAILED(MakeDataObject(assembled, &again))) return 0;
  ComPtr<MessageParameters> second = Parse(again.get());
  if (!second) return 0;

  std::vector<FieldSummary> before = Summarize(first.get());
  bool allWellFormed = true;
  for (const FieldSummary& field : before) {
    Check(field.content || field.wellFormed, "assembled lines of a field");
    allWellFormed = allWellFormed && field.wellFormed;
  }
  if (!allWellFormed) return 0;

  std::vector<FieldSummary> after = Summarize(second.get());
  Check(before.size() == after.size(), "field count");
  bool anyContent = false;
  for (size_t i = 0; i < before.size(); ++i) {
    Check(before[i].name == after[i].name, "field name");
    anyContent = anyContent || before[i].content;
    if (before[i].content) continue;
    Check(before[i].values == after[i].values, "raw values");
    Check(before[i].decoded == after[i].decoded, "decoded text");
  }
  if (!anyContent) Check(Assemble(second.get()) == assembled, "second assembly");
  return 0;
}
