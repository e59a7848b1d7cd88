#include "params/channel_messages.h"

#include <cstdint>

#include "platform/published/base_types.h"
#include "platform/registry_values.h"

namespace korva::params {
namespace {

using Bytes = std::span<const std::byte>;

enum class Opcode : std::uint32_t {
    sync = 3,
    setString = 4,
    setMultiString = 5,
    setDword = 6,
    setQword = 7,
    setBinary = 8,
    deleteValue = 9
};

// The failure of a field is the channel's to remember.
void sendBytes(StoreChannel& peer, Bytes bytes) {
    static_cast<void>(peer.WriteAll(bytes));
}

// Both systems' numbers are little-endian, as the stream's.
void sendNumber(StoreChannel& peer, std::uint32_t number) {
    sendBytes(peer, std::as_bytes(std::span(&number, 1)));
}

void sendCounted(StoreChannel& peer, Bytes bytes) {
    sendNumber(peer, static_cast<std::uint32_t>(bytes.size()));
    sendBytes(peer, bytes);
}

void sendText(StoreChannel& peer, std::string_view text) {
    sendCounted(peer, std::as_bytes(std::span(text)));
}

void sendHead(StoreChannel& peer, Opcode opcode, const StoreName& store) {
    sendNumber(peer, static_cast<std::uint32_t>(opcode));
    sendText(peer, store.endpointId);
    sendText(peer, store.setName);
}

void sendHead(StoreChannel& peer, Opcode opcode, const StoreName& store, std::string_view valueName) {
    sendHead(peer, opcode, store);
    sendText(peer, valueName);
}

Bytes withoutTerminator(Bytes text) {
    return text.first(text.size() - sizeof(WCHAR));
}

}  // namespace

void sendSync(StoreChannel& peer, const StoreName& store) {
    sendHead(peer, Opcode::sync, store);
}

void sendValue(StoreChannel& peer, const StoreName& store, std::string_view valueName,
               const ValueBytes& value) {
    const Bytes bytes = value.bytes.bytes();
    switch (value.kind) {
        case VT_LPWSTR:
            sendHead(peer, Opcode::setString, store, valueName);
            sendCounted(peer, withoutTerminator(bytes));
            break;
        case platform::textList:
            sendHead(peer, Opcode::setMultiString, store, valueName);
            sendCounted(peer, bytes);
            break;
        case VT_I4:
        case VT_UI4:
            sendHead(peer, Opcode::setDword, store, valueName);
            sendBytes(peer, bytes);
            break;
        case VT_I8:
        case VT_UI8:
            sendHead(peer, Opcode::setQword, store, valueName);
            sendBytes(peer, bytes);
            break;
        case VT_BLOB:
            sendHead(peer, Opcode::setBinary, store, valueName);
            sendCounted(peer, bytes);
            break;
        default:
            break;
    }
}

void sendDeleteValue(StoreChannel& peer, const StoreName& store, std::string_view valueName) {
    sendHead(peer, Opcode::deleteValue, store, valueName);
}

}  // namespace korva::params
