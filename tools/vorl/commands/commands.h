#ifndef VORL_TOOL_COMMANDS_COMMANDS_H
#define VORL_TOOL_COMMANDS_COMMANDS_H

#include "shared/exit_status.h"

#include <functional>

namespace vorl::tool {

class CommandOptions;

/// What a command does once its arguments are known.
using Run = std::function<ExitStatus()>;

/// Each adds its options to `command` and returns what they are for.
Run declareProtect(CommandOptions& command);
Run declareUnprotect(CommandOptions& command);
Run declareInspect(CommandOptions& command);
Run declareExplain(CommandOptions& command);
Run declareDigest(CommandOptions& command);
Run declareHmac(CommandOptions& command);
Run declareDhParamsNew(CommandOptions& command);
Run declareDhParamsShow(CommandOptions& command);
Run declareDhParamsCheck(CommandOptions& command);
Run declareDhNew(CommandOptions& command);
Run declareDhPub(CommandOptions& command);
Run declareDhSecret(CommandOptions& command);
Run declareKeysDerive(CommandOptions& command);
Run declareSign(CommandOptions& command);
Run declareVerify(CommandOptions& command);
Run declareHttpBase(CommandOptions& command);
Run declareHttpSign(CommandOptions& command);
Run declareHttpVerify(CommandOptions& command);
Run declareCertShow(CommandOptions& command);
Run declareCertCheck(CommandOptions& command);
Run declareVectors(CommandOptions& command);
Run declarePlatformCheck(CommandOptions& command);
Run declareDoctor(CommandOptions& command);

/// The first words of commands that have several, such as "dh params" of "dh params new".
struct CommandGroup {
    const char* name;
    const char* description;
};

/// A group stands behind the group that it belongs to.
inline constexpr CommandGroup COMMAND_GROUPS[] = {
    {"dh", "Agree on a secret with a party that shares no key"},
    {"dh params", "Make and judge the groups that an agreement takes place in"},
    {"keys", "Derive the keys of a client"},
    {"http", "Sign HTTP messages, or verify their signatures"},
    {"cert", "Show or judge a certificate"},
    {"platform", "Judge the platform that the library stands on"},
};

struct Command {
    /// All words, for example "dh params new".
    const char* name;
    const char* description;
    Run (*declare)(CommandOptions& command);
};

/// In the order in which the help shows them.
inline constexpr Command COMMANDS[] = {
    {"protect", "Put a message into an envelope", declareProtect},
    {"unprotect", "Take the message out of an envelope", declareUnprotect},
    {"inspect", "Show field by field what a record is made of; takes no key", declareInspect},
    {"explain", "Show which check of a receiver refuses a record, and why", declareExplain},
    {"digest", "Compute the digest of an input", declareDigest},
    {"hmac", "Compute or verify the authentication code of an input", declareHmac},
    {"dh params new", "Search for a new group", declareDhParamsNew},
    {"dh params show", "Show the numbers of a group", declareDhParamsShow},
    {"dh params check", "Let OpenSSL judge a group", declareDhParamsCheck},
    {"dh new", "Make a key pair in a group", declareDhNew},
    {"dh pub", "Write the text to send to the peer", declareDhPub},
    {"dh secret", "Compute the secret that is shared with a peer", declareDhSecret},
    {"keys derive", "Derive the encryption key and the HMAC key of a client", declareKeysDerive},
    {"sign", "Sign an input with a private key", declareSign},
    {"verify", "Verify a signature with a public key or a certificate", declareVerify},
    {"http base", "Show what the signature of an HTTP message is computed of", declareHttpBase},
    {"http sign", "Sign an HTTP message", declareHttpSign},
    {"http verify", "Verify the signature of an HTTP message", declareHttpVerify},
    {"cert show", "Show what a certificate says", declareCertShow},
    {"cert check", "Judge the time and the key of a certificate", declareCertCheck},
    {"vectors", "Write sample records for the tests of other implementations", declareVectors},
    {"platform check", "Hold the platform against all that the library asks of one", declarePlatformCheck},
    {"doctor", "Check what the tool depends on", declareDoctor},
};

}  // namespace vorl::tool

#endif
