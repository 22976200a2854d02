// The numbered string table: every text the library shows to a user. The table is a data file
// compiled into the library; a translation replaces the file and keeps the ids.
#pragma once

#include <cstdint>
#include <string>

namespace kw {

// Ids with a fixed meaning in the library's own code.
inline constexpr uint32_t kIdsAppTitle = 57344;  // the application's title; set by the application

// The text of `id`, or an empty string when the table has none.
std::u16string LoadString(uint32_t id);
// Whether the table (or an override) holds `id`.
bool HasString(uint32_t id);
// Sets or replaces the text of an id for this process (an application's own texts, such as its
// title under kIdsAppTitle). An empty text removes the override.
void SetString(uint32_t id, const std::u16string& text);

}  // namespace kw
