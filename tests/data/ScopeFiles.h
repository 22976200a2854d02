// A fixture for the stores that keep one file per storage scope: the scope files live in the test's
// temporary folder as s.ini (Standard, 0), g.ini (Global, 1), r.ini (Regional, 2) and l.ini (Local, 3).
#pragma once

#include <string>

#include "base/CodePages.h"
#include "data/KwConfigData.h"
#include "support/TestSupport.h"

namespace kwtest {

class ScopeFilesTest : public PlatformTest {
 protected:
  void Names(std::u16string (&names)[4]) const {
    const char* files[4] = {"s.ini", "g.ini", "r.ini", "l.ini"};
    for (int i = 0; i < 4; ++i) names[i] = TempName(files[i]);
  }
  void Load(kw::KwConfigData& store) const {
    std::u16string names[4];
    Names(names);
    store.Load(names);
  }
};

}  // namespace kwtest
