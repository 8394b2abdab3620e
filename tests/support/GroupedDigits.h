#ifndef VORL_TESTS_GROUPEDDIGITS_H
#define VORL_TESTS_GROUPEDDIGITS_H

#include <locale>
#include <string>

namespace vorl::test {

/// While it lives, the global locale writes 16384 as "16,384", as an application's own might.
class GroupedDigits {
public:
    GroupedDigits() : before_(std::locale::global(std::locale(std::locale::classic(), new Punctuation))) {}
    ~GroupedDigits() { std::locale::global(before_); }
    GroupedDigits(const GroupedDigits&) = delete;
    GroupedDigits& operator=(const GroupedDigits&) = delete;

private:
    class Punctuation : public std::numpunct<char> {
        char do_thousands_sep() const override { return ','; }
        std::string do_grouping() const override { return "\3"; }
    };

    std::locale before_;
};

}  // namespace vorl::test

#endif
