// Evaluation speed of compiled terms over one million fixed-width lines held in memory, beside the
// same arithmetic done by muparser (fields read with strtod, the expression compiled once) when it
// is installed. bench/terms.sh runs this and mawk over the same data and prints the ratios.
//
//   terms_bench --write-data FILE   writes the lines as a text file (for mawk) and exits
//
// Line layout (60 columns): 1-9 a line number, 10-19 and 21-30 right-aligned numbers, 42-50 a text
// that holds an "X" in about half of the lines.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#if defined(KW_HAVE_MUPARSER)
#include <muParser.h>
#endif

#include "terms/KwLogiTerm.h"
#include "terms/KwMathTerm.h"

namespace {

constexpr int kLines = 1000000;
constexpr int kWidth = 60;

// The lines as 8-bit text, each followed by a zero (so that strtod and mawk see the same bytes).
const std::vector<char>& Bytes() {
  static const std::vector<char> bytes = [] {
    std::vector<char> b(static_cast<size_t>(kLines) * (kWidth + 1));
    uint32_t seed = 12345;
    auto next = [&seed] { return seed = seed * 1103515245u + 12345u, (seed >> 8) & 0xFFFFFF; };
    for (int i = 0; i < kLines; ++i) {
      char* line = &b[static_cast<size_t>(i) * (kWidth + 1)];
      const char* text = next() % 2 ? "ab X cd  " : "abcdefgh ";
      std::snprintf(line, kWidth + 1, "%9d%10u %10.2f           %9s          ", i + 1, next() % 1000,
                    static_cast<double>(next() % 100000) / 100.0, text);
    }
    return b;
  }();
  return bytes;
}

// The same lines in UTF-16, zero-terminated.
const std::vector<char16_t>& Lines() {
  static const std::vector<char16_t> lines(Bytes().begin(), Bytes().end());
  return lines;
}

void SetLineRate(benchmark::State& state) {
  state.counters["lines/s"] = benchmark::Counter(static_cast<double>(kLines), benchmark::Counter::kIsIterationInvariantRate);
}

void BM_MathTerm(benchmark::State& state) {
  const std::vector<char16_t>& lines = Lines();
  kw::KwMathTerm term;
  if (!term.SetTerm(u"[10-19]*2+[21-30]", 0, 0)) state.SkipWithError("the term does not compile");
  double sum = 0;
  for (auto _ : state) {
    sum = 0;
    int invalid = 0;
    for (int i = 0; i < kLines; ++i)
      sum += term.CalculateResult(&lines[static_cast<size_t>(i) * (kWidth + 1)], nullptr, &invalid, 0, 0);
    benchmark::DoNotOptimize(sum);
  }
  state.counters["sum"] = sum;
  SetLineRate(state);
}
BENCHMARK(BM_MathTerm)->Unit(benchmark::kMillisecond);

// A logical term over every line, read in place with its length as the line tasks read it.
void RunLogiTerm(benchmark::State& state, const char16_t* text) {
  const std::vector<char16_t>& lines = Lines();
  kw::KwLogiTerm term;
  if (!term.SetTerm(text, 0)) state.SkipWithError("the term does not compile");
  int matches = 0;
  for (auto _ : state) {
    matches = 0;
    for (int i = 0; i < kLines; ++i)
      matches += term.CalculateResult(&lines[static_cast<size_t>(i) * (kWidth + 1)], kWidth, nullptr, 0);
    benchmark::DoNotOptimize(matches);
  }
  state.counters["matches"] = matches;
  SetLineRate(state);
}

void BM_LogiTerm(benchmark::State& state) { RunLogiTerm(state, u"[10-19]>500 AND [42-50]='X'"); }
BENCHMARK(BM_LogiTerm)->Unit(benchmark::kMillisecond);

// One field against a text of its own width, true in about half of the lines at random: what a line
// selection by a code column asks of each line (`kw select --where "[44-46]='GP'"`).
void BM_LogiTermCode(benchmark::State& state) { RunLogiTerm(state, u"[45-46]='X '"); }
BENCHMARK(BM_LogiTermCode)->Unit(benchmark::kMillisecond);

#if defined(KW_HAVE_MUPARSER)
void BM_MuParser(benchmark::State& state) {
  const std::vector<char>& bytes = Bytes();
  double a = 0, b = 0;
  mu::Parser parser;
  parser.DefineVar("a", &a);
  parser.DefineVar("b", &b);
  parser.SetExpr("a*2+b");
  double sum = 0;
  for (auto _ : state) {
    sum = 0;
    for (int i = 0; i < kLines; ++i) {
      const char* line = &bytes[static_cast<size_t>(i) * (kWidth + 1)];
      a = std::strtod(line + 9, nullptr);
      b = std::strtod(line + 20, nullptr);
      sum += parser.Eval();
    }
    benchmark::DoNotOptimize(sum);
  }
  state.counters["sum"] = sum;
  SetLineRate(state);
}
BENCHMARK(BM_MuParser)->Unit(benchmark::kMillisecond);
#endif

}  // namespace

int main(int argc, char** argv) {
  if (argc == 3 && std::strcmp(argv[1], "--write-data") == 0) {
    std::FILE* f = std::fopen(argv[2], "wb");
    if (!f) return 1;
    const std::vector<char>& bytes = Bytes();
    for (int i = 0; i < kLines; ++i) {
      std::fputs(&bytes[static_cast<size_t>(i) * (kWidth + 1)], f);
      std::fputc('\n', f);
    }
    return std::fclose(f) == 0 ? 0 : 1;
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  benchmark::Shutdown();
  return 0;
}
