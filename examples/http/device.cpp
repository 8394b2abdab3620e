// A device that agrees keys with its service, sends it a file in protected messages and checks each receipt.
//
//     device URL CERT.pem FILE [FOLDER]
//
// The certificate is the service's; whoever else answers is refused. What went over the wire is kept in
// FOLDER, a file for each record, for "vorl inspect" to show.

#include "DeviceSession.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>

namespace example {

namespace {

const std::size_t PIECE_BYTES = 2000;

vorl::bytes contentOf(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    vorl::bytes content((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (!in) {
        refuse(path + " cannot be read");
    }
    return content;
}

DeviceSession::Keep keepIn(const std::string& folder) {
    return [folder](const std::string& name, const std::string& record) {
        std::ofstream out(folder + "/" + name);
        out << record << '\n' << std::flush;
        if (!out) {
            refuse(folder + "/" + name + " cannot be written");
        }
    };
}

}  // namespace

}  // namespace example

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() != 3 && arguments.size() != 4) {
        std::cerr << "usage: device URL CERT.pem FILE [FOLDER]\n";
        return 2;
    }
    try {
        example::startLibrary();
        const vorl::bytes file = example::contentOf(arguments[2]);
        example::DeviceSession session(arguments[0], arguments[1],
                                       arguments.size() == 4 ? example::keepIn(arguments[3]) : nullptr);
        const std::string name = session.agree();
        std::cout << "agreed on keys, session " << name << std::endl;
        std::size_t sent = 0;
        do {  // an empty file is an empty message
            const auto piece = file.begin() + static_cast<std::ptrdiff_t>(sent);
            const std::size_t size = std::min(example::PIECE_BYTES, file.size() - sent);
            const auto end = piece + static_cast<std::ptrdiff_t>(size);
            const std::string receipt = session.send(vorl::bytes(piece, end));
            std::cout << "receipt: " << receipt << std::endl;
            sent += size;
        } while (sent < file.size());
        return 0;
    } catch (const std::exception& fault) {
        std::cerr << "device: " << fault.what() << '\n';
        return 1;
    }
}
