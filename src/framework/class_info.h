// What a class tells about its members.
#pragma once

#include <map>
#include <memory>
#include <string_view>
#include <vector>

#include "framework/type_tag.h"

namespace korva::framework {

class ObjectBase;

/// One member of a class, to be reached in any object of that class. The operations that set something obey
/// the owner-thread rule of `Observable`.
class MemberDescriptor {
public:
    virtual ~MemberDescriptor() = default;

    /// Identifies the type of the member's value, so that it can be cast to its `ValueMember`.
    [[nodiscard]] TypeTag valueType() const noexcept { return type; }

    /// Sets the member to its default.
    virtual void reset(ObjectBase& object) const = 0;
    /// The address of the member's value.
    [[nodiscard]] virtual const void* address(ObjectBase& object) const = 0;

protected:
    explicit MemberDescriptor(TypeTag valueType) noexcept : type(valueType) {}

private:
    TypeTag type;
};

/// A member whose value is a `T`.
template <class T>
class ValueMember : public MemberDescriptor {
public:
    virtual void setByReference(ObjectBase& object, const T& value) const = 0;
    virtual void setByValue(ObjectBase& object, T value) const = 0;

protected:
    ValueMember() noexcept : MemberDescriptor(typeTag<T>()) {}
};

/// The members of one class, those of its bases first. Made once for a class, and constant from then on.
class ClassInfo {
public:
    using Member = std::shared_ptr<const MemberDescriptor>;
    using Members = std::vector<Member>;
    using ByName = std::map<std::string_view, Member>;

    explicit ClassInfo(TypeTag classTag) noexcept : typeTag(classTag) {}
    /// Begins with what the base class tells.
    ClassInfo(TypeTag classTag, const ClassInfo& base) : ClassInfo(base) { typeTag = classTag; }

    TypeTag typeTag;

    Members observables;
    Members resetAtClose;  ///< Values that go back to their defaults when their object closes.
    ByName observableOfName;

    Members collections;
    Members resetCollectionsAtClose;
    ByName collectionOfName;
};

}  // namespace korva::framework
