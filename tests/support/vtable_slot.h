#ifndef VORL_TESTS_VTABLE_SLOT_H
#define VORL_TESTS_VTABLE_SLOT_H

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vorl::test {

/// A pointer to a member function in the Itanium C++ ABI: an address or an offset in the virtual table, and
/// an adjustment of the object.
struct MemberParts {
    std::uintptr_t offset;
    std::uintptr_t adjustment;
};

template <typename Member>
MemberParts partsOf(Member member) {
    MemberParts parts{};
    static_assert(sizeof(parts) == sizeof(member), "a pointer to member function of the Itanium C++ ABI");
    std::memcpy(&parts, &member, sizeof(parts));
    return parts;
}

/// Most processors mark a table offset with the lowest bit of the first half; ARM and AArch64, where that bit
/// of an address has a meaning, with the lowest bit of the second.
inline bool isMarkedInAdjustment() {
    struct Probe {
        virtual void first() {}
        virtual ~Probe() = default;
    };
    return (partsOf(&Probe::first).adjustment & 1) != 0;
}

/// The slot that a virtual function has in its class's virtual table, counted from 0 (a virtual destructor
/// takes two), or -1 for a function that is not virtual.
template <typename Member>
int vtableSlot(Member member) {
    const MemberParts parts = partsOf(member);
    const int bytesPerSlot = sizeof(void*);
    if (isMarkedInAdjustment()) {
        return (parts.adjustment & 1) != 0 ? static_cast<int>(parts.offset) / bytesPerSlot : -1;
    }
    return (parts.offset & 1) != 0 ? static_cast<int>(parts.offset - 1) / bytesPerSlot : -1;
}

/// A class with one virtual operation more, as a device that derives from it may have: the slot of oneMore()
/// is the number of those that the class has itself. An operation that it gets later, even at its end, would
/// take that slot from the device's.
template <typename Class>
class WithOneMore : public Class {
public:
    using Class::Class;
    virtual void oneMore() {}
};

}  // namespace vorl::test

#endif
