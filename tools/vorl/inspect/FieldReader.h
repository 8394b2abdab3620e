#ifndef VORL_TOOL_INSPECT_FIELDREADER_H
#define VORL_TOOL_INSPECT_FIELDREADER_H

#include "inspect/Report.h"
#include "vorl/Buffer.h"

namespace vorl::tool {

/// Walks through a record and enters what it finds into a report, byte for byte.
///
/// It shows where each length and each fragment lies, which a decoder of the library does not tell. Whether
/// the record holds is decided by the library all the same.
class FieldReader {
public:
    /// Both must outlive the reader.
    FieldReader(const bytes& record, Report& report);
    /// Wipes what it read, which may hold a private key.
    ~FieldReader();
    FieldReader(const FieldReader&) = delete;
    FieldReader& operator=(const FieldReader&) = delete;

    std::uint64_t offset() const { return in_.ridx(); }
    bool atEnd() const { return in_.ridx() == in_.widx(); }

    /// The next byte, as a field. There must be one.
    unsigned char readByte(const std::string& name);
    /// The next `size` bytes, as a field. False where there are fewer, which is then the report's problem.
    bool readBytes(const std::string& name, unsigned int size);
    /// A block: a length and content, perhaps in several fragments. Its size in octets; nothing where it
    /// cannot be read to its end, which is then the report's problem.
    std::optional<std::uint64_t> readBlock(const std::string& name, const std::string& meaning);
    /// All that is left, as one field.
    void readRest(const std::string& name, const std::string& meaning);

    /// Gives the last field its meaning.
    void setMeaning(const std::string& meaning);
    /// Only the first problem is kept.
    void setProblem(std::uint64_t offset, const std::string& text);

private:
    struct Fragment {
        std::uint64_t octets;
        bool last;
    };
    std::optional<Fragment> readLength(const std::string& name, unsigned int number, std::uint64_t before);
    Fragment addLength(std::uint64_t begin, const std::string& name, unsigned int number,
                       const Fragment& fragment, const std::string& remark);
    bool readContent(const std::string& name, unsigned int number, std::uint64_t octets,
                     const std::string& meaning);
    void addField(std::uint64_t begin, const std::string& name, unsigned int fragment,
                  const std::string& meaning);

    const bytes& record_;
    Report& report_;
    Buffer in_;
};

}  // namespace vorl::tool

#endif
