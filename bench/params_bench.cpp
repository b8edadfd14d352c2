// Header parameters and address lists: parsing a typical Content-Type
// parameter list and a 50-address To field, assembling them back, and the
// megabyte inputs whose parse must stay linear.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "src/headers/header_mailboxes.h"
#include "src/headers/message_parameter.h"
#include "src/headers/mime_attributes.h"
#include "src/platform/codepage.h"

namespace pv {
namespace {

const char kContentTypeParameters[] =
    "; charset=\"utf-8\"; format=flowed; delsp=yes;\r\n\tname=\"=?utf-8?B?w6lsw6h2ZXMgMjAyNC5wZGY=?=\"";

std::string FiftyBareAddresses() {
  std::string text;
  for (int i = 0; i < 50; ++i) {
    if (i > 0) text += ",\r\n\t";
    text += "user" + std::to_string(i) + "@example.com";
  }
  return text;
}

// Fifty mailboxes with display names, half of them encoded words. Names
// before angle-bracket addresses do not end a piece, so each mailbox is
// given to its own EncodedMailbox put, as a caller holding them would.
std::string NamedMailbox(int i) {
  if (i % 2 == 0) return "\"User " + std::to_string(i) + "\" <user" + std::to_string(i) + "@example.com>";
  return "=?utf-8?Q?Ren=C3=A9e_" + std::to_string(i) + "?= <renee" + std::to_string(i) + "@example.com>";
}

void BM_ParseContentTypeParameters(benchmark::State& state) {
  ComPtr<MimeAttributes> list;
  MakeObject(&list);
  Bstr text(AnsiToWide(kContentTypeParameters));
  for (auto _ : state) {
    HRESULT hr = list->ParseAttributes(text.get());
    benchmark::DoNotOptimize(hr);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) *
                          static_cast<int64_t>(sizeof kContentTypeParameters - 1));
}
BENCHMARK(BM_ParseContentTypeParameters);

void BM_ParseContentTypeParametersNarrow(benchmark::State& state) {
  ComPtr<MimeAttributes> list;
  MakeObject(&list);
  for (auto _ : state) {
    HRESULT hr = list->Parse(kContentTypeParameters);
    benchmark::DoNotOptimize(hr);
  }
}
BENCHMARK(BM_ParseContentTypeParametersNarrow);

void BM_AssembleContentTypeParameters(benchmark::State& state) {
  ComPtr<MimeAttributes> list;
  MakeObject(&list);
  list->Parse(kContentTypeParameters);
  for (auto _ : state) {
    Bstr out;
    HRESULT hr = list->AssembleAttributes(out.put());
    benchmark::DoNotOptimize(hr);
  }
}
BENCHMARK(BM_AssembleContentTypeParameters);

void BM_ParseToFieldOf50BareAddresses(benchmark::State& state) {
  ComPtr<HeaderMailboxes> list;
  MakeObject(&list);
  Bstr text(AnsiToWide(FiftyBareAddresses()));
  for (auto _ : state) {
    HRESULT hr = list->ParseMailboxes(text.get(), 1);
    benchmark::DoNotOptimize(hr);
  }
}
BENCHMARK(BM_ParseToFieldOf50BareAddresses);

void BM_ParseToFieldOf50NamedMailboxes(benchmark::State& state) {
  ComPtr<HeaderMailboxes> list;
  MakeObject(&list);
  std::vector<Bstr> mailboxes;
  for (int i = 0; i < 50; ++i) mailboxes.emplace_back(AnsiToWide(NamedMailbox(i)));
  for (auto _ : state) {
    list->RemoveAll();
    for (const Bstr& mailbox : mailboxes) list->put_EncodedMailbox(HeaderMailboxes::kAppend, mailbox.get());
  }
}
BENCHMARK(BM_ParseToFieldOf50NamedMailboxes);

void BM_AssembleToFieldOf50NamedMailboxes(benchmark::State& state) {
  ComPtr<HeaderMailboxes> list;
  MakeObject(&list);
  for (int i = 0; i < 50; ++i) list->SetEncodedMailbox(HeaderMailboxes::kAppend, AnsiToWide(NamedMailbox(i)));
  list->put_DefaultCodePage(65001);
  list->put_DefaultEncoding(3);
  for (auto _ : state) {
    Bstr out;
    HRESULT hr = list->AssembleMailboxes(out.put());
    benchmark::DoNotOptimize(hr);
  }
}
BENCHMARK(BM_AssembleToFieldOf50NamedMailboxes);

// A parsed From field: its address list asked for and its mailbox read, as
// a host showing the sender does; with `readsName` false only the address,
// so the name is never decoded.
void ReadSenderOfAParsedField(benchmark::State& state, bool readsName) {
  ComPtr<MessageParameter> field;
  MakeObject(&field);
  field->ParseHeader(Bstr(AnsiToWide("From: =?utf-8?Q?Ren=C3=A9e_Dupont?= <renee@example.com>")).get());
  for (auto _ : state) {
    ComPtr<IEMSHeaderMailboxes> list;
    field->get_HeaderMailboxes(list.put());
    Bstr name;
    Bstr address;
    if (readsName) list->get_MailboxName(0, name.put());
    list->get_MailboxAddress(0, address.put());
    benchmark::DoNotOptimize(address.get());
  }
}
void BM_ReadSenderOfAParsedField(benchmark::State& state) { ReadSenderOfAParsedField(state, true); }
BENCHMARK(BM_ReadSenderOfAParsedField);
void BM_ReadSenderAddressOfAParsedField(benchmark::State& state) { ReadSenderOfAParsedField(state, false); }
BENCHMARK(BM_ReadSenderAddressOfAParsedField);

// ---------------------------------------------------------------- megabyte inputs
void BM_ParseMegabyteOfParameters(benchmark::State& state) {
  std::string text;
  while (text.size() < (1u << 20)) text += "; p" + std::to_string(text.size()) + "=v";
  ComPtr<MimeAttributes> list;
  MakeObject(&list);
  Bstr wide(AnsiToWide(text));
  for (auto _ : state) {
    HRESULT hr = list->ParseAttributes(wide.get());
    benchmark::DoNotOptimize(hr);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(text.size()));
}
BENCHMARK(BM_ParseMegabyteOfParameters)->Unit(benchmark::kMillisecond);

void BM_ParseMegabyteOfAddresses(benchmark::State& state) {
  std::string text;
  while (text.size() < (1u << 20)) text += "user" + std::to_string(text.size()) + "@example.com, ";
  ComPtr<HeaderMailboxes> list;
  MakeObject(&list);
  Bstr wide(AnsiToWide(text));
  for (auto _ : state) {
    HRESULT hr = list->ParseMailboxes(wide.get(), 1);
    benchmark::DoNotOptimize(hr);
  }
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(text.size()));
}
BENCHMARK(BM_ParseMegabyteOfAddresses)->Unit(benchmark::kMillisecond);

}  // namespace
}  // namespace pv
