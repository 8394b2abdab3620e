#ifndef EXAMPLES_HTTP_DEVICESESSION_H
#define EXAMPLES_HTTP_DEVICESESSION_H

#include "BoundedClient.h"
#include "protocol.h"

#include <functional>
#include <memory>
#include <string>

namespace example {

/// The device's end of the protocol: agrees on keys with its service, then sends messages and checks what
/// comes back. What does not hold ends in an exception that says why; the session is then of no more use.
class DeviceSession {
public:
    /// Takes each record that goes over the wire, by a name for it.
    using Keep = std::function<void(const std::string& name, const std::string& record)>;

    /// `url` is the service's, by http and without a path; the certificate, a PEM file, proves that it is.
    DeviceSession(std::string url, const std::string& certificate, Keep keep = nullptr);

    /// The name of the session.
    std::string agree();
    /// What the receipt says.
    std::string send(const vorl::bytes& message);

private:
    using Request = tarvik::http::IHttpStream::Request;

    Request requestFor(const std::string& path, const std::string& line) const;
    tarvik::http::HttpResponse exchange(const Request& request);
    bool isSigned(const vorl::bytes& data, const std::string& signature) const;

    std::string url_;
    BoundedClient client_;
    std::shared_ptr<const vorl::X509Cert> certificate_;
    Keep keep_;
    std::string session_;
    std::unique_ptr<vorl::VorlContext> context_;
};

}  // namespace example

#endif
