// What a property store tells its peer.
//
// Numbers are little-endian. A text is its length in bytes, 32 bits wide, and then its UTF-8 bytes, without a
// terminator. Each message begins with its 32-bit number, the endpoint's identifier and the set's name:
//
//   3  sync            the values of the store follow, as messages 4 to 8
//   4  text            value's name, length in bytes, UTF-16 text without its terminator
//   5  list of texts   value's name, length in bytes, the UTF-16 texts, each with its terminator
//   6  32-bit number   value's name, number
//   7  64-bit number   value's name, number
//   8  bytes           value's name, length in bytes, bytes
//   9  deleted         value's name
//
// Each number, each length and each non-empty contents is a write of its own. One that fails keeps none of
// the following from being tried: the channel remembers the error, and nobody is told.
#pragma once

#include <string_view>

#include "params/store_channel.h"
#include "params/value_bytes.h"

namespace korva::params {

/// Which store a message is about.
struct StoreName {
    std::string_view endpointId;
    std::string_view setName;
};

/// [any, blocks]
void sendSync(StoreChannel& peer, const StoreName& store);
/// Message 4 to 8, by the value's kind; none for a kind that the registry doesn't keep.  [any, blocks]
void sendValue(StoreChannel& peer, const StoreName& store, std::string_view valueName,
               const ValueBytes& value);
/// [any, blocks]
void sendDeleteValue(StoreChannel& peer, const StoreName& store, std::string_view valueName);

}  // namespace korva::params
