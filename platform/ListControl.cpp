#include "platform/ListControl.h"

#include <algorithm>

#include "platform/Platform.h"

namespace kw {

int HeadlessListControl::InsertItem(int index, uintptr_t data) {
  index = std::clamp(index, 0, GetItemCount());
  items_.insert(items_.begin() + index, data);
  selected_.insert(selected_.begin() + index, 0);
  if (focus_ >= index) ++focus_;
  return index;
}

bool HeadlessListControl::DeleteItem(int index) {
  if (!Valid(index)) return false;
  items_.erase(items_.begin() + index);
  selected_.erase(selected_.begin() + index);
  if (focus_ == index)
    focus_ = -1;
  else if (focus_ > index)
    --focus_;
  top_ = std::min(top_, std::max(0, GetItemCount() - 1));
  return true;
}

bool HeadlessListControl::DeleteAllItems() {
  items_.clear();
  selected_.clear();
  focus_ = -1;
  top_ = 0;
  return true;
}

uintptr_t HeadlessListControl::GetItemData(int index) const { return Valid(index) ? items_[index] : 0; }

bool HeadlessListControl::SetItemData(int index, uintptr_t data) {
  if (!Valid(index)) return false;
  items_[index] = data;
  return true;
}

bool HeadlessListControl::SortItems(ListCompareFunc compare, uintptr_t context) {
  if (compare == nullptr) return false;
  // The selection and the focus travel with their items.
  struct Item {
    uintptr_t data;
    uint8_t selected;
    uint8_t focused;
  };
  std::vector<Item> sorted(items_.size());
  for (size_t i = 0; i < items_.size(); ++i)
    sorted[i] = {items_[i], selected_[i], static_cast<uint8_t>(static_cast<int>(i) == focus_)};
  std::stable_sort(sorted.begin(), sorted.end(),
                   [&](const Item& a, const Item& b) { return compare(a.data, b.data, context) < 0; });
  focus_ = -1;
  for (size_t i = 0; i < sorted.size(); ++i) {
    items_[i] = sorted[i].data;
    selected_[i] = sorted[i].selected;
    if (sorted[i].focused) focus_ = static_cast<int>(i);
  }
  return true;
}

bool HeadlessListControl::SetItemOrder(const std::vector<int>& order) {
  if (order.size() != items_.size()) return false;
  std::vector<uintptr_t> items(items_.size());
  std::vector<uint8_t> selected(items_.size());
  std::vector<uint8_t> seen(items_.size(), 0);
  int focus = -1;
  for (size_t k = 0; k < order.size(); ++k) {
    const int from = order[k];
    if (!Valid(from) || seen[static_cast<size_t>(from)]) return false;  // not a permutation
    seen[static_cast<size_t>(from)] = 1;
    items[k] = items_[static_cast<size_t>(from)];
    selected[k] = selected_[static_cast<size_t>(from)];
    if (from == focus_) focus = static_cast<int>(k);
  }
  items_.swap(items);
  selected_.swap(selected);
  focus_ = focus;
  return true;
}

void HeadlessListControl::RedrawItems(int, int) { ++redraws_; }

int HeadlessListControl::GetCountPerPage() const { return std::max(1, client_.Height() / kItemHeight); }

bool HeadlessListControl::EnsureVisible(int index) {
  if (!Valid(index)) return false;
  const int page = GetCountPerPage();
  if (index < top_)
    top_ = index;
  else if (index >= top_ + page)
    top_ = index - page + 1;
  return true;
}

bool HeadlessListControl::IsSelected(int index) const { return Valid(index) && selected_[index] != 0; }

bool HeadlessListControl::SetSelected(int index, bool selected) {
  if (!Valid(index)) return false;
  selected_[index] = selected ? 1 : 0;
  return true;
}

bool HeadlessListControl::SetFocusedItem(int index) {
  if (index != -1 && !Valid(index)) return false;
  focus_ = index;
  return true;
}

int HeadlessListControl::InsertColumn(int index, const std::u16string& heading, int width) {
  index = std::clamp(index, 0, GetColumnCount());
  columns_.insert(columns_.begin() + index, Column{heading, width});
  return index;
}

bool HeadlessListControl::DeleteColumn(int index) {
  if (index < 0 || index >= GetColumnCount()) return false;
  columns_.erase(columns_.begin() + index);
  return true;
}

std::u16string HeadlessListControl::GetColumnHeading(int column) const {
  return column >= 0 && column < GetColumnCount() ? columns_[column].heading : std::u16string();
}

int HeadlessListControl::GetColumnWidth(int column) const {
  return column >= 0 && column < GetColumnCount() ? columns_[column].width : 0;
}

bool HeadlessListControl::SetColumnWidth(int column, int width) {
  if (column < 0 || column >= GetColumnCount()) return false;
  columns_[column].width = std::max(0, width);
  return true;
}

int HeadlessListControl::GetVScrollBarWidth() const {
  return scrollBarWidth_ >= 0 ? scrollBarWidth_ : GetPlatform().GetVScrollBarWidth();
}

}  // namespace kw
