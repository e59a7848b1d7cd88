// korva registry ...: the registry at hand. All throw `ToolError` when they can't do it, and `Interrupted`.
#pragma once

#include <string>
#include <vector>

namespace korva::tool {

/// As the command line has them, each still to be checked.
struct RegistryOptions {
    std::string key;
    std::string name;
    bool hasName = false;
    std::string type;
    std::vector<std::string> data;
    std::string file;
    bool json = false;
};

void runRegistryList(const RegistryOptions& options);
void runRegistryGet(const RegistryOptions& options);
void runRegistrySet(const RegistryOptions& options);
void runRegistryCreate(const RegistryOptions& options);
/// Without a name: the key, with all below it.
void runRegistryDelete(const RegistryOptions& options);
/// Goes on until Ctrl-C.
void runRegistryWatch(const RegistryOptions& options);
/// All of the file, or nothing.
void runRegistryImport(const RegistryOptions& options);
void runRegistryExport(const RegistryOptions& options);

}  // namespace korva::tool
