#ifndef EXAMPLES_HTTP_BOUNDEDSERVER_H
#define EXAMPLES_HTTP_BOUNDEDSERVER_H

#include <httplib.h>

#include <cstddef>
#include <optional>
#include <string>

namespace example {

/// An HTTP server on this machine that bounds what a request may take, and that refuses in one way.
///
/// The octets and the time of each request are counted as they come in, whatever it claims about itself. What
/// is not answered with status 200 is answered by the same octets, and the connection ends. How many
/// connections wait for a thread is not bounded here: that is left to whatever stands in front.
class BoundedServer : public httplib::Server {
public:
    static constexpr std::size_t MOST_BODY_BYTES = 65536;

    BoundedServer();

    /// SIGTERM and SIGINT, for serveUntilSignal(); to be called before there are other threads, which take it
    /// over.
    static void blockSignals();

    /// The port, or 0 for one that the system chooses, which is returned. Throws std::runtime_error where it
    /// is not to be had.
    int bind(int port);
    /// Answers requests until one of the signals that blockSignals() has blocked; requests that were read by
    /// then are answered.
    void serveUntilSignal();

    /// What speaks against reading the body of a request; nothing where there is nothing.
    static std::optional<std::string> faultOf(const httplib::Request& request);

private:
    bool process_and_close_socket(socket_t socket) override;
};

}  // namespace example

#endif
