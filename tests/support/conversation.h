// Another program that a test talks with, line by line, on any system.
#pragma once

#include <memory>
#include <string>

namespace korva::test {

/// Runs beside the test, with the same environment. Its standard input ends with this object, which waits
/// until the program has ended of that.
class Conversation {
public:
    /// Raises `std::runtime_error` if it can't be run.
    explicit Conversation(const std::string& program);
    ~Conversation();
    Conversation(const Conversation&) = delete;
    Conversation& operator=(const Conversation&) = delete;

    /// Says a line, and waits for the line that answers it; empty when the program has gone.  [blocks]
    [[nodiscard]] std::string ask(std::string line);

    /// Ends the program wherever it is, as the system does it: nothing more of it runs. Waits until it has
    /// gone.  [blocks]
    void kill();

private:
    struct Ends;
    std::unique_ptr<Ends> ends;
};

}  // namespace korva::test
