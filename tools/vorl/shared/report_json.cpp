#include "shared/report_json.h"

#include "vorl/Util.h"

#include <nlohmann/json.hpp>

namespace vorl::tool {

// The members stay in the order in which they are written here.
using Json = nlohmann::ordered_json;

namespace {

Json fieldJson(const Field& field) {
    Json json = {{"name", field.name}, {"offset", field.offset}, {"length", field.length}};
    if (field.fragment > 0) {
        json["fragment"] = field.fragment;
    }
    json["value"] = Util::toHexString(field.head, "");
    json["valueIsComplete"] = field.head.size() == field.length;
    if (!field.fingerprint.empty()) {
        json["fingerprint"] = field.fingerprint;
    }
    json["meaning"] = field.meaning;
    return json;
}

struct ValueJson {
    Json operator()(const std::string& text) const { return text; }
    Json operator()(std::uint64_t number) const { return number; }
    Json operator()(const Range& range) const { return {{"min", range.min}, {"max", range.max}}; }
};

}  // namespace

std::string reportJson(const Report& report) {
    Json json = {{"kind", report.kind},
                 {"form", report.isPem      ? "pem"
                          : report.isBase64 ? "base64"
                                            : "raw"},
                 {"inputBytes", report.inputBytes},
                 {"recordBytes", report.recordBytes}};
    json["facts"] = Json::object();
    for (const Fact& fact : report.facts) {
        json["facts"][fact.name] = std::visit(ValueJson(), fact.value);
    }
    json["fields"] = Json::array();
    for (const Field& field : report.fields) {
        json["fields"].push_back(fieldJson(field));
    }
    json["isWellFormed"] = !report.problem.has_value();
    json["problem"] = nullptr;
    if (report.problem) {
        json["problem"] = {{"offset", report.problem->offset}, {"text", report.problem->text}};
    }
    json["libraryVerdict"] = report.libraryVerdict;
    json["unknown"] = report.unknown;
    return json.dump(2) + "\n";
}

}  // namespace vorl::tool
