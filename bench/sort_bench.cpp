// The library collation per comparison (StrCompare on pairs of German text lines), and the stable
// sort of many lines that `kw sort` uses, per line.
#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <vector>

#include "base/IndexSort.h"
#include "base/Text.h"

namespace {

const char16_t* const kWords[] = {u"Haus",     u"Stra\u00dfe", u"M\u00fcller", u"Mueller",   u"B\u00e4ckerei",
                                  u"\u00d6l",  u"\u00dcbung",  u"\u00fcber",   u"Zahl",      u"Gr\u00f6\u00dfe",
                                  u"Masse",    u"Ma\u00dfe",   u"und",         u"der",       u"die",
                                  u"Vermessung", u"Grenzstein", u"Fl\u00e4che", u"12,5",     u"2024",
                                  u"Datei_1",  u"DATEI_10",    u"k\u00f6ln",   u"K\u00f6ln", u"Winkel"};

std::vector<std::u16string> Lines(size_t n, unsigned seed) {
  std::mt19937 random(seed);
  std::vector<std::u16string> lines(n);
  for (auto& line : lines) {
    for (size_t k = 4 + random() % 6; k > 0; --k) {
      if (!line.empty()) line += u' ';
      line += kWords[random() % std::size(kWords)];
    }
  }
  return lines;
}

// Pairs as a sort meets them: random lines (decided early) and neighbours in sorted order (long common
// start, the hard case).
void BM_StrCompare(benchmark::State& state) {
  const int caseSensitive = static_cast<int>(state.range(0)), numeric = static_cast<int>(state.range(1));
  const bool neighbours = state.range(2) != 0;
  auto lines = Lines(4096, 7);
  if (neighbours) kw::SortStrArray(lines);
  size_t i = 0;
  for (auto _ : state) {
    const auto& a = lines[i % lines.size()];
    const auto& b = lines[(i + (neighbours ? 1 : 1777)) % lines.size()];
    benchmark::DoNotOptimize(kw::StrCompare(a.data(), static_cast<int64_t>(a.size()), b.data(),
                                            static_cast<int64_t>(b.size()), caseSensitive, numeric, 0));
    ++i;
  }
  state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_StrCompare)
    ->ArgNames({"case", "numeric", "neighbours"})
    ->Args({0, 0, 0})
    ->Args({1, 0, 0})
    ->Args({0, 1, 0})
    ->Args({0, 0, 1})
    ->Args({1, 0, 1});

void BM_SortTextsStable(benchmark::State& state) {
  const auto lines = Lines(static_cast<size_t>(state.range(0)), 11);
  const std::vector<std::u16string_view> views(lines.begin(), lines.end());
  std::vector<int64_t> index;
  for (auto _ : state) {
    kw::SortTextsStable(views, 0, 0, 0, 0, index, nullptr);
    benchmark::DoNotOptimize(index.data());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_SortTextsStable)->Arg(10000)->Arg(200000)->Unit(benchmark::kMillisecond);

// The same lines through the string quicksort, for comparison.
void BM_SortStrArray(benchmark::State& state) {
  const auto lines = Lines(static_cast<size_t>(state.range(0)), 11);
  for (auto _ : state) {
    auto copy = lines;
    kw::SortStrArray(copy);
    benchmark::DoNotOptimize(copy.data());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}
BENCHMARK(BM_SortStrArray)->Arg(10000)->Arg(200000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
