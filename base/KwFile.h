// KwFile: a named text file read or written line by line or in blocks of UTF-16 characters, in one of
// the five encoding numbers (0 ANSI 1252, 1 UTF-8, 2 UTF-16 LE, 3 UTF-16 BE, 4 OEM 437).
//
// Modes: kRead (0) reads; kWrite (4) creates or truncates; kAppend (5) writes at the end of an existing
// file (or a new one). Reading with encoding -1 takes the encoding from the byte-order mark (ANSI when
// there is none); an explicit encoding skips its own mark when the file has one. HasByteOrderMark()
// tells whether a mark was there. Writing puts the mark of encodings 1..3 first unless SetEncoding turned
// it off; it is written lazily (at the first write, or at SetEOF/Close for an empty file), and never when
// appending to a non-empty file. Bytes that are not valid in the encoding survive reading and writing
// back unchanged (see CodePages.h), so a file read and written without change keeps every byte.
//
// Failures return false (or 0) and leave the C library's error number in the platform's last error.
// Not copyable: the object owns its open file and closes it when destroyed.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kw {

class KwFile {
 public:
  static constexpr int kRead = 0;
  static constexpr int kWrite = 4;   // create or truncate
  static constexpr int kAppend = 5;  // keep the contents, write at the end

  KwFile();
  ~KwFile();
  KwFile(const KwFile&) = delete;
  KwFile& operator=(const KwFile&) = delete;

  // Opens `name`. `lineEnd`: 13 or 10 read CR LF, CR and LF as line ends and WriteLine writes CR LF (13)
  // or LF (10); any other character is the only line end both ways. `eofChar` (0: none) ends ReadLine's
  // text, as Ctrl-Z (26) ends DOS text; ReadBlock ignores it. `encoding` -1 detects (reading) or keeps the
  // file's mark (appending); writing with -1 means ANSI.
  bool Open(const std::u16string& name, int mode, char16_t lineEnd = 13, char16_t eofChar = 26, int encoding = -1);
  // Sets the encoding for writing, with or without its byte-order mark; only before the first write.
  // For reading it changes how the remaining bytes are decoded.
  bool SetEncoding(int encoding, bool byteOrderMark = true);

  // The next line without its line end; false at the end of the text (or at the end-of-file character).
  bool ReadLine(std::u16string& line);
  // Up to `max` units of the text; 0 at the end. Characters split between file reads are kept whole.
  int64_t ReadBlock(char16_t* buf, int64_t max);

  bool WriteLine(std::u16string_view text);
  bool Write(const char16_t* text, int64_t length);
  bool Write(std::u16string_view text) { return Write(text.data(), static_cast<int64_t>(text.size())); }
  // Writes out what is buffered and cuts the file at the present position.
  bool SetEOF();
  // Writes out what is buffered and closes; true when everything was written. Closing a closed file is true.
  bool Close();

  bool IsOpen() const { return file_ != nullptr; }
  int GetEncoding() const { return encoding_; }
  int GetMode() const { return mode_; }
  const std::u16string& GetName() const { return name_; }
  bool HasByteOrderMark() const { return byteOrderMark_; }
  // Whether a character written so far had no place in the 8-bit code page and became "#".
  bool UsedDefaultChar() const { return usedDefault_ != 0; }

 private:
  bool Fail(int error);
  bool FillBytes();           // reads more bytes behind the unread ones; false at the end or on error
  bool DecodeMore();          // decodes into units_; false when nothing more comes
  bool Encode(const char16_t* text, int64_t length, bool final);  // into out_, writing it out when full
  bool WriteOut();            // writes out_ to the file
  bool Flush();               // encodes the carry as it is and writes everything out
  void WritePendingMark();
  unsigned CodePage() const;

  std::FILE* file_ = nullptr;
  std::u16string name_;
  int mode_ = kRead;
  int encoding_ = 0;
  char16_t lineEnd_ = 13;
  char16_t eofChar_ = 26;
  bool byteOrderMark_ = false;
  bool atStart_ = false;      // writing: nothing is in the file before what this object writes
  bool markPending_ = false;  // writing: the mark still has to go out before the first byte
  bool written_ = false;      // writing: a character has been written (SetEncoding is too late)
  bool atEof_ = false;        // reading: the file has no more bytes
  bool eofCharSeen_ = false;  // reading: ReadLine met the end-of-file character
  bool failed_ = false;
  int usedDefault_ = 0;

  // A vector whose new elements are left uninitialised: the read buffer is filled by the file at once,
  // and zeroing it first would cost one more pass over every block read.
  template <class T>
  struct UninitializedAllocator : std::allocator<T> {
    template <class U>
    struct rebind {
      using other = UninitializedAllocator<U>;
    };
    template <class U>
    void construct(U* p) noexcept {
      ::new (static_cast<void*>(p)) U;
    }
    template <class U, class... Args>
    void construct(U* p, Args&&... args) {
      ::new (static_cast<void*>(p)) U(std::forward<Args>(args)...);
    }
  };
  using ByteBuffer = std::vector<char, UninitializedAllocator<char>>;

  // Reading: invariant inPos_ <= in_.size(); bytes [inPos_, in_.size()) are read but not decoded.
  ByteBuffer in_;
  size_t inPos_ = 0;
  // Reading: decoded units not yet handed out are units_[unitPos_, units_.size()).
  std::u16string units_;
  size_t unitPos_ = 0;
  // Writing: out_[0, outLen_) are encoded bytes not yet written; carry_ is a high surrogate waiting
  // for its partner.
  std::vector<char> out_;
  size_t outLen_ = 0;
  std::u16string carry_;
};

}  // namespace kw
