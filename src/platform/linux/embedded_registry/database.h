// An open registry file.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "embedded_registry/bell.h"
#include "embedded_registry/listener.h"
#include "embedded_registry/reader.h"
#include "embedded_registry/writer.h"

namespace korva::platform::embedded {

/// Shared by the open keys of a file. Members throw `Failure`.  [any]
class Database {
public:
    /// The file that is the registry now. It is opened once, and stays open until another one is asked for
    /// and its keys are closed.  [blocks]
    [[nodiscard]] static std::shared_ptr<Database> current();

    /// Opens the file; makes it if it is missing.  [blocks]
    explicit Database(const std::string& path);
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    /// Whether a file of that path would be this one.
    [[nodiscard]] bool isAt(const std::string& path) const noexcept;

    /// Finds the key of a root, and makes it if it is missing.  [blocks]
    [[nodiscard]] RegistryResult findRoot(RegistryRoot root, KeyChain& found);

private:
    /// What the system tells files apart by.
    struct Identity {
        std::uint64_t device = 0;
        std::uint64_t file = 0;
        bool operator==(const Identity&) const = default;
    };
    static Identity identityOf(const std::string& path) noexcept;

    const std::string path;
    const std::string file;  ///< The same without links: all processes find what is beside it in one place.
    const std::unique_ptr<Connection> writing;
    const Identity identity;

public:
    Reader reader;
    Bell bell;
    Writer writer;
    Listener listener;
};

}  // namespace korva::platform::embedded
