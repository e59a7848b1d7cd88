// How `korva catalogue` reads on the command line, and what it does.
#include <CLI/CLI.hpp>

#include <memory>

#include "korva/catalogue/catalogue_report.h"
#include "korva/command.h"
#include "korva/errors.h"
#include "korva/preset/preset_text.h"
#include "korva/standard_streams.h"
#include "platform/property_key.h"

namespace korva::tool {
namespace {

struct CatalogueOptions {
    std::string engine{};  ///< Empty: all.
    bool json = false;
};

constexpr const char* explanation =
    "Without --engine: the engines with their modules. With it also each parameter, in the order in which\n"
    "parameters are applied: its size in bytes, its place in the preset (chunk, position among the chunk's\n"
    "parameters, and offset in bytes behind the chunk's head while all have their default sizes), its fields,\n"
    "and its default as hexadecimal digits, where 00*N are N zero bytes and - is none.\n"
    "\n"
    "Example:\n"
    "  korva catalogue --engine {c9f475bc-13e4-6150-ae88-790995afc7c1}\n";

const params::ParamLayout& engineOfText(const std::string& text) {
    const params::ParamLayout* const layout = params::FindLayout(platform::GuidFromText(text));
    if (layout == nullptr) {
        fail("--engine takes a known engine, {}, not '{}'", knownEnginesText(), text);
    }
    return *layout;
}

void runCatalogue(const CatalogueOptions& options, bool isOneEngine) {
    if (isOneEngine) {
        const params::ParamLayout& layout = engineOfText(options.engine);
        printOutput(options.json ? engineJson(layout) : engineText(layout));
    } else {
        printOutput(options.json ? enginesJson() : enginesText());
    }
}

}  // namespace

void addCatalogue(CLI::App& line, Commands& commands) {
    const auto options = std::make_shared<CatalogueOptions>();
    CLI::App* const catalogue =
        line.add_subcommand("catalogue", "Show engines, their modules and parameters");
    const CLI::Option* const engine =
        catalogue->add_option("--engine", options->engine, "One engine, with all its parameters")
            ->type_name("GUID");
    catalogue->add_flag("--json", options->json, "Print one JSON value")->disable_flag_override();
    catalogue->footer(explanation);
    commands.push_back({catalogue, [options, engine] {
                            runCatalogue(*options, engine->count() > 0);
                            return 0;
                        }});
}

}  // namespace korva::tool
