// How the values of an object are shown: a table with a row for each.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <type_traits>

#include "framework/active_object.h"
#include "platform/guid_literal.h"
#include "platform/published/property_types.h"
#include "platform/unicode.h"
#include "services/byte_count.h"
#include "services/instance_key.h"

namespace korva::services {

// The forms in which values are shown. Each names the type that it shows, makes a variant of a value, which
// borrows the value's memory, and writes it to the key.

/// A REG_DWORD, and a variant of kind `variantKind`: VT_UI4 or VT_I4.
template <VARTYPE variantKind>
struct Dword {
    using Value = std::uint32_t;

    static PROPVARIANT variant(const Value& value) noexcept {
        static_assert(variantKind == VT_UI4 || variantKind == VT_I4);
        PROPVARIANT shown{};
        shown.vt = variantKind;
        shown.ulVal = value;  // the bits are the same as those of the signed member
        return shown;
    }
    static void write(InstanceKey& key, std::string_view name, const Value& value) {
        key.writeDword(name, value);
    }
};

/// A REG_QWORD, and a VT_UI8.
struct Qword {
    using Value = std::uint64_t;

    static PROPVARIANT variant(const Value& value) noexcept {
        PROPVARIANT shown{};
        shown.vt = VT_UI8;
        shown.uhVal.QuadPart = value;
        return shown;
    }
    static void write(InstanceKey& key, std::string_view name, const Value& value) {
        key.writeQword(name, value);
    }
};

/// A REG_SZ of the UTF-8 form, and a VT_LPWSTR.
struct Text {
    using Value = platform::WideString;

    static PROPVARIANT variant(const Value& value) noexcept {
        PROPVARIANT shown{};
        shown.vt = VT_LPWSTR;
        shown.pwszVal = const_cast<WCHAR*>(value.c_str());
        return shown;
    }
    static void write(InstanceKey& key, std::string_view name, const Value& value) {
        key.writeString(name, platform::toUtf8(value));
    }
};

/// A REG_BINARY, and a VT_BLOB, of the bytes of a plain record.
template <class Record>
struct Blob {
    using Value = Record;
    static_assert(std::is_trivially_copyable_v<Record>);

    static PROPVARIANT variant(const Value& value) noexcept {
        PROPVARIANT shown{};
        shown.vt = VT_BLOB;
        shown.blob.cbSize = sizeof(Record);
        shown.blob.pBlobData = reinterpret_cast<BYTE*>(const_cast<Record*>(&value));
        return shown;
    }
    static void write(InstanceKey& key, std::string_view name, const Value& value) {
        key.writeBlob(name, std::as_bytes(std::span(&value, 1)));
    }
};

/// Three REG_DWORD, of which the bytes have the row's name and the clocks more; and a VT_BLOB of 16 bytes.
struct ByteCounts : Blob<ByteCount> {
    static void write(InstanceKey& key, std::string_view name, const Value& value) {
        key.writeDword(std::string(name).append("ClockStart"), value.clockStart);
        key.writeDword(std::string(name).append("ClockEnd"), value.clockEnd);
        key.writeDword(name, value.bytes);
    }
};

/// One REG_DWORD, the bytes; and a VT_BLOB of 16 bytes.
struct BytesOnly : Blob<ByteCount> {
    static void write(InstanceKey& key, std::string_view name, const Value& value) {
        key.writeDword(name, value.bytes);
    }
};

/// One value of an object, where it is shown and how. See `row`.
struct TelemetryRow {
    std::string_view name;  ///< Of the value in the key.
    GUID propertyFormat;    ///< Of the property key; the instance's number is its `pid`.
    framework::ObservableBase& (*observable)(framework::ActiveObject& object);
    PROPVARIANT (*variant)(const void* value);  ///< Borrows the value's memory.
    void (*write)(InstanceKey& key, std::string_view name, const void* value);
};

namespace detail {

template <class Member>
struct ObservableMember;
template <class Object_, class Value_>
struct ObservableMember<framework::Observable<Value_> Object_::*> {
    using Object = Object_;
    using Value = Value_;
};

}  // namespace detail

/// The row of a member like `&Object::value`, in one of the forms above.
template <auto member, class Form>
[[nodiscard]] constexpr TelemetryRow row(std::string_view name, GUID propertyFormat) noexcept {
    using Member = detail::ObservableMember<std::remove_const_t<decltype(member)>>;
    using Value = typename Form::Value;
    static_assert(std::is_same_v<Value, typename Member::Value>, "the form is another type's");
    return {name, propertyFormat,
            [](framework::ActiveObject& object) -> framework::ObservableBase& {
                return static_cast<typename Member::Object&>(object).*member;
            },
            [](const void* value) { return Form::variant(*static_cast<const Value*>(value)); },
            [](InstanceKey& key, std::string_view name_, const void* value) {
                Form::write(key, name_, *static_cast<const Value*>(value));
            }};
}

}  // namespace korva::services
