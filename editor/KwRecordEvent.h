// Recorded command events: the parameters of one editor command captured so that the command can be
// run again later without its dialog. Each kind writes itself as one line of text and reads itself
// back from such a line; where the lines are kept (a macro file) is the application's business.
//
// A line is the command part, then optionally character 3 and the user's remark. The command part is
// the kind's keyword and its fields, each behind a DEL (127):
//
//   EditXChar<DEL>65<DEL>2<3>two capital A
//
// Fields are written from the kind's line template: every "%c" of the template stands for DEL, "%%"
// for "%", and what remains ("%s" a text, "%d" an integer, "%lf" a real with six decimals) is filled
// with the event's fields in order. Find and replace events append further integer fields, each as
// DEL and a decimal number. Reading takes each field by its number in the command part and converts
// it with GetInt or GetDouble (point as decimal separator); a missing field reads as 0 or empty, so
// lines written before a field was added still load.
//
// Text fields must not hold DEL or character 3 (they would split the line); a remark never holds "|"
// (it is stored as "!"). Reals keep six decimals, so a round trip of a real is exact only to 1e-6.
//
// Columns in events are counted from 1 and include the last one, as the user types them in the
// dialogs and as term references ("[10-19]") count them. An area is the kind of area the command
// works on when it is replayed: 0 the whole text, 1 the stream selection, 2 the column block, 16 the
// marked lines (the selection is the one present at replay).
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <variant>
#include <vector>

namespace kw {

// The field separator inside the command part, and the separator of the remark.
inline constexpr char16_t kEventFieldSep = 127;
inline constexpr char16_t kEventRemarkSep = 3;

// Type letters of the event kinds (the codes 81 to 100). 92, 98, 99, 101 and 102 have no kind.
inline constexpr char kEventFind = 'Q';              // 81
inline constexpr char kEventRepl = 'R';              // 82
inline constexpr char kEventBChar = 'S';             // 83
inline constexpr char kEventXChar = 'T';             // 84
inline constexpr char kEventAlign = 'U';             // 85
inline constexpr char kEventTableRep = 'V';          // 86
inline constexpr char kEventColWrite = 'W';          // 87
inline constexpr char kEventColForm = 'X';           // 88
inline constexpr char kEventSort = 'Y';              // 89
inline constexpr char kEventUmf = 'Z';               // 90
inline constexpr char kEventLineBreak = '[';         // 91
inline constexpr char kEventLineSelect = ']';        // 93
inline constexpr char kEventLine2 = '^';             // 94
inline constexpr char kEventColCalc = '_';           // 95
inline constexpr char kEventColSum = '`';            // 96
inline constexpr char kEventAutoInsert = 'a';        // 97
inline constexpr char kEventGotoSelectedLine = 'd';  // 100
// The range of letters that AllocRecordEvent accepts.
inline constexpr int kEventFirstCode = 81;
inline constexpr int kEventLastCode = 102;

// Actions of the line selections (KwLineSelectEvent, KwLine2Event) on the lines that the condition
// selects.
inline constexpr int kLineActionMark = 0;
inline constexpr int kLineActionUnmark = 1;
inline constexpr int kLineActionDelete = 2;
inline constexpr int kLineActionKeep = 3;  // delete every other line of the area

class KwEventFields;

// The base of every event. Holds the type letter, the remark and the main file; a kind adds the
// parameters of its command and sets its type letter when constructed. Applications may derive
// their own kinds (type 'I' is one that keeps a main file).
class KwRecordEvent {
 public:
  // An event of the base kind has type 0 and can only carry a remark; its Format is an internal error.
  explicit KwRecordEvent(char type = 0);
  virtual ~KwRecordEvent();
  // Events are copied field by field with CopyTo, which checks the kind; no implicit copies.
  KwRecordEvent(const KwRecordEvent&) = delete;
  KwRecordEvent& operator=(const KwRecordEvent&) = delete;

  char GetType() const { return m_Type; }

  // The event as one line. The base version is an internal error (assertion) and yields "".
  virtual std::u16string Format() const;
  // Reads `line`; nonzero when the line is of this event's kind. The base version takes the text
  // behind the first character 3 (up to a second one) as the remark and returns 1; an empty line is
  // an internal error (assertion, 0).
  virtual int Parse(const std::u16string& line);
  // Copies every field (type letter, remark, main file, base folder and the kind's parameters) into
  // `event`, which must be of the same kind (otherwise assertion, nothing copied, 0). Returns 1.
  virtual int CopyTo(KwRecordEvent* event) const;
  // Lets the user edit the parameters. There are no dialogs in this library: always 0 (not edited).
  virtual int ShowDialog();

  const std::u16string& GetRemark() const { return m_Remark; }
  // Returns 0 when `text` equals the present remark; otherwise stores it with every "|" replaced by
  // "!" and returns 1.
  int SetRemark(const std::u16string& text);

  // Stores `name` for events of type 'V' (the table of a table replacement) and 'I'; for other
  // types it does nothing.
  void SetMainFile(const std::u16string& name);
  const std::u16string& GetMainFile() const { return m_MainFile; }

  // The folder that file references in the line are relative to, normally the folder of the macro
  // file. Format writes a file inside it relative to it; Parse makes a relative reference absolute
  // again. Empty (the default): file references are written and read as they are.
  void SetBaseFolder(const std::u16string& folder) { m_BaseFolder = folder; }
  const std::u16string& GetBaseFolder() const { return m_BaseFolder; }

 protected:
  // Appends character 3 and the remark to `line` when the remark is not empty.
  void AddRemark(std::u16string& line) const;
  // `text` made absolute against `baseFolder`: a relative reference gets the folder put in front
  // (with the folder's own separator); an absolute one ("/x", "\x", "C:..."), an empty one or an
  // empty folder leave it unchanged.
  static std::u16string AddPath(const std::u16string& text, const std::u16string& baseFolder);
  // `text` made relative to `baseFolder`: when it lies inside the folder (the folder's text, compared
  // exactly with "/" and "\" taken as the same, followed by a separator) the rest is returned;
  // otherwise `text` is returned unchanged. AddPath(RemovePath(t, f), f) == t for a t inside f.
  static std::u16string RemovePath(const std::u16string& text, const std::u16string& baseFolder);

  char m_Type;                 // the kind's letter; 0 in the base
  std::u16string m_Remark;     // invariant: holds no "|"
  std::u16string m_MainFile;   // kept only for types 'V' and 'I'
  std::u16string m_BaseFolder;
};

// The fields of an event, bound in the order of the kind's line template. Filled by a kind's
// BindFields and used for writing, reading and copying alike, so the three can never disagree.
class KwEventFields {
 public:
  struct Field {
    std::variant<int*, int64_t*, double*, std::u16string*> value;  // borrowed from the event
    bool file;   // a text that is a file reference
    bool extra;  // appended behind the template's fields (find and replace)
  };

  void Int(int& value) { m_Fields.push_back({&value, false, false}); }
  void Int(int64_t& value) { m_Fields.push_back({&value, false, false}); }
  void Real(double& value) { m_Fields.push_back({&value, false, false}); }
  void Text(std::u16string& value) { m_Fields.push_back({&value, false, false}); }
  // A file reference: written relative to the event's base folder, read back absolute.
  void File(std::u16string& value) { m_Fields.push_back({&value, true, false}); }
  // An integer appended behind the template's fields as DEL and a decimal number.
  void Extra(int& value) { m_Fields.push_back({&value, false, true}); }

  const std::vector<Field>& fields() const { return m_Fields; }

 private:
  std::vector<Field> m_Fields;
};

// The kinds of the table: an event with a keyword and a line template whose fields are bound by
// BindFields. Format, Parse and CopyTo assert that the type letter is still the kind's own.
class KwTemplateEvent : public KwRecordEvent {
 public:
  const char16_t* GetKeyword() const { return m_Keyword; }
  const char16_t* GetTemplate() const { return m_Template; }

  std::u16string Format() const override;
  // Sets the type letter to the kind's. A line of another keyword returns 0 and changes nothing
  // else; a line of this keyword sets every field and the remark and returns 1.
  int Parse(const std::u16string& line) override;
  int CopyTo(KwRecordEvent* event) const override;

 protected:
  // `keyword` and `lineTemplate` are string literals (borrowed for the event's life).
  KwTemplateEvent(char type, const char16_t* keyword, const char16_t* lineTemplate);
  // Binds the kind's parameters in template order, then its extra fields.
  virtual void BindFields(KwEventFields& fields) = 0;

 private:
  char m_Kind;  // the letter the kind was made with; m_Type must keep it
  const char16_t* m_Keyword;
  const char16_t* m_Template;
};

// The options that find and replace events append behind their template's fields, in this order.
struct KwFindEventOptions {
  static constexpr int kOptionCount = 6;
  // The options of the shared find parameters: 0 match case, 1 wildcards, 2 code-page (ASCII)
  // conversion of the escapes, 3 to 5 further dialog switches. A find event's option 3 asks the find
  // to count every match of the text as well (KwEditView::GetLastExecute().changed).
  int m_Options[kOptionCount] = {0, 0, 0, 0, 0, 0};
  int m_InSelection = 0;  // matches must lie inside the fix selection (the "...Sel" commands)
  int m_MarkedOnly = 0;   // only marked lines are searched
};

// Find ('Q', "EditFind"): one find command. Appended integer fields: KwFindEventOptions.
class KwFindEvent : public KwTemplateEvent {
 public:
  KwFindEvent();
  std::u16string m_Text;  // the search text as typed (entry 0, escape sequences not yet converted)
  int m_Command = 0;      // 0 next (from the caret forwards), 1 previous, 2 first (from the top), 3 last
  KwFindEventOptions m_Find;

 protected:
  void BindFields(KwEventFields& fields) override;
};

// Replace ('R', "EditRepl"): one replace command. The literal field "00" after the replacement is
// always written and never read. Appended integer fields: KwFindEventOptions.
class KwReplEvent : public KwTemplateEvent {
 public:
  KwReplEvent();
  std::u16string m_Text;     // the search text as typed
  int m_Command = 0;         // 0 replace the next match, 1 replace every match of the area
  std::u16string m_ReplText; // the replacement as typed (escape sequences not yet converted)
  KwFindEventOptions m_Find;

 protected:
  void BindFields(KwEventFields& fields) override;
};

// Binary character ('S', "EditBChar"): inserts one byte value at the caret. Its Parse returns 0 even
// for its own keyword (after reading the fields): a recorded binary character is never replayed
// from a line. Kept so because macro files depend on it.
class KwBCharEvent : public KwTemplateEvent {
 public:
  KwBCharEvent();
  int Parse(const std::u16string& line) override;
  int m_Code = 0;      // the byte, 0..255
  int m_Encoding = 0;  // encoding number whose code page turns the byte into a unit (0 ANSI, 4 OEM)

 protected:
  void BindFields(KwEventFields& fields) override;
};

// Extended character ('T', "EditXChar"): inserts a UTF-16 unit given by its code.
class KwXCharEvent : public KwTemplateEvent {
 public:
  KwXCharEvent();
  int m_Code = 0;   // the unit, 0..65535
  int m_Count = 1;  // how many times it is inserted

 protected:
  void BindFields(KwEventFields& fields) override;
};

// Column align ('U', "EditAlign"): on each line of the area, the text of the column range is moved
// to its left or right edge or centred, blanks filling the rest of the range.
// Line: "EditAlign%c%%d%c%%d%c%%d%c%%d" (align, first column, last column, area).
class KwAlignEvent : public KwTemplateEvent {
 public:
  KwAlignEvent();
  int m_Align = 0;  // 0 left, 1 right, 2 centred
  int64_t m_FirstCol = 1;
  int64_t m_LastCol = 1;
  int m_Area = 0;

 protected:
  void BindFields(KwEventFields& fields) override;
};

// Table replacement ('V', "EditTableRep"): replaces by a table file of find and replace pairs. The
// text field is the main file (the table), written relative to the base folder.
class KwTableRepEvent : public KwTemplateEvent {
 public:
  KwTableRepEvent();
  int m_Area = 0;
  int64_t m_FirstCol = 0;  // column range the replacements are limited to; 0 and 0: whole lines
  int64_t m_LastCol = 0;
  int m_MatchCase = 0;
  int m_Wildcards = 0;
  int m_Convert = 0;  // the table's texts hold escape sequences to convert

 protected:
  void BindFields(KwEventFields& fields) override;
};

// Column write ('W', "EditColWrite"): writes a text into a column range of each line of the area,
// cut or filled with blanks to the range's width.
class KwColWriteEvent : public KwTemplateEvent {
 public:
  KwColWriteEvent();
  int m_Area = 0;
  std::u16string m_Text;
  int64_t m_FirstCol = 1;
  int64_t m_LastCol = 1;
  int m_Insert = 0;  // 0 overwrite the columns, 1 insert the text as a new column before the first

 protected:
  void BindFields(KwEventFields& fields) override;
};

// Column form ('X', "EditColForm"): rewrites the number in a column range of each line of the area
// into a picture (SetDouble's "#", "*", ".", "+").
class KwColFormEvent : public KwTemplateEvent {
 public:
  KwColFormEvent();
  std::u16string m_Picture;
  int64_t m_FirstCol = 1;
  int64_t m_LastCol = 1;
  int m_Area = 0;

 protected:
  void BindFields(KwEventFields& fields) override;
};

// Line sort ('Y', "EditSort"): sorts the lines of the area by one key, a column range.
class KwSortEvent : public KwTemplateEvent {
 public:
  KwSortEvent();
  int64_t m_FirstCol = 0;  // key columns; 0 and 0: the whole line
  int64_t m_LastCol = 0;
  int m_Descending = 0;
  int m_Numeric = 0;        // numbers inside the key compare by value (the collation's numeric mode)
  int m_CaseSensitive = 0;  // case decides before the tie-break
  int m_Area = 0;

 protected:
  void BindFields(KwEventFields& fields) override;
};

// Line transformation ('Z', "EditUmf"): applies a named set of transformation rules to the lines of
// the area.
class KwUmfEvent : public KwTemplateEvent {
 public:
  KwUmfEvent();
  std::u16string m_Rule;  // the name of the rule set
  int m_Area = 0;

 protected:
  void BindFields(KwEventFields& fields) override;
};

// Line break ('[', "EditLineBreak"): wraps the lines of the area at a width.
class KwLineBreakEvent : public KwTemplateEvent {
 public:
  KwLineBreakEvent();
  int64_t m_Width = 72;  // longest line after the break
  int64_t m_Indent = 0;  // blanks in front of every continuation line
  int m_Mode = 0;        // 0 break long lines only, 1 join the lines of a paragraph first, then break
  int m_Area = 0;

 protected:
  void BindFields(KwEventFields& fields) override;
};

// Line selection (']', "EditLineSelect"): applies an action to the lines of the area for which a
// logical term is true (or false, with m_Invert).
class KwLineSelectEvent : public KwTemplateEvent {
 public:
  KwLineSelectEvent();
  int m_Action = kLineActionMark;  // kLineAction...
  int m_Area = 0;
  std::u16string m_Term;  // the logical term as typed; empty (or blank): every line of the area
  int m_Invert = 0;
  int64_t m_FirstLine = 0;  // line range, counted from 1; 0 and 0: the whole area
  int64_t m_LastLine = 0;
  int m_AngleUnit = 0;  // of the term's trigonometric functions: 0 radians, 1 degrees, 2 gon

 protected:
  void BindFields(KwEventFields& fields) override;
};

// Line selection by a field (^, "EditLine2"): applies an action to the lines of the area whose field
// in a column range lies between two bounds, or, with m_Duplicates, equals the field of the line
// before it.
class KwLine2Event : public KwTemplateEvent {
 public:
  KwLine2Event();
  int m_Action = kLineActionMark;  // kLineAction...
  int64_t m_FirstCol = 1;
  int64_t m_LastCol = 1;
  std::u16string m_From;  // lowest field selected, inclusive; empty: no lower bound
  std::u16string m_To;    // highest field selected, inclusive; empty: no upper bound
  int m_Numeric = 0;      // 0 fields compare by the library collation, 1 as numbers
  int m_Duplicates = 0;
  double m_Tolerance = 0;  // numbers closer than this count as equal
  int m_Area = 0;

 protected:
  void BindFields(KwEventFields& fields) override;
};

// Column calculation ('_', "EditColCalc"): evaluates an arithmetic term on each line of the area and
// writes the result into a column range through a picture, right-aligned in the range. A line shorter
// than the term reads, or whose result is not a number or lies outside the limits, is left alone. A
// result that does not fit is written as "*" over the range. Without a picture the result gets "#"s
// over the range with the most decimals of the term's constants and of the fields it read on the line.
class KwColCalcEvent : public KwTemplateEvent {
 public:
  KwColCalcEvent();
  int m_Area = 0;
  double m_Min = 0;  // only results from m_Min to m_Max are written; m_Min >= m_Max: no limit
  double m_Max = 0;
  std::u16string m_Term;  // the arithmetic term as typed
  int64_t m_FirstCol = 1;  // target columns
  int64_t m_LastCol = 1;
  std::u16string m_Picture;  // SetDouble picture; empty: "#" over the target with the term's decimals
  int m_AngleUnit = 0;       // 0 radians, 1 degrees, 2 gon
  int m_RoundMode = 0;       // SetDouble's rounding mode
  int m_Insert = 0;          // 0 overwrite the target columns, 1 insert them as new columns

 protected:
  void BindFields(KwEventFields& fields) override;
};

// Column sum ('`', "EditColSum"): sums an arithmetic term (normally one column reference such as
// "[10-19]") over the lines of the area.
class KwColSumEvent : public KwTemplateEvent {
 public:
  KwColSumEvent();
  int m_Area = 0;
  std::u16string m_Term;
  // 0 show the sum, 1 copy it to the clipboard, 2 insert it as a line after the area, 3 (and any other
  // value) only report it (KwEditView::GetLastExecute().value), for a caller that prints it itself.
  int m_Output = 0;

 protected:
  void BindFields(KwEventFields& fields) override;
};

// Auto insert ('a', "EditAutoInsert"): inserts at a column of each line of the area a text followed by
// a running number written through a picture.
class KwAutoInsertEvent : public KwTemplateEvent {
 public:
  KwAutoInsertEvent();
  int64_t m_Column = 1;     // where the text goes
  std::u16string m_Text;    // put in front of the number
  int64_t m_Start = 1;      // number of the first line
  std::u16string m_Picture; // of the number; empty: no number
  int64_t m_Step = 1;       // added per line
  int m_Area = 0;

 protected:
  void BindFields(KwEventFields& fields) override;
};

// Go to a marked line ('d', "EditGotoSelectedLine"): moves the caret to a marked line.
// Line: "EditGotoSelectedLine%c%%d%c%%d" (direction, in selection).
class KwGotoSelectedLineEvent : public KwTemplateEvent {
 public:
  KwGotoSelectedLineEvent();
  int m_Direction = 0;    // 0 next, 1 previous, 2 first, 3 last
  int m_InSelection = 0;  // only marked lines inside the fix selection count

 protected:
  void BindFields(KwEventFields& fields) override;
};

// A new empty event of the kind with type letter `letter`, owned by the caller. Codes 81 to 102 are
// accepted; a code without a kind (92, 98, 99, 101, 102) gives null, any other code is an internal
// error (assertion, null). The editor view's AllocRecordEvent forwards here.
std::unique_ptr<KwRecordEvent> AllocRecordEvent(int letter);

// A new event read from a recorded line, owned by the caller, or null when no kind recognises it.
// The kinds are tried in a fixed order (find, replace, binary character, extended character, align,
// table replacement, column write, column form, column calculation, column sum, sort,
// transformation, line break, line selection, second line selection, auto insert, go to marked
// line); the first whose Parse returns nonzero is copied into the result. A binary-character line is
// therefore never recognised. `baseFolder` resolves relative file references and is kept by the
// result. An empty line gives null. The editor view's static ParseRecordEvent forwards here.
std::unique_ptr<KwRecordEvent> ParseRecordEvent(const std::u16string& line,
                                                const std::u16string& baseFolder = std::u16string());

}  // namespace kw
