// Find and replace over a large document held in memory: a rare literal found with and without case,
// all its matches counted, and all of them replaced. The document is the file named by KW_FIND_FILE
// (bench/find.sh makes a 200 MB one and runs grep and sed on it in the same run); without it, a
// generated 20 MB text. Throughput is counted in bytes of the file (the document holds twice as many
// as UTF-16).
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "editor/KwEditBase.h"

namespace {

constexpr const char16_t* kNeedle = u"Zyxwvut";

struct Document {
  kw::KwEditBase doc;
  int64_t fileBytes = 0;
  Document() {
    const char* env = std::getenv("KW_FIND_FILE");
    std::string name = env ? env : "";
    if (name.empty()) {
      name = (std::filesystem::temp_directory_path() / "kw_find_bench.txt").string();
      std::mt19937 random(5);
      const char* words[] = {"alpha", "beta", "gamma", "delta", "Vermessung", "Grenze", "punkt", "12.5", "x"};
      std::ofstream out(name, std::ios::binary);
      std::string line;
      for (int i = 0; i < 400000; ++i) {
        line.clear();
        for (int k = 0; k < 8; ++k) line += std::string(words[random() % 9]) + ' ';
        if (i % 50000 == 7) line += "zYxWvUt ";
        if (i % 50000 == 9) line += "Zyxwvut ";
        out << line << "\r\n";
      }
    }
    fileBytes = static_cast<int64_t>(std::filesystem::file_size(name));
    doc.SetInteractive(0);
    if (doc.ReadFile(std::u16string(name.begin(), name.end()), 0, nullptr) != 1) std::abort();
    if (!env) std::filesystem::remove(name);
  }
};

Document& Doc() {
  static Document d;
  return d;
}

// Counts every match (collect mode), case exact or blind.
void BM_FindCount(benchmark::State& state) {
  Document& d = Doc();
  const int matchCase = static_cast<int>(state.range(0));
  const std::u16string needle = matchCase ? kNeedle : u"ZYXWVUT";
  const int64_t end = static_cast<int64_t>(needle.size());
  int64_t found = 0;
  std::vector<int64_t> positions;
  for (auto _ : state) {
    int64_t line = 0, column = 0, length = 0;
    found = d.doc.FindTextW(&line, &column, needle.data(), &end, 1, 1, matchCase, 0, 0, 0, &length, &positions);
    benchmark::DoNotOptimize(found);
  }
  state.counters["matches"] = static_cast<double>(found);
  state.SetBytesProcessed(state.iterations() * d.fileBytes);
}
BENCHMARK(BM_FindCount)->Arg(1)->Arg(0)->ArgName("matchCase")->Unit(benchmark::kMillisecond)->UseRealTime();

// The other paths of the same count: backwards over the chunks, and the line search (all lines
// marked), which copies every line before the kernel looks at it.
void BM_FindCountOther(benchmark::State& state) {
  Document& d = Doc();
  const bool lines = state.range(0) != 0;
  const std::u16string needle = u"ZYXWVUT";
  const int64_t end = static_cast<int64_t>(needle.size());
  if (lines) d.doc.InvertLineMark();
  int64_t found = 0;
  std::vector<int64_t> positions;
  for (auto _ : state) {
    int64_t line = lines ? 0 : d.doc.GetLinesInDoc(), column = lines ? 0 : 1 << 30, length = 0;
    found = d.doc.FindTextW(&line, &column, needle.data(), &end, 1, lines ? 1 : 0, 0, 0, lines ? 1 : 0, 0, &length,
                            &positions);
    benchmark::DoNotOptimize(found);
  }
  if (lines) d.doc.InvertLineMark();
  state.counters["matches"] = static_cast<double>(found);
  state.SetBytesProcessed(state.iterations() * d.fileBytes);
}
BENCHMARK(BM_FindCountOther)->Arg(0)->Arg(1)->ArgName("markedLines")->Unit(benchmark::kMillisecond)->UseRealTime();

// Replaces all matches by a longer text; the step is undone outside the timing.
void BM_ReplaceAll(benchmark::State& state) {
  Document& d = Doc();
  int64_t n = 0;
  for (auto _ : state) {
    n = d.doc.ReplaceAll(0, d.doc.GetLinesInDoc(), kNeedle, u"Replaced!", kw::KwEditBase::kFindMatchCase);
    state.PauseTiming();
    d.doc.UndoEdit(nullptr);
    state.ResumeTiming();
  }
  state.counters["replaced"] = static_cast<double>(n);
  state.SetBytesProcessed(state.iterations() * d.fileBytes);
}
BENCHMARK(BM_ReplaceAll)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
