#include "app/KwDocManager.h"

#include "base/Assert.h"
#include "base/Format.h"

namespace kw {

int KwDocManager::RegisterShellFileTypes(int compat) {
  (void)compat;
  Platform& platform = GetPlatform();
  int ok = 1;
  for (const DocumentType& type : templates_) {
    if (type.typeId.empty()) continue;
    if (!platform.RegisterDocumentType(type)) {
      platform.DebugOutput(
          Format(u"KwDocManager-Warning: registration database update failed for key '%s'.\n", type.typeId));
      ok = 0;
    }
  }
  return ok;
}

int KwDocManager::UnregisterShellFileTypes() {
  Platform& platform = GetPlatform();
  int ok = 1;
  for (const DocumentType& type : templates_)
    if (!type.typeId.empty() && !platform.UnregisterDocumentType(type.typeId)) ok = 0;
  return ok;
}

bool KwDocManager::IsRegistered() const {
  Platform& platform = GetPlatform();
  for (const DocumentType& type : templates_) {
    if (type.typeId.empty()) continue;
    const bool blank = type.typeId.find(u' ') != std::u16string::npos;
    KW_ASSERT_AT("DocMgr", 147, !blank);
    if (blank || !platform.IsDocumentTypeRegistered(type.typeId)) return false;
  }
  return true;
}

}  // namespace kw
