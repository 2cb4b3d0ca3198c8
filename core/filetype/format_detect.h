// Finding a file's format by its content, from the signature description of each type.
//
// A description (FILETYPE::signature) is 8-bit text: clauses separated by ";" or line ends,
// each "key=value", blanks around both ignored. Keys:
//   signature=TEST      the content must pass TEST; several signature clauses are
//                       alternatives, one passing is enough
//   antisignature=TEST  content passing TEST is never this format
//   $seek=N             later TESTs count their offsets from byte N (decimal or 0x hex;
//                       starts at 0)
//   esize=RULE          the stream's size must keep RULE; every esize clause must hold
// TEST is one or more terms joined by "&", all of which must hold:
//   OFFSET:HEX          these bytes at OFFSET, e.g. 0:89 50 4E 47; "??" is any byte
//   "TEXT"              TEXT at the start after blanks (space, tab, CR, LF) and after an
//                       optional byte-order mark (UTF-8, UTF-16 of either order); letters
//                       compare without regard to case; \" and \\ escape
// RULE is a size:
//   N                   exactly N bytes          >=N, <=N   at least, at most N bytes
//   %N                  a multiple of N
//   A+B*FIELD@OFFSET    A + B * the number stored at OFFSET (FIELD: u8, u16le, u16be,
//                       u32le, u32be), e.g. 84+50*u32le@80
// Offsets in esize and $seek are absolute. Every test reads only the first
// kDetectPrefixBytes bytes of the stream: a test that reaches beyond them, or beyond the end,
// fails. A malformed clause makes the whole description match nothing.
#pragma once

#include "interface/types.h"

#include <cstddef>

struct FILETYPE;
struct FTINFO;
class q5_STREAM;

// Detection reads at most this much of a stream, whatever its size.
inline constexpr std::size_t kDetectPrefixBytes = 4096;

// Whether content (the first bytes of a stream of streamSize bytes) passes a description.
bool q5MatchSignature(const char* description, const std::uint8_t* content, std::size_t size,
                      std::int64_t streamSize);

// The first enabled type, in registry order after info->startAfter, that passes info's filter
// and whose signature the content passes (kFtContent; a type with kFileTypeNameMustMatch also
// needs fileName to fit); failing that, the first whose extensions fit fileName among types
// without a signature (kFtExtension), or among all types (kFtTrustName). The result is also
// stored in info->result. The stream is read from its start and left where it was.
FILETYPE* q5GetFileFormat(q5_STREAM* stream, const q5_WCHAR* fileName, FTINFO* info);
