#include "support/Allocations.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>
#include <pugixml.hpp>

#if defined(__has_feature)
#define VKCL_HAS_FEATURE(name) __has_feature(name)
#else
#define VKCL_HAS_FEATURE(name) 0
#endif
#if defined(__SANITIZE_ADDRESS__) || VKCL_HAS_FEATURE(address_sanitizer)
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(address, size) static_cast<void>(0)
#define ASAN_UNPOISON_MEMORY_REGION(address, size) static_cast<void>(0)
#endif

namespace vkcl::testing {
namespace {

struct Plan {
  bool armed = false;
  bool reached = false;
  std::size_t left = 0;
  Shortage shortage = Shortage::Once;
};
thread_local Plan plan;
thread_local std::int64_t live = 0;

// Counts an allocation; true when it is to fail.
bool IsDue() {
  if (!plan.armed) return false;
  if (plan.reached) return plan.shortage == Shortage::Lasting;
  if (plan.left-- > 0) return false;
  plan.reached = true;
  return true;
}

// Which operator made a block.
enum class Form : std::uint32_t { Single = 0x53494E47, Array = 0x41525259 };

// What stands before each block of operator new: no reader of the block may touch it.
struct Front {
  void* start;  // of what malloc gave
  Form form;
};
constexpr std::size_t kFront = 16;
static_assert(sizeof(Front) <= kFront && kFront % alignof(std::max_align_t) == 0);

void* Allocate(std::size_t size, std::size_t alignment, Form form) noexcept {
  if (IsDue() || size > PTRDIFF_MAX - kFront - alignment) return nullptr;
  const bool plain = alignment <= alignof(std::max_align_t);
  auto* start = static_cast<std::byte*>(std::malloc(size + kFront + (plain ? 0 : alignment)));
  if (start == nullptr) return nullptr;
  std::byte* block = start + kFront;
  if (!plain) block += alignment - reinterpret_cast<std::uintptr_t>(block) % alignment;
  const Front front = {start, form};
  std::memcpy(block - kFront, &front, sizeof front);
  ASAN_POISON_MEMORY_REGION(block - kFront, kFront);
  ++live;
  return block;
}

void Release(void* block, Form form) noexcept {
  if (block == nullptr) return;
  std::byte* before = static_cast<std::byte*>(block) - kFront;
  ASAN_UNPOISON_MEMORY_REGION(before, kFront);
  Front front = {};
  std::memcpy(&front, before, sizeof front);
  if (front.form != form) {
    std::fputs("a block is not released as it was allocated, or twice\n", stderr);
    std::abort();
  }
  front.form = {};
  std::memcpy(before, &front, sizeof front);
  --live;
  std::free(front.start);
}

void* AllocateOrThrow(std::size_t size, std::size_t alignment, Form form) {
  void* block = Allocate(size, alignment, form);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}

// The same for pugixml, whose blocks malloc makes.

void* PlainAllocate(std::size_t size) {
  void* block = IsDue() ? nullptr : std::malloc(size);
  if (block != nullptr) ++live;
  return block;
}

void PlainRelease(void* block) {
  if (block != nullptr) --live;
  std::free(block);
}

// Before any test makes a document.
[[maybe_unused]] const bool pugixml_is_counted = [] {
  pugi::set_memory_management_functions(PlainAllocate, PlainRelease);
  return true;
}();

constexpr std::size_t kPlain = alignof(std::max_align_t);

std::size_t Of(std::align_val_t alignment) { return static_cast<std::size_t>(alignment); }

}  // namespace

AllocationFailsAt::AllocationFailsAt(std::size_t which, Shortage shortage) {
  plan = {true, false, which, shortage};
}
AllocationFailsAt::~AllocationFailsAt() { plan.armed = false; }
bool AllocationFailsAt::Reached() { return plan.reached; }

std::int64_t LiveAllocations() { return live; }

}  // namespace vkcl::testing

using vkcl::testing::Allocate;
using vkcl::testing::AllocateOrThrow;
using vkcl::testing::Form;
using vkcl::testing::kPlain;
using vkcl::testing::Of;
using vkcl::testing::Release;

void* operator new(std::size_t size) { return AllocateOrThrow(size, kPlain, Form::Single); }
void* operator new[](std::size_t size) { return AllocateOrThrow(size, kPlain, Form::Array); }
void* operator new(std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return Allocate(size, kPlain, Form::Single);
}
void* operator new[](std::size_t size, const std::nothrow_t& /*tag*/) noexcept {
  return Allocate(size, kPlain, Form::Array);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
  return AllocateOrThrow(size, Of(alignment), Form::Single);
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
  return AllocateOrThrow(size, Of(alignment), Form::Array);
}
void* operator new(std::size_t size, std::align_val_t alignment,
                   const std::nothrow_t& /*tag*/) noexcept {
  return Allocate(size, Of(alignment), Form::Single);
}
void* operator new[](std::size_t size, std::align_val_t alignment,
                     const std::nothrow_t& /*tag*/) noexcept {
  return Allocate(size, Of(alignment), Form::Array);
}

void operator delete(void* block) noexcept { Release(block, Form::Single); }
void operator delete[](void* block) noexcept { Release(block, Form::Array); }
void operator delete(void* block, std::size_t /*size*/) noexcept { Release(block, Form::Single); }
void operator delete[](void* block, std::size_t /*size*/) noexcept { Release(block, Form::Array); }
void operator delete(void* block, const std::nothrow_t& /*tag*/) noexcept {
  Release(block, Form::Single);
}
void operator delete[](void* block, const std::nothrow_t& /*tag*/) noexcept {
  Release(block, Form::Array);
}
void operator delete(void* block, std::align_val_t /*alignment*/) noexcept {
  Release(block, Form::Single);
}
void operator delete[](void* block, std::align_val_t /*alignment*/) noexcept {
  Release(block, Form::Array);
}
void operator delete(void* block, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept {
  Release(block, Form::Single);
}
void operator delete[](void* block, std::size_t /*size*/, std::align_val_t /*alignment*/) noexcept {
  Release(block, Form::Array);
}
void operator delete(void* block, std::align_val_t /*alignment*/,
                     const std::nothrow_t& /*tag*/) noexcept {
  Release(block, Form::Single);
}
void operator delete[](void* block, std::align_val_t /*alignment*/,
                       const std::nothrow_t& /*tag*/) noexcept {
  Release(block, Form::Array);
}
