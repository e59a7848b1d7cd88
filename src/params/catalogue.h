// What parameters each engine of a DSP module has. Constant data: numbered blocks of bytes, whose meaning
// only the module knows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "platform/published/base_types.h"

namespace korva::params {

/// What a field holds: raw little-endian bytes in any case.
enum class ParamFieldType : std::uint32_t {
    Bool,     ///< 1 byte
    Byte8,    ///< 1 byte
    Word16A,  ///< 2 bytes
    Word16B,  ///< 2 bytes
    Int32,    ///< 4 bytes
    UInt32,   ///< 4 bytes
    Float32,  ///< 4 bytes
    Bytes,    ///< `length` zero bytes
};
inline constexpr std::size_t paramFieldTypeCount = 8;

/// One part of a parameter's bytes.
struct ParamField {
    ParamFieldType type = ParamFieldType::Bool;
    std::uint64_t length = 0;        ///< Bytes that it takes.
    std::uint64_t isBytes = 0;       ///< 1 for `Bytes`.
    std::uint64_t defaultValue = 0;  ///< Little-endian in the field's width; of `Bytes` the length once more.
};

/// One parameter.
struct ParamDescriptor {
    std::int32_t ordinal = 0;         ///< Its place in its list, from 0.
    std::int32_t paramId = 0;         ///< The module's number for it; often negative, unique within its list.
    std::uint32_t category = 0;       ///< 0, 1 or 3.
    std::uint32_t sourcePolicy = 0;   ///< 0, 1 or 2: which layers of values count.
    std::uint32_t applyPriority = 0;  ///< Lower ones go to the module first.
    std::uint32_t fieldCount = 0;     ///< 1 to 44.
    const ParamField* fields = nullptr;

    /// Null at or past `fieldCount`.
    [[nodiscard]] constexpr const ParamField* field(std::uint32_t index) const noexcept {
        return index < fieldCount ? fields + index : nullptr;
    }
};

/// Descriptors in their order.
class ParamDescriptorList {
public:
    constexpr ParamDescriptorList() noexcept = default;
    constexpr explicit ParamDescriptorList(std::span<const ParamDescriptor> listed) noexcept
        : descriptors(listed) {}

    [[nodiscard]] constexpr std::uint32_t Count() const noexcept {
        return static_cast<std::uint32_t>(descriptors.size());
    }
    [[nodiscard]] constexpr const ParamDescriptor& At(std::uint32_t index) const noexcept {
        return descriptors[index];
    }

private:
    std::span<const ParamDescriptor> descriptors;
};

/// A part of an engine that has parameters of its own.
struct ParamModuleRecord {
    GUID moduleId{};
    ParamDescriptorList descriptors;
    std::uint32_t moduleIndex = 0;  ///< Its place in the layout, from 0.
};

/// The module index of the base list, whose parameters every engine has.
inline constexpr std::uint32_t baseModuleIndex = 0xFFFFFFFF;

/// The parameters of one engine: those of the base list, and those of its modules.
class ParamLayout {
public:
    constexpr ParamLayout(const GUID& engine, std::span<const ParamModuleRecord> modulesInOrder) noexcept
        : engineId(engine), modules(modulesInOrder) {}

    [[nodiscard]] constexpr std::uint32_t ModuleCount() const noexcept {
        return static_cast<std::uint32_t>(modules.size());
    }
    [[nodiscard]] constexpr const ParamModuleRecord& Module(std::uint32_t index) const noexcept {
        return modules[index];
    }

    GUID engineId;

private:
    std::span<const ParamModuleRecord> modules;
};

/// The layout of an engine; null for an unknown one.  [any]
[[nodiscard]] const ParamLayout* FindLayout(const GUID& engineId);

/// All layouts there are.  [any]
[[nodiscard]] std::span<const ParamLayout> allLayouts() noexcept;

/// The list of module index -1.  [any]
[[nodiscard]] const ParamDescriptorList& BaseList() noexcept;

/// The bytes that a parameter has until something sets it: its fields' defaults, one after another. Their
/// number is the parameter's size for all purposes.  [any]
[[nodiscard]] std::vector<std::byte> defaultPayload(const ParamDescriptor& descriptor);
[[nodiscard]] constexpr std::uint32_t payloadSize(const ParamDescriptor& descriptor) noexcept {
    std::uint64_t size = 0;
    for (std::uint32_t i = 0; i < descriptor.fieldCount; ++i) {
        size += descriptor.fields[i].length;
    }
    return static_cast<std::uint32_t>(size);
}

/// Whether every field is of a known type.  [any]
[[nodiscard]] bool hasKnownFields(const ParamDescriptor& descriptor) noexcept;

}  // namespace korva::params
