#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "app/QueryBox.h"
#include "platform/ConsolePlatform.h"
#include "support/TestSupport.h"

namespace {

// A console box answered from `input`; what it printed is kept in `shown`.
struct ConsoleRun {
  int64_t result = 0;
  std::string shown;
};

ConsoleRun Ask(const std::string& input, const std::u16string& text, uint32_t style = 0, bool interactive = true) {
  std::FILE* inFile = std::tmpfile();
  std::fputs(input.c_str(), inFile);
  std::rewind(inFile);
  std::FILE* outFile = std::tmpfile();
  ConsoleRun run;
  {
    kw::ConsolePlatform console(inFile, outFile, interactive);
    kw::ScopedPlatform scope(console);
    run.result = kw::QueryBox(u"kw", 0, 1090, style, text);
  }
  std::rewind(outFile);
  char buffer[4096];
  size_t n;
  while ((n = std::fread(buffer, 1, sizeof buffer, outFile)) > 0) run.shown.append(buffer, n);
  std::fclose(inFile);
  std::fclose(outFile);
  return run;
}

const std::u16string kOverwrite = u"The output file out.txt already exists.|&Overwrite|&Append|&Cancel";

TEST(ConsoleBox, ShowsCaptionMessageAndMarkedButtons) {
  const auto run = Ask("1\n", kOverwrite);
  EXPECT_EQ(run.result, 1);
  EXPECT_NE(run.shown.find("Question from kw"), std::string::npos);
  // Picture 1090 takes 34 units of the 174-unit box: 34 characters a line.
  EXPECT_NE(run.shown.find("\nThe output file out.txt already\nexists.\n"), std::string::npos);
  EXPECT_NE(run.shown.find("<1 [O]verwrite>"), std::string::npos);  // the default
  EXPECT_NE(run.shown.find("2 [A]ppend"), std::string::npos);
  EXPECT_NE(run.shown.find("3 [C]ancel"), std::string::npos);

  const auto plain = Ask("\n", u"Fish && Chips|&Salt && vinegar| OK ");
  EXPECT_NE(plain.shown.find("Fish && Chips"), std::string::npos);  // the message is not a label
  EXPECT_NE(plain.shown.find("[S]alt & vinegar"), std::string::npos);
  EXPECT_NE(plain.shown.find("2 OK"), std::string::npos);
}

TEST(ConsoleBox, AnswersByNumberMnemonicOrEnterAndCancels) {
  struct Row {
    std::string input;
    uint32_t style;
    int64_t result;
  };
  const Row rows[] = {
      {"2\n", 0, -2},  {"3\n", 0, -3},  {"a\n", 0, -2},          {"C\n", 0, -3},     {" o \n", 0, 1},
      {"\n", 0, 1},    {"\n", 10, -2},  {"\n", 20, -3},          {"append\n", 0, -2}, {"2", 0, -2},  // no line end
      {"9\nx\n\n", 10, -2},  // unreadable answers ask again
      {"\x1b\n", 0, 2},      {"", 0, 2},      {"7\n", 0, 2},  // escape, end of input (also after a bad answer)
  };
  for (const auto& row : rows) {
    const auto run = Ask(row.input, kOverwrite, row.style);
    EXPECT_EQ(run.result, row.result) << row.input;
  }
  const auto again = Ask("9\n3\n", kOverwrite);
  EXPECT_EQ(again.result, -3);
  EXPECT_NE(again.shown.find("Answer 1-3"), again.shown.rfind("Answer 1-3"));  // asked twice
}

TEST(ConsoleBox, RepeatedLabelsAnswerWithTheFirst) {
  EXPECT_EQ(Ask("a\n", u"Pick|&A||&B").result, 1);
  EXPECT_EQ(Ask("2\n", u"Pick|&A||&B").result, -2);
  EXPECT_EQ(Ask("b\n", u"Pick|&A||&B").result, -3);
}

TEST(ConsoleBox, MessageWrapsAtTheLayoutsWidth) {
  std::u16string words;
  for (int i = 0; i < 30; ++i) words += u"word ";  // 150 characters: 66 a line in a 300-unit box
  const auto run = Ask("\n", words + u"\nEND");
  size_t lines = 0;
  for (size_t p = run.shown.find("word"); p != std::string::npos; p = run.shown.find("\nword", p + 1)) ++lines;
  EXPECT_EQ(lines, 3u);  // 13 words (64 characters) a line, the blank at the cut dropped
  EXPECT_NE(run.shown.find(" word\nword "), std::string::npos);
  EXPECT_NE(run.shown.find("\nEND\n"), std::string::npos);

  const auto unbroken = Ask("\n", std::u16string(200, u'x'));
  EXPECT_NE(unbroken.shown.find(std::string(66, 'x') + "\n"), std::string::npos);
  EXPECT_EQ(unbroken.shown.find(std::string(67, 'x')), std::string::npos);
}

TEST(ConsoleBox, WithoutTerminalNothingIsShown) {
  const auto run = Ask("1\n", kOverwrite, 1, false);
  EXPECT_EQ(run.result, 2);
  EXPECT_EQ(run.shown, "");
}

}  // namespace
