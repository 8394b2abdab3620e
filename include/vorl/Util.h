#ifndef VORL_UTIL_H
#define VORL_UTIL_H

#include "vorl/bytes.h"
#include "vorl/export.h"

#include <string>

namespace vorl {

/// The texts in which values describe themselves, whole files, and time stamps.
///
/// All texts are exact: people read them and programs compare them. Hex digits are lower case, numbers do
/// not depend on the global locale, and what a short form leaves out comes from Env::instance() unless it
/// says otherwise.
class VORL_API Util {
public:
    Util() = delete;

    // Hex texts of bytes and numbers.

    /// Two digits: 0x0a is "0a".
    static std::string toHexString(unsigned char b);
    /// No leading zeros and no "0x": 255U is "ff", 0U is "0".
    static std::string toHexString(unsigned int v);
    /// Two digits a byte, joined by `sep`, which is " " in the forms without it.
    static std::string toHexString(const unsigned char* p, unsigned int len, std::string sep);
    static std::string toHexString(const unsigned char* p, unsigned int len);
    static std::string toHexString(const bytes& v);
    static std::string toHexString(const bytes& v, std::string sep);
    /// toHexString(v) behind as many blanks as make it `width` characters; never cut.
    static std::string toSpacedHexString(unsigned int v, unsigned int width);

    /// Eight characters "0" or "1", the most significant bit first.
    static std::string toBinaryString(unsigned char b);
    /// The character itself where it is printable ASCII (0x20 to 0x7e), else ".".
    static std::string toAlpha(unsigned char c);
    /// False for 0.
    static bool isPowerOf2(unsigned int x);

    // Indented blocks: `name` behind `level` times `indentSize` blanks.

    /// The header of a block that others follow: the indent, `name`, ":" and a newline. `width` is not used.
    static std::string toFormatString(std::string name, unsigned int width, unsigned int level,
                                      unsigned int indentSize);

    /// Bytes in hex, joined by `separator`: behind the name where the line stays below `width` characters,
    /// else on lines of their own, one level deeper. No bytes are "name:  (NULL)", without a newline.
    /// A width that leaves no room for a byte gives one byte a line.
    static std::string toFormatHexString(const unsigned char* p, unsigned int len, const std::string& name,
                                         unsigned int width, unsigned int level, const std::string& separator,
                                         unsigned int indentSize);
    static std::string toFormatHexString(const unsigned char* p, unsigned int len, const std::string& name,
                                         unsigned int width, unsigned int level);
    static std::string toFormatHexString(const unsigned char* p, unsigned int len, const std::string& name);
    static std::string toFormatHexString(const bytes& v, const std::string& name, unsigned int width,
                                         unsigned int level, const std::string& separator,
                                         unsigned int indentSize);
    static std::string toFormatHexString(const bytes& v, const std::string& name, unsigned int width,
                                         unsigned int level);
    static std::string toFormatHexString(const bytes& v, const std::string& name);

    /// Lines of an offset in hex, `perLine` bytes in hex and the same bytes as ASCII. 0 a line counts as 1.
    /// The form that takes a pointer separates the bytes with " ", the form that takes a vector with Env's
    /// separator; existing logs rely on both.
    static std::string hexAsciiDump(const unsigned char* p, unsigned int len, unsigned int perLine,
                                    std::string sep);
    static std::string hexAsciiDump(const unsigned char* p, unsigned int len, unsigned int perLine);
    static std::string hexAsciiDump(const bytes& v, unsigned int perLine, std::string sep);
    static std::string hexAsciiDump(const bytes& v, unsigned int perLine);

    // Whole files.

    /// What the file holds. Empty where it cannot be opened or read, or is something without a size, such as
    /// a directory. Throws std::bad_alloc or std::length_error for a file that does not fit in memory.
    static bytes load(const std::string& path);
    /// Creates or truncates the file and writes `data`. A failure is not reported.
    static void save(const std::string& path, const bytes& data);
    /// Throws VORLException where the file cannot be unlinked.
    static void removeFile(const std::string& path);

    // Time.

    /// Whole seconds since the Unix epoch, in decimal.
    static std::string currentTime();
    /// currentTime(), "." and a count of the calls within that second: unique within the process as long as
    /// the clock is not set back. May be called from any thread.
    static std::string uniqueTime();

    /// Writes `data` into a new file "/tmp//ROOT.SECONDS.COUNT", mode 0600, and returns its path. An existing
    /// file is never opened, nor a link in its place followed. A failure to write is not reported.
    /// Throws VORLException for an empty `root`.
    static std::string saveInstrumentationFile(const std::string& root, const bytes& data);
};

}  // namespace vorl

#endif
