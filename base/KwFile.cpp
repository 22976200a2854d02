#include "base/KwFile.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "base/CodePages.h"
#include "platform/Platform.h"

namespace kw {

namespace {

// Bytes read or written per call of the C library. Large enough that a 100 MB file needs few calls.
constexpr size_t kBlockBytes = size_t{1} << 18;

bool IsUnicode(int encoding) { return encoding >= kEncodingUtf8 && encoding <= kEncodingUtf16BE; }

// The byte-order mark of an encoding (empty for the 8-bit pages).
std::string_view MarkOf(int encoding) {
  switch (encoding) {
    case kEncodingUtf8: return {"\xEF\xBB\xBF", 3};
    case kEncodingUtf16LE: return {"\xFF\xFE", 2};
    case kEncodingUtf16BE: return {"\xFE\xFF", 2};
    default: return {};
  }
}

bool StartsWith(std::string_view bytes, std::string_view mark) {
  return !mark.empty() && bytes.substr(0, mark.size()) == mark;
}

}  // namespace

KwFile::KwFile() = default;

KwFile::~KwFile() { Close(); }

bool KwFile::Fail(int error) {
  GetPlatform().SetLastError(static_cast<uint32_t>(error));
  return false;
}

unsigned KwFile::CodePage() const { return static_cast<unsigned>(GetCodePageID(encoding_)); }

bool KwFile::Open(const std::u16string& name, int mode, char16_t lineEnd, char16_t eofChar, int encoding) {
  Close();
  if ((mode != kRead && mode != kWrite && mode != kAppend) || encoding < -1 || encoding > kEncodingOem)
    return Fail(EINVAL);
  const std::string path = ToUtf8(name);
  std::error_code ec;
  const bool existed = std::filesystem::exists(path, ec);
  const auto size = existed ? std::filesystem::file_size(path, ec) : 0;
  const bool empty = !existed || ec || size == 0;
  if (mode == kAppend && encoding == -1 && !empty) encoding = GetFileEncoding(name, nullptr);

  file_ = std::fopen(path.c_str(), mode == kRead ? "rb" : mode == kWrite ? "wb" : "ab");
  if (!file_) return Fail(errno);
  name_ = name;
  mode_ = mode;
  lineEnd_ = lineEnd;
  eofChar_ = eofChar;
  encoding_ = encoding < 0 ? kEncodingAnsi : encoding;
  failed_ = atEof_ = eofCharSeen_ = written_ = false;
  usedDefault_ = 0;
  in_.clear();
  inPos_ = 0;
  units_.clear();
  unitPos_ = 0;
  out_.clear();
  outLen_ = 0;
  carry_.clear();

  if (mode == kRead) {
    while (in_.size() < 3 && FillBytes()) {
    }
    if (failed_) {
      Close();
      return false;
    }
    if (encoding == -1) {
      for (int e : {kEncodingUtf8, kEncodingUtf16LE, kEncodingUtf16BE})
        if (StartsWith({in_.data(), in_.size()}, MarkOf(e))) {
          encoding_ = e;
          break;
        }
    }
    byteOrderMark_ = StartsWith({in_.data(), in_.size()}, MarkOf(encoding_));
    if (byteOrderMark_) inPos_ = MarkOf(encoding_).size();
    return true;
  }
  out_.resize(kBlockBytes);
  atStart_ = mode == kWrite || empty;
  if (atStart_) {
    byteOrderMark_ = markPending_ = IsUnicode(encoding_);
  } else {
    byteOrderMark_ = IsUnicode(encoding_) && GetFileEncoding(name, nullptr) == encoding_;
    markPending_ = false;
  }
  return true;
}

bool KwFile::SetEncoding(int encoding, bool byteOrderMark) {
  if (!file_) return Fail(EBADF);
  if (encoding < 0 || encoding > kEncodingOem || (mode_ != kRead && written_)) return Fail(EINVAL);
  encoding_ = encoding;
  if (mode_ != kRead && atStart_) byteOrderMark_ = markPending_ = byteOrderMark && IsUnicode(encoding);
  return true;
}

bool KwFile::FillBytes() {
  if (atEof_ || failed_) return false;
  // Keep the bytes not yet decoded (at most a split character after a decode) at the front.
  in_.erase(in_.begin(), in_.begin() + static_cast<std::ptrdiff_t>(inPos_));
  inPos_ = 0;
  const size_t kept = in_.size();
  in_.resize(kept + kBlockBytes);
  const size_t got = std::fread(in_.data() + kept, 1, kBlockBytes, file_);
  in_.resize(kept + got);
  if (got == 0) {
    atEof_ = true;
    if (std::ferror(file_)) {
      failed_ = true;
      Fail(errno ? errno : EIO);
    }
    return false;
  }
  return true;
}

bool KwFile::DecodeMore() {
  units_.erase(0, unitPos_);
  unitPos_ = 0;
  for (;;) {
    const size_t avail = in_.size() - inPos_;
    if (avail > 0) {
      const size_t old = units_.size();
      units_.resize(old + avail);
      int64_t used = 0, written = 0;
      DecodeBytes(CodePage(), in_.data() + inPos_, static_cast<int64_t>(avail), units_.data() + old,
                  static_cast<int64_t>(avail), atEof_, &used, &written);
      units_.resize(old + static_cast<size_t>(written));
      inPos_ += static_cast<size_t>(used);
      if (written > 0) return true;
    }
    if (atEof_ || failed_) return false;
    FillBytes();
  }
}

bool KwFile::ReadLine(std::u16string& line) {
  line.clear();
  if (!file_ || mode_ != kRead) return Fail(EBADF);
  if (eofCharSeen_) return false;
  const bool anyBreak = lineEnd_ == 13 || lineEnd_ == 10;
  bool any = false;
  for (;;) {
    if (unitPos_ >= units_.size() && !DecodeMore()) return any;
    const char16_t* p = units_.data() + unitPos_;
    const size_t n = units_.size() - unitPos_;
    size_t k = 0;
    if (anyBreak) {
      while (k < n && p[k] != 13 && p[k] != 10 && (p[k] != eofChar_ || eofChar_ == 0)) ++k;
    } else {
      while (k < n && p[k] != lineEnd_ && (p[k] != eofChar_ || eofChar_ == 0)) ++k;
    }
    line.append(p, k);
    unitPos_ += k;
    if (k == n) {
      any = any || k > 0;
      continue;
    }
    any = any || k > 0;
    const char16_t c = units_[unitPos_++];
    if (eofChar_ != 0 && c == eofChar_) {
      eofCharSeen_ = true;
      return any;
    }
    if (anyBreak && c == 13) {
      if (unitPos_ >= units_.size()) DecodeMore();
      if (unitPos_ < units_.size() && units_[unitPos_] == 10) ++unitPos_;
    }
    return true;
  }
}

int64_t KwFile::ReadBlock(char16_t* buf, int64_t max) {
  if (!file_ || mode_ != kRead) {
    Fail(EBADF);
    return 0;
  }
  if (!buf || max <= 0) return 0;
  int64_t got = 0;
  for (;;) {
    // Units decoded earlier (by ReadLine, or for a caller with no room for a whole character) first.
    if (unitPos_ < units_.size()) {
      const int64_t take = std::min<int64_t>(max - got, static_cast<int64_t>(units_.size() - unitPos_));
      std::memcpy(buf + got, units_.data() + unitPos_, static_cast<size_t>(take) * sizeof(char16_t));
      unitPos_ += static_cast<size_t>(take);
      got += take;
    }
    if (got >= max) return got;
    const size_t avail = in_.size() - inPos_;
    if (avail > 0) {
      int64_t used = 0, written = 0;
      const uint32_t r = DecodeBytes(CodePage(), in_.data() + inPos_, static_cast<int64_t>(avail), buf + got,
                                     max - got, atEof_, &used, &written);
      inPos_ += static_cast<size_t>(used);
      got += written;
      if (r == kErrorInsufficientBuffer) {
        if (written > 0) return got;
        // Room for less than one character (half a surrogate pair): decode aside and hand out a part.
        if (!DecodeMore()) return got;
        continue;
      }
      if (static_cast<size_t>(used) < avail && !atEof_) {
        FillBytes();  // an incomplete character waits for its remaining bytes
        continue;
      }
    }
    if (atEof_ || failed_) return got;
    FillBytes();
  }
}

void KwFile::WritePendingMark() {
  if (!markPending_) return;
  markPending_ = false;
  const std::string_view mark = MarkOf(encoding_);
  std::memcpy(out_.data() + outLen_, mark.data(), mark.size());
  outLen_ += mark.size();
}

bool KwFile::WriteOut() {
  if (outLen_ > 0 && std::fwrite(out_.data(), 1, outLen_, file_) != outLen_) {
    failed_ = true;
    return Fail(errno ? errno : EIO);
  }
  outLen_ = 0;
  return true;
}

bool KwFile::Encode(const char16_t* text, int64_t length, bool final) {
  const bool utf8 = encoding_ == kEncodingUtf8;
  while (length > 0) {
    int64_t used = 0, written = 0;
    const uint32_t r = EncodeUnits(CodePage(), text, length, out_.data() + outLen_,
                                   static_cast<int64_t>(out_.size() - outLen_), 0, utf8 ? nullptr : "#",
                                   utf8 ? nullptr : &usedDefault_, final, &used, &written);
    outLen_ += static_cast<size_t>(written);
    text += used;
    length -= used;
    if (r == kErrorInsufficientBuffer) {
      if (!WriteOut()) return false;
      continue;
    }
    if (r != kErrorSuccess) {
      failed_ = true;
      return Fail(EILSEQ);
    }
    break;
  }
  carry_.assign(text, static_cast<size_t>(length));  // a high surrogate waiting for its partner
  return true;
}

bool KwFile::Write(const char16_t* text, int64_t length) {
  if (!file_ || mode_ == kRead) return Fail(EBADF);
  if (failed_ || length < 0 || (length > 0 && !text)) return false;
  written_ = true;
  WritePendingMark();
  if (length == 0) return true;
  if (!carry_.empty()) {
    const char16_t pair[2] = {carry_[0], text[0]};
    carry_.clear();
    if (!Encode(pair, 2, true)) return false;
    ++text;
    --length;
  }
  return Encode(text, length, false);
}

bool KwFile::WriteLine(std::u16string_view text) {
  if (!Write(text)) return false;
  if (lineEnd_ == 13) return Write(u"\r\n", 2);
  return Write(&lineEnd_, 1);
}

bool KwFile::Flush() {
  WritePendingMark();
  if (!carry_.empty()) {
    const std::u16string lone = carry_;
    carry_.clear();
    if (!Encode(lone.data(), static_cast<int64_t>(lone.size()), true)) return false;
  }
  if (!WriteOut()) return false;
  if (std::fflush(file_) != 0) {
    failed_ = true;
    return Fail(errno);
  }
  return true;
}

bool KwFile::SetEOF() {
  if (!file_ || mode_ == kRead) return Fail(EBADF);
  if (failed_ || !Flush()) return false;
  const long position = std::ftell(file_);
  if (position < 0) return Fail(errno);
  std::error_code ec;
  std::filesystem::resize_file(ToUtf8(name_), static_cast<std::uintmax_t>(position), ec);
  if (ec) return Fail(ec.value());
  return true;
}

bool KwFile::Close() {
  if (!file_) return true;
  bool ok = !failed_;
  if (mode_ != kRead && ok) ok = Flush();
  if (std::fclose(file_) != 0 && ok) ok = Fail(errno);
  file_ = nullptr;
  in_ = {};
  units_ = {};
  out_ = {};
  carry_.clear();
  inPos_ = unitPos_ = outLen_ = 0;
  return ok;
}

}  // namespace kw
