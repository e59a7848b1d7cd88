#include "korva/endpoint/temporary_endpoint.h"

#include "korva/endpoint/endpoint_registry.h"
#include "korva/errors.h"

namespace korva::tool {

TemporaryEndpoint::TemporaryEndpoint(const std::string& name) : identifier(makeEndpoint({.name = name})) {}

// Somebody else may have removed it.
TemporaryEndpoint::~TemporaryEndpoint() {
    try {
        removeEndpoint(placeOfId(identifier));
    } catch (const ToolError& error) {
        printNotice(error.what());
    }
}

}  // namespace korva::tool
