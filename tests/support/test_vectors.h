#ifndef VORL_TESTS_TEST_VECTORS_H
#define VORL_TESTS_TEST_VECTORS_H

#include "octets.h"

#include <algorithm>
#include <cstddef>
#include <fstream>
#include <istream>
#include <map>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

// Files of published test vectors: one "Name = value" a line, a blank line between vectors, and comments from
// a
// "#" at the beginning of a line.

namespace vorl::test {

/// The fields of one vector. Each operation throws std::runtime_error for a field that is not there.
class TestVector {
public:
    explicit TestVector(std::string place) : place_(std::move(place)) {}

    /// Throws std::runtime_error for a line that is no field, and for a field that is there already.
    void add(const std::string& line) {
        const std::size_t equals = line.find(" = ");
        if (equals == std::string::npos || equals == 0 || equals + 3 == line.size()) {
            throw std::runtime_error(place_ + ": no field: " + line);
        }
        if (!fields_.emplace(line.substr(0, equals), line.substr(equals + 3)).second) {
            throw std::runtime_error(place_ + ": twice: " + line);
        }
    }

    bool has(const std::string& name) const { return fields_.count(name) != 0; }

    const std::string& text(const std::string& name) {
        const auto field = fields_.find(name);
        if (field == fields_.end()) {
            throw std::runtime_error(place_ + ": no field " + name);
        }
        read_.insert(name);
        return field->second;
    }

    /// Hexadecimal digits or a text in quotation marks, as often as a number behind " x " says.
    bytes octets(const std::string& name) {
        std::string value = text(name);
        std::size_t times = 1;
        const std::size_t cross = value.rfind(" x ");
        if (cross != std::string::npos &&
            value.find_first_not_of("0123456789", cross + 3) == std::string::npos) {
            times = std::stoul(value.substr(cross + 3));
            value.resize(cross);
        }
        const bytes once = quotedOrHex(value);
        bytes all(once.size() * times);
        std::copy_n(once.begin(), std::min(once.size(), all.size()), all.begin());
        for (std::size_t done = once.size(); done < all.size(); done *= 2) {
            const std::size_t again = std::min(done, all.size() - done);
            std::copy_n(all.begin(), again, all.begin() + static_cast<std::ptrdiff_t>(done));
        }
        return all;
    }

    /// Throws std::runtime_error if a field was never asked for: a vector proves nothing by what nobody
    /// reads.
    void expectAllRead() const {
        for (const auto& [name, value] : fields_) {
            if (read_.count(name) == 0) {
                throw std::runtime_error(place_ + ": nobody reads " + name);
            }
        }
    }

    const std::string& place() const { return place_; }

private:
    bytes quotedOrHex(const std::string& value) const {
        if (value.size() >= 2 && value.front() == '"' && value.back() == '"') {
            return fromText(value.substr(1, value.size() - 2));
        }
        if (value.size() % 2 != 0 || value.find_first_not_of("0123456789abcdef") != std::string::npos) {
            throw std::runtime_error(place_ + ": neither hexadecimal nor a text: " + value);
        }
        return fromHex(value);
    }

    std::string place_;
    std::map<std::string, std::string> fields_;
    std::set<std::string> read_;
};

/// The vectors in `in`, each with a place such as "NAME:12", where its first field stands.
inline std::vector<TestVector> parseVectors(std::istream& in, const std::string& name) {
    std::vector<TestVector> vectors;
    bool inVector = false;
    std::size_t lineNumber = 0;
    for (std::string line; std::getline(in, line);) {
        ++lineNumber;
        if (line.empty()) {
            inVector = false;
            continue;
        }
        if (line.front() == '#') {
            continue;
        }
        if (!inVector) {
            vectors.emplace_back(name + ":" + std::to_string(lineNumber));
            inVector = true;
        }
        vectors.back().add(line);
    }
    return vectors;
}

/// Calls `use` with each vector of a file, and returns how many there are. Throws std::runtime_error for a
/// file that cannot be read, and after `use` if it left a field unread.
template <typename Use>
std::size_t forEachVector(const std::string& path, Use&& use) {
    std::ifstream in(path);
    if (!in) {
        throw std::runtime_error("cannot read " + path);
    }
    std::vector<TestVector> vectors = parseVectors(in, path);
    for (TestVector& vector : vectors) {
        use(vector);
        vector.expectAllRead();
    }
    return vectors.size();
}

}  // namespace vorl::test

#endif
