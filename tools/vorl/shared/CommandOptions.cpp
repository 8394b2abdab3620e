#include "shared/CommandOptions.h"

#include <CLI/CLI.hpp>

namespace vorl::tool {

namespace {

// "--output" of "-o,--output".
std::string lastOf(const std::string& names) {
    return names.substr(names.rfind(',') + 1);
}

Option named(CLI::Option* option, const std::string& valueName) {
    return Option(*option->type_name(valueName));
}

}  // namespace

Option Option::required() const {
    option_->required();
    return *this;
}

Option Option::oneOf(const std::vector<std::string>& values) const {
    // Its own description would repeat in the help what the option's says.
    option_->check(CLI::IsMember(values).description(""));
    return *this;
}

Option Option::needs(const Option& other) const {
    option_->needs(other.option_);
    return *this;
}

Option Option::excludes(const Option& other) const {
    option_->excludes(other.option_);
    return *this;
}

Option CommandOptions::flag(const std::string& names, bool& isGiven, const std::string& help) {
    return Option(*parser_.add_flag(names, isGiven, help));
}

Option CommandOptions::flag(const std::string& names, const std::function<void()>& whenGiven,
                            const std::string& help) {
    return Option(*parser_.add_flag_callback(names, whenGiven, help));
}

Option CommandOptions::value(const std::string& names, const std::string& valueName, std::string& value,
                             const std::string& help) {
    return named(parser_.add_option(names, value, help), valueName);
}

Option CommandOptions::value(const std::string& names, const std::string& valueName,
                             std::optional<std::string>& value, const std::string& help) {
    return named(parser_.add_option(names, value, help), valueName);
}

Option CommandOptions::value(const std::string& names, const std::string& valueName,
                             const std::function<void(const std::string&)>& take, const std::string& help) {
    const auto takeOrRefuse = [take, name = lastOf(names)](const std::string& text) {
        try {
            take(text);
        } catch (const BadValue& refusal) {
            throw CLI::ValidationError(name, refusal.what());
        }
    };
    return named(parser_.add_option_function<std::string>(names, takeOrRefuse, help), valueName);
}

Option CommandOptions::twoValues(const std::string& names, const std::string& valueNames,
                                 std::vector<std::string>& values, const std::string& help) {
    return named(parser_.add_option(names, values, help)->expected(2), valueNames);
}

Option CommandOptions::input(const std::string& name, std::string& value, const std::string& help) {
    return named(parser_.add_option(name, value, help), "");
}

}  // namespace vorl::tool
