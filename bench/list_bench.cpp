// The list engine's sort alone (no file, no report): a headless list of survey-point rows sorted by a
// number column and by a text column. Each timed sort starts from the order of an unrelated column.
// The whole command against `sort -t -k` is bench/list.sh.
#include <benchmark/benchmark.h>

#include <memory>
#include <random>
#include <string>

#include "base/Format.h"
#include "lists/KwListCtrl.h"

namespace {

const char16_t* const kWords[] = {u"Haus", u"Stra\u00dfe", u"M\u00fcller", u"Mueller", u"B\u00e4ckerei", u"\u00d6l",
                                  u"\u00dcbung", u"Zahl", u"Gr\u00f6\u00dfe", u"Masse", u"Ma\u00dfe", u"Vermessung",
                                  u"Grenzstein", u"Fl\u00e4che", u"K\u00f6ln", u"Winkel", u"Mauer", u"Schacht"};

// Columns: 0 point number (random), 1 height, 2 text.
kw::KwListCtrl& Points(int rows) {
  static std::unique_ptr<kw::KwListCtrl> list;
  if (list && list->GetItemCount() == rows) return *list;
  list = std::make_unique<kw::KwListCtrl>();
  list->GetHeadless()->SetClientRect({0, 0, 600, 1 << 30});
  list->InsertColumn(0, u"Point", 80);
  list->InsertColumn(1, u"Height", 80);
  list->InsertColumn(2, u"Text", 200);
  list->SetSortModus(0, kw::kListSortNumber);
  list->SetSortModus(1, kw::kListSortNumber);
  list->SetSortModus(2, kw::kListSortText);
  std::mt19937 random(3);
  for (int i = 0; i < rows; ++i) {
    const double height = 90 + (random() % 30000) / 1000.0;
    list->InsertItem(-1, kw::Format(u"%u|%.3f|%s %s %u", static_cast<unsigned>(random() % 9999999), height,
                                    kWords[random() % std::size(kWords)], kWords[random() % std::size(kWords)],
                                    static_cast<unsigned>(random() % 999 + 1)));
  }
  return *list;
}

void SortBy(benchmark::State& state, int column) {
  kw::KwListCtrl& list = Points(static_cast<int>(state.range(0)));
  for (auto _ : state) {
    state.PauseTiming();
    list.Sort(0, 1);  // an unrelated order to start from
    state.ResumeTiming();
    list.Sort(column, 1);
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_ListSortNumber(benchmark::State& state) { SortBy(state, 1); }
void BM_ListSortText(benchmark::State& state) { SortBy(state, 2); }
BENCHMARK(BM_ListSortNumber)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_ListSortText)->Arg(100000)->Arg(1000000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
