#ifndef VORL_TESTS_TEMPFOLDER_H
#define VORL_TESTS_TEMPFOLDER_H

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

namespace vorl::test {

/// An empty folder of its own, which goes with all it contains.
class TempFolder {
public:
    TempFolder() : path_(::testing::TempDir() + "vorl_test_XXXXXX") {
        if (::mkdtemp(path_.data()) == nullptr) {
            throw std::runtime_error("mkdtemp " + path_);
        }
    }
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    const std::string& path() const { return path_; }
    std::string operator/(const std::string& name) const { return path_ + "/" + name; }

private:
    std::string path_;
};

}  // namespace vorl::test

#endif
