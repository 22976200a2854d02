// A progress pane: long operations step it with a percentage and stop when it says so.
#pragma once

#include <string>

namespace kw {

class KwProgress {
 public:
  virtual ~KwProgress() = default;
  // Shows `percent` (0..100). Returns 0 when the user asked to stop the operation, else nonzero.
  virtual int Step(int percent) = 0;
  // The percentage last stepped to (0 before the first step).
  virtual int GetPercent() const = 0;
  virtual void SetTitle(const std::u16string& /*title*/) {}
};

}  // namespace kw
