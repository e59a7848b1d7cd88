#include "services/instance_record.h"

#include <cstddef>
#include <new>
#include <utility>

#include "platform/guid_literal.h"
#include "platform/unicode.h"

namespace korva::services {

using framework::ActiveObject;
using framework::ListenedTo;
using framework::ObservableBase;
using framework::Position;
using framework::Reason;

namespace {

constexpr std::string_view typeName = "APOTypeStr";
constexpr GUID typeFormat = platform::guidOf("{0F1BF368-7A66-4547-AB9D-7A41C5D25FD4}");

}  // namespace

// Where memory is wanting the instance shows nothing: what it is attached by is a change of a value, which
// has no end if a listener raises something.
void InstanceRecord::attach(ActiveObject& source, std::span<const TelemetryRow> rows) {
    try {
        showAll(source, rows);
    } catch (const std::bad_alloc&) {
        detach(source);
    }
}

// The listeners' contexts don't move: they are all made before the first one is given away. Whom the store
// tells of a value may detach, and attach anew, which then did all that is left to do here.
void InstanceRecord::showAll(ActiveObject& source, std::span<const TelemetryRow> rows) {
    detach(source);
    shown.reserve(rows.size());
    for (const TelemetryRow& row : rows) {
        shown.push_back({*this, row});
    }
    const std::uint32_t thisOne = ++attachments;
    publish(typeFormat, Text::variant(platform::toWide(effectType)));
    key.writeString(typeName, effectType);
    for (std::size_t i = 0; thisOne == attachments && i < shown.size(); ++i) {
        shown[i].row.observable(source).subscribe(&shown[i], beforeChange, afterChange, Position::last, false,
                                                  true);
    }
}

void InstanceRecord::detach(ActiveObject& source) {
    std::vector<Shown> ending = std::move(shown);
    shown.clear();
    if (ending.empty()) {
        return;
    }
    publish(typeFormat, PROPVARIANT{});
    for (Shown& each : ending) {
        each.row.observable(source).unsubscribe(&each, beforeChange, afterChange, true, false);
    }
}

void InstanceRecord::publish(const GUID& format, const PROPVARIANT& value) const {
    if (const framework::Ref<IPropertyStore> target = store.value()) {
        target->SetValue({format, instanceNumber}, value);
    }
}

void InstanceRecord::beforeChange(void* context, ListenedTo& source, ActiveObject&, const void*, void*,
                                  const void*, Reason) {
    const auto [record, row] = *static_cast<const Shown*>(context);
    if (!static_cast<const ObservableBase&>(source).isDefault()) {
        record.publish(row.propertyFormat, PROPVARIANT{});
    }
}

void InstanceRecord::afterChange(void* context, ListenedTo& source, ActiveObject&, const void* published,
                                 void*, const void*, Reason) {
    const auto [record, row] = *static_cast<const Shown*>(context);
    if (static_cast<const ObservableBase&>(source).isDefault()) {
        return;
    }
    try {
        record.publish(row.propertyFormat, row.variant(published));
        row.write(record.key, row.name, published);
    } catch (const std::bad_alloc&) {
        // It is as if the registry had refused the value.
    }
}

}  // namespace korva::services
