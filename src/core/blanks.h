#ifndef VORL_CORE_BLANKS_H
#define VORL_CORE_BLANKS_H

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace vorl {

/// `count` blanks. Throws std::length_error for more than a string holds.
inline std::string blanks(std::uint64_t count) {
    if (count > std::string().max_size()) {
        throw std::length_error("Util: indentation");
    }
    return std::string(static_cast<std::size_t>(count), ' ');
}

/// What stands before each line of a block at a level.
inline std::string indentOf(unsigned int level, unsigned int indentSize) {
    return blanks(std::uint64_t{indentSize} * level);
}

}  // namespace vorl

#endif
