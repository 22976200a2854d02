// KwEditBase: the text of one open document of the editor, and everything attached to its lines: the
// document name, the end-of-line convention, line marks, bookmarks, form-feed lines, per-line syntax
// flags and the change tracking. It owns no window; views reach the text only through its operations.
//
// The text is one stream of UTF-16 units in which lines are separated by the document's end-of-line
// character; there is no array of line records. The stream is cut into chunks (tagTEXTDESC) kept in a
// doubly linked list. A line may span chunks and a CR LF pair may be split between two chunks.
//
// End of line: with CR (13) as end-of-line character a CR followed by LF is one end of line of length
// 2 (the LF is not part of the next line), a lone CR is one of length 1 and a lone LF is an ordinary
// character. With LF (10) or any other character, that one unit separates lines.
//
// Positions: line numbers, columns and character indexes are signed 64-bit and count from 0. Line n runs
// from the unit after the n-th end-of-line character to the next one; m_LinesInDoc, the number of
// end-of-line characters, is the index of the last line. An empty document has one empty line.
//
// Flag arguments designed here (documented at each operation) use 0 for the plain behaviour.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "editor/KwEditArea.h"
#include "platform/KwProgress.h"
#include "platform/Memory.h"

namespace kw {

class KwEditUndo;
class PaneSteps;
struct KwEditParams;
struct tagUNDORECORD;

using Line = int64_t;   // a line number
using Index = int64_t;  // a character index into the whole stream

// One replacement of a bulk edit (KwEditBase::ReplaceRanges): `removed` units at character index `at`
// (an index of the text before the edit) give way to `length` units of `text`.
struct KwTextSplice {
  Index at;
  int64_t removed;
  const char16_t* text;  // borrowed; may be null when `length` is 0
  int64_t length;
  // The end-of-line characters in the removed text when the caller knows them (a task deleting lines
  // it has walked), so that the text need not be read again; -1: counted from the text.
  int64_t removedEOLs = -1;
};

// One chunk of the text stream.
struct tagTEXTDESC {
  tagTEXTDESC* next = nullptr;  // following chunk, null at the end
  tagTEXTDESC* prev = nullptr;  // preceding chunk, null at the head
  char16_t* text = nullptr;     // owned by the chunk, `capacity` units (platform/Memory.h buffers)
  uint32_t capacity = 0;        // invariant: used <= capacity
  uint32_t used = 0;            // units of text[] that hold text
  // Added beside the chunk: the number of end-of-line characters in text[0, used). It lets the line
  // lookup skip whole chunks; every change of the text keeps it exact (Check() verifies it).
  int64_t eols = 0;
};

class KwEditBase {
 public:
  static constexpr int64_t kChunkUnits = 64000;      // smallest chunk capacity and the reading block
  static constexpr int64_t kChunkStep = 256;         // chunk capacities are multiples of this
  static constexpr int64_t kMarkGrowLines = 0x80000; // line marks are allocated in steps of this many lines
  static constexpr int64_t kWaitLines = 100000;      // a lookup over more lines shows the wait cursor
  static constexpr int64_t kNoLimit = INT64_MAX;     // default maximum characters
  static constexpr Line kNone = -1;
  static constexpr char16_t kCtrlZ = 26;
  static constexpr char16_t kFormFeed = 12;
  // The first line of a column text made by GetColumnText.
  static constexpr const char16_t* kColumnMarker = u"!#!COL!#!";

  KwEditBase();
  ~KwEditBase();
  // A document owns its chunks and its undo memory, whose records point back to it: no copies.
  KwEditBase(const KwEditBase&) = delete;
  KwEditBase& operator=(const KwEditBase&) = delete;

  // ---- Set-up ----------------------------------------------------------------------------------------
  // Discards the text and the undo memory (the document becomes unmodified), reloads the EOL display
  // character from the application's edit parameters, creates the first chunk and clears the stick
  // selection, the syntax flags and the line marks.
  void InitEdit();
  // Appends `text` at the end. `recordUndo` 1 records the step (undo type 1 or 2), 0 does not;
  // `markNewLines` 1 sets the line mark of every line that the text starts. Returns 1, 0 on failure.
  int AddText(const std::u16string& text, int recordUndo, int markNewLines);
  // Inserts lines of the file `name` at (line, column): the lines from `firstLine` on, `lineCount` of
  // them (negative: all). The file's encoding is detected; its ends of line (CR LF, CR or LF) become the
  // document's; the last inserted line keeps an end of line only when it had one in the file.
  // `recordUndo` as for AddText. Returns 1, 0 when the file cannot be read or the position is wrong.
  int MergeFile(Line line, int64_t column, const std::u16string& name, int64_t firstLine, int64_t lineCount,
                int recordUndo);
  // Appends `count` ends of line at the end of the text (the first one ends an unterminated last
  // line). `recordUndo` as for AddText. Returns 1, 0 for a negative count.
  int AppendLines(int64_t count, int recordUndo, KwProgress* progress);
  // Upper bound of the text length, applied when the text is (re)counted: see InitText.
  void SetMaxChars(int64_t maxChars) { m_MaxChars = maxChars; }
  int64_t GetMaxChars() const { return m_MaxChars; }

  // ---- Lines -----------------------------------------------------------------------------------------
  Line GetLinesInDoc() const { return m_LinesInDoc; }  // index of the last line
  Index GetTotalChars() const { return m_TotalChars; }
  // Length of the longest line (EOL excluded) at the last recount; edits only raise it.
  int64_t GetLongestLine() const { return m_LongestLine; }
  // Length of the line without (withEOL 0) or with (1) its end of line; -1 for a wrong line.
  int64_t LineLength(Line line, int withEOL = 0);
  // Length without trailing blanks and tabs.
  int64_t ReducedLineLength(Line line);
  // Character index of the line's first unit; -1 for a wrong line.
  Index LineStart(Line line);
  // The line holding a character index, and the column in it (`column` may be null). An index inside
  // a CR LF pair belongs to the line that the pair ends. Indexes beyond the text give the last position.
  Line LineFromIndex(Index index, int64_t* column);
  // Copies the line from `startColumn` on into `buffer` (up to `max` units). `withEOL` 1 copies its end
  // of line too; `terminate` 1 writes a zero unit behind the copy (it counts against `max`);
  // `showEOL` 1 writes the EOL display character for each copied end-of-line unit. Returns the units
  // copied (without the terminator), -1 for a wrong line or column.
  int64_t TextOfLine(Line line, char16_t* buffer, int64_t max, int64_t startColumn, int withEOL, int terminate,
                     int showEOL);
  // The line as a string (without its end of line); empty for a wrong line.
  std::u16string GetLineText(Line line);
  // Blanks and tabs at the start of the line.
  int64_t IndentOfLine(Line line);
  // The unit at (line, column); the end-of-line units can be read at the columns behind the text. Out
  // of range: a trace warning and 0.
  char16_t GetChar(Line line, int64_t column);
  // Reads / overwrites `count` units at a character index; return the units done. SetText records no
  // undo; it keeps the line counts right when it writes or overwrites end-of-line characters but does
  // not move line marks.
  int64_t GetText(Index index, char16_t* buffer, int64_t count);
  int64_t SetText(Index index, const char16_t* text, int64_t count);
  // The whole text as one string (for tests and small documents).
  std::u16string GetAllText();
  // The column block lines line1..line2, columns [column1, column2), as a column text: the marker line
  // kColumnMarker, then each line's part followed by the document's end of line. `flags` 1 pads short
  // parts with blanks to the block's width. Returns the number of lines, -1 for wrong arguments or when
  // the pane was stopped.
  int64_t GetColumnText(Line line1, Line line2, int64_t column1, int64_t column2, std::u16string* buffer,
                        int flags, KwProgress* progress);
  // Display column of character column `column`: a tab moves to the next tab stop. `tabStops` is a list
  // of `count` distances: the first stop lies at the first distance, each further one the next distance
  // beyond the previous, the last distance repeats. No list: a stop every 8 columns.
  int64_t GetTabbedPos(Line line, int64_t column, const int64_t* tabStops, int count);
  // The inverse: `*column` is a display column on entry and the character column covering it on return;
  // the result is the display column where that character starts.
  int64_t AdjustCol(Line line, int64_t* column, const int64_t* tabStops = nullptr, int count = 0);
  // Scans the last line: kind 1 gives 1 when it holds a Ctrl-Z (26), kind 2 when it holds any unit other
  // than Ctrl-Z, kind 3 when it holds a unit of 33 or above; else 0.
  int TestLastLine(int kind);
  // Inserts the EOL text at the end of the last line, recorded for undo. Returns 1.
  int AppendEOL();
  // Removes the end of line that ends the text, recorded for undo. Returns 1, 0 when there is none.
  int RemoveLastEOL();

  // ---- Comparison ------------------------------------------------------------------------------------
  // Whether both documents hold the same units (their end-of-line characters included).
  int HasEqualText(KwEditBase& other);
  // Line flags: 1 ignores letter case, 2 ignores blanks and tabs.
  int IsEqualLine(Line line, KwEditBase& other, Line otherLine, int ignoreCase, int ignoreBlanks);
  // One 64-bit hash per line; `flags` as for IsEqualLine (1 case, 2 blanks), so equal hashes under a flag
  // go with lines that IsEqualLine finds equal under it.
  std::vector<uint64_t> GetHashTable(int flags);

  // ---- End of line and encoding ---------------------------------------------------------------------
  // Sets the end-of-line character and recounts all lines (line marks are kept). Returns 1, or 0 when it
  // is the present one (nothing is done).
  int SetEOLType(char16_t eol);
  char16_t GetEOLType() const { return m_EOLText[0]; }
  int GetEOLLength() const { return m_EOLLength; }
  // Copies the EOL text (or, with displayFlag 1, the display character once per unit) into `buffer`
  // (3 units), zero-terminated; returns its length.
  int GetEOLText(char16_t* buffer, int displayFlag) const;
  char16_t GetEOLDisplayChar() const { return m_EOLDisplayChar; }
  // Sets the encoding the text is saved in. `flags` 1 asks the user (message 1156) when the document has
  // another encoding already; Cancel keeps it and returns 0. `flags` 2 drops the byte-order mark (1..3),
  // 0 writes one. A change marks the document modified. Returns 1.
  int SetEncoding(int encoding, int flags);
  int GetEncoding() const { return m_Encoding; }
  bool HasByteOrderMark() const { return m_ByteOrderMark; }
  // The encoding the next ReadFile uses for a file without a byte-order mark (-1: detect, the default).
  // Files of the OEM page are read so; detection never yields it.
  void SetReadEncoding(int encoding) { m_ReadEncoding = encoding; }
  // 1 when the text holds a tab.
  int IsTabFormatted();

  // ---- Files -----------------------------------------------------------------------------------------
  // Reads a file. `mode` 0 replaces the text by the whole file, 1 replaces it by the first block only
  // (kChunkUnits characters) and 2 appends what lies behind that first block. `progress` (may be null)
  // is stepped from `fromPercent` to `toPercent` over the file. Returns 1 when the file was read to its
  // end, 2 when mode 1 stopped after a full first block (read the rest with mode 2), 0 on failure.
  int ReadFile(const std::u16string& name, int mode, KwProgress* progress, double fromPercent = 0,
               double toPercent = 100);
  // Saves the text under `name` (empty: the document name) in the document's encoding. `flags` 1 writes
  // a copy: no backup, and the document name, file time and modified state stay. Asks, when
  // interactive, 1929 (empty text), 1933 (read-only target), 1900 (modified, last line unterminated), in
  // this order. The text goes to a temporary file in the target's folder, which takes the target's
  // name (and permissions) only when complete; the old file becomes the backup first. On failure the
  // old file stays (as document or backup), no temporary file is left, the document stays modified and
  // `errorText` (may be null) receives the system's reason. Returns 1, or 0 (failure, cancel, busy).
  int WriteFile(const std::u16string& name, int flags, std::u16string* errorText);
  // Renames the document file to its backup name (extension "BAK"), replacing an old backup; nothing
  // when backups are off or the document is itself a backup. Returns 1 on success (also when nothing
  // had to be done), 0 when the rename failed.
  int SaveBakFile();
  const std::u16string& GetDocName() const { return m_DocName; }
  void SetDocName(const std::u16string& name) { m_DocName = name; }
  // When 0, saving asks no questions (default 1).
  void SetInteractive(int interactive) { m_Interactive = interactive; }

  // ---- Change tracking ------------------------------------------------------------------------------
  int GetModified() const;
  void SetModified(int flag);
  // Whether the file changed on disk since it was read or written (when detection is on); a change is
  // latched until ClearDocChange.
  int DidDocChange();
  // Resets the latch and stores the file's present last-write time.
  void ClearDocChange();
  void DetectDocChange(int enable) { m_DetectChange = enable ? 1 : 0; }

  // ---- Line marks ------------------------------------------------------------------------------------
  int GetLineMark(Line line) const;
  // Sets (flag 1) or clears (0) a line's mark; the mark array grows as needed. Returns the old mark.
  int SetLineMark(Line line, int flag);
  int64_t GetLineMarkCount(Line first, Line last) const;
  Line MinLineMark() const;
  Line MaxLineMark() const;
  void ClearLineMarks();
  void InvertLineMark();                  // every line of the document
  Line GetNextLineMark(Line line) const;  // the first marked line after `line`; -1 none
  Line GetPrevLineMark(Line line) const;  // the last marked line before `line`; -1 none
  int64_t GetLineMarkCapacity() const { return m_LineMarkCapacity; }

  // ---- Bookmarks -------------------------------------------------------------------------------------
  int ToggleBookMark(Line line);   // returns 1 when the line has a bookmark now
  void RemoveBookMarks(Line line); // the line's bookmark; -1 removes all
  int IsBookMarkInLine(Line line) const;
  Line GetNextBookMark(Line line) const;  // first bookmark after `line`; -1 none
  Line GetPrevBookMark(Line line) const;
  Line GetBookMark(int64_t index) const;  // -1 beyond the count
  int64_t GetBookMarkCount() const { return static_cast<int64_t>(m_BookMarks.size()); }

  // ---- Form feeds ------------------------------------------------------------------------------------
  // Rebuilds the table of lines that hold a form feed (12); edits keep it current afterwards.
  void BuildFFTable();
  const Line* GetFFTable(int64_t* count) const;
  // Columns of the form feeds in `line`, into `columns` (up to `max`), from column `from` on; returns
  // how many there are from `from` on (also beyond `max`).
  int64_t GetFFPosInLine(Line line, int64_t* columns, int64_t max, int64_t from);
  Line GetFirstFFInInterval(Line line1, Line line2) const;  // -1 none

  // ---- Syntax-colour flags ----------------------------------------------------------------------------
  // Kept for the editor window's colouring: one 32-bit value per line while colouring is on.
  void SetSyntaxColoring(int on);
  int IsSyntaxColoring() const { return m_SyntaxColoring; }
  uint32_t GetSyntaxFlags(Line line) const;
  void SetSyntaxFlags(Line line, uint32_t flags);

  // ---- Stick selection (kept by the document; kind 0 none, 1 stream, 2 column) ---------------------
  void SetStickSelection(int kind, Line line1, int64_t column1, Line line2, int64_t column2);
  // A stream selection stored by character indexes (negative column1, see KwEditArea.h) is turned
  // into lines and columns here, once.
  int GetStickSelection(Line* line1, int64_t* column1, Line* line2, int64_t* column2);
  void UnstickSelection() { m_StickKind = 0; }

  // ---- Editing ---------------------------------------------------------------------------------------
  // The basic edit: replaces the text from (line1, column1) up to (line2, column2) by `length` units of
  // `text` (null: blanks). `recordUndo`: 0 none; 1 records type 1 (one unit) or 2 (more); 4 records a
  // pure insertion as type 4 (the range must be empty). `markLines` (may be null): lines, ended by -1,
  // whose marks the step sets after the replacement; with recording, the step is one undo group with
  // one type-19 record per line. Returns 1, 0 for a wrong position.
  int SelReplace(Line line1, int64_t column1, Line line2, int64_t column2, const char16_t* text, int64_t length,
                 int recordUndo, const Line* markLines = nullptr);
  // The same by character indexes [start, end).
  int SelReplaceAt(Index start, Index end, const char16_t* text, int64_t length, int recordUndo,
                   const Line* markLines = nullptr);

  // ---- Area operations (editor/KwEditBaseArea*.cpp; area kinds and options in KwEditArea.h) ---------
  // Every operation takes the area as (area, line1, column1, line2, column2): kAreaText (the positions are
  // ignored), kAreaStream (from (line1, column1) up to (line2, column2); an end at column 0 covers the
  // previous line's end of line and nothing of line2), kAreaColumn (lines line1..line2, columns
  // [column1, column2) of each; short lines give what they hold) or kAreaMarked (the lines of
  // line1..line2 whose mark is set, each whole). Ends of line are never changed, except by
  // CharToEol/EolToChar. `progress` (may be null) is stepped through both passes: a stop while the
  // area is read ends the operation with what was read (success); a stop while the changes are
  // written leaves the text partly changed, empties the undo memory and returns 0. An operation that
  // changes nothing records nothing. Results: 1 success, 0 wrong arguments, a stop while writing or
  // an internal error.
  //
  // Letters to lower (toLower 1) or upper (0) case by ToLower/ToUpper. `encoding` 4 keeps letters
  // whose other case the OEM page 437 lacks; -1 uses the document's encoding. Undo record 12.
  int LowerUpper(unsigned area, Line line1, int64_t column1, Line line2, int64_t column2, int toLower,
                 int encoding, KwProgress* progress);
  // Overwrites the area's units with `character` (a blank by default; not an end-of-line unit). Undo
  // record 14 for blanks, 15 for any other character.
  int BlankOver(unsigned area, Line line1, int64_t column1, Line line2, int64_t column2, KwProgress* progress,
                char16_t character = u' ');
  // Tabs and blanks under tab stops (`tabStops`: `count` distances as for GetTabbedPos; none: every 8).
  // `reverse` 0 expands each tab of the area to the blanks up to its stop (undo record 10); 1 is the
  // reverse mode of BlankToTab. The pane runs from `fromPercent` to `toPercent`. `leadingOnly` 1 limits
  // the change to the indentation (the blanks and tabs at the line start).
  int TabToBlank(unsigned area, Line line1, int64_t column1, Line line2, int64_t column2, const int64_t* tabStops,
                 int count, int reverse, KwProgress* progress, double fromPercent = 0, double toPercent = 100,
                 int leadingOnly = 0);
  // Replaces each run of two or more blanks of the area that ends at a tab stop by one tab (a single
  // blank before a stop stays). Undo record 9. Arguments as for TabToBlank.
  int BlankToTab(unsigned area, Line line1, int64_t column1, Line line2, int64_t column2, const int64_t* tabStops,
                 int count, KwProgress* progress, double fromPercent = 0, double toPercent = 100,
                 int leadingOnly = 0);
  // Turns every `character` of the area into an end of line (the document's EOL text). Undo record 16.
  int CharToEol(unsigned area, Line line1, int64_t column1, Line line2, int64_t column2, char16_t character,
                KwProgress* progress);
  // Turns the ends of line of the area into `character`, joining lines: a stream takes the ends of
  // line inside it, a column block or marked lines the end of each of their lines. Undo record 17.
  int EolToChar(unsigned area, Line line1, int64_t column1, Line line2, int64_t column2, char16_t character,
                KwProgress* progress);
  // Replaces zeros (48) by blanks: `mode` kZerosLeading the leading zeros of each digit run (the last
  // digit before the end or a decimal point stays), kZerosTrailing the zeros that end a decimal
  // fraction (one digit behind the point stays), 0 or kZerosLeading|kZerosTrailing both. A digit run
  // is read inside the area only. Undo record 18.
  int RemoveZeros(unsigned area, Line line1, int64_t column1, Line line2, int64_t column2, int mode,
                  KwProgress* progress);
  // Inserts a column at `column1` of each line of line1..line2, `column2 - column1` units wide. `text`
  // is that column: with `perLine` 0 the same text on every line, with 1 one piece per line separated
  // by LF (a CR before an LF is dropped; a missing piece is blank); each piece is cut or padded with
  // blanks to the width. A line shorter than column1 is first lengthened with blanks. `markedOnly` 1
  // inserts on the marked lines only. Undo record 6.
  int InsertColumn(Line line1, Line line2, int64_t column1, int64_t column2, const std::u16string& text,
                   int perLine, int markedOnly, KwProgress* progress);
  // Removes the columns [column1, column2) of each line of line1..line2 (a short line loses what it
  // has there). `buffer` (may be null) receives the removed pieces, each followed by LF, padded with
  // blanks to the width when `padCopy` is 1 (so InsertColumn with perLine 1 puts them back).
  // `markedOnly` 1 works on the marked lines only. Undo record 7.
  int DeleteColumn(Line line1, Line line2, int64_t column1, int64_t column2, std::u16string* buffer, int padCopy,
                   int markedOnly, KwProgress* progress);
  // Lengthens each line of line1..line2 shorter than `length` with blanks to `length`. `markedOnly` 1
  // on the marked lines only. Undo record 11.
  int InflateLines(Line line1, Line line2, int64_t length, int markedOnly, KwProgress* progress);
  // Removes the trailing blanks of each line of line1..line2; `flags` kReduceTabs removes trailing
  // tabs too, kReduceMarkedOnly works on the marked lines only. Undo record 5.
  int ReduceLines(Line line1, Line line2, int flags, KwProgress* progress);
  // Sorts `count` lines from line1 (to the last line when count passes it) by `keys`, in order (none:
  // the whole line by StrCompare). Each line keeps its place's end of line, so a last line without
  // one stays without. `stable` 1 keeps lines with equal keys in their order; 0 orders them by the
  // whole line. `markedOnly` 1 sorts the marked lines among their own places. Line marks move with
  // their lines. The pane runs from `fromPercent` to `toPercent`. Undo record 8.
  int SortLines(Line line1, const std::vector<tagSORTKEY>& keys, int64_t count, int stable, int markedOnly,
                KwProgress* progress, double fromPercent = 0, double toPercent = 100);
  // Deletes every marked line with its end of line (`inverse` 1: every line without a mark), as one
  // undo group of replacements (type 2). A stop of the pane ends the deletion where it is, as a step
  // that can be undone, and returns 0.
  int RemoveMarkedLines(int inverse, KwProgress* progress);

  // Internal to the area operations (defined in editor/KwEditBaseArea.h).
  struct AreaLine;
  struct AreaWalk;

  // ---- Selections ----------------------------------------------------------------------------------
  // The fix selection tested for a run of `length` units at (line, column): 1 inside. Without a fix
  // selection: assertion, 0.
  int InStickArea(Line line, int64_t column, int64_t length);
  // The end of a stream selection for reporting: an end at column 0 of a line after the first is
  // moved to the end of the previous line, its end of line included. Returns 1 when it moved.
  int ReportStreamEnd(Line line1, int64_t column1, Line* line2, int64_t* column2);
  // The document's part of the selection flags: kSelFixStream or kSelFixColumn, and kSelMarkedLines.
  unsigned GetDocSelFlags();
  // ---- End of the area operations ---------------------------------------------------------------

  // ---- Undo access -----------------------------------------------------------------------------------
  KwEditUndo* GetUndo() { return m_Undo.get(); }
  // Undo (redo) one step. Returns the character index of the step (-1 when there was nothing) and
  // sets `*line` (may be null) to its line.
  Index UndoEdit(Line* line);
  Index RedoEdit(Line* line);
  void ResetUndoStack();
  int StartUndoGroup(int64_t size);
  int CloseUndoGroup();
  int CanUndo() const;
  int CanRedo() const;
  int64_t GetUndoPos() const;

  // ==== Find and replace (editor/KwEditBaseFind*.cpp) ===============================================
  // Searches for one of `count` alternatives, given one after the other in `texts` with the cumulative
  // end offset of each in `ends`, from (*line, *column). `direction` 0 searches backwards, else
  // forwards. `matchCase` 0 compares upper-cased units. `fixSelOnly`: matches must lie inside the stick
  // selection; `markedOnly`: only marked lines are searched; `wildcards`: "?" and "*" in the texts are
  // wildcards (see FindJoker). Forwards a match starts at or behind the start position; backwards it
  // ends at or before it. On success *line, *column and *length give the match and the result is the
  // index of the alternative (at one position the lower index wins). With `positions` (one alternative
  // only) every match is collected instead, as character index and length, in search order and
  // without overlap; the result is then their number and line/column/length give the first. Results:
  // -1 nothing found or the search refused (a text of kFindSlice units or more: message 1910 when
  // interactive), -2 out of memory.
  int64_t FindTextW(Line* line, int64_t* column, const char16_t* texts, const int64_t* ends, int64_t count,
                    int direction, int matchCase, int fixSelOnly, int markedOnly, int wildcards, int64_t* length,
                    std::vector<int64_t>* positions = nullptr, std::vector<int64_t>* lengths = nullptr);
  // Wildcard match of `pattern` at text[0] (`avail` units readable): the pattern is cut at every "*"
  // into pieces (empty ones dropped); the first piece must match at text[0], each later one anywhere
  // further on, in order and leftmost. "?" matches any unit but CR and LF; other units compare through
  // ToCompare under `matchCase`. Returns the length from text[0] to the end of the last piece, 0 when
  // there is no match (also for a pattern without a piece).
  static int64_t FindJoker(const char16_t* pattern, int64_t patLen, const char16_t* text, int64_t avail,
                           int matchCase);
  // The partner of the bracket at (line, column): "(" ")", "[" "]", "{" "}" and "<" ">". The search
  // runs through the whole text, forwards from an opening and backwards from a closing bracket, and
  // counts nesting of the same pair only: brackets of other kinds do not matter, so "(]" inside "( )"
  // is skipped. Returns 1 and the partner's character index in *position; 0 when the unit there is no
  // bracket or its partner is missing.
  int MatchBrace(Line line, int64_t column, Index* position);
  // Options of ReplaceAll and ReplaceAllByTable.
  static constexpr int kFindMatchCase = 1;     // compare exactly (else upper-cased)
  static constexpr int kFindWildcards = 2;     // "?" and "*" in the find texts are wildcards
  static constexpr int kFindMarkedOnly = 4;    // only marked lines
  static constexpr int kFindFixSelection = 8;  // only matches inside the stick selection
  static constexpr int64_t kFindSlice = 64000; // units of a line compared at once; longer texts are refused
  // Replaces every match of `findText` in lines line1..line2 by `replaceText`, left to right without
  // overlap (replaced text is not searched again), as one undoable step (record type 3). Returns the
  // number of replacements, -1 for wrong arguments or a refused search, -2 out of memory, -3 when the
  // step was cancelled at the question whether it is recorded (see ReplaceRanges).
  int64_t ReplaceAll(Line line1, Line line2, const std::u16string& findText, const std::u16string& replaceText,
                     int options);
  // The same with a table of `count` pairs: `texts` holds find text 1, replacement 1, find text 2, ...
  // one after the other, `ends` the cumulative end offset of each (2 * count entries). At one position
  // the pair of the lower index wins.
  int64_t ReplaceAllByTable(Line line1, Line line2, const char16_t* texts, const int64_t* ends, int64_t count,
                            int options);
  // Makes `count` replacements at once, as one undoable step (record type 3) when `recordUndo` is 1.
  // The splices are sorted by index and do not overlap (one may start where the one before ends);
  // their texts must not point into the document. Each chunk is rebuilt once for all the replacements
  // inside it, so a task that changes every line of a large text costs one pass, not a shift of the
  // text behind each line. Line marks and the other line tables follow the text as with SelReplace.
  // Outside an undo group, more splices than the undo memory's group size ask first whether the step
  // is recorded (see KwUndoMemory::StartGroup); a step that goes on unrecorded builds no record.
  // Returns the number of splices made, 0 for none, -1 for unsorted or out-of-range splices
  // (assertion, nothing changed), -2 out of memory, -3 cancelled at that question (nothing changed).
  int64_t ReplaceRanges(const KwTextSplice* splices, int64_t count, int recordUndo);

 private:
  struct FindRequest;
  // In-place comparison over the chunks: whether `pattern` (upper-cased when `caseBlind`) lies at
  // chunk->text[offset] forwards, or, for MatchTextBack, ends at chunk->text[offset].
  int MatchText(const tagTEXTDESC* chunk, int64_t offset, const char16_t* pattern, int64_t length, int caseBlind) const;
  int MatchTextBack(const tagTEXTDESC* chunk, int64_t offset, const char16_t* pattern, int64_t length,
                    int caseBlind) const;
  int64_t FindStream(FindRequest& request);
  // FindStream for one text, matches lying in [lo, hi).
  int64_t FindStreamLiteral(FindRequest& request, Index lo, Index hi);
  int64_t FindLines(FindRequest& request);
  // The first (forwards) or last (backwards) match in line `line` inside [from, limit); -1 none.
  int64_t FindInLine(FindRequest& request, Line line, int64_t from, int64_t limit, int64_t* column, int64_t* length);
  int64_t ReplaceMatches(Line line1, Line line2, const std::vector<std::u16string>& finds,
                         const std::vector<std::u16string>& replacements, int options);
  // Applies replacements sorted by position and without overlap, from the last to the first, each
  // chunk rebuilt once for all its replacements that leave the lines as they are.
  using Splice = KwTextSplice;
  // Saves `count` splices (texts outside the document) in a type-3 record and applies them.
  int64_t ApplyAndRecord(const Splice* splices, int64_t count);
  void ApplySplices(const Splice* splices, int64_t count);
  // A splice that adds or removes lines, in the line numbers before the step: `removed` lines from
  // `from` on go with their marks and other line entries, `inserted` new ones come in their place.
  struct LineShift {
    Line line;  // the line the splice starts in
    Line from;
    int64_t removed;
    int64_t inserted;
  };
  // One per splice that changes lines: millions for a task that deletes lines all over a large text.
  using LineShifts = std::vector<LineShift, LargeBlockAllocator<LineShift>>;
  // Raises the longest line by the first and last lines of the given chunks (sorted here).
  // ApplySplices for splices that only remove text and lengthen no line; `removedEOLs[k]` holds the
  // ends of line splice k removes; `*formFeeds` (when given) is set once a removed unit is a form feed.
  void RemoveInPlace(const Splice* splices, int64_t count, const int64_t* removedEOLs, bool* formFeeds);
  void MeasureEdges(std::vector<const tagTEXTDESC*>& edges);
  // Moves the line marks, bookmarks and syntax flags for ascending shifts in one pass.
  void MoveLineTables(const LineShifts& shifts);
  int64_t UndoReplaceAll(tagUNDORECORD& record, Line line, KwProgress* progress);
  int64_t RedoReplaceAll(tagUNDORECORD& record, Line line, KwProgress* progress);

 public:
  // ==== end of find and replace ======================================================================

  // ---- For tests ------------------------------------------------------------------------------------
  // Checks every invariant of the chunk list, the counts and the line cache; 1 when they hold.
  int Check();
  // Chunk size used for new chunks, reading blocks and growth (default kChunkUnits). Tests make it tiny
  // so that every edit crosses chunk borders; capacities stay multiples of kChunkStep.
  void SetChunkUnits(int64_t units);
  int64_t GetChunkCount() const;
  const tagTEXTDESC* GetHead() const { return m_Head; }

 private:
  friend class KwEditUndo;
  friend class KwLineWalker;

  // Result of the line lookup: where the line starts and how long it is.
  struct LinePos {
    tagTEXTDESC* chunk = nullptr;  // chunk holding the line's first unit (the last chunk at the text end)
    Line line = 0;
    int64_t offset = 0;       // of the line's first unit in `chunk`
    Index index = 0;          // character index of the line start
    Index chunkStart = 0;     // character index of chunk->text[0]
    int64_t chunkLine = 0;    // end-of-line characters before `chunk`
    int64_t length = 0;       // units of the line, end of line excluded
    int eolLength = 0;        // 0 for the last line, else 1 or 2
  };

  // Chunks.
  tagTEXTDESC* NewElement(int64_t length);  // null on allocation failure
  // Frees the chunk's text (from AllocateTextBuffer, never delete[]) and leaves it null.
  void FreeText(tagTEXTDESC* chunk);
  void FirstElement();
  void RemoveElement(tagTEXTDESC* chunk);
  void FreeTextList();
  void InsertAfter(tagTEXTDESC* at, tagTEXTDESC* chunk);
  // The chunk holding `index` (the last chunk for an index at or beyond the end), its start and end.
  tagTEXTDESC* SeekElement(Index index, Index* start, Index* end) const;
  int64_t MaxChunkUsed() const { return 2 * m_ChunkUnits; }
  int64_t CountEOLs(const char16_t* p, int64_t n) const;

  // Line lookup. mode 0 uses the cache, 1 never scans backward, 2 ignores a cache hit.
  const LinePos* StartOfLine(Line line, int mode = 0);
  void MeasureLine(LinePos& pos);  // fills length and eolLength from chunk/offset
  void ResetCache();
  bool IsLFAfterCR(const tagTEXTDESC* chunk, int64_t offset) const;  // the unit at offset is an LF behind a CR

  // Recount after a load or an EOL change (see the .cpp for the steps).
  void InitText(int clearMarks);
  // The same recount one chunk at a time (editor/KwEditBaseRecount.h), shared by InitText and the load.
  class Recount;
  // The edit primitive: replaces `removed` units at `start` by `length` units of `text` (null: blanks).
  // Keeps counts, chunk line counts, marks, bookmarks, form feeds and syntax flags. No undo.
  void ReplaceText(Index start, int64_t removed, const char16_t* text, int64_t length);
  void DeleteUnits(Index start, int64_t count, bool* cacheChunkGone);
  // Returns the units inserted (fewer only when memory ran out) and their end-of-line characters.
  int64_t InsertUnits(Index start, const char16_t* text, int64_t length, int64_t* eolsInserted);
  void SaveUndoRecord(int type, Index start, Index end, const char16_t* text, int64_t length);
  void SaveUndoRecord(Line line);  // type 19 for a mark set by the step

  // Undo and redo of the editor record types this class owns (see KwEditUndo's dispatch table).
  int64_t UndoReplace(tagUNDORECORD& record, Line line, KwProgress* progress);
  int64_t RedoReplace(tagUNDORECORD& record, Line line, KwProgress* progress);
  int64_t UndoLineMark(tagUNDORECORD& record, Line line, KwProgress* progress);
  int64_t RedoLineMark(tagUNDORECORD& record, Line line, KwProgress* progress);

  // ---- Area operations: the walk and the undo of records 5-18 (editor/KwEditBaseArea*.cpp) ----------
  // Visits the lines of an area (see the area operations) in order; the visitor only reads. Returns 1
  // walked to the end, 2 stopped by the pane, 0 wrong arguments.
  int WalkArea(AreaWalk& walk);
  int64_t UndoArea(tagUNDORECORD& record, Line line, KwProgress* progress);
  int64_t RedoArea(tagUNDORECORD& record, Line line, KwProgress* progress);
  int64_t ApplyArea(tagUNDORECORD& record, bool undo);
  // Apply a record of the area operations forward (the second pass and redo) or backward (undo).
  // They return how many of the record's entries were applied; `stopped` is set when the pane stopped.
  int64_t ApplyEditList(const tagUNDORECORD& record, bool undo, PaneSteps* steps, bool* stopped);
  int64_t ApplyUnits(const tagUNDORECORD& record, bool undo, PaneSteps* steps, bool* stopped);
  int64_t ApplySort(const tagUNDORECORD& record, bool undo);
  // The second pass of an operation whose first pass made `record` (not yet saved): applies it and
  // saves it. A stop empties the undo memory; entries not met trace `warning`. Both free the record's
  // data and return 0; else 1.
  int FinishArea(tagUNDORECORD& record, const char16_t* warning, PaneSteps* steps);
  // ---- End of the area operations ---------------------------------------------------------------

  // Marks and line tables.
  void InitLineMarks(int64_t capacity);
  void MoveLineMarks(Line line, int64_t delta);
  void SetLineMarkBit(Line line, int flag);  // within the capacity, no checks, no growth
  void FreeLineMarks();
  void MoveBookMarks(Line line, int64_t delta);
  void AddFF(Line line);
  void MoveFFs(Line line, int64_t delta);
  void RemoveFF(Line line);
  void MoveSyntaxColorFlags(Line line, int64_t delta);
  void RecheckFFs(Line first, Line last);
  bool LineHasFF(Line line);

  // The application's edit parameters 1-3, with the defaults when there is no application object.
  static KwEditParams EditParameters();

  // Files.
  int ReadBlocks(const std::u16string& name, int mode, KwProgress* progress, double fromPercent,
                 double toPercent);
  int WriteText(const std::u16string& target, int flags, std::u16string* errorText);
  // Renames `name` to its backup name when backups are on; `backupName` receives it when one was made.
  int MakeBackup(const std::u16string& name, std::u16string* backupName);

  std::unique_ptr<KwEditUndo> m_Undo;  // never null; keeper of the modified state
  std::u16string m_DocName;
  int m_Busy = 0;                      // a save is running
  int64_t m_MaxChars = kNoLimit;
  int m_EOLLength = 2;                 // 2 for CR LF, 1 otherwise
  char16_t m_EOLText[3] = {13, 10, 0};
  char16_t m_EOLDisplayChar = u' ';
  int m_EOLDisplayOption = 0;
  std::vector<uint64_t> m_LineMarks;   // bit (line % 64) of word (line / 64); empty: no mark allocated
  int64_t m_LineMarkCapacity = 0;      // lines with bits; marks beyond read as 0
  int m_BitsPerWord = 64;
  tagTEXTDESC* m_Head = nullptr;       // never null after construction
  Index m_TotalChars = 0;              // invariant: sum of the chunks' used
  Line m_LinesInDoc = 0;               // invariant: sum of the chunks' eols
  int64_t m_LongestLine = 0;
  // The last line found. Valid (chunk non-null) or reset; chunk/offset/index/chunkStart/chunkLine stay
  // right across edits behind the cached line start, length and eolLength are re-measured.
  LinePos m_Cache;
  std::vector<Line> m_BookMarks;       // sorted, unique
  std::vector<Line> m_FFTable;         // sorted, unique: lines holding a form feed
  std::vector<uint32_t> m_SyntaxFlags; // while colouring: at least m_LinesInDoc + 1 entries
  int m_SyntaxColoring = 0;
  int m_DetectChange = 0;
  int m_DocChanged = 0;
  double m_FileTime = 0;               // KwTime value of the file's last write when read or written
  int m_Interactive = 1;
  bool m_KeepLineTables = false;       // while set, ReplaceText leaves the line tables to its caller
  int m_Encoding = 0;
  bool m_ByteOrderMark = false;
  int m_ReadEncoding = -1;
  int64_t m_ChunkUnits = kChunkUnits;
  // Stick selection.
  int m_StickKind = 0;
  Line m_StickLine1 = 0, m_StickLine2 = 0;
  int64_t m_StickColumn1 = 0, m_StickColumn2 = 0;
};

}  // namespace kw
