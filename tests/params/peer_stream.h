// The bytes that a peer has to find in its stream, made apart from the code that sends them.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace korva::test {

/// One write: a zero, then the bytes.
[[nodiscard]] inline std::string framed(std::string_view bytes) {
    return std::string(1, '\0') + std::string(bytes);
}

[[nodiscard]] inline std::string littleEndian(std::uint64_t number, int size) {
    std::string bytes;
    for (int i = 0; i < size; ++i) {
        bytes += static_cast<char>(number >> (8 * i) & 0xFF);
    }
    return bytes;
}

[[nodiscard]] inline std::string number32(std::uint32_t number) {
    return framed(littleEndian(number, 4));
}

/// A length, and the bytes unless there are none.
[[nodiscard]] inline std::string counted(std::string_view bytes) {
    return number32(static_cast<std::uint32_t>(bytes.size())) + (bytes.empty() ? "" : framed(bytes));
}

/// The fields that each message begins with.
[[nodiscard]] inline std::string messageHead(std::uint32_t opcode, std::string_view endpointId,
                                             std::string_view setName) {
    return number32(opcode) + counted(endpointId) + counted(setName);
}

}  // namespace korva::test
