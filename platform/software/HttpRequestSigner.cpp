#include "tarvik/crypto/HttpRequestSigner.h"

#include "brisclient/Base64.h"
#include "http/NonceMemory.h"
#include "http/content_digest.h"
#include "http/signature_base.h"
#include "http/structured_fields.h"
#include "vorl/HMAC.h"
#include "vorl/OpenSSLException.h"
#include "vorl/Random.h"
#include "vorl/VORLException.h"

#include <openssl/crypto.h>

#include <algorithm>
#include <ctime>
#include <iterator>
#include <utility>

// On the wire (RFC 9421, RFC 9530), each in one line:
//
//   Content-Digest:  sha-256=:BASE64:
//   Signature-Input: vorl=("@method" "@authority" "@path" "@query" "content-digest"
//   "content-type");created=SECONDS;
//                    expires=SECONDS;nonce="BASE64";keyid="TEXT";alg="hmac-sha256";tag="vorl-1"
//   Signature:       vorl=:BASE64:

namespace tarvik::crypto {

namespace {

using http::IHttpStream;
using http::SignedMessage;
using http::structured::BareItem;
using http::structured::Dictionary;
using http::structured::InnerList;
using http::structured::Item;
using Octets = std::vector<unsigned char>;
using Fields = IHttpStream::Fields;

const char ALGORITHM[] = "hmac-sha256";
const char CONTENT_DIGEST[] = "content-digest";
const char SIGNATURE_INPUT[] = "signature-input";
const char SIGNATURE[] = "signature";
const char KEY_LABEL[] = "libVORL HTTP request signing key";

const std::size_t CODE_BYTES = 32;
const unsigned int NONCE_BYTES = 16;
// What a message may make us look at before its signature is known to hold.
const std::size_t MOST_COMPONENTS = 16;
const std::size_t MOST_FIELD_BYTES = 8192;
const std::size_t MOST_NONCE_CHARACTERS = 64;
// How far the clocks of two machines may be apart, and how long a message may travel.
const std::int64_t MOST_SECONDS_AHEAD = 5;
const std::int64_t MOST_SECONDS_OLD = 300;
// What an Integer of a structured field carries.
const std::int64_t MOST_SECONDS = 999999999999999;

[[noreturn]] void refuse(const std::string& problem) {
    throw vorl::VORLException(problem);
}

Octets codeOf(const Octets& key, const std::string& text) {
    vorl::HMAC hmac(key);
    hmac.update(Octets(text.begin(), text.end()));
    Octets code = hmac.final();
    // An HMAC reports a failure of OpenSSL by an empty code.
    if (code.size() != CODE_BYTES) {
        refuse("the signature's HMAC cannot be computed");
    }
    return code;
}

bool isEqual(const Item& one, const Item& other) {
    return serialize(one) == serialize(other);
}

bool covers(const std::vector<Item>& components, const Item& component) {
    return std::any_of(components.begin(), components.end(),
                       [&](const Item& covered) { return isEqual(covered, component); });
}

bool coversDigest(const std::vector<Item>& components) {
    return covers(components, Item{CONTENT_DIGEST, {}});
}

bool hasDuplicates(const std::vector<Item>& components) {
    for (auto item = components.begin(); item != components.end(); ++item) {
        if (std::any_of(std::next(item), components.end(),
                        [&](const Item& later) { return isEqual(*item, later); })) {
            return true;
        }
    }
    return false;
}

std::size_t sizeOf(const Fields& fields) {
    std::size_t size = 0;
    for (const auto& [name, value] : fields) {
        size += name.size() + value.size();
    }
    return size;
}

// The member under the label. Nothing where there is none, or where the field cannot be read.
template <typename Kind>
std::optional<Kind> memberOf(const Fields& fields, const char* name, const std::string& label) {
    const std::optional<std::string> value = http::fieldValue(fields, name);
    const std::optional<Dictionary> dictionary =
        value ? http::structured::parseDictionary(*value) : std::nullopt;
    const auto* member = dictionary ? find(*dictionary, label) : nullptr;
    const Kind* found = member == nullptr ? nullptr : std::get_if<Kind>(member);
    return found == nullptr ? std::nullopt : std::optional<Kind>(*found);
}

template <typename Kind>
const Kind* parameter(const InnerList& list, const char* name) {
    const BareItem* value = find(list.parameters, name);
    return value == nullptr ? nullptr : std::get_if<Kind>(value);
}

// Takes off what an earlier signature of the label has left, so that one request can be signed again.
void removeSignature(Fields& fields, const std::string& label) {
    const auto isOwn = [&](const Fields::value_type& field) {
        if (!http::isNamed(field, SIGNATURE_INPUT) && !http::isNamed(field, SIGNATURE)) {
            return false;
        }
        const std::optional<Dictionary> dictionary = http::structured::parseDictionary(field.second);
        if (!dictionary) {
            refuse("the message has a field " + field.first + " that cannot be read");
        }
        const bool hasLabel = find(*dictionary, label) != nullptr;
        if (hasLabel && dictionary->size() > 1) {
            refuse("the message has a signature " + label + " beside others in one field");
        }
        return hasLabel;
    };
    fields.erase(std::remove_if(fields.begin(), fields.end(), isOwn), fields.end());
}

void setContentDigest(Fields& fields, const Octets& body) {
    const std::optional<std::string> present = http::fieldValue(fields, CONTENT_DIGEST);
    if (present && http::isContentDigestOf(*present, body)) {
        // Somebody else's signature may cover it, and what it has beside the SHA-256.
        return;
    }
    fields.erase(std::remove_if(fields.begin(), fields.end(),
                                [](const auto& field) { return http::isNamed(field, CONTENT_DIGEST); }),
                 fields.end());
    fields.emplace_back("Content-Digest", http::contentDigest(body));
}

// What the software platform covers of a message.
std::vector<Item> usualComponents(const SignedMessage& message) {
    std::vector<Item> components;
    const auto add = [&](const char* name) { components.push_back(*http::parseComponent(name)); };
    if (!message.isResponse()) {
        for (const char* name : {"@method", "@authority", "@path", "@query"}) {
            add(name);
        }
        if (!message.body().empty()) {
            add(CONTENT_DIGEST);
            add("content-type");
        }
        return components;
    }
    add("@status");
    add(CONTENT_DIGEST);
    if (message.request() != nullptr) {
        for (const char* name : {"@method;req", "@authority;req", "@path;req", "@query;req"}) {
            add(name);
        }
        const Fields& asked = message.request()->fields;
        if (http::fieldValue(asked, CONTENT_DIGEST)) {
            add("content-digest;req");
        }
        // It differs between two requests that are the same in all else.
        if (http::fieldValue(asked, SIGNATURE)) {
            add("signature;req");
        }
    }
    return components;
}

// A signature is added to these fields, which then are others than it was computed of.
bool isFieldOfSignatures(const Item& component) {
    return isEqual(component, Item{SIGNATURE_INPUT, {}}) || isEqual(component, Item{SIGNATURE, {}});
}

std::vector<Item> parsedComponents(const std::vector<std::string>& texts) {
    if (texts.size() > MOST_COMPONENTS) {
        refuse(std::to_string(texts.size()) + " components are too many, " + std::to_string(MOST_COMPONENTS) +
               " are verified at the most");
    }
    std::vector<Item> components;
    for (const std::string& text : texts) {
        std::optional<Item> component = http::parseComponent(text);
        if (!component) {
            refuse("unknown component " + text);
        }
        if (isFieldOfSignatures(*component)) {
            refuse("a signature cannot cover the field " + text + " that it becomes a part of");
        }
        components.push_back(std::move(*component));
    }
    if (hasDuplicates(components)) {
        refuse("a component stands twice");
    }
    return components;
}

std::int64_t writable(std::int64_t seconds) {
    if (seconds < -MOST_SECONDS || seconds > MOST_SECONDS) {
        refuse("the signature's time cannot be written");
    }
    return seconds;
}

std::shared_ptr<const HttpSignatureProfile> usualProfile() {
    // One for all signers.
    static const auto& profile = *new auto(std::make_shared<const HttpSignatureProfile>());
    return profile;
}

}  // namespace

// What is the same for both directions: how a message is signed, and how a signature is judged.
class __attribute__((visibility("hidden"))) HttpRequestSigner::Engine {
public:
    Engine(const Octets& key, std::shared_ptr<const HttpSignatureProfile> profile)
        : profile_(std::move(profile)), components_(parsedComponents(profile_->components)) {
        if (key.empty()) {
            refuse("the signing key is empty");
        }
        if (!http::structured::isKey(profile_->label) || !http::structured::isString(profile_->tag)) {
            refuse("the signature's label or tag cannot be written");
        }
        if (profile_->lifetime < 0) {
            refuse("the signature's lifetime is negative");
        }
        writable(profile_->lifetime);
        checkParameters();
        // Behind all that may throw: no destructor wipes a half-made object.
        key_ = key;
    }
    ~Engine() { OPENSSL_cleanse(key_.data(), key_.size()); }

    Engine(const Engine&) = delete;
    Engine& operator=(const Engine&) = delete;

    // `fields` are those of the message; on failure, as they were.
    void sign(const std::string& keyid, const SignedMessage& message, Fields& fields) const;
    bool verify(const std::string& keyid, const SignedMessage& message);
    // Of a signed message.
    std::string base(const SignedMessage& message) const;
    const std::string& label() const { return profile_->label; }

private:
    void checkParameters() const;
    std::int64_t now() const;
    std::vector<Item> componentsOf(const SignedMessage& message) const;
    InnerList inputFor(const std::string& keyid, const SignedMessage& message) const;
    BareItem parameterFor(const std::string& name, const std::string& keyid, std::int64_t created) const;

    bool holds(const std::string& keyid, const SignedMessage& message);
    bool isByThisKey(const InnerList& input, const std::string& keyid) const;
    bool coversEnough(const InnerList& input, const SignedMessage& message) const;
    bool isCodeOf(const std::string& base, const Octets& code) const;
    bool isInTime(const InnerList& input, std::int64_t now) const;
    bool isFirst(const InnerList& input, std::int64_t now);

    Octets key_;
    std::shared_ptr<const HttpSignatureProfile> profile_;
    // Those of the profile; none where they go by the message.
    std::vector<Item> components_;
    std::unique_ptr<http::NonceMemory> nonces_;
};

void HttpRequestSigner::Engine::checkParameters() const {
    const std::vector<std::string> known = HttpSignatureProfile().parameters;
    const std::vector<std::string>& names = profile_->parameters;
    for (auto name = names.begin(); name != names.end(); ++name) {
        if (std::find(known.begin(), known.end(), *name) == known.end()) {
            refuse("unknown signature parameter " + *name);
        }
        if (std::find(std::next(name), names.end(), *name) != names.end()) {
            refuse("signature parameter " + *name + " stands twice");
        }
    }
}

std::int64_t HttpRequestSigner::Engine::now() const {
    return writable(profile_->clock ? profile_->clock() : static_cast<std::int64_t>(std::time(nullptr)));
}

std::vector<Item> HttpRequestSigner::Engine::componentsOf(const SignedMessage& message) const {
    return components_.empty() ? usualComponents(message) : components_;
}

BareItem HttpRequestSigner::Engine::parameterFor(const std::string& name, const std::string& keyid,
                                                 std::int64_t created) const {
    if (name == "created") {
        return created;
    }
    if (name == "expires") {
        return writable(created + profile_->lifetime);
    }
    if (name == "nonce") {
        const Octets text = Tarvik::BrisClient::Base64::encode(vorl::Random::next(NONCE_BYTES));
        return std::string(text.begin(), text.end());
    }
    if (name == "keyid") {
        return keyid;
    }
    return name == "alg" ? std::string(ALGORITHM) : profile_->tag;
}

InnerList HttpRequestSigner::Engine::inputFor(const std::string& keyid, const SignedMessage& message) const {
    InnerList input{componentsOf(message), {}};
    const std::int64_t created = now();
    for (const std::string& name : profile_->parameters) {
        input.parameters.emplace_back(name, parameterFor(name, keyid, created));
    }
    return input;
}

void HttpRequestSigner::Engine::sign(const std::string& keyid, const SignedMessage& message,
                                     Fields& fields) const {
    if (!http::structured::isString(keyid)) {
        refuse("the keyid has characters that cannot be signed");
    }
    Fields before = fields;
    try {
        removeSignature(fields, label());
        if (coversDigest(componentsOf(message))) {
            setContentDigest(fields, message.body());
        }
        const InnerList input = inputFor(keyid, message);
        const Octets code = codeOf(key_, http::signatureBase(message, input));
        fields.emplace_back("Signature-Input", label() + "=" + serialize(input));
        fields.emplace_back("Signature", label() + "=" + http::structured::serialize(code));
        // Lines that can be read one by one may be no field together.
        if (!memberOf<InnerList>(fields, SIGNATURE_INPUT, label()) ||
            !memberOf<Item>(fields, SIGNATURE, label())) {
            refuse("the message has signatures of others that cannot be read");
        }
        if (const std::size_t size = sizeOf(fields); size > MOST_FIELD_BYTES) {
            refuse("the signed message has " + std::to_string(size) + " bytes of fields, " +
                   std::to_string(MOST_FIELD_BYTES) + " are verified at the most");
        }
    } catch (...) {
        fields.swap(before);
        throw;
    }
}

bool HttpRequestSigner::Engine::verify(const std::string& keyid, const SignedMessage& message) {
    try {
        return holds(keyid, message);
    } catch (const vorl::VORLException&) {
        return false;
    } catch (const vorl::OpenSSLException&) {
        return false;
    }
}

// Cheap questions first; a nonce is kept only of a signature that holds, so that nobody else can fill the
// memory.
bool HttpRequestSigner::Engine::holds(const std::string& keyid, const SignedMessage& message) {
    if (sizeOf(message.fields()) > MOST_FIELD_BYTES) {
        return false;
    }
    const auto input = memberOf<InnerList>(message.fields(), SIGNATURE_INPUT, label());
    const auto signature = memberOf<Item>(message.fields(), SIGNATURE, label());
    if (!input || !signature || input->items.size() > MOST_COMPONENTS) {
        return false;
    }
    // No signature covers its own parameters in that field, and none are defined.
    if (!signature->parameters.empty()) {
        return false;
    }
    if (!isByThisKey(*input, keyid) || !coversEnough(*input, message)) {
        return false;
    }
    // Refuses components that are unknown or missing.
    const std::string base = http::signatureBase(message, *input);
    const std::int64_t time = now();
    if (!isInTime(*input, time)) {
        return false;
    }
    if (coversDigest(input->items) &&
        !http::isContentDigestOf(*http::fieldValue(message.fields(), CONTENT_DIGEST), message.body())) {
        return false;
    }
    const auto* code = std::get_if<Octets>(&signature->value);
    return code != nullptr && isCodeOf(base, *code) && isFirst(*input, time);
}

bool HttpRequestSigner::Engine::isCodeOf(const std::string& base, const Octets& code) const {
    Octets expected = codeOf(key_, base);
    const bool isEqual =
        code.size() == CODE_BYTES && CRYPTO_memcmp(code.data(), expected.data(), CODE_BYTES) == 0;
    // To whoever has sent another one, it is a signature.
    OPENSSL_cleanse(expected.data(), expected.size());
    return isEqual;
}

// The key decides on the algorithm: what the message says of it can only be wrong.
bool HttpRequestSigner::Engine::isByThisKey(const InnerList& input, const std::string& keyid) const {
    for (const std::string& name : profile_->parameters) {
        if (find(input.parameters, name) == nullptr) {
            return false;
        }
    }
    const auto says = [&](const char* name, const std::string& value, bool isNeeded) {
        if (find(input.parameters, name) == nullptr) {
            return !isNeeded;
        }
        const auto* said = parameter<std::string>(input, name);
        return said != nullptr && *said == value;
    };
    const auto& names = profile_->parameters;
    const bool isTagged = std::find(names.begin(), names.end(), "tag") != names.end();
    return says("keyid", keyid, true) && says("alg", ALGORITHM, false) &&
           (!isTagged || says("tag", profile_->tag, true));
}

bool HttpRequestSigner::Engine::coversEnough(const InnerList& input, const SignedMessage& message) const {
    const std::vector<Item> required = componentsOf(message);
    return !input.items.empty() && !hasDuplicates(input.items) &&
           std::all_of(required.begin(), required.end(),
                       [&](const Item& component) { return covers(input.items, component); });
}

bool HttpRequestSigner::Engine::isInTime(const InnerList& input, std::int64_t now) const {
    const auto* created = parameter<std::int64_t>(input, "created");
    if (created == nullptr || *created < now - MOST_SECONDS_OLD || *created > now + MOST_SECONDS_AHEAD) {
        return false;
    }
    const bool hasExpiry = find(input.parameters, "expires") != nullptr;
    const auto* expires = parameter<std::int64_t>(input, "expires");
    return !hasExpiry || (expires != nullptr && *expires >= now);
}

bool HttpRequestSigner::Engine::isFirst(const InnerList& input, std::int64_t now) {
    const auto* nonce = parameter<std::string>(input, "nonce");
    if (nonce == nullptr) {
        // None is needed where the profile has none; one of another type is no nonce.
        return find(input.parameters, "nonce") == nullptr;
    }
    if (nonce->size() > MOST_NONCE_CHARACTERS) {
        return false;
    }
    if (!nonces_) {
        nonces_ = std::make_unique<http::NonceMemory>(profile_->mostNonces);
    }
    return nonces_->take(*nonce, now, *parameter<std::int64_t>(input, "created") + MOST_SECONDS_OLD);
}

std::string HttpRequestSigner::Engine::base(const SignedMessage& message) const {
    const auto input = memberOf<InnerList>(message.fields(), SIGNATURE_INPUT, label());
    if (!input) {
        refuse("the message has no signature " + label());
    }
    return http::signatureBase(message, *input);
}

HttpRequestSigner::HttpRequestSigner(const Octets& key)
    : engine_(std::make_unique<Engine>(key, usualProfile())) {}

HttpRequestSigner::HttpRequestSigner(const Octets& key, const HttpSignatureProfile& profile)
    : engine_(std::make_unique<Engine>(key, std::make_shared<const HttpSignatureProfile>(profile))) {}

HttpRequestSigner::~HttpRequestSigner() = default;

Octets HttpRequestSigner::keyOfContext(const Octets& contextKey) {
    if (contextKey.empty()) {
        refuse("the key of the context is empty");
    }
    return codeOf(contextKey, KEY_LABEL);
}

void HttpRequestSigner::sign(const std::string& keyid, IHttpStream::Request& request) {
    engine_->sign(keyid, SignedMessage(request), request.fields);
}

bool HttpRequestSigner::verify(const std::string& keyid, IHttpStream& stream) {
    return engine_->verify(keyid, SignedMessage(stream));
}

void HttpRequestSigner::signResponse(const std::string& keyid, http::HttpResponse& response) {
    engine_->sign(keyid, SignedMessage(response), response.headerFields);
}

bool HttpRequestSigner::verifyRequest(const std::string& keyid, const IHttpStream::Request& request) {
    return engine_->verify(keyid, SignedMessage(request));
}

std::optional<std::string> HttpRequestSigner::keyidOf(const Fields& fields, const std::string& label) {
    if (sizeOf(fields) > MOST_FIELD_BYTES) {
        return std::nullopt;
    }
    const auto input = memberOf<InnerList>(fields, SIGNATURE_INPUT, label);
    const auto* keyid = input ? parameter<std::string>(*input, "keyid") : nullptr;
    return keyid == nullptr ? std::nullopt : std::optional<std::string>(*keyid);
}

std::string HttpRequestSigner::signatureBase(const std::string& keyid,
                                             const IHttpStream::Request& request) const {
    if (memberOf<InnerList>(request.fields, SIGNATURE_INPUT, engine_->label())) {
        return engine_->base(SignedMessage(request));
    }
    IHttpStream::Request signedRequest = request;
    engine_->sign(keyid, SignedMessage(signedRequest), signedRequest.fields);
    return engine_->base(SignedMessage(signedRequest));
}

std::string HttpRequestSigner::signatureBase(const std::string& keyid,
                                             const http::HttpResponse& response) const {
    if (memberOf<InnerList>(response.headerFields, SIGNATURE_INPUT, engine_->label())) {
        return engine_->base(SignedMessage(response));
    }
    http::HttpResponse signedResponse = response;
    engine_->sign(keyid, SignedMessage(signedResponse), signedResponse.headerFields);
    return engine_->base(SignedMessage(signedResponse));
}

}  // namespace tarvik::crypto
