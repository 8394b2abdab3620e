#include "http/signature_base.h"

#include "http/TargetUri.h"
#include "http/ascii.h"
#include "vorl/VORLException.h"

#include <algorithm>
#include <cstddef>
#include <iterator>

namespace tarvik::http {

namespace {

using Fields = IHttpStream::Fields;

[[noreturn]] void refuse(const std::string& problem) {
    throw vorl::VORLException(problem);
}

// The name of a component, and whether it is the answered request's. Nothing where it has other parameters.
struct Component {
    std::string name;
    bool ofRequest;
};

std::optional<Component> identified(const structured::Item& item) {
    const auto* name = std::get_if<std::string>(&item.value);
    if (name == nullptr || name->empty() || item.parameters.size() > 1) {
        return std::nullopt;
    }
    if (item.parameters.empty()) {
        return Component{*name, false};
    }
    const auto& [key, value] = item.parameters.front();
    const bool* flag = std::get_if<bool>(&value);
    if (key != "req" || flag == nullptr || !*flag) {
        return std::nullopt;
    }
    return Component{*name, true};
}

std::string trimmed(const std::string& text) {
    const char blanks[] = " \t";
    const std::size_t first = text.find_first_not_of(blanks);
    return first == std::string::npos ? "" : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// A line of a signature base ends with LF, so that a value with one could pass for two lines.
bool fitsInALine(const std::string& value) {
    return std::all_of(value.begin(), value.end(),
                       [](char c) { return (c >= ' ' && c <= '~') || c == '\t'; });
}

const char* const DERIVED[] = {"@method", "@authority",  "@path",  "@query",
                               "@scheme", "@target-uri", "@status"};

bool isDerived(const std::string& name) {
    return std::find(std::begin(DERIVED), std::end(DERIVED), name) != std::end(DERIVED);
}

bool isFieldName(const std::string& name) {
    return std::all_of(name.begin(), name.end(), [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
               (c != '\0' && std::string("!#$%&'*+-.^_`|~").find(c) != std::string::npos);
    });
}

}  // namespace

std::optional<structured::Item> parseComponent(const std::string& text) {
    const std::string suffix = ";req";
    const bool ofRequest = text.size() > suffix.size() && text.substr(text.size() - suffix.size()) == suffix;
    const std::string name = text.substr(0, text.size() - (ofRequest ? suffix.size() : 0));
    if (name.empty() || (!isDerived(name) && !isFieldName(name))) {
        return std::nullopt;
    }
    structured::Item component{name, {}};
    if (ofRequest) {
        component.parameters.emplace_back("req", true);
    }
    return component;
}

bool isNamed(const Fields::value_type& field, const std::string& lowerCaseName) {
    const std::string& name = field.first;
    return name.size() == lowerCaseName.size() &&
           std::equal(name.begin(), name.end(), lowerCaseName.begin(),
                      [](char own, char lower) { return lowerCase(own) == lower; });
}

std::optional<std::string> fieldValue(const Fields& fields, const std::string& lowerCaseName) {
    std::optional<std::string> value;
    for (const auto& field : fields) {
        if (isNamed(field, lowerCaseName)) {
            value = (value ? *value + ", " : "") + trimmed(field.second);
        }
    }
    return value;
}

SignedMessage::SignedMessage(const IHttpStream::Request& request) : request_(&request) {}

SignedMessage::SignedMessage(const IHttpStream& response)
    : request_(response.request()), response_(&response) {}

const Fields& SignedMessage::fields() const {
    return isResponse() ? response_->fields() : request_->fields;
}

const std::vector<unsigned char>& SignedMessage::body() const {
    return isResponse() ? response_->body() : request_->body;
}

std::string SignedMessage::derived(const std::string& name) const {
    if (name == "@method") {
        return request_->method;
    }
    const std::optional<TargetUri> uri = TargetUri::parse(request_->targetUri);
    if (!uri) {
        refuse("the request's URI is no absolute one of http or https");
    }
    if (name == "@authority") {
        return uri->authority;
    }
    if (name == "@path") {
        return uri->path;
    }
    if (name == "@query") {
        return uri->query;
    }
    if (name == "@scheme") {
        return uri->scheme;
    }
    if (name == "@target-uri") {
        return request_->targetUri;
    }
    refuse("unknown component " + name);
}

std::string SignedMessage::valueOf(const structured::Item& item) const {
    const std::optional<Component> component = identified(item);
    const std::string shown = structured::serialize(item);
    if (!component) {
        refuse("unknown component " + shown);
    }
    if (component->ofRequest && (!isResponse() || request_ == nullptr)) {
        refuse("there is no answered request for component " + shown);
    }
    std::optional<std::string> value;
    if (component->name == "@status" && isResponse() && !component->ofRequest) {
        value = std::to_string(response_->status());
    } else if (component->name.front() == '@') {
        if (isResponse() && !component->ofRequest) {
            refuse("unknown component " + shown + " of a response");
        }
        value = derived(component->name);
    } else if (isFieldName(component->name)) {
        value = fieldValue(component->ofRequest ? request_->fields : fields(), component->name);
    }
    if (!value) {
        refuse("the message has no component " + shown);
    }
    if (!fitsInALine(*value)) {
        refuse("component " + shown + " has characters that cannot be signed");
    }
    return *value;
}

std::string signatureBase(const SignedMessage& message, const structured::InnerList& covered) {
    std::string base;
    for (const structured::Item& component : covered.items) {
        // The value first, which refuses what is not a component.
        const std::string value = message.valueOf(component);
        base += structured::serialize(component) + ": " + value + "\n";
    }
    return base + "\"@signature-params\": " + structured::serialize(covered);
}

}  // namespace tarvik::http
