// The list engine on a list control of its own. Without a control given it runs on a headless one
// (programs without windows, tests); a window system passes its control.
#pragma once

#include <memory>

#include "lists/KwListCore.h"
#include "platform/ListControl.h"

namespace kw {

// A host that is a list control: it owns the control the engine works on.
class ListCtrlHost {
 public:
  // Takes ownership of `control`; null: a headless control.
  explicit ListCtrlHost(std::unique_ptr<ListControl> control = nullptr)
      : m_Control(control ? std::move(control) : std::make_unique<HeadlessListControl>()) {}
  ListControl& GetListCtrl() { return *m_Control; }
  // The headless control, or null when a window system's control was given.
  HeadlessListControl* GetHeadless() { return dynamic_cast<HeadlessListControl*>(m_Control.get()); }

 private:
  std::unique_ptr<ListControl> m_Control;
};

class KwListCtrl : public KwListCore<ListCtrlHost> {
 public:
  explicit KwListCtrl(std::unique_ptr<ListControl> control = nullptr) : KwListCore(std::move(control)) {}
};

}  // namespace kw
