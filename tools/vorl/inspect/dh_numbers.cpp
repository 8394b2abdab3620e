#include "inspect/dh_numbers.h"

#include "inspect/FieldReader.h"
#include "inspect/numbers.h"
#include "shared/SecretBuffer.h"
#include "vorl/DiffieHellman.h"
#include "vorl/DiffieHellmanParams.h"
#include "vorl/OpenSSLException.h"
#include "vorl/Util.h"
#include "vorl/VORLException.h"

#include <algorithm>
#include <utility>

// A group is two blocks, a key pair four:
//
//   prime        unsigned, big-endian, no leading zeros
//   generator    the same
//   publicKey    the same
//   privateKey   the same; secret

namespace vorl::tool {

namespace {

const std::uint64_t SECRET_BYTES = 128;

struct Number {
    const char* name;
    const char* meaning;
};
const std::vector<Number> GROUP = {{"prime", "prime of the group"}, {"generator", "generator of the group"}};
const std::vector<Number> PAIR = {
    GROUP[0], GROUP[1], {"publicKey", "public key"}, {"privateKey", "private key"}};

// False where they cannot be read to their end.
bool readNumbers(FieldReader& reader, const std::vector<Number>& numbers) {
    for (const Number& number : numbers) {
        if (!reader.readBlock(number.name, number.meaning)) {
            reader.readRest("unread", "cannot be read because of the fault before it");
            return false;
        }
    }
    return true;
}

// What the library says against an encoding; empty where it reads it.
template <class Decode>
std::string formFault(const Decode& decode) {
    try {
        decode();
        return "";
    } catch (const VORLException& fault) {
        return fault.what();
    } catch (const OpenSSLException& fault) {
        return fault.what();
    }
}

void askLibrary(const std::string& fault, Report& report) {
    report.libraryVerdict = fault;
    report.agreesWithLibrary = fault.empty() != report.problem.has_value();
}

// Where the library reads the numbers, and yet would not have written them.
void checkNumbers(FieldReader& reader, const std::vector<SecretBytes>& values,
                  const std::vector<Number>& numbers) {
    for (std::size_t i = 0; i < values.size(); ++i) {
        const bool isZero = values[i].size() == 0;
        if (isZero || values[i].get().front() == 0) {
            reader.setProblem(
                0, "the " + std::string(numbers[i].name) + (isZero ? " is 0" : " has a leading zero byte"));
        }
    }
    const std::uint64_t end = reader.offset();
    reader.readRest("trailing", "belongs to nothing");
    if (reader.offset() > end) {
        reader.setProblem(end,
                          "the numbers end here, but " + bytesText(reader.offset() - end) + " more follow");
    }
}

std::vector<SecretBytes> valuesOf(Buffer& in, std::size_t count) {
    std::vector<SecretBytes> values;
    values.reserve(count);
    while (values.size() < count) {
        values.emplace_back(in.nextOctetString().takeBytes());
    }
    return values;
}

std::string hex(const bytes& number) {
    return Util::toHexString(number, "");
}

// Generators are small: decimal, as everybody writes them.
std::string generatorText(const bytes& generator) {
    if (generator.size() > sizeof(std::uint64_t)) {
        return "0x" + hex(generator);
    }
    std::uint64_t value = 0;
    for (const unsigned char octet : generator) {
        value = value << 8 | octet;
    }
    return std::to_string(value);
}

// A field that shows, or may show, a part of the private key.
void hide(Field& field, const bytes& record) {
    const auto begin = record.begin() + static_cast<std::ptrdiff_t>(field.offset);
    const SecretBytes content(bytes(begin, begin + static_cast<std::ptrdiff_t>(field.length)));
    OPENSSL_cleanse(field.head.data(), field.head.size());
    field.head.clear();
    field.fingerprint = fingerprint(content.get());
}

void hidePrivateKey(const bytes& record, Report& report) {
    for (Field& field : report.fields) {
        if (field.name == "privateKey" || field.name == "unread" || field.name == "trailing") {
            hide(field, record);
        }
    }
}

// A block of one zero, which is read as 0; no bytes would not be written.
OctetString blockOf(const bytes& number) {
    return OctetString(number.empty() ? bytes{0} : number);
}

bool areOf(const DiffieHellmanParams& group, const GroupNumbers& numbers) {
    Buffer encoded;
    encoded.put(blockOf(numbers.prime));
    encoded.put(blockOf(numbers.generator));
    return *DiffieHellmanParams::decode(encoded) == group;
}

}  // namespace

std::uint64_t bitsOf(const bytes& number) {
    const auto first =
        std::find_if(number.begin(), number.end(), [](unsigned char octet) { return octet != 0; });
    if (first == number.end()) {
        return 0;
    }
    std::uint64_t bits = static_cast<std::uint64_t>(number.end() - first - 1) * 8;
    for (unsigned int octet = *first; octet > 0; octet >>= 1) {
        ++bits;
    }
    return bits;
}

bool isAgreementSize(std::uint64_t primeBits) {
    return (primeBits + 7) / 8 == SECRET_BYTES;
}

std::string wrongSizeText(std::uint64_t primeBits) {
    return "the group has " + std::to_string(primeBits) + " bits, and a secret is agreed in one of 1024";
}

GroupNumbers numbersOf(const DiffieHellmanParams& group) {
    Buffer encoded;
    group.encode(encoded);
    const auto next = [&encoded] {
        return encoded.ridx() < encoded.widx() ? encoded.nextOctetString().takeBytes() : bytes();
    };
    GroupNumbers numbers;
    numbers.prime = next();
    numbers.generator = next();
    // A number that is 0 leaves no block behind: the one that is there may be either.
    if (numbers.generator.empty() && !areOf(group, numbers)) {
        std::swap(numbers.prime, numbers.generator);
    }
    return numbers;
}

void addGroupFacts(const GroupNumbers& group, Report& report) {
    report.facts.push_back({"primeBits", "bits in the prime", bitsOf(group.prime)});
    report.facts.push_back({"generator", "generator", generatorText(group.generator)});
    report.facts.push_back({"prime", "prime", hex(group.prime)});
}

void inspectDhParams(const bytes& record, Report& report) {
    report.kind = "dh-params";
    report.title = "Diffie-Hellman parameters";
    report.facts = {{"encoding", "encoding", std::string("blocks")}};
    FieldReader reader(record, report);
    const bool isWhole = readNumbers(reader, GROUP);
    Buffer in(record);
    askLibrary(formFault([&in] { DiffieHellmanParams::decode(in); }), report);
    if (isWhole) {
        Buffer again(record);
        const std::vector<SecretBytes> values = valuesOf(again, GROUP.size());
        checkNumbers(reader, values, GROUP);
        addGroupFacts({values[0].get(), values[1].get()}, report);
    }
    report.unknown = {"whether the prime is one, and a safe one: 'vorl dh params check' tells"};
}

void inspectDhState(const bytes& record, Report& report, Secrets secrets) {
    report.kind = "dh-state";
    report.title = "Diffie-Hellman key pair";
    FieldReader reader(record, report);
    const bool isWhole = readNumbers(reader, PAIR);
    SecretBuffer in(record);
    askLibrary(formFault([&in] { DiffieHellman::decode(in.get()); }), report);
    if (isWhole) {
        SecretBuffer again(record);
        const std::vector<SecretBytes> values = valuesOf(again.get(), PAIR.size());
        checkNumbers(reader, values, PAIR);
        addGroupFacts({values[0].get(), values[1].get()}, report);
        report.facts.push_back({"publicKey", "public key", hex(values[2].get())});
        report.facts.push_back({"privateKey", "private key", secretText(values[3].get(), secrets)});
    }
    if (secrets == Secrets::HIDDEN) {
        hidePrivateKey(record, report);
    }
    report.unknown = {"whether the prime is one, and whether the two keys belong together"};
}

}  // namespace vorl::tool
