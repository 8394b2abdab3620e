#ifndef VORL_ENV_H
#define VORL_ENV_H

#include "vorl/export.h"

#include <string>

namespace vorl {

/// A part of the library whose intermediate data can be written to files for diagnosis.
enum Component : unsigned int {
    DIFFIE_HELLMAN = 0,
};

/// The process-wide defaults of text formatting, and the instrumentation switches.
///
/// The defaults are what the toString() of a block uses, and the short forms of Util::toFormatHexString and
/// of Util::hexAsciiDump on a vector. The switches are unsynchronised: they are set during start-up, before
/// threads use the library.
class VORL_API Env {
public:
    Env(const Env&) = delete;
    Env& operator=(const Env&) = delete;

    /// The one instance, made on first use and never destroyed.
    static Env* instance();

    /// Switches the instrumentation of a component. While it is on, key material reaches the file system:
    /// see Util::saveInstrumentationFile.
    static void setInstrumentation(Component c, bool on);
    /// False for a component that was never set.
    static bool getInstrumentation(Component c);

    /// The text between two hex bytes: ":".
    const std::string& fmtSeparator() const { return fmtSeparator_; }
    /// How deep a block is nested: 1.
    unsigned int fmtLevel() const { return fmtLevel_; }
    /// Blanks per level: 4.
    unsigned int fmtIndentSize() const { return fmtIndentSize_; }
    /// Characters that a line should not reach: 80.
    unsigned int fmtWidth() const { return fmtWidth_; }

private:
    friend class Util;

    Env() = default;
    ~Env() = default;

    static constexpr const char* insDir_ = "/tmp/";

    std::string fmtSeparator_ = ":";
    unsigned int fmtLevel_ = 1;
    unsigned int fmtIndentSize_ = 4;
    unsigned int fmtWidth_ = 80;
};

}  // namespace vorl

#endif
