// What the recording module needs of an operating system.
#pragma once

#include <cstdint>
#include <string>

namespace korva::recorder {

/// An environment variable as it is now; empty if it is not set.
[[nodiscard]] std::string environmentText(const char* name);

/// The file that this library was loaded from, without folder and suffix.
[[nodiscard]] std::string ownName();

[[nodiscard]] std::uint64_t processNumber();
[[nodiscard]] std::uint64_t threadNumber();

/// Adds the text to the end of the file, which is made if it isn't there. Texts of several threads, processes
/// and copies of this library stand whole behind one another. What can't be written is lost.
void append(const std::string& file, const std::string& text);

}  // namespace korva::recorder
