// modTools: numbers and names in byte strings.
//
// Every OSCAR record is held as a byte string: one char per byte, embedded zeros allowed, its length is its
// byte count. Positions are 1-based (the first byte is position 1). Numbers are big-endian, as everywhere in
// OSCAR.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "base/Text.h"

using ByteString = std::string;

// The number at a position. Throws RuntimeError (InvalidArgument) when a byte of it lies beyond the string.
std::int32_t GetByte(std::string_view bytes, std::size_t position);
std::int32_t GetWord(std::string_view bytes, std::size_t position);
// Unsigned on the wire; values from 0x80000000 up come out negative.
std::int32_t GetDWord(std::string_view bytes, std::size_t position);

// The number as one, two or four bytes, high byte first. Throws RuntimeError (InvalidArgument) when a byte
// would fall outside 0 to 255: negative numbers, or numbers too large for the width.
ByteString ByteToStr(std::int32_t number);
ByteString WordToStr(std::int32_t number);
ByteString DWordToStr(std::int32_t number);

// Each byte as two upper-case hexadecimal digits and a blank: "A" and LF give "41 0A ".
std::string HexDump(std::string_view bytes);

// The reverse: digits in either case, pieces split at single spaces, blanks around the text ignored. Throws
// RuntimeError (TypeMismatch) for a piece that is no number, (InvalidArgument) for one above FF.
ByteString HexToBytes(std::string_view text);

// Lower-case (ASCII) with every blank removed: the one rule by which screen names are compared.
std::string NormalizeScreenName(std::string_view name);

// The two halves of a chooser entry, "name (original)". A text without "(" is returned unchanged. Throw
// RuntimeError (InvalidArgument) when "(" stands first, where no name and blank can precede it.
std::string TextBeforeParen(const std::string& text);
std::string TextInParen(const std::string& text);
