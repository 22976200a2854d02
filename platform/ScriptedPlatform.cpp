#include "platform/ScriptedPlatform.h"

#include <algorithm>

#include "base/Format.h"

namespace kw {
namespace {

Platform* g_current = nullptr;  // mirrors the installed platform for ScopedPlatform

class ScriptedProgress : public KwProgress {
 public:
  explicit ScriptedProgress(ScriptedPlatform& owner) : owner_(owner) {}
  int Step(int percent) override {
    percent_ = percent;
    owner_.progressSteps.push_back(percent);
    ++owner_.stepCalls;
    return owner_.stepCalls == owner_.stopProgressAtStep ? 0 : 1;
  }
  int GetPercent() const override { return percent_; }
  void SetTitle(const std::u16string& title) override { owner_.progressTitles.push_back(title); }

 private:
  ScriptedPlatform& owner_;
  int percent_ = 0;
};

}  // namespace

int ScriptedPlatform::RunQueryBox(const QueryBoxLayout& box) {
  boxes.push_back(box);
  if (answers.empty()) return 2;
  const int answer = answers.front();
  answers.pop_front();
  return answer;
}

std::unique_ptr<KwProgress> ScriptedPlatform::CreateProgress(const std::u16string& title) {
  progressTitles.push_back(title);
  return std::make_unique<ScriptedProgress>(*this);
}

intptr_t ScriptedPlatform::ShellOpen(const std::u16string& file, const std::u16string& parameters) {
  shellOpens.emplace_back(file, parameters);
  if (shellResults.empty()) return shellResult;
  const intptr_t result = shellResults.front();
  shellResults.pop_front();
  return result;
}

bool ScriptedPlatform::FindPeer(const std::u16string& title) {
  ++peerSearches;
  return peerSearches > peerHiddenSearches && peers.count(title) != 0;
}

intptr_t ScriptedPlatform::SendToPeer(const std::u16string& title, uint32_t tag, const std::u16string& data) {
  auto it = peers.find(title);
  if (it == peers.end()) return 0;
  sent.emplace_back(title, data);
  sentTags.push_back(tag);
  return it->second;
}

bool ScriptedPlatform::ShowHelp(const std::u16string& helpFile, const std::u16string& keyword) {
  helpShown.emplace_back(helpFile, keyword);
  return helpResult;
}

bool ScriptedPlatform::RegisterDocumentType(const DocumentType& type) {
  if (!registerResult) return false;
  registered.push_back(type);
  return true;
}

bool ScriptedPlatform::UnregisterDocumentType(const std::u16string& typeId) {
  auto it = std::remove_if(registered.begin(), registered.end(),
                           [&](const DocumentType& t) { return t.typeId == typeId; });
  const bool found = it != registered.end();
  registered.erase(it, registered.end());
  return found;
}

bool ScriptedPlatform::IsDocumentTypeRegistered(const std::u16string& typeId) {
  return std::any_of(registered.begin(), registered.end(),
                     [&](const DocumentType& t) { return t.typeId == typeId; });
}

std::u16string ScriptedPlatform::GetErrorText(uint32_t code) {
  auto it = errorTexts.find(code);
  return it == errorTexts.end() ? Format(u"Error %u", code) : it->second;
}

ScopedPlatform::ScopedPlatform(Platform& platform) : previous_(g_current) {
  g_current = &platform;
  SetPlatform(&platform);
}

ScopedPlatform::~ScopedPlatform() {
  g_current = previous_;
  SetPlatform(previous_);
}

}  // namespace kw
