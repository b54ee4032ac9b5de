// What the tests of the public headers share: questions that are answered while they compile.
//
// Such a test includes its header before any other, so that a header that lacks an include of its
// own does not compile. Before that it declares the classes as a caller may who only names them: a
// class must not have become a struct, which is another name to some linkers.
#pragma once

#include <cstddef>
#include <type_traits>

namespace vkcl::testing {

/// Whether a function, or a static operation of a class, takes and gives exactly these types.
template <class Signature>
struct Function;
template <class Result, class... Arguments>
struct Function<Result(Arguments...)> {
  static constexpr bool Is(Result (*)(Arguments...)) { return true; }
  static constexpr bool Is(...) { return false; }
};

/// The same of an operation of a class that a caller has an object to call on.
template <class Signature>
struct Operation;
template <class Result, class... Arguments>
struct Operation<Result(Arguments...)> {
  template <class Class>
  static constexpr bool Is(Result (Class::*)(Arguments...)) {
    return true;
  }
  template <class Class>
  static constexpr bool Is(Result (Class::*)(Arguments...) const) {
    return true;
  }
  static constexpr bool Is(...) { return false; }
};

/// The same of an operation that can be called on a constant object.
template <class Signature>
struct Query;
template <class Result, class... Arguments>
struct Query<Result(Arguments...)> {
  template <class Class>
  static constexpr bool Is(Result (Class::*)(Arguments...) const) {
    return true;
  }
  static constexpr bool Is(...) { return false; }
};

/// Whether `member`, a data member or an operation without overloads, is there for callers.
#define VKCL_IS_PUBLIC(type, member)    \
  ([]<class Type>(Type*) {              \
    return requires { &Type::member; }; \
  }(static_cast<type*>(nullptr)))

/// Whether a caller may do with an object what the function object does with its argument. It is
/// to say so in a requires-clause.
template <class Type, class Use>
constexpr bool Allows(Use) {
  return std::is_invocable_v<Use, Type&>;
}

/// Where in a record a member begins, in bytes. For records that offsetof is not defined for.
template <class Record, class Member>
std::size_t OffsetIn(const Record& record, const Member& member) {
  return static_cast<std::size_t>(reinterpret_cast<const char*>(&member) -
                                  reinterpret_cast<const char*>(&record));
}

/// Whether an object can be made, copied and assigned as a plain record can.
template <class Record>
inline constexpr bool kIsRecord =
    std::is_class_v<Record>&& std::is_default_constructible_v<Record>&&
        std::is_copy_constructible_v<Record>&& std::is_copy_assignable_v<Record>;

/// A member that is a block of so many bytes, whether signed or not.
template <class Member, std::size_t length>
inline constexpr bool kIsBytes = std::is_array_v<Member> && sizeof(Member) == length &&
                                 sizeof(std::remove_all_extents_t<Member>) == 1;

}  // namespace vkcl::testing
