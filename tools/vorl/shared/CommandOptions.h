#ifndef VORL_TOOL_SHARED_COMMANDOPTIONS_H
#define VORL_TOOL_SHARED_COMMANDOPTIONS_H

#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
}  // namespace CLI

namespace vorl::tool {

/// Why an option does not take the value that it was given. The name of the option is put before it.
class BadValue : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

/// An option that was declared, for what else holds for it. A copy is the same option.
class Option {
public:
    explicit Option(CLI::Option& option) : option_(&option) {}

    Option required() const;
    /// No other values are taken.
    Option oneOf(const std::vector<std::string>& values) const;
    /// It is not given without the other one.
    Option needs(const Option& other) const;
    /// The two are not given together.
    Option excludes(const Option& other) const;

private:
    CLI::Option* option_;
};

/// What a command declares its options with, in the order in which the help shows them.
///
/// `names` are such as "-o,--output", and `valueName` stands for the value in the help. What takes a value
/// must outlive the parsing, and stays as it is where the option is not given.
///
/// The parser's own header takes seconds to compile, so that the commands do without it.
class CommandOptions {
public:
    explicit CommandOptions(CLI::App& parser) : parser_(parser) {}

    Option flag(const std::string& names, bool& isGiven, const std::string& help);
    Option flag(const std::string& names, const std::function<void()>& whenGiven, const std::string& help);

    Option value(const std::string& names, const std::string& valueName, std::string& value,
                 const std::string& help);
    Option value(const std::string& names, const std::string& valueName, std::optional<std::string>& value,
                 const std::string& help);
    /// `take` throws BadValue for a value that is none.
    Option value(const std::string& names, const std::string& valueName,
                 const std::function<void(const std::string&)>& take, const std::string& help);
    /// Two values, which stand behind the option one after the other.
    Option twoValues(const std::string& names, const std::string& valueNames,
                     std::vector<std::string>& values, const std::string& help);

    /// What is given without the name of an option before it.
    Option input(const std::string& name, std::string& value, const std::string& help);

private:
    CLI::App& parser_;
};

}  // namespace vorl::tool

#endif
