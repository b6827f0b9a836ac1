// The words in which layouts are written: what a block of bytes on the wire is made of, as data. Numbers are
// big-endian unless they are marked. The blocks stand in core/wire/Blocks.h, the SNACs in
// core/wire/Snacs.cpp; core/wire/Reader.h reads bytes by them.
//
// A block may end early, between two fields, and may have bytes behind the last: later versions of a protocol
// add fields at the end. A field that its block is too short for does not fit.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace wire {

enum class Shape : std::uint8_t {
    Number,   // of `width` bytes; 0: as many as its block has
    Address,  // IPv4, four bytes
    Bytes,    // `width` of them, or what the length before them says, or the block's rest
    Text,     // what the length before it says, or the block's rest
    Group,    // `inner` fields, one after the other; with a length before them a block of their own
    Each,     // such a group again and again, to the block's end
    Counted,  // such groups, the count standing before them
    Tlvs,     // type (2), length (2), value; to the block's end, or what the length before them says
    CountedTlvs,
};

// What two clients can do together is named by so many bytes.
inline constexpr std::uint8_t kCapabilitySize = 16;

struct Field {
    const char* name = nullptr;    // nullptr: no field, behind the last one of a row
    const Field* inner = nullptr;  // of a group its fields, of TLVs those whose types are known
    std::uint8_t innerCount = 0;
    Shape shape = Shape::Bytes;
    std::uint8_t width = 0;      // bytes of the value itself
    std::uint8_t prefix = 0;     // bytes of the length or the count that stands before it
    std::uint16_t type = 0;      // of a TLV
    bool isSecret = false;       // a password, its hash, or a cookie that opens a connection
    bool isLittle = false;       // of a number: its low byte comes first
    const char* only = nullptr;  // of a TLV: known as this only where the last capability was this one

    constexpr const Field* begin() const { return inner; }
    constexpr const Field* end() const { return inner + innerCount; }
};

// A kind of SNAC. Where clients or servers of several years differ, the kind has several rows; the first that
// fits a frame is the frame's.
struct Snac {
    static constexpr std::size_t kMaxFields = 6;

    std::uint16_t family, subtype;
    const char* name;
    std::array<Field, kMaxFields> fields;
};

constexpr Field U8(const char* name) {
    return {.name = name, .shape = Shape::Number, .width = 1};
}
constexpr Field U16(const char* name) {
    return {.name = name, .shape = Shape::Number, .width = 2};
}
constexpr Field U32(const char* name) {
    return {.name = name, .shape = Shape::Number, .width = 4};
}
// The whole value of a TLV, whose width differs.
constexpr Field Number(const char* name) {
    return {.name = name, .shape = Shape::Number};
}
constexpr Field Address(const char* name) {
    return {.name = name, .shape = Shape::Address, .width = 4};
}
constexpr Field Bytes(const char* name, std::uint8_t width) {
    return {.name = name, .shape = Shape::Bytes, .width = width};
}
constexpr Field Bytes8(const char* name) {
    return {.name = name, .shape = Shape::Bytes, .prefix = 1};
}
constexpr Field Bytes16(const char* name) {
    return {.name = name, .shape = Shape::Bytes, .prefix = 2};
}
// What is left of the block.
constexpr Field Rest(const char* name) {
    return {.name = name, .shape = Shape::Bytes};
}
constexpr Field Text(const char* name) {
    return {.name = name, .shape = Shape::Text};
}
constexpr Field Text8(const char* name) {
    return {.name = name, .shape = Shape::Text, .prefix = 1};
}
constexpr Field Text16(const char* name) {
    return {.name = name, .shape = Shape::Text, .prefix = 2};
}
// A TLV that says something by being there.
constexpr Field Flag(const char* name) {
    return {.name = name, .shape = Shape::Bytes};
}

// Fields made of others.
template <std::size_t kCount>
constexpr Field Made(Shape shape, const char* name, std::uint8_t prefix, const Field (&inner)[kCount]) {
    static_assert(kCount < 256);
    return {.name = name, .inner = inner, .innerCount = kCount, .shape = shape, .prefix = prefix};
}
template <std::size_t kCount>
constexpr Field Group(const char* name, const Field (&fields)[kCount]) {
    return Made(Shape::Group, name, 0, fields);
}
template <std::size_t kCount>
constexpr Field Each(const char* name, const Field (&fields)[kCount]) {
    return Made(Shape::Each, name, 0, fields);
}
template <std::size_t kCount>
constexpr Field Count8(const char* name, const Field (&fields)[kCount]) {
    return Made(Shape::Counted, name, 1, fields);
}
template <std::size_t kCount>
constexpr Field Count16(const char* name, const Field (&fields)[kCount]) {
    return Made(Shape::Counted, name, 2, fields);
}
template <std::size_t kCount>
constexpr Field Tlvs(const char* name, const Field (&known)[kCount]) {
    return Made(Shape::Tlvs, name, 0, known);
}
template <std::size_t kCount>
constexpr Field Tlvs16(const char* name, const Field (&known)[kCount]) {
    return Made(Shape::Tlvs, name, 2, known);
}
template <std::size_t kCount>
constexpr Field CountedTlvs(const char* name, const Field (&known)[kCount]) {
    return Made(Shape::CountedTlvs, name, 2, known);
}
constexpr Field Tlv(std::uint16_t type, Field value) {
    value.type = type;
    return value;
}
// A TLV whose value means something only in the business of this capability, which was named before.
constexpr Field In(const char* capability, Field field) {
    field.only = capability;
    return field;
}
constexpr Field Little(Field field) {
    field.isLittle = true;
    return field;
}
constexpr Field Secret(Field field) {
    field.isSecret = true;
    return field;
}

}  // namespace wire
