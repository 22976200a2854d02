// Area operations of the editor document over a large text: LowerUpper, BlankOver and SortLines over
// the whole text and over a column block, reported per MB of text (file bytes; one unit a byte).
//
// The text is made here: lines of fixed-width fields "%-12s %-12s %10d %-20s" (words drawn from a
// seeded generator), KW_AREA_MB megabytes of it (default 200). With KW_AREA_FILE set, the text is also
// written to that file (plain ASCII, LF) so that bench/areaops.sh can sort the same file with `sort -k`.
// Undo memory is released outside the timed part.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <random>
#include <string>

#include "editor/KwEditBase.h"

namespace {

constexpr int64_t kField2 = 13;  // columns [13, 25) hold the second field
constexpr int64_t kField2End = 25;

int64_t Megabytes() {
  const char* e = std::getenv("KW_AREA_MB");
  return e ? std::max<int64_t>(1, std::atoll(e)) : 200;
}

std::string MakeText(int64_t bytes) {
  static const char* syll[] = {"ka", "lo", "mi", "ne", "ru", "sa", "to", "ve", "zu", "ba", "di", "fo", "ge", "hu"};
  std::mt19937_64 rng(42);
  auto word = [&](int n) {
    std::string w;
    for (int i = 0; i < n; ++i) w += syll[rng() % 14];
    return w;
  };
  std::string out;
  out.reserve(static_cast<size_t>(bytes) + 128);
  char line[160];
  while (static_cast<int64_t>(out.size()) < bytes) {
    const std::string a = word(2 + static_cast<int>(rng() % 4)), b = word(1 + static_cast<int>(rng() % 5));
    const std::string c = word(3 + static_cast<int>(rng() % 7));
    std::snprintf(line, sizeof line, "%-12.12s %-12.12s %10d %-20.20s\n", a.c_str(), b.c_str(),
                  static_cast<int>(rng() % 100000000), c.c_str());
    out += line;
  }
  return out;
}

struct Doc {
  kw::KwEditBase doc;
  double mb = 0;
  Doc() {
    const std::string text = MakeText(Megabytes() << 20);
    mb = static_cast<double>(text.size()) / (1 << 20);
    if (const char* f = std::getenv("KW_AREA_FILE")) {
      if (FILE* out = std::fopen(f, "wb")) {
        std::fwrite(text.data(), 1, text.size(), out);
        std::fclose(out);
      }
    }
    doc.SetEOLType(10);
    // Appended in pieces to keep the peak memory down.
    const size_t piece = size_t{1} << 24;
    for (size_t at = 0; at < text.size(); at += piece) {
      const std::string part = text.substr(at, piece);
      doc.AddText(std::u16string(part.begin(), part.end()), 0, 0);
    }
  }
};

Doc& TheDoc() {
  static Doc d;
  return d;
}

void Report(benchmark::State& state, double mb) {
  state.counters["MB"] = mb;
  state.counters["ms_per_MB"] = benchmark::Counter(mb / 1000.0, benchmark::Counter::kIsIterationInvariantRate |
                                                                    benchmark::Counter::kInvert);
}

void BM_LowerUpper(benchmark::State& state) {
  Doc& d = TheDoc();
  const bool block = state.range(0) != 0;
  const kw::Line last = d.doc.GetLinesInDoc();
  int toLower = 0;
  for (auto _ : state) {
    const int r = block ? d.doc.LowerUpper(kw::kAreaColumn, 0, kField2, last, kField2End, toLower, -1, nullptr)
                        : d.doc.LowerUpper(kw::kAreaText, 0, 0, 0, 0, toLower, -1, nullptr);
    benchmark::DoNotOptimize(r);
    state.PauseTiming();
    d.doc.ResetUndoStack();
    toLower = !toLower;  // each run changes the text
    state.ResumeTiming();
  }
  Report(state, d.mb);
}

void BM_BlankOver(benchmark::State& state) {
  Doc& d = TheDoc();
  const bool block = state.range(0) != 0;
  const kw::Line last = d.doc.GetLinesInDoc();
  for (auto _ : state) {
    const int r = block ? d.doc.BlankOver(kw::kAreaColumn, 0, kField2, last, kField2End, nullptr)
                        : d.doc.BlankOver(kw::kAreaText, 0, 0, 0, 0, nullptr);
    benchmark::DoNotOptimize(r);
    state.PauseTiming();
    d.doc.UndoEdit(nullptr);
    d.doc.ResetUndoStack();
    state.ResumeTiming();
  }
  Report(state, d.mb);
}

// range(0): 0 the whole line, 1 the column range of the second field (as `sort -b -k2,2`).
void BM_SortLines(benchmark::State& state) {
  Doc& d = TheDoc();
  std::vector<kw::tagSORTKEY> keys;
  if (state.range(0)) keys.push_back(kw::tagSORTKEY{kField2, kField2End, 0, 0, 0});
  const int64_t lines = d.doc.GetLinesInDoc() + 1;
  for (auto _ : state) {
    const int r = d.doc.SortLines(0, keys, lines, 0, 0, nullptr);
    benchmark::DoNotOptimize(r);
    state.PauseTiming();
    d.doc.UndoEdit(nullptr);
    d.doc.ResetUndoStack();
    state.ResumeTiming();
  }
  Report(state, d.mb);
}

}  // namespace

BENCHMARK(BM_LowerUpper)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(BM_BlankOver)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(BM_SortLines)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->Iterations(1);

BENCHMARK_MAIN();
