#include "shared/report_text.h"

#include "shared/terminal.h"
#include "vorl/Util.h"

#include <algorithm>

namespace vorl::tool {

namespace {

using Row = std::vector<std::string>;

std::string nameText(const Field& field) {
    std::string name = field.name;
    std::replace(name.begin(), name.end(), '.', ' ');
    return field.fragment > 0 ? name + " " + std::to_string(field.fragment) : name;
}

std::string valueText(const Field& field) {
    const std::string more = field.head.size() < field.length ? "..." : "";
    return field.fingerprint.empty() ? Util::toHexString(field.head, "") + more : field.fingerprint;
}

Row fieldRow(const Field& field) {
    return {std::to_string(field.offset), std::to_string(field.length), nameText(field), valueText(field),
            field.meaning};
}

std::string padded(const std::string& text, std::size_t width, bool isNumber) {
    const std::string blanks(width - text.size(), ' ');
    return isNumber ? blanks + text : text + blanks;
}

// The columns are as wide as what they hold; the first two are numbers, the last one needs no filling.
std::string tableText(const std::vector<Row>& rows, const Painter& paint) {
    std::vector<std::size_t> widths(rows.front().size() - 1);
    for (const Row& row : rows) {
        for (std::size_t i = 0; i < widths.size(); ++i) {
            widths[i] = std::max(widths[i], row[i].size());
        }
    }
    std::string table;
    for (const Row& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < widths.size(); ++i) {
            line += padded(row[i], widths[i], i < 2) + "  ";
        }
        line += row.back();
        line.erase(line.find_last_not_of(' ') + 1);
        table += (table.empty() ? paint(Style::BOLD, line) : line) + "\n";
    }
    return table;
}

struct ValueText {
    std::string operator()(const std::string& text) const { return text; }
    std::string operator()(std::uint64_t number) const { return std::to_string(number); }
    std::string operator()(const Range& range) const {
        return range.min == range.max ? std::to_string(range.min)
                                      : std::to_string(range.min) + " to " + std::to_string(range.max);
    }
};

std::string titleText(const Report& report) {
    return report.kind == "unknown" ? "unknown record" : report.title.empty() ? report.kind : report.title;
}

std::string headText(const Report& report) {
    const std::string form = report.isPem ? "PEM text" : report.isBase64 ? "Base64 text" : "raw bytes";
    std::string text =
        titleText(report) + ", given as " + form + ": " + std::to_string(report.recordBytes) + " bytes";
    if (report.isBase64) {
        text += " in " + std::to_string(report.inputBytes) + " characters";
    }
    return text + "\n";
}

}  // namespace

std::string reportText(const Report& report, const Painter& paint) {
    std::string text = headText(report);
    if (!report.fields.empty()) {
        std::vector<Row> rows = {{"offset", "length", "field", "value", "meaning"}};
        std::transform(report.fields.begin(), report.fields.end(), std::back_inserter(rows), fieldRow);
        text += "\n" + tableText(rows, paint) + "\n";
    }
    for (const Fact& fact : report.facts) {
        text += fact.label + ": " + std::visit(ValueText(), fact.value) + "\n";
    }
    if (report.problem) {
        text += paint(Style::BAD, "malformed") + " at " + std::to_string(report.problem->offset) + ": " +
                report.problem->text + "\n";
    }
    if (!report.libraryVerdict.empty()) {
        text += "the library says: " + report.libraryVerdict + "\n";
    }
    if (!report.unknown.empty()) {
        text += "\nThis does not show:\n";
    }
    for (const std::string& unknown : report.unknown) {
        text += "- " + unknown + "\n";
    }
    return text;
}

}  // namespace vorl::tool
