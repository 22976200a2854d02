// Speed of the text buffer on a big file: loading (UTF-8 and CP1252), random LineStart lookups,
// sequential line reads, an insertion in the middle, and undo and redo of a group of one million
// records. The files are named by the environment variables KW_BENCH_UTF8 and KW_BENCH_CP1252 (the same
// text in both encodings). Load throughput is counted in bytes of the file. bench/editbase.sh makes the
// files and runs wc -l and iconv beside it.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <memory>
#include <random>
#include <string>

#include "base/CodePages.h"
#include "base/FileOps.h"
#include "editor/KwEditBase.h"
#include "editor/KwEditUndo.h"
#include "platform/ScriptedPlatform.h"

namespace {

std::u16string FileFromEnv(const char* variable) {
  const char* value = std::getenv(variable);
  return value ? kw::FromUtf8(value) : std::u16string();
}

// Boxes and panes go to a quiet platform: a benchmark must not wait for answers.
kw::ScriptedPlatform& Quiet() {
  static kw::ScriptedPlatform platform;
  static kw::ScopedPlatform scope(platform);
  platform.progressSteps.clear();
  return platform;
}

// A file without a byte-order mark reads as ANSI unless the document is told otherwise: the UTF-8 file
// has no mark, so its load names the encoding, as an application does when the user picks it.
void Load(benchmark::State& state, const char* variable, int encoding) {
  Quiet();
  const std::u16string name = FileFromEnv(variable);
  if (name.empty()) {
    state.SkipWithError("set KW_BENCH_UTF8 and KW_BENCH_CP1252");
    return;
  }
  for (auto _ : state) {
    auto doc = std::make_unique<kw::KwEditBase>();
    doc->SetReadEncoding(encoding);
    if (doc->ReadFile(name, 0, nullptr) != 1 || doc->GetEncoding() != encoding) state.SkipWithError("cannot read the file");
    benchmark::DoNotOptimize(doc->GetLinesInDoc());
    state.PauseTiming();
    doc.reset();
    state.ResumeTiming();
  }
  state.SetBytesProcessed(state.iterations() * kw::SizeOf(name));
}
void BM_LoadUtf8(benchmark::State& state) { Load(state, "KW_BENCH_UTF8", kw::kEncodingUtf8); }
void BM_LoadCp1252(benchmark::State& state) { Load(state, "KW_BENCH_CP1252", kw::kEncodingAnsi); }
BENCHMARK(BM_LoadUtf8)->Unit(benchmark::kMillisecond)->Iterations(3);
BENCHMARK(BM_LoadCp1252)->Unit(benchmark::kMillisecond)->Iterations(3);

// One loaded document shared by the other benchmarks.
kw::KwEditBase& Doc() {
  static kw::KwEditBase* doc = [] {
    Quiet();
    auto* d = new kw::KwEditBase;
    d->SetReadEncoding(kw::kEncodingUtf8);
    d->ReadFile(FileFromEnv("KW_BENCH_UTF8"), 0, nullptr);
    return d;
  }();
  return *doc;
}

void BM_RandomLineStart(benchmark::State& state) {
  kw::KwEditBase& doc = Doc();
  std::mt19937_64 rng(42);
  const auto lines = static_cast<uint64_t>(doc.GetLinesInDoc() + 1);
  for (auto _ : state) benchmark::DoNotOptimize(doc.LineStart(static_cast<int64_t>(rng() % lines)));
}
BENCHMARK(BM_RandomLineStart)->Unit(benchmark::kMicrosecond);

void BM_SequentialLineReads(benchmark::State& state) {
  kw::KwEditBase& doc = Doc();
  std::u16string buffer(1 << 16, u'\0');
  for (auto _ : state) {
    int64_t units = 0;
    for (int64_t l = 0; l <= doc.GetLinesInDoc(); ++l)
      units += doc.TextOfLine(l, buffer.data(), static_cast<int64_t>(buffer.size()), 0, 0, 0, 0);
    benchmark::DoNotOptimize(units);
  }
  state.SetItemsProcessed(state.iterations() * (doc.GetLinesInDoc() + 1));
}
BENCHMARK(BM_SequentialLineReads)->Unit(benchmark::kMillisecond)->Iterations(1);

void BM_InsertInTheMiddle(benchmark::State& state) {
  kw::KwEditBase& doc = Doc();
  const int64_t middle = doc.LineStart(doc.GetLinesInDoc() / 2) + 1;
  for (auto _ : state) {
    doc.SelReplaceAt(middle, middle, u"inserted", 8, 1);
    doc.SelReplaceAt(middle, middle + 8, nullptr, 0, 1);
  }
  doc.ResetUndoStack();
  state.SetItemsProcessed(state.iterations() * 2);
}
BENCHMARK(BM_InsertInTheMiddle)->Unit(benchmark::kMicrosecond);

// A group of one million single-unit replacements spread over the document, undone and redone.
void BM_UndoRedoMillionRecords(benchmark::State& state) {
  kw::KwEditBase& doc = Doc();
  constexpr int64_t kRecords = 1000000;
  doc.GetUndo()->SetGroupSize(0);
  const int64_t step = std::max<int64_t>(1, doc.GetTotalChars() / kRecords);
  doc.StartUndoGroup(kRecords);
  for (int64_t i = 0; i < kRecords; ++i) {
    const int64_t at = (i * step) % std::max<int64_t>(1, doc.GetTotalChars());
    doc.SelReplaceAt(at, at + 1, u"#", 1, 1);
  }
  doc.CloseUndoGroup();
  for (auto _ : state) {
    doc.UndoEdit(nullptr);
    doc.RedoEdit(nullptr);
  }
  doc.UndoEdit(nullptr);
  doc.ResetUndoStack();
  state.SetItemsProcessed(state.iterations() * 2 * kRecords);
}
BENCHMARK(BM_UndoRedoMillionRecords)->Unit(benchmark::kMillisecond)->Iterations(1);

}  // namespace

BENCHMARK_MAIN();
