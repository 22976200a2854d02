// KwDocManager: the application's document types and their registration with the desktop, so that the
// desktop opens (and prints) documents of these types with the application.
#pragma once

#include <string>
#include <vector>

#include "platform/Platform.h"

namespace kw {

class KwDocManager {
 public:
  // Adds a document template's file type. Its id names the type for the desktop and must contain no
  // blank; an empty id stands for a template that is not registered.
  void AddDocTemplate(const DocumentType& type) { templates_.push_back(type); }
  const std::vector<DocumentType>& GetTemplates() const { return templates_; }

  // Registers every template's type through the platform. A type that could not be written is
  // reported to the debug output ("KwDocManager-Warning: ...") and the others are still registered.
  // `compat` asks for the older registration form; the desktop's file associations have only one, so it
  // changes nothing here. Returns 1 when every type was registered.
  int RegisterShellFileTypes(int compat);
  // Removes the registration of every template's type. Returns 1 when each one was found and removed.
  int UnregisterShellFileTypes();
  // Whether every template's type is registered now (empty ids are skipped). An id with a blank is an
  // assertion (DocMgr 147) and counts as not registered.
  bool IsRegistered() const;

 private:
  std::vector<DocumentType> templates_;
};

}  // namespace kw
