// The terms' settings (the angle unit in section "Terms") and their trace lines, both of which go
// through the application object.
#include <gtest/gtest.h>

#include <string>

#include "app/KwWinApp.h"
#include "data/KwPersistence.h"
#include "support/TestSupport.h"
#include "terms/KwLogiTerm.h"
#include "terms/KwMathTerm.h"

namespace {

class TermApp : public kw::KwWinApp {
 public:
  std::u16string GetAppVersion() const override { return u"1"; }
};

class TermSettings : public kwtest::PlatformTest {
 protected:
  std::string UserFile() const { return ReadBytes(Temp("KwUser.INI")); }
  kwtest::ScopedFolders folders_{dir_, dir_, dir_};
};

TEST_F(TermSettings, AngleUnitIsKeptInSectionTerms) {
  WriteBytes(Temp("KwUser.INI"), "[Terms]\r\nANGLEUNIT=1\r\n");
  {
    kw::KwMathTerm without;
    EXPECT_EQ(without.GetAngleUnit(), kw::kTermRadians) << "no application: the default";
  }
  TermApp app;
  {
    kw::KwMathTerm t;
    EXPECT_EQ(t.GetAngleUnit(), kw::kTermDegrees);
    t.SetAngleUnit(kw::kTermGon);
  }
  EXPECT_EQ(UserFile(), "[Terms]\r\nANGLEUNIT=2\r\n") << "saved when the term goes away";
  {
    kw::KwMathTerm first;
    first.SetAngleUnit(kw::kTermRadians);
    kw::KwLogiTerm second;
    EXPECT_EQ(second.GetAngleUnit(), kw::kTermRadians) << "shares the first term's value, not the file's";
  }
  EXPECT_EQ(UserFile(), "[Terms]\r\nANGLEUNIT=0\r\n");
  EXPECT_EQ(app.GetPersist()->GetCount(), 0) << "no term leaves its unit bound";

  WriteBytes(Temp("KwUser.INI"), "[Terms]\r\nANGLEUNIT=7\r\n");
  kw::KwMathTerm unknown;
  EXPECT_EQ(unknown.GetAngleUnit(), kw::kTermRadians) << "an edited file cannot break the invariant";
  EXPECT_EQ(asserts_.count(), 0u);
}

TEST_F(TermSettings, TermsTraceWhileTheApplicationTraces) {
  TermApp app;
  app.StartInitalTrace();
  ASSERT_TRUE(app.GetTraceMode());
  {
    kw::KwMathTerm t;
    EXPECT_TRUE(Traced(u"Term.Constructor"));
    EXPECT_EQ(t.SetTerm(u"[1][2]", 0, 0), 0);
    EXPECT_TRUE(Traced(u"KwMathTerm.SetTerm: Term=[1][2] (Stack-Order failed)"));
    EXPECT_EQ(t.SetTerm(u"2*[3-1]", 0, 0), 0);
    EXPECT_TRUE(Traced(u"MathTerm.SetTerm: Term=2*[3-1] (From=3-To=1 failed)"));
    EXPECT_FALSE(Traced(u"Term.Destructor"));
  }
  EXPECT_TRUE(Traced(u"MathTerm-Destructor:"));
  EXPECT_TRUE(Traced(u"Term.Destructor"));
}

}  // namespace
