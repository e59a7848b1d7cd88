// Seeing files come into a folder, without asking again and again.
#pragma once

#include <string>

namespace korva::test {

/// Watches a folder from its construction on.
class FolderWatch {
public:
    explicit FolderWatch(const std::string& folder);
    ~FolderWatch();
    FolderWatch(const FolderWatch&) = delete;
    FolderWatch& operator=(const FolderWatch&) = delete;

    /// Waits for the next new name in the folder; empty if none comes within a minute.
    [[nodiscard]] std::string waitForName();

private:
    int watch;
};

}  // namespace korva::test
