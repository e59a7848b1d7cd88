#include "korva/doctor/doctor_command.h"

#include <algorithm>
#include <iterator>

#include "korva/doctor/command_word.h"
#include "korva/doctor/doctor_report.h"
#include "korva/doctor/endpoints_check.h"
#include "korva/doctor/instances_check.h"
#include "korva/doctor/library_check.h"
#include "korva/doctor/modules_check.h"
#include "korva/doctor/processor_check.h"
#include "korva/doctor/registration_check.h"
#include "korva/doctor/registry_check.h"
#include "korva/doctor/telemetry_check.h"
#include "korva/file_path.h"
#include "korva/library_option.h"
#include "korva/registry/registry_errors.h"
#include "korva/standard_streams.h"

namespace korva::tool {
namespace {

void append(Findings& findings, Findings more) {
    std::ranges::move(more, std::back_inserter(findings));
}

/// Of the modules, the registry tells which are needed.
constexpr std::array<Subject, 5> subjectsInRegistry = {
    Subject::registration, Subject::endpoints, Subject::modules, Subject::telemetry, Subject::instances};

DoctorReport examine(const std::filesystem::path& library, const std::string& registerCommand) {
    DoctorReport report;
    const platform::RegistryHealth health = platform::examineRegistry();
    throwIfRefused(health.result, "look at the registry");
    append(report.findings, registryFindings(health, platform::registryPlace()));
    append(report.findings, checkLibrary(library));
    if (isReadable(health)) {
        append(report.findings, checkRegistration(library, registerCommand));
        EndpointsReport endpoints = checkEndpoints();
        append(report.findings, std::move(endpoints.findings));
        append(report.findings, checkModules(library.parent_path(), endpoints.modules));
        append(report.findings, checkTelemetry(endpoints.endpoints));
        append(report.findings, checkInstances());
    } else {
        for (const Subject subject : subjectsInRegistry) {
            report.isSkipped[static_cast<std::size_t>(subject)] = true;
        }
    }
    append(report.findings, processorFindings(processorFacts()));
    std::ranges::stable_sort(report.findings, {}, &Finding::subject);
    return report;
}

}  // namespace

int runDoctor(const DoctorOptions& options) {
    const std::filesystem::path library = libraryFile(options.hasLibrary, options.library);
    const std::string registerCommand = options.hasLibrary
                                            ? "korva register --library " + commandWord(textOfPath(library))
                                            : "korva register";
    const DoctorReport report = examine(library, registerCommand);
    printOutput(options.json ? doctorJson(report) : doctorText(report));
    return report.faults() == 0 ? 0 : 1;
}

}  // namespace korva::tool
