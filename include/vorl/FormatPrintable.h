#ifndef VORL_FORMATPRINTABLE_H
#define VORL_FORMATPRINTABLE_H

#include "vorl/export.h"

#include <string>

namespace vorl {

/// What can describe itself as text. Key material is printed in full.
class VORL_API FormatPrintable {
public:
    /// A block labelled `name`, behind `level` times `indentSize` blanks, whose lines should not reach
    /// `width` characters; `separator` stands between two hex bytes. An object that contains others prints
    /// its own header line and then its members with `level` + 1.
    virtual std::string toFormatString(const std::string& name, unsigned int width, unsigned int level,
                                       const std::string& separator, unsigned int indentSize) const = 0;
    virtual std::string toString() const = 0;
    virtual ~FormatPrintable() = default;

protected:
    FormatPrintable() = default;
    FormatPrintable(const FormatPrintable&) = default;
    FormatPrintable(FormatPrintable&&) = default;
    FormatPrintable& operator=(const FormatPrintable&) = default;
    FormatPrintable& operator=(FormatPrintable&&) = default;
};

}  // namespace vorl

#endif
