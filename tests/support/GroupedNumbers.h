#ifndef VORL_TESTS_GROUPEDNUMBERS_H
#define VORL_TESTS_GROUPEDNUMBERS_H

#include <locale>
#include <string>

namespace vorl::test {

/// While it lives, streams write 16384 as "16,384": the global locale is one that groups digits. Installed
/// locales that do so are not needed for it.
class GroupedNumbers {
public:
    GroupedNumbers() : before_(std::locale::global(std::locale(std::locale::classic(), new Grouping))) {}
    ~GroupedNumbers() { std::locale::global(before_); }
    GroupedNumbers(const GroupedNumbers&) = delete;
    GroupedNumbers& operator=(const GroupedNumbers&) = delete;

private:
    class Grouping : public std::numpunct<char> {
    protected:
        char do_thousands_sep() const override { return ','; }
        std::string do_grouping() const override { return "\1"; }
    };

    std::locale before_;
};

}  // namespace vorl::test

#endif
