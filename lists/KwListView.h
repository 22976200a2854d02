// The list engine as a document view: the view fills its client area with one list control and
// rebuilds the rows when its document says so.
#pragma once

#include <memory>

#include "lists/KwListCore.h"
#include "platform/ListControl.h"

namespace kw {

// A host that is a view containing a list control (owned by the view).
class ListViewHost {
 public:
  explicit ListViewHost(std::unique_ptr<ListControl> control = nullptr)
      : m_Control(control ? std::move(control) : std::make_unique<HeadlessListControl>()) {}
  virtual ~ListViewHost() = default;
  ListControl& GetListCtrl() { return *m_Control; }
  HeadlessListControl* GetHeadless() { return dynamic_cast<HeadlessListControl*>(m_Control.get()); }

  // The document changed; `hint` is the document's. A view fills its rows here.
  virtual void OnUpdate(int hint) { (void)hint; }

 private:
  std::unique_ptr<ListControl> m_Control;
};

class KwListView : public KwListCore<ListViewHost> {
 public:
  explicit KwListView(std::unique_ptr<ListControl> control = nullptr) : KwListCore(std::move(control)) {}
  // Called before the view is first shown: the list sorts again by its key, if it has one.
  void OnInitialUpdate() {
    OnUpdate(0);
    if (GetSortedColumn() != 0) Sort(-1, 1);
  }
};

}  // namespace kw
