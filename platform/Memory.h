// Memory for the big text buffers of the editor, and hints to the operating system about it.
#pragma once

#include <cstddef>

namespace kw {

// Buffers for chunk text. A buffer of kTextSlotBytes or less (but at least kTextSlotBytes / 4) comes from
// a region of 2 MB, aligned to 2 MB, that holds 16 such buffers and is offered to the system for a
// transparent huge page: filling hundreds of megabytes then takes a few hundred page faults instead of
// one per 4 KB, which otherwise costs more than decoding the text. A region is returned to the system
// when its last buffer is freed. Other sizes, and every size on systems without such regions (or in
// builds with the address sanitizer, so that it still sees every buffer), come from operator new.
// Thread-safe. AllocateTextBuffer returns null when no memory is left; FreeTextBuffer takes what
// AllocateTextBuffer gave (or null) and nothing else.
inline constexpr size_t kTextSlotBytes = size_t{2} << 16;  // 128 KB: one chunk of the usual capacity
void* AllocateTextBuffer(size_t bytes);
void FreeTextBuffer(void* buffer);

// Asks the operating system to back the whole pages inside [start, start + bytes) with memory now, in one
// call, instead of one page fault per page at the first writes. Only a hint: the memory must be the
// caller's and stays as it is; where the system has no such call (or refuses it) the pages come at the
// first write as before. Returns true when the system took the hint.
bool PrefaultForWriting(void* start, size_t bytes);

}  // namespace kw
