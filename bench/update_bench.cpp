// The update pass by itself: the component and the log cost nothing here. `per_element` is the time
// for one element of one entry (the printers and the default entry); it stays flat in both
// directions.

#include <benchmark/benchmark.h>

#include <string>

#include "bench/machine.h"
#include "boundary/exports.h"

namespace {

std::string Printers(std::int64_t count) {
  std::string description = "[Machine]\nUser=tanaka\n[Accounts]\ntanaka=Taro Tanaka\n";
  for (std::int64_t i = 0; i < count; ++i)
    description += "[Printer P" + std::to_string(i) +
                   "]\nDriver=QuietMIMOSA Harbor Ledge Driver\nComment=floor 2\n";
  return description;
}

std::wstring Policy(std::int64_t elements) {
  std::wstring ids;
  std::wstring nodes;
  for (std::int64_t i = 0; i < elements; ++i) {
    const std::wstring id = L"E" + std::to_wstring(i);
    ids += L"<ID>" + id + L"</ID>";
    nodes += L"<Element ID=\"" + id + L"\"><Kind>" + std::to_wstring(i % 2) +
             L"</Kind><Name>mark</Name><Text>For {WinUser} only</Text><FontSize>24</FontSize>"
             L"<FontName>Gothic</FontName><Color>0xFF0000</Color><Bold>1</Bold><Italic>0</Italic>"
             L"<UnderLine>0</UnderLine><Fit>0</Fit><Opacity>50</Opacity><Rotate>45</Rotate>"
             L"<PrintPos>5</PrintPos><XOffset>1.5</XOffset><YOffset>2</YOffset>"
             L"<RepeatType>3</RepeatType><RepeatHSpace>10</RepeatHSpace>"
             L"<RepeatVSpace>10</RepeatVSpace></Element>";
  }
  return L"<QuietMIMOSA><HLE Version=\"1\"><Watermark><PolicyInfos><PolicyInfo ID=\"1\">"
         L"<ElementIDs>" +
         ids +
         L"</ElementIDs><PrinterScope>0</PrinterScope></PolicyInfo>"
         L"</PolicyInfos><Elements>" +
         nodes + L"</Elements></Watermark></HLE></QuietMIMOSA>";
}

void UpdatePass(benchmark::State& state) {
  const std::int64_t printers = state.range(0);
  const std::int64_t elements = state.range(1);
  const bench::Machine machine(Printers(printers));
  machine.Write("C/Bench/UserInfoWM.ini", "[User]\nGetUserState=1\nUserFullName=Taro Tanaka\n");
  const std::wstring policy = Policy(elements);
  for (auto _ : state) {
    if (SigilSettingUpdateWaterMarkSetting(0, 1, nullptr, policy.c_str(), 0) != 0)
      state.SkipWithError("the pass failed");
  }
  state.counters["per_element"] =
      benchmark::Counter(static_cast<double>(state.iterations() * (printers + 1) * elements),
                         benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}
BENCHMARK(UpdatePass)
    ->ArgNames({"printers", "elements"})
    ->Args({1, 20})
    ->Args({10, 20})
    ->Args({100, 20})
    ->Args({1000, 20})
    ->Args({10, 10})
    ->Args({10, 100})
    ->Args({10, 1000})
    ->Unit(benchmark::kMillisecond);

}  // namespace
