// What an instance shows of itself to diagnostic tools.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "framework/active_object.h"
#include "framework/ref.h"
#include "platform/published/property_interfaces.h"
#include "services/instance_key.h"
#include "services/telemetry_row.h"

namespace korva::services {

/// Shows values of an object from `attach` to `detach`: those that it has then, and each that they change to.
/// A value goes to a property of the store, which is emptied before it changes, and to the instance's key,
/// where it stays until the instance ends. A value at its default is not shown: one that goes back there
/// leaves the key as it was. What is refused is not tried again, and what there is no memory for counts as
/// that.
///
/// Lives in the object that it belongs to, and goes before the store does.  [owner]
class InstanceRecord {
public:
    using Store = framework::Observable<framework::Ref<IPropertyStore>>;

    /// `number` tells the properties of this instance from those of others. `shownIn` may be without a store
    /// at any time.
    InstanceRecord(std::uint32_t number, std::string type, const Store& shownIn)
        : instanceNumber(number), effectType(std::move(type)), store(shownIn) {}
    InstanceRecord(const InstanceRecord&) = delete;
    InstanceRecord& operator=(const InstanceRecord&) = delete;

    /// The type, then each of `rows` in its order, as far as `source`, whose rows they are, has it set. The
    /// rows outlive the time until `detach`.
    void attach(framework::ActiveObject& source, std::span<const TelemetryRow> rows);
    /// Empties all properties that are set. Does nothing unless attached.
    void detach(framework::ActiveObject& source);

    InstanceKey key;

private:
    /// What a listener is given.
    struct Shown {
        InstanceRecord& record;
        const TelemetryRow& row;
    };

    void showAll(framework::ActiveObject& source, std::span<const TelemetryRow> rows);
    void publish(const GUID& format, const PROPVARIANT& value) const;

    static void beforeChange(void* context, framework::ListenedTo& source, framework::ActiveObject& owner,
                             const void* published, void* pending, const void* defaultValue,
                             framework::Reason reason);
    static void afterChange(void* context, framework::ListenedTo& source, framework::ActiveObject& owner,
                            const void* published, void* pending, const void* defaultValue,
                            framework::Reason reason);

    const std::uint32_t instanceNumber;
    const std::string effectType;
    const Store& store;
    std::vector<Shown> shown;       ///< In the rows' order; empty while detached.
    std::uint32_t attachments = 0;  ///< So far.
};

}  // namespace korva::services
