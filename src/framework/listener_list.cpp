#include "framework/listener_list.h"

namespace korva::framework {

SlotHandle findSubscriber(const ListenerList<SubscriberNode>& list, const SlotTable<SubscriberNode>& table,
                          void* context, ListenerFunction before, ListenerFunction after) {
    const auto last = [&](ListenerFunction SubscriberNode::*member, ListenerFunction function) {
        if (function == nullptr) {
            return SlotHandle{0};
        }
        return list.findLast(table, [&](const SubscriberNode& node) {
            return node.*member == function && (context == nullptr || node.context == context);
        });
    };
    const SlotHandle handle = last(&SubscriberNode::beforeFunction, before);
    return handle != 0 ? handle : last(&SubscriberNode::afterFunction, after);
}

}  // namespace korva::framework
