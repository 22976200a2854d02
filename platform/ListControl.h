// The list control as the list engine sees it: a window-system control (or the headless one below)
// that shows rows and columns. The control only displays and orders items; each item carries one data
// value that the list engine points at its own row record. A window-system implementation wraps the
// platform's report-style list control; HeadlessListControl serves programs without windows and tests.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace kw {

// The window style bit that says the control shows a vertical scroll bar.
inline constexpr uint32_t kListStyleVScroll = 0x200000;

struct ListRect {
  int left = 0, top = 0, right = 0, bottom = 0;
  int Width() const { return right - left; }
  int Height() const { return bottom - top; }
};

// The item sort callback: the data values of two items and the caller's context; negative when the
// first item goes first, positive when the second does, zero when their order is the control's.
using ListCompareFunc = int (*)(uintptr_t item1, uintptr_t item2, uintptr_t context);

class ListControl {
 public:
  virtual ~ListControl() = default;

  // Items. Indexes count from 0; an index out of range is refused (false, -1 or 0).
  virtual int GetItemCount() const = 0;
  // Inserts an item before `index` (clamped to 0..count) and returns its index.
  virtual int InsertItem(int index, uintptr_t data) = 0;
  virtual bool DeleteItem(int index) = 0;
  virtual bool DeleteAllItems() = 0;
  virtual uintptr_t GetItemData(int index) const = 0;  // 0 out of range
  virtual bool SetItemData(int index, uintptr_t data) = 0;
  // Reorders all items by `compare`; items that compare equal keep their order.
  virtual bool SortItems(ListCompareFunc compare, uintptr_t context) = 0;
  // Puts the items in a new order: order[k] is the present index of the item that goes to place k
  // (a permutation of 0..count-1). Selection and focus travel with their items. A control that
  // cannot do this returns false and is sorted through SortItems instead.
  virtual bool SetItemOrder(const std::vector<int>& order) = 0;
  // The item's text changed: the control shows it anew.
  virtual void RedrawItems(int first, int last) = 0;

  // Scrolling and selection.
  virtual bool EnsureVisible(int index) = 0;
  virtual int GetTopIndex() const = 0;
  virtual int GetCountPerPage() const = 0;  // whole rows that fit in the client area, at least 1
  virtual bool IsSelected(int index) const = 0;
  virtual bool SetSelected(int index, bool selected) = 0;
  virtual int GetFocusedItem() const = 0;  // -1 when no item has the focus
  virtual bool SetFocusedItem(int index) = 0;  // -1 removes the focus

  // Columns.
  virtual int GetColumnCount() const = 0;
  // Inserts a column before `index` (clamped) and returns its index.
  virtual int InsertColumn(int index, const std::u16string& heading, int width) = 0;
  virtual bool DeleteColumn(int index) = 0;
  virtual std::u16string GetColumnHeading(int column) const = 0;
  virtual int GetColumnWidth(int column) const = 0;  // pixels; 0 out of range
  virtual bool SetColumnWidth(int column, int width) = 0;

  // Geometry.
  virtual ListRect GetClientRect() const = 0;
  virtual uint32_t GetStyle() const = 0;  // kListStyleVScroll when a vertical scroll bar shows
  virtual int GetVScrollBarWidth() const = 0;  // the system's vertical scroll bar width, pixels
  // Pixels of this control per pixel of the reference screen (1.0 at the reference resolution).
  virtual double GetWidthFactor() const = 0;
};

// A list control without a window: items, columns and selection in memory, geometry as set. Sorting
// is stable. The scroll bar width is the installed platform's unless set.
class HeadlessListControl : public ListControl {
 public:
  static constexpr int kItemHeight = 16;  // pixels per row, for the rows per page

  int GetItemCount() const override { return static_cast<int>(items_.size()); }
  int InsertItem(int index, uintptr_t data) override;
  bool DeleteItem(int index) override;
  bool DeleteAllItems() override;
  uintptr_t GetItemData(int index) const override;
  bool SetItemData(int index, uintptr_t data) override;
  bool SortItems(ListCompareFunc compare, uintptr_t context) override;
  bool SetItemOrder(const std::vector<int>& order) override;
  void RedrawItems(int first, int last) override;

  bool EnsureVisible(int index) override;
  int GetTopIndex() const override { return top_; }
  int GetCountPerPage() const override;
  bool IsSelected(int index) const override;
  bool SetSelected(int index, bool selected) override;
  int GetFocusedItem() const override { return focus_; }
  bool SetFocusedItem(int index) override;

  int GetColumnCount() const override { return static_cast<int>(columns_.size()); }
  int InsertColumn(int index, const std::u16string& heading, int width) override;
  bool DeleteColumn(int index) override;
  std::u16string GetColumnHeading(int column) const override;
  int GetColumnWidth(int column) const override;
  bool SetColumnWidth(int column, int width) override;

  ListRect GetClientRect() const override { return client_; }
  uint32_t GetStyle() const override { return style_; }
  int GetVScrollBarWidth() const override;
  double GetWidthFactor() const override { return widthFactor_; }

  // Set by the owner (the command line, tests).
  void SetClientRect(const ListRect& rect) { client_ = rect; }
  void SetStyle(uint32_t style) { style_ = style; }
  void SetVScrollBarWidth(int width) { scrollBarWidth_ = width; }  // -1: the platform's
  void SetWidthFactor(double factor) { widthFactor_ = factor; }
  int GetRedrawCount() const { return redraws_; }  // RedrawItems calls so far

 private:
  bool Valid(int index) const { return index >= 0 && index < GetItemCount(); }
  struct Column {
    std::u16string heading;
    int width;
  };
  // invariant: items_.size() == selected_.size(); focus_ is -1 or a valid index.
  std::vector<uintptr_t> items_;
  std::vector<uint8_t> selected_;
  std::vector<Column> columns_;
  int focus_ = -1;
  int top_ = 0;
  int redraws_ = 0;
  ListRect client_{0, 0, 400, 300};
  uint32_t style_ = 0;
  int scrollBarWidth_ = -1;
  double widthFactor_ = 1.0;
};

}  // namespace kw
