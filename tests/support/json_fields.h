#ifndef VORL_TESTS_JSON_FIELDS_H
#define VORL_TESTS_JSON_FIELDS_H

#include "octets.h"

#include <nlohmann/json.hpp>

#include <cstddef>
#include <fstream>
#include <set>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

namespace vorl::test {

/// The members of a JSON object in a file of test vectors. All operations throw std::runtime_error for what
/// is not there, or is something else.
class JsonFields {
public:
    JsonFields(const nlohmann::json& object, std::string place) : object_(object), place_(std::move(place)) {
        if (!object.is_object()) {
            fail("no object");
        }
    }

    bool has(const std::string& name) const { return object_.contains(name); }

    std::string text(const std::string& name) {
        const nlohmann::json& value = member(name);
        if (!value.is_string()) {
            fail("no text: " + name);
        }
        return value.get<std::string>();
    }

    std::size_t number(const std::string& name) {
        const nlohmann::json& value = member(name);
        if (!value.is_number_unsigned()) {
            fail("no number: " + name);
        }
        return value.get<std::size_t>();
    }

    std::vector<std::string> texts(const std::string& name) {
        std::vector<std::string> all;
        for (const nlohmann::json& value : member(name)) {
            if (!value.is_string()) {
                fail("no text in " + name);
            }
            all.push_back(value.get<std::string>());
        }
        return all;
    }

    /// From hexadecimal digits.
    bytes octets(const std::string& name) {
        const std::string digits = text(name);
        if (digits.size() % 2 != 0 || digits.find_first_not_of("0123456789abcdef") != std::string::npos) {
            fail("not hexadecimal: " + name);
        }
        return fromHex(digits);
    }

    /// Calls `use` with the fields of the object of that name, all of which it must read.
    template <typename Use>
    void in(const std::string& name, Use&& use) {
        JsonFields fields(member(name), place_ + "." + name);
        use(fields);
        fields.expectAllRead();
    }

    /// The same for each object of an array; returns how many there are.
    template <typename Use>
    std::size_t each(const std::string& name, Use&& use) {
        const nlohmann::json& all = member(name);
        if (!all.is_array()) {
            fail("no array: " + name);
        }
        for (std::size_t i = 0; i < all.size(); ++i) {
            JsonFields fields(all[i], place_ + "." + name + "[" + std::to_string(i) + "]");
            use(fields);
            fields.expectAllRead();
        }
        return all.size();
    }

    /// Throws std::runtime_error if a member was never asked for: a vector proves nothing by what nobody
    /// reads.
    void expectAllRead() const {
        for (const auto& item : object_.items()) {
            if (read_.count(item.key()) == 0) {
                fail("nobody reads " + item.key());
            }
        }
    }

    const std::string& place() const { return place_; }

private:
    [[noreturn]] void fail(const std::string& what) const { throw std::runtime_error(place_ + ": " + what); }

    const nlohmann::json& member(const std::string& name) {
        const auto found = object_.find(name);
        if (found == object_.end()) {
            fail("no member " + name);
        }
        read_.insert(name);
        return *found;
    }

    const nlohmann::json& object_;
    std::string place_;
    std::set<std::string> read_;
};

/// Calls `use` with the fields of the object that a file consists of, all of which it must read.
template <typename Use>
void inJsonFile(const std::string& path, Use&& use) {
    std::ifstream file(path);
    if (!file) {
        throw std::runtime_error("cannot read " + path);
    }
    const nlohmann::json object = nlohmann::json::parse(file);
    JsonFields fields(object, path);
    use(fields);
    fields.expectAllRead();
}

}  // namespace vorl::test

#endif
