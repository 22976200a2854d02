#include <gtest/gtest.h>

#include "base/Assert.h"
#include "support/TestSupport.h"

namespace {

class Seam : public kwtest::PlatformTest {};

TEST_F(Seam, ScopedPlatformIsWhatTheLibrarySees) {
  EXPECT_EQ(&kw::GetPlatform(), &platform_);
  {
    kw::ScriptedPlatform inner;
    kw::ScopedPlatform scope(inner);
    EXPECT_EQ(&kw::GetPlatform(), &inner);
  }
  EXPECT_EQ(&kw::GetPlatform(), &platform_);
}

TEST_F(Seam, BoxesAreAnsweredFromTheQueueThenCancelled) {
  platform_.answers = {-2};
  kw::QueryBoxLayout box;
  box.caption = u"Question from Test";
  EXPECT_EQ(kw::GetPlatform().RunQueryBox(box), -2);
  EXPECT_EQ(kw::GetPlatform().RunQueryBox(box), 2);
  ASSERT_EQ(platform_.boxes.size(), 2u);
  EXPECT_EQ(platform_.boxes[0].caption, u"Question from Test");
}

TEST_F(Seam, ProgressStopsAtTheScriptedStep) {
  platform_.stopProgressAtStep = 2;
  auto pane = kw::GetPlatform().CreateProgress(u"Undo - Process");
  EXPECT_EQ(pane->Step(10), 1);
  EXPECT_EQ(pane->Step(20), 0);
  EXPECT_EQ(pane->GetPercent(), 20);
  EXPECT_EQ(platform_.progressSteps, (std::vector<int>{10, 20}));
}

TEST_F(Seam, AssertionsGoToTheInstalledHandlerWithModuleName) {
  KW_ASSERT(1 + 1 == 3);
  KW_ASSERT_AT("QUERYBOX", 691, false);
  ASSERT_EQ(asserts_.count(), 2u);
  EXPECT_EQ(asserts_.fired()[0].source, "ScriptedPlatformTest");
  EXPECT_EQ(asserts_.fired()[0].expression, "1 + 1 == 3");
  EXPECT_TRUE(asserts_.Fired("QUERYBOX", 691));
}

TEST(SeamDefault, DefaultHandlerWritesToDebugOutput) {
  kw::ScriptedPlatform platform;
  kw::ScopedPlatform scope(platform);
  kw::ReportAssertion("Module.cpp", 12, "x > 0");
  ASSERT_EQ(platform.debugOutput.size(), 1u);
  EXPECT_EQ(platform.debugOutput[0], u"Assertion failed: Module line 12: x > 0");
}

}  // namespace
