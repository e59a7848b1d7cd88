#include "korva/host/host_error.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>

#include "platform/class_activation.h"
#include "platform/published/results.h"

namespace korva::tool {
namespace {

struct NamedResult {
    HRESULT result;
    const char* words;
};

constexpr auto accessDenied = static_cast<HRESULT>(0x80070005U);   // E_ACCESSDENIED
constexpr auto fileNotFound = static_cast<HRESULT>(0x80070002U);   // ERROR_FILE_NOT_FOUND
constexpr auto moduleMissing = static_cast<HRESULT>(0x8007007EU);  // ERROR_MOD_NOT_FOUND

constexpr auto namedResults = std::to_array<NamedResult>({
    {published::ok, "done"},
    {published::okButNo, "no"},
    {published::notImplemented, "not implemented"},
    {published::noInterface, "no such interface"},
    {published::nullPointer, "a pointer is null"},
    {published::unspecifiedFailure, "unspecified failure"},
    {published::invalidHandle, "invalid handle"},
    {published::outOfMemory, "out of memory"},
    {published::invalidArgument, "invalid argument"},
    {published::notFound, "not found"},
    {published::classNotAvailable, "the library has no such class"},
    {published::noAggregation, "the object can't be part of another"},
    {platform::classNotRegistered, "the class is not registered"},
    {published::alreadyInitialized, "already initialised"},
    {published::notInitialized, "not initialised"},
    {published::formatNotSupported, "format not supported"},
    {published::buffersOverlap, "buffers overlap"},
    {published::alreadyUnlocked, "already unlocked"},
    {published::connectionCountInvalid, "wrong number of connections"},
    {published::outputMaxFrameCountInvalid, "the output takes fewer frames than the input"},
    {published::connectionFormatInvalid, "wrong format of a connection"},
    {published::objectLocked, "already locked"},
    {accessDenied, "access denied"},
    {fileNotFound, "not found"},
    {moduleMissing, "a library that it needs is missing"},
});

}  // namespace

std::string resultText(HRESULT result) {
    std::array<char, sizeof "0x00000000"> number{};
    std::snprintf(number.data(), number.size(), "0x%08x", static_cast<unsigned>(result));
    const auto* const named = std::ranges::find(namedResults, result, &NamedResult::result);
    return named == namedResults.end() ? std::string(number.data())
                                       : std::string(number.data()) + ", " + named->words;
}

void throwIfFailed(HRESULT result, const std::string& what) {
    if (published::failed(result)) {
        throw HostError(what + ": " + resultText(result));
    }
}

}  // namespace korva::tool
