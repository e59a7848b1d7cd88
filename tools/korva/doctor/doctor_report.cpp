#include "korva/doctor/doctor_report.h"

#include <fmt/core.h>

#include <algorithm>

#include "korva/errors.h"
#include "korva/json.h"

namespace korva::tool {
namespace {

const char* severityName(Severity severity) {
    return severity == Severity::fault ? "fault" : "remark";
}

const char* subjectName(Subject subject) {
    return subjectNames[static_cast<std::size_t>(subject)];
}

std::string findingText(const Finding& finding) {
    std::string text = fmt::format("{}: {}\n  cause: {}\n", severityName(finding.severity),
                                   asOneLine(finding.what), asOneLine(finding.cause));
    if (!finding.remedy.empty()) {
        text += fmt::format("  remedy: {}\n", asOneLine(finding.remedy));
    }
    return text;
}

std::string sumText(std::size_t faults) {
    return faults == 0 ? "no fault\n" : fmt::format("{} fault{}\n", faults, faults == 1 ? "" : "s");
}

}  // namespace

std::size_t DoctorReport::faults() const {
    return static_cast<std::size_t>(std::ranges::count(findings, Severity::fault, &Finding::severity));
}

std::string doctorText(const DoctorReport& report) {
    std::string text;
    for (std::size_t i = 0; i < subjectNames.size(); ++i) {
        bool isFound = false;
        for (const Finding& finding : report.findings) {
            if (static_cast<std::size_t>(finding.subject) == i) {
                text += findingText(finding);
                isFound = true;
            }
        }
        if (!isFound) {
            text += fmt::format("{}: {}\n", report.isSkipped[i] ? "skipped" : "ok", subjectNames[i]);
        }
    }
    return text + sumText(report.faults());
}

std::string doctorJson(const DoctorReport& report) {
    Json findings = Json::array();
    for (const Finding& finding : report.findings) {
        findings.push_back({{"subject", subjectName(finding.subject)},
                            {"severity", severityName(finding.severity)},
                            {"what", finding.what},
                            {"cause", finding.cause},
                            {"remedy", finding.remedy}});
    }
    const Json json = {{"faults", report.faults()}, {"findings", std::move(findings)}};
    return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace korva::tool
