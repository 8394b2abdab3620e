#ifndef VORL_TESTS_VTABLE_SLOT_H
#define VORL_TESTS_VTABLE_SLOT_H

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vorl::test {

/// The slot that a virtual function has in its class's virtual table, counted from 0 (a virtual destructor
/// takes two), or -1 for a function that is not virtual.
///
/// Reads the pointer to member of the Itanium C++ ABI: an address or a table offset, and an adjustment of the
/// object. Most processors mark a table offset with the lowest bit of the first half; ARM and AArch64, where
/// that bit of an address has a meaning, with the lowest bit of the second. The adjustment is 0 for the
/// classes here, which have one base each, so that the two ways do not collide.
template <typename Member>
int vtableSlot(Member member) {
    struct {
        std::uintptr_t offset;
        std::uintptr_t adjustment;
    } parts;
    static_assert(sizeof(parts) == sizeof(member), "a pointer to member function of the Itanium C++ ABI");
    std::memcpy(&parts, &member, sizeof(parts));

    const int bytesPerSlot = sizeof(void*);
    if ((parts.adjustment & 1) != 0) {
        return static_cast<int>(parts.offset) / bytesPerSlot;
    }
    if ((parts.offset & 1) != 0) {
        return static_cast<int>(parts.offset - 1) / bytesPerSlot;
    }
    return -1;
}

}  // namespace vorl::test

#endif
