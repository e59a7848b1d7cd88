#include "korva/registration/registration_commands.h"

#include <filesystem>

#include "korva/errors.h"
#include "korva/file_path.h"
#include "korva/host/audio_object_library.h"
#include "korva/json.h"
#include "korva/library_option.h"
#include "korva/standard_streams.h"
#include "platform/registry.h"

namespace korva::tool {
namespace {

void print(Registration registration, const RegistrationOptions& options, const std::string& file) {
    const std::string place = platform::registryPlace();
    const bool isAdded = registration == Registration::add;
    if (options.json) {
        const Json json = {{"library", file}, {"registry", place}, {"registered", isAdded}};
        printOutput(json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n");
    } else {
        const std::string classes = fmt::format("the classes of {}", asOneLine(file));
        printOutput(isAdded ? fmt::format("registered {} in {}\n", classes, asOneLine(place))
                            : fmt::format("took {} out of {}\n", classes, asOneLine(place)));
    }
}

}  // namespace

void runRegistration(Registration registration, const RegistrationOptions& options) {
    const std::filesystem::path file = libraryFile(options.hasLibrary, options.library);
    const AudioObjectLibrary library(file);
    if (registration == Registration::add) {
        library.registerClasses();
    } else {
        library.unregisterClasses();
    }
    print(registration, options, textOfPath(file));
}

}  // namespace korva::tool
