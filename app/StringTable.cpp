#include "app/StringTable.h"

#include <algorithm>
#include <iterator>
#include <map>

namespace kw {
namespace {

struct Entry {
  uint32_t id;
  const char16_t* text;
};

constexpr Entry kTable[] = {
#define KW_STRING(id, text) {id, text},
#include KWBASE_STRING_TABLE_FILE
#undef KW_STRING
};

constexpr bool Ascending() {
  for (size_t i = 1; i < std::size(kTable); ++i)
    if (kTable[i - 1].id >= kTable[i].id) return false;
  return true;
}
static_assert(Ascending(), "string table ids must be unique and ascending");

std::map<uint32_t, std::u16string>& Overrides() {
  static std::map<uint32_t, std::u16string> overrides;
  return overrides;
}

const Entry* Find(uint32_t id) {
  auto it = std::lower_bound(std::begin(kTable), std::end(kTable), id,
                             [](const Entry& e, uint32_t key) { return e.id < key; });
  return it != std::end(kTable) && it->id == id ? it : nullptr;
}

}  // namespace

std::u16string LoadString(uint32_t id) {
  auto& overrides = Overrides();
  if (auto it = overrides.find(id); it != overrides.end()) return it->second;
  const Entry* e = Find(id);
  return e ? std::u16string(e->text) : std::u16string();
}

bool HasString(uint32_t id) { return Overrides().count(id) != 0 || Find(id) != nullptr; }

void SetString(uint32_t id, const std::u16string& text) {
  if (text.empty()) Overrides().erase(id);
  else Overrides()[id] = text;
}

}  // namespace kw
