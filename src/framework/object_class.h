// What every class of the framework's objects says about itself.
#pragma once

#include <memory>
#include <utility>

#include "framework/class_info.h"
#include "framework/object_base.h"

namespace korva::framework {

/// The base of a class `Self` that extends `Base`: its tag, its place in the chain of classes, and what it
/// tells about its members. A class that has members to tell of defines, besides those of `Base`,
///
///     static void describeMembers(ClassInfo& info);
template <class Self, class Base>
class ObjectClass : public Base {
public:
    [[nodiscard]] ObjectBase* castTo(TypeTag tag) noexcept override {
        return tag == typeTag<Self>() ? this : Base::castTo(tag);
    }

    [[nodiscard]] std::shared_ptr<const ClassInfo> getClassInfo() const override { return classInfo(); }

    /// Made when it is first asked for.  [any]
    [[nodiscard]] static std::shared_ptr<const ClassInfo> classInfo() {
        static const std::shared_ptr<const ClassInfo> info = makeClassInfo();
        return info;
    }

protected:
    using Base::Base;

private:
    static std::shared_ptr<const ClassInfo> makeClassInfo() {
        std::shared_ptr<ClassInfo> info;
        if constexpr (requires { Base::classInfo(); }) {
            info = std::make_shared<ClassInfo>(typeTag<Self>(), *Base::classInfo());
        } else {
            info = std::make_shared<ClassInfo>(typeTag<Self>());
        }
        if constexpr (requires(ClassInfo & told) { Self::describeMembers(told); }) {
            if (!isInherited()) {
                Self::describeMembers(*info);
            }
        }
        return info;
    }

    // Whether `Self::describeMembers` is that of a base, which has told its members already.
    static bool isInherited() {
        if constexpr (requires(ClassInfo & told) { Base::describeMembers(told); }) {
            return &Self::describeMembers == &Base::describeMembers;
        } else {
            return false;
        }
    }
};

}  // namespace korva::framework
