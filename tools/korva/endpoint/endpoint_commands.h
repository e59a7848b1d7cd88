// korva endpoint ...: the registry's audio endpoints. All give the exit code, and throw `ToolError` when they
// can't do it.
#pragma once

#include <string>

namespace korva::tool {

/// As the command line has them, each still to be checked.
struct EndpointOptions {
    std::string id;
    std::string name;
    bool hasName = false;
    std::string volume;
    bool hasVolume = false;
    bool capture = false;
    bool active = false;
    bool inactive = false;
    bool json = false;
};

/// Prints the identifier alone on its last line.
int runEndpointAdd(const EndpointOptions& options);
int runEndpointList(const EndpointOptions& options);
int runEndpointShow(const EndpointOptions& options);
int runEndpointSet(const EndpointOptions& options);
int runEndpointRemove(const EndpointOptions& options);

}  // namespace korva::tool
